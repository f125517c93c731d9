#!/bin/sh
# Runs the program as a user would, in a directory of its own: test_filters.sh PROGRAM PYTHON
set -u
program=$1
python=$2
here=$(cd "$(dirname "$0")" && pwd)
. "$here/../testing.sh"

# draws TEXT ARGUMENTS: the program says that it wrote so many rows and columns, and has nothing to say on stderr.
draws() {
    text=$1
    shift
    run "$@" || fail "filters $*"
    [ ! -s err ] && grep -q "^$text$" out || fail "filters $*: wanted '$text'"
}

samples() {
    "$python" -B "$here/../develop/png_samples.py" "$1"
}

"$program" --help >out 2>err && grep -q '^Usage: filters' out || fail "--help"
draws '5 kernels, 3 border rules: filters.png, 552 x 724'
[ -s filters.png ] || fail "filters.png is missing"
draws '1 kernels, 3 border rules: row.png, 552 x 140' --kernel edges -o row.png
draws '5 kernels, 1 border rules: column.png, 180 x 724' --border fill -o column.png

# Each tile is a part of the sheet.
samples filters.png >sheet.txt
row=0
for kernel in shift blur streak sharpen edges; do
    column=0
    for border in clamp reflect fill; do
        draws "1 kernels, 1 border rules: $kernel-$border.png, 180 x 140" --kernel $kernel --border $border -o $kernel-$border.png
        samples $kernel-$border.png >$kernel-$border.txt
        awk -v left=$((186 * column)) -v top=$((146 * row)) '
            int((NR - 1) / 552) >= top && int((NR - 1) / 552) < top + 140 && (NR - 1) % 552 >= left && (NR - 1) % 552 < left + 180' \
            sheet.txt | cmp - $kernel-$border.txt || fail "$kernel, $border: not in its place"
        column=$((column + 1))
    done
    row=$((row + 1))
done

# The shift by 40 pixels each way shows what stands beyond the border.
for border in clamp reflect fill; do
    awk -v border=$border '
        function place(i) { return border == "reflect" && i < 40 ? 80 - i : i < 40 ? 40 : i }
        { sample[(NR - 1) % 180, int((NR - 1) / 180)] = $1 }
        END {
            for (y = 0; y < 140; y++) {
                for (x = 0; x < 180; x++) {
                    wanted = border == "fill" && (x < 40 || y < 40) ? 0 : sample[place(x), place(y)]
                    if (sample[x, y] != wanted) { print "pixel " x ", " y ": " sample[x, y] ", not " wanted; exit 1 }
                }
            }
        }' shift-$border.txt || fail "beyond the border: $border"
    cmp -s shift-$border.txt blur-$border.txt && fail "two kernels do the same"
done
# Far from the border no rule makes a difference.
for kernel in blur streak sharpen edges; do
    for border in clamp reflect fill; do
        awk '(NR - 1) % 180 >= 20 && (NR - 1) % 180 < 160 && NR > 180 * 20 && NR <= 180 * 120' $kernel-$border.txt >inner-$border.txt
    done
    cmp inner-clamp.txt inner-reflect.txt && cmp inner-clamp.txt inner-fill.txt || fail "$kernel: the border reaches too far"
    cmp -s $kernel-clamp.txt $kernel-fill.txt && fail "$kernel: no border"
done

refuses 2 'no option --nine' --nine
refuses 2 'no option picture.png' picture.png
refuses 2 'needs a value' --kernel
refuses 2 'needs a value' -o ''
refuses 2 'there is no cube' --kernel cube
refuses 2 'there is no wrap' --border wrap
refuses 1 'no/such' -o no/such/file.png

[ $failures -eq 0 ]
