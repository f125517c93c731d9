#!/bin/sh
# Runs the program as a user would, in a directory of its own: test_develop.sh PROGRAM
set -u
program=$1
case $program in /*) ;; *) program=$PWD/$program ;; esac
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
cd "$directory" || exit 1
export LC_ALL=C
failures=0

fail() {
    echo "FAILED: $*"
    failures=$((failures + 1))
}

# run ARGUMENTS: leaves what the program says in the files out and err. Progress is left out: whether a stage lasts long enough for it
# depends on the machine's load.
run() {
    "$program" "$@" >out 2>all
    status=$?
    grep -vE '^[a-z]+ +[0-9]+ %$' all >err
    return $status
}

# works ARGUMENTS: the program does it, and has nothing to say on stderr.
works() {
    if ! run "$@" || [ -s err ]; then
        fail "develop $*"
        cat out err
    fi
}

# refuses EXIT_CODE TEXT ARGUMENTS: the program ends with that code and one line on stderr that holds the text.
refuses() {
    wanted=$1
    text=$2
    shift 2
    run "$@"
    got=$?
    if [ $got -ne "$wanted" ] || [ "$(wc -l <err)" -ne 1 ] || ! grep -q "^develop: .*$text" err; then
        fail "develop $*: exit code $got, wanted $wanted and one line with '$text'"
        cat err
    fi
}

same() {
    cmp "$1" "$2" || fail "$3"
}

# psnrAtLeast RED GREEN BLUE, of the run before.
psnrAtLeast() {
    awk -v r="$1" -v g="$2" -v b="$3" '/^PSNR/ { n++; ok = $3 >= r && $6 >= g && $9 >= b } END { exit !(n == 1 && ok) }' out || {
        fail "PSNR below R $1, G $2, B $3"
        cat out
    }
}

processorHas() {
    for flag in $1; do grep -m1 '^flags' /proc/cpuinfo | grep -qw "$flag" || return 1; done
}

# The scene comes back, from every layout and in both widths. The floors lie a little below what it reaches; a layout taken for
# another, or colours swapped, costs at least ten decibels.
works --help
grep -q '^Usage: develop' out || fail "help does not begin with the usage"
works
psnrAtLeast 29.2 32.2 29.2
[ -s develop.png ] || fail "no picture by default"
[ -s develop-scene.png ] || fail "no picture of the scene"
for layout in bggr rggb gbrg grbg; do
    for bits in 8 16; do
        works --layout $layout --bits $bits -o $layout$bits.png --save-mosaic $layout$bits.pgm
        psnrAtLeast 29.2 32.2 29.2
        works --layout $layout -o again.png $layout$bits.pgm
        same again.png $layout$bits.png "$layout, $bits bits: the saved mosaic gives another picture"
    done
done
same develop.png rggb8.png "the default is rggb in 8 bits"
works --bits 16 -o wide.png --save-mosaic wide.pgm rggb8.pgm
works -o wide16.png wide.pgm
same wide.png wide16.png "8 bits widened by the program or by hand"
works --bits 8 -o narrow.png wide.pgm
same narrow.png rggb8.png "8 bits widened and narrowed again"

# A region is that part of the picture: its place is held by the comparison with the scene, there and nowhere else good.
works --region 694,22,244,300 --layout grbg
psnrAtLeast 34 50 34
works --region 900,600,500,500
grep -q 'develop.png: 60 x 40, 8 bits' out || fail "a region is clipped to the mosaic"

# Coarse noise leaves many pixels without a direction, which is where variants, bands of rows and borders could show.
noise() {
    awk -v n="$1" 'BEGIN { s = 7; for (i = 0; i < n; i++) { s = (s * 1103 + 12345) % 65536; printf "%c", 64 + int(s / 8192) } }'
}
{
    printf 'P5 # a comment\n#another\n 211 # and one more\n277\n255\n'
    noise $((211 * 277))
} >noise8.pgm
{
    printf 'P5\n101 277\n65535\n'
    noise $((2 * 101 * 277))
} >noise16.pgm
for mosaic in noise8 noise16 rggb8; do
    rm -f reference.png
    for variant in px w7:sse2 s8:ssse3 p8:sse4_2 g9:avx 'h9:avx2 bmi1 bmi2 fma'; do
        code=${variant%%:*}
        flags=${variant#"$code"}
        if processorHas "${flags#:}"; then
            works --variant "$code" -o one.png $mosaic.pgm
            grep -q "variant $code" out || fail "variant $code is not the one in use"
            if [ "$code" != px ]; then
                [ -e reference.png ] || cp one.png reference.png
                same one.png reference.png "$mosaic: $code differs from w7"
            fi
        else
            refuses 2 "cannot run variant $code" --variant "$code" $mosaic.pgm
        fi
    done
done
for mosaic in noise8 noise16; do
    for variant in px auto; do
        for layout in bggr rggb gbrg grbg; do
            for region in 0,0,999,999 3,2,180,231; do
                works --variant $variant --layout $layout --region $region -o one.png $mosaic.pgm
                works --variant $variant --layout $layout --region $region -o more.png --threads 4 $mosaic.pgm
                same one.png more.png "$mosaic, $variant, $layout, $region: four threads give another picture"
            done
        done
    done
done

# The other outputs.
works --compare compare.png --compare-at 0,0 --colour-mosaic colours.png
grep -q 'compare.png: 1168 x 384' out || fail "the size of the comparison"
grep -q 'colours.png: 960 x 640' out || fail "the size of the mosaic in colours"
works --linear -o linear.png noise16.pgm
works -o plain.png noise16.pgm
cmp -s linear.png plain.png && fail "--linear changes nothing"

# The smallest images, and samples scaled by the file's own maximum.
printf 'P5 5 5 255 %025d' 0 >five.pgm
works -o five.png --compare compare.png five.pgm
printf 'P5 7 5 60 %035d' 0 >sixty.pgm
works -o sixty.png --save-mosaic scaled.pgm sixty.pgm
[ "$(tail -c 35 scaled.pgm | tr -d '\314')" = "" ] || fail "48 of 60 is 204 of 255"

# Files that cannot be read.
bad() {
    printf '%b' "$2" >bad.pgm
    refuses 1 "bad.pgm: .*$1" bad.pgm
}
refuses 1 "none.pgm: cannot be opened: No such file" none.pgm
refuses 1 "$directory: is not a regular file" "$directory"
bad 'is empty' ''
bad 'is a P6 file' 'P6\n8 8\n255\n'
bad 'is a P2 file' 'P2\n8 8\n255\n1 2 3'
bad '\(neither\|not\) a binary PGM' 'GIF89a and so on'
bad '\(neither\|not\) a binary PGM' 'P'
bad 'ends before its width' 'P5'
bad 'ends before its width' 'P5 # and no more'
bad 'ends before its height' 'P5\n8'
bad 'ends before its maximum' 'P5\n8 8\n'
bad 'width is not a number' 'P5\nx8 8\n255\n'
bad 'width is not a number' 'P5\n-8 8\n255\n'
bad 'height is not a number' 'P5\n8 8x\n255\n'
bad 'maximum value is not a number' 'P5\n8 8\n?\n'
bad 'without pixels' 'P5\n0 8\n255\n'
bad 'without pixels' 'P5\n8 0\n255\n'
bad 'truncated: 8 x 8 samples need 64 bytes, it has 3' 'P5\n8 8\n255\nabc'
bad 'truncated: 8 x 8 samples need 128 bytes, it has 64' "P5\n8 8\n256\n$(printf '%064d' 0)"
bad 'truncated: 8 x 8 samples need 64 bytes, it has 0' 'P5\n8 8\n255'
bad 'truncated: 100000 x 100000 samples need 10000000000 bytes, it has 3' 'P5\n100000 100000\n255\nabc'
bad 'limit' 'P5\n99999999999999999999999999 5\n255\nabc'
bad 'limit' 'P5\n5 1000001\n255\nabc'
bad 'maximum value is 0' "P5\n8 8\n0\n$(printf '%064d' 0)"
bad 'maximum value is 65536' "P5\n8 8\n65536\n$(printf '%0128d' 0)"
bad 'is 4 x 9; .* at least 5 x 5' "P5\n4 9\n255\n$(printf '%036d' 0)"
bad 'is 9 x 4; .* at least 5 x 5' "P5\n9 4\n255\n$(printf '%036d' 0)"
bad 'is 1 x 1; .* at least 5 x 5' "P5\n1 1\n255\n0"

# Files that cannot be written.
refuses 1 'no/x.png: cannot be written: No such file' -o no/x.png five.pgm
refuses 1 'no/x.pgm: cannot be written' --save-mosaic no/x.pgm five.pgm
refuses 1 'cannot be written: Is a directory' -o . five.pgm
if [ -c /dev/full ]; then
    refuses 1 '/dev/full: cannot be written' -o /dev/full noise8.pgm
    refuses 1 '/dev/full: cannot be written' --save-mosaic /dev/full five.pgm
fi
cp five.pgm kept.pgm
refuses 2 'would be overwritten' -o ./five.pgm five.pgm
refuses 2 'would be overwritten' --save-mosaic five.pgm five.pgm
same five.pgm kept.pgm "the mosaic was overwritten"

# Options that make no sense.
refuses 2 "'q9' is none of px" --variant q9
refuses 2 "'rgbg' is none of bggr" --layout rgbg
refuses 2 "'none' is not known; there is: ahd" --method none
for region in '' 1 1,2,3 '1,2,3,4,' 1,2,3,4,5 1,,3,4 -1,0,5,5 1,2,3,x 99999999999,0,5,5 '1, 2,3,4'; do
    refuses 2 "'$region' is not X,Y,W,H" --region "$region"
done
refuses 2 'at least 1' --region 0,0,0,5
refuses 2 'outside the mosaic of 5 x 5' --region 5,0,1,1 five.pgm
refuses 2 'outside the mosaic of 5 x 5' --region 0,2147483647,2147483647,2147483647 five.pgm
refuses 2 "'12' is not 8 or 16" --bits 12
refuses 2 "'8x' is not 8 or 16" --bits 8x
refuses 2 'number from 1 to 1024' --threads 0
refuses 2 'number from 1 to 1024' --threads many
refuses 2 'is not X,Y' --compare-at 7
refuses 2 'file name is empty' -o ''
refuses 2 "bad option '--nonsense'" --nonsense
refuses 2 "bad option '-z'" -z
refuses 2 "option '--bits' needs a value" --bits
refuses 2 "more than one mosaic given: 'b'" a b

[ $failures -eq 0 ] && echo "all well"
exit $((failures > 0))
