#!/bin/sh
# Runs the program as a user would, in a directory of its own: test_spectrum.sh PROGRAM PYTHON
set -u
program=$1
python=$("$2" -c 'import sys; print(sys.executable)')  # itself, not a script that looks for it at each of many calls
here=$(cd "$(dirname "$0")" && pwd)
. "$here/../testing.sh"

# runs ARGUMENTS: the program ends well, has nothing to say on stderr and tells that the mean is what it was, within the hundredth
# part of a step of 8 bits.
runs() {
    run "$@" || fail "spectrum $*"
    [ ! -s err ] && awk '$1 == "mean" { found = ($2 - $4) ^ 2 < 2.5 ^ 2 } END { exit !found }' out || fail "spectrum $*: the mean"
}

# says TEXT: the last run did.
says() {
    grep -q -e "$1" out || fail "wanted '$1'"
}

waves() {
    "$python" -B "$here/waves.py" "$@"
}

samples() {
    "$python" -B "$here/../develop/png_samples.py" "$1"
}

# noise WIDTH HEIGHT: bytes that have nothing to do with one another.
noise() {
    "$python" -c 'import random, sys; sys.stdout.buffer.write(random.Random(7).randbytes(int(sys.argv[1])))' $(($1 * $2))
}

# peaks WIDTH HEIGHT ACROSS DOWN LEVEL: the spectrum shows the mean in the middle and a wave beside it, LEVEL bright, and else hardly
# anything.
peaks() {
    samples spectrum.png | awk -v width="$1" -v height="$2" -v across="$3" -v down="$4" -v level="$5" '
        function place(u, v) {
            return (int(height / 2) + v + height) % height * width + (int(width / 2) + u + width) % width
        }
        {
            i = NR - 1
            wanted = i == place(0, 0) ? 255 : i == place(across, down) || i == place(-across, -down) ? level : 0
            if ($1 > wanted + (wanted ? 1 : 25) || $1 < wanted - 1) { print "sample " i ": " $1 ", not " wanted; bad = 1 }
        }
        END { if (NR != width * height) { print NR " samples"; bad = 1 } exit bad }' || fail "the spectrum of $*"
}

# shows WIDTH HEIGHT AMPLITUDE ACROSS DOWN: the picture is a wave about 127.5, within 1.
shows() {
    samples filtered.png | awk -v width="$1" -v height="$2" -v amplitude="$3" -v across="$4" -v down="$5" '
        {
            x = (NR - 1) % width; y = int((NR - 1) / width)
            wanted = 127.5 + amplitude * cos(8 * atan2(1, 1) * (across * x / width + down * y / height))
            if (($1 - wanted) ^ 2 > 1) { print "pixel " x ", " y ": " $1 ", not " wanted; bad = 1; exit }
        }
        END { if (!bad && NR != width * height) { print NR " samples"; bad = 1 } exit bad }' || fail "the picture of $*"
}

"$program" --help >out 2>err && grep -q '^Usage: spectrum' out || fail "--help"

# The picture that is drawn has two waves, which the notches find, the weaker one first as its frequency is higher; in the spectrum
# they leave dark spots where peaks were.
runs
says '^320 x 240, there in .* ms, back in .* ms$'
says 'kept: 100.00 %'
says '^spectrum: spectrum.png, picture: filtered.png$'
samples spectrum.png >before.txt
runs --notch auto --notch auto
[ "$(grep removed out)" = "$(printf 'wave removed: 38,-71\nwave removed: 57,24')" ] || fail "two waves"
samples spectrum.png | paste before.txt - | awk '
    { x = (NR - 1) % 320 - 160; y = int((NR - 1) / 320) - 120 }
    x == 57 && y == 24 || x == -57 && y == -24 || x == 38 && y == -71 || x == -38 && y == 71 { good += $1 > 185 && $2 < 10 }
    END { exit NR != 320 * 240 || good != 4 }' || fail "no peaks before or no spots after"

# A plane wave of an amplitude of half its mean has peaks of a quarter of it, -12.04 of 100 decibels. It is found and removed. Sizes
# include small factors only, primes within and beyond what is transformed by definition, single rows and single columns; waves, one of
# two pixels a period, whose peaks are both in the leftmost column.
for case in '64 48 5 7' '60 45 30 11' '61 47 9 -20' '127 50 63 3' '75 101 0 50' '211 1 40 0' '1 89 0 31'; do
    # shellcheck disable=SC2086
    set -- $case
    waves "$1" "$2" 32767.5 16383.75 "$3" "$4" >wave.pgm
    runs wave.pgm
    says "^$1 x $2, "
    peaks "$1" "$2" "$3" "$4" 224
    shows "$1" "$2" 63.75 "$3" "$4"
    for notch in auto "$3,$4" "-$3,$((-$4))"; do
        runs --notch "$notch" --notch-width 0.5 wave.pgm
        says 'kept: 0.00 %'
        shows "$1" "$2" 0 0 0
    done
    runs --notch auto wave.pgm
    says "^wave removed: $3,$4$"
    # At another wave's frequency nothing happens to this one.
    if [ "$1" -gt 1 ]; then
        runs --notch 17,0 --notch-width 0.5 wave.pgm
        says 'kept: 100.00 %'
        shows "$1" "$2" 63.75 "$3" "$4"
    fi
