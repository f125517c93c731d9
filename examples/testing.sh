# shellcheck shell=sh disable=SC2034
# What the tests of the examples begin with. They source it: it leads them into a directory of their own, which goes with them, and
# makes $program an absolute path.
case $program in /*) ;; *) program=$PWD/$program ;; esac
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
cd "$directory" || exit 1
export LC_ALL=C
failures=0
