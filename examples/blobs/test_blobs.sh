#!/bin/sh
# Runs the program as a user would, in a directory of its own: test_blobs.sh PROGRAM
set -u
program=$1
. "$(dirname "$0")/../testing.sh"

# finds COUNT ARGUMENTS: the program finds so many blobs and has nothing to say on stderr.
finds() {
    count=$1
    shift
    run "$@" || fail "blobs $*"
    [ ! -s err ] && grep -q "^$count blobs, " out || fail "blobs $*: wanted $count blobs"
}

"$program" --help >out 2>err && grep -q '^Usage: blobs' out || fail "--help"

# One body in each of 48 cells. Their picture in colours has the same blobs, read as PNG; its ground is one blob, and one more in
# each of the 12 rings.
finds 48
[ -s blobs.png ] || fail "blobs.png is missing"
finds 48 --threshold 1 -o again.png blobs.png
finds 13 --threshold 1 --dark -o ground.png blobs.png

# Five pixels by three of 8 and of 16 bits: three bright ones, of which two touch at a corner.
printf 'P5\n# a comment\n5 3\n255\n\310\001\001\001\001\001\310\001\001\001\001\001\001\001\377' >small.pgm
finds 2 -o out.png small.pgm
finds 3 --four -o out.png small.pgm
finds 1 --threshold 255 -o out.png small.pgm
finds 1 --dark --threshold 2 -o out.png small.pgm
finds 0 --threshold 256 -o out.png small.pgm
# The same upside down: dark on bright.
printf 'P5\n5 3\n255\n\067\376\376\376\376\376\067\376\376\376\376\376\376\376\000' >dark.pgm
finds 2 --dark -o out.png dark.pgm
finds 3 --dark --four -o out.png dark.pgm
finds 1 -o out.png dark.pgm
printf 'P5 3 1 65535\n\001\000\000\377\001\001' >deep.pgm
finds 2 --threshold 256 -o out.png deep.pgm
finds 1 --threshold 257 -o out.png deep.pgm

refuses 2 'no option --nine' --nine
refuses 2 'needs a value' --threshold
refuses 2 '1 to 65535' --threshold 0
refuses 2 '1 to 65535' --threshold 65536
refuses 2 '1 to 65535' --threshold 3x
refuses 2 'more than one' a b
refuses 1 'cannot be read' missing.pgm
echo plain >plain.txt
refuses 1 'neither' plain.txt
printf 'P5 3 2 255\nabc' >short.pgm
refuses 1 'truncated' short.pgm
printf 'P5 17320 17320 255\nabc' >claims.pgm
refuses 1 'truncated: 17320 x 17320 samples need 299982400 bytes, it has 3' claims.pgm
mkfifo pipe.pgm
cat small.pgm >pipe.pgm &
finds 2 -o out.png pipe.pgm
head -c 30 small.pgm >pipe.pgm &
refuses 1 'pipe.pgm: is truncated' pipe.pgm
printf 'P5 3 x 255\nabc' >header.pgm
refuses 1 'height is not a number' header.pgm
printf 'P5 3 0 255\n' >none.pgm
refuses 1 'without pixels' none.pgm
printf 'P5 999999 999999 255\n' >huge.pgm
refuses 1 'too large' huge.pgm
printf 'P5 1 1 65536\n12' >maximum.pgm
refuses 1 'maximum' maximum.pgm
printf '\211PNG\r\n' >short.png
refuses 1 'short.png' short.png
refuses 1 'no/such' -o no/such/file.png small.pgm
cp blobs.png kept.png
refuses 2 'would be overwritten' blobs.png
refuses 2 'would be overwritten' -o ./blobs.png "$PWD/blobs.png"
cmp blobs.png kept.png || fail "the picture was overwritten"

[ $failures -eq 0 ]