done

# Where one is left alone the other goes.
waves 90 70 32767.5 16383.75 4 3 8191.875 -20 15 >two.pgm
runs --notch -20,15 two.pgm
says 'kept: 80.00 %'
shows 90 70 63.75 4 3
runs --notch auto --notch-width 1 two.pgm
says '^wave removed: 20,-15$'
shows 90 70 63.75 4 3

# A notch whose width takes in the mean leaves it alone.
waves 64 48 32767.5 16383.75 1 0 >wave.pgm
runs --notch 1,0 --notch-width 5 wave.pgm
says 'kept: 0.00 %'
shows 64 48 0 0 0

# A Gaussian blur of deviation s weakens a wave of frequency f, in periods a pixel, to exp(-2 (pi s f)^2).
for case in '96 64 6 0' '97 61 4 -5' '50 131 0 9'; do
    # shellcheck disable=SC2086
    set -- $case
    waves "$1" "$2" 32767.5 30000 "$3" "$4" >wave.pgm
    for deviation in 0.5 2 3.5 100; do
        runs --low-pass $deviation wave.pgm
        amplitude=$(awk -v s=$deviation -v u="$3" -v v="$4" -v width="$1" -v height="$2" '
            BEGIN { print 30000 / 257 * exp(-2 * (4 * atan2(1, 1) * s) ^ 2 * ((u / width) ^ 2 + (v / height) ^ 2)) }')
        shows "$1" "$2" "$amplitude" "$3" "$4"
    done
done

# Without a filter the picture comes back, whatever its size is.
for case in '1 1' '1 7' '2 2' '5 1' '17 33' '61 47' '128 64' '131 79' '211 127' '1009 3'; do
    # shellcheck disable=SC2086
    set -- $case
    { printf 'P5 %d %d 255\n' "$1" "$2" && noise "$1" "$2"; } >noise.pgm
    runs noise.pgm
    says 'kept: 100.00 %'
    samples filtered.png >back.txt
    noise "$1" "$2" | od -An -v -tu1 -w1 | tr -d ' ' | cmp - back.txt || fail "$1 x $2 does not come back"
done
# So does a PNG picture; and what was drawn with a filter is what is read.
runs -o noise.png --spectrum other.png noise.pgm
[ -s other.png ] || fail "other.png is missing"
runs noise.png
samples filtered.png | cmp - back.txt || fail "the PNG picture does not come back"
# Samples count up to the maximum that the file tells.
printf 'P5 2 1 100\n\062\144' >hundred.pgm
runs hundred.pgm
[ "$(samples filtered.png | tr '\n' ' ')" = '128 255 ' ] || fail "half of the maximum and the maximum"

# One tone has no wave, and a spectrum of a single point; black has none at all.
waves 30 21 20000 >flat.pgm
runs --low-pass 2 flat.pgm
[ "$(samples spectrum.png | sort -n | uniq -c | tr -s '\n ' ' ')" = ' 629 0 1 255 ' ] || fail "the spectrum of one tone"
[ "$(samples filtered.png | sort -u)" = 78 ] || fail "one tone"
refuses 1 'no wave' --notch auto flat.pgm
waves 30 21 0 >black.pgm
runs black.pgm
[ "$(samples spectrum.png | sort -u)" = 0 ] || fail "the spectrum of black"
refuses 1 'no wave' --notch auto black.pgm

refuses 2 'no option --nine' --nine
refuses 2 'needs a value' --low-pass
refuses 2 'needs a value' -o ''
refuses 2 '0.1 to 10000' --low-pass 0
refuses 2 '0.1 to 10000' --low-pass -3
refuses 2 '0.1 to 10000' --low-pass 3px
refuses 2 '0.1 to 10000' --low-pass nan
refuses 2 '0.1 to 10000' --low-pass 1e5
refuses 2 '0.1 to 1000' --notch-width 0.01
refuses 2 'auto or U,V' --notch 3
refuses 2 'auto or U,V' --notch 3,
refuses 2 'auto or U,V' --notch 3,4,5
refuses 2 'auto or U,V' --notch inf,1
refuses 2 'auto or U,V' --notch wave
refuses 2 'no wave but the mean' --notch 0,0
refuses 2 '30 x 21' --notch 15.5,0 flat.pgm
refuses 2 '30 x 21' --notch 0,-11 flat.pgm
refuses 2 'more than one' a b
refuses 1 'cannot be read' missing.pgm
echo plain >plain.txt
refuses 1 'neither' plain.txt
printf 'P5 3 2 255\nabc' >short.pgm
refuses 1 'truncated' short.pgm
refuses 1 'no/such' -o no/such/file.png flat.pgm
refuses 1 'no/such' --spectrum no/such/file.png flat.pgm
cp flat.pgm kept.pgm
refuses 2 'would be overwritten' -o ./flat.pgm flat.pgm
refuses 2 'would be overwritten' --spectrum flat.pgm flat.pgm
cmp flat.pgm kept.pgm || fail "the picture was overwritten"
refuses 2 'named for two outputs' -o new.png --spectrum ./new.png flat.pgm
refuses 2 'named for two outputs' -o spectrum.png flat.pgm
[ ! -e new.png ] || fail "something was written"
runs -o /dev/null --spectrum /dev/null flat.pgm

[ $failures -eq 0 ]
