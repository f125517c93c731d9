# shellcheck shell=sh disable=SC2034
# What the tests of the examples begin with. They source it: it leads them into a directory of their own, which goes with them, and
# makes $program an absolute path.
case $program in /*) ;; *) program=$PWD/$program ;; esac
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
cd "$directory" || exit 1
export LC_ALL=C
failures=0
name=$(basename "$program")

fail() {
    echo "FAILED: $*"
    cat out err 2>/dev/null
    failures=$((failures + 1))
}

# run ARGUMENTS: leaves what the program says in the files out and err.
run() {
    "$program" "$@" >out 2>err
}

# refuses EXIT_CODE TEXT ARGUMENTS: the program ends with that code and one line on stderr that holds the text.
refuses() {
    wanted=$1
    text=$2
    shift 2
    run "$@"
    got=$?
    if [ $got -ne "$wanted" ] || [ "$(wc -l <err)" -ne 1 ] || ! grep -q -e "^$name: .*$text" err; then
        fail "$name $*: exit code $got, wanted $wanted and one line with '$text'"
    fi
}
