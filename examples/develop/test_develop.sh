#!/bin/sh
# Runs the program as a user would, in a directory of its own: test_develop.sh PROGRAM PYTHON
set -u
program=$1
python=$2
here=$(cd "$(dirname "$0")" && pwd)
. "$here/../testing.sh"

# The same without progress: whether a stage lasts long enough for it depends on the machine's load.
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
    fi
}

same() {
    cmp "$1" "$2" || fail "$3"
}

# psnrAtLeast RED GREEN BLUE, of the run before.
psnrAtLeast() {
    awk -v r="$1" -v g="$2" -v b="$3" '/^PSNR/ { n++; ok = $3 >= r && $6 >= g && $9 >= b } END { exit !(n == 1 && ok) }' out || {
        fail "PSNR below R $1, G $2, B $3"
    }
}

# samples FILE: red, green and blue of each pixel, in lines.
samples() {
    "$python" -B "$here/png_samples.py" "$1"
}

# flat FILE RED GREEN BLUE: every pixel is within 1 of that.
flat() {
    samples "$1" | awk -v r="$2" -v g="$3" -v b="$4" '
        function off(is, wanted) { return is < wanted - 1 || is > wanted + 1 }
        off($1, r) || off($2, g) || off($3, b) { if (!wrong++) print "pixel " NR ": " $0 }
        END { exit wrong > 0 }' || fail "$1 is not $2 $3 $4 all over"
}

processorHas() {
    for flag in $1; do grep -m1 '^flags' /proc/cpuinfo | grep -qw "$flag" || return 1; done
}

# The scene comes back, from every layout. The floors lie a little below what it reaches; a layout taken for another, or colours
# swapped, costs much more. The mosaic that is saved is the sensor's own: developed again with its levels, it gives the same.
works --help
grep -q '^Usage: develop' out || fail "help does not begin with the usage"
works
psnrAtLeast 28.7 31.7 27.2
[ -s develop.png ] || fail "no picture by default"
[ -s develop-scene.png ] || fail "no picture of the scene"
for layout in bggr rggb gbrg grbg; do
    works --layout $layout --method quick -o quick.png
    psnrAtLeast 18.4 22.5 19.2
    works --layout $layout -o $layout.png --save-mosaic $layout.pgm
    psnrAtLeast 28.7 31.7 27.2
    works --layout $layout -o again.png --black 1024 --white 15360 $layout.pgm
    same again.png $layout.png "$layout: the saved mosaic gives another picture"
done
same develop.png rggb.png "the default is rggb"
works -o again.png --black 1024 rggb.pgm
same again.png rggb.png "the white level is the file's maximum"
works --bits 16 -o wide.png
psnrAtLeast 28.7 31.7 27.2
grep -q 'wide.png: 960 x 640, 16 bits' out || fail "no picture of 16 bits"

# A region is that part of the picture: its place is held by the comparison with the scene, there and nowhere else good.
works --region 694,22,244,300 --layout grbg
psnrAtLeast 30.4 50 30.9
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
# What the library promises: the quick method and these levels in all variants, the adaptive method and dithers in all but px,
# curves in all but h9. `--white 65535` makes levels without rounding.
variants='px w7:sse2 s8:ssse3 p8:sse4_2 g9:avx h9:avx2,bmi1,bmi2,fma'
# agree FROM TO ARGUMENTS: variants FROM to TO of those that there are give the same picture.
agree() {
    from=$1
    to=$2
    shift 2
    rm -f reference.png
    for variant in $(echo "$variants" | sed "s/.*\($from\)/\1/; s/\($to[^ ]*\).*/\1/"); do
        code=${variant%%:*}
        flags=${variant#"$code"}
        if processorHas "$(echo "${flags#:}" | tr , ' ')"; then
            works --variant "$code" -o one.png "$@"
            grep -q "variant $code" out || fail "variant $code is not the one in use"
            [ -e reference.png ] || cp one.png reference.png
            same one.png reference.png "develop $*: $code differs from $from"
        else
            refuses 2 "cannot run variant $code" --variant "$code" "$@"
        fi
    done
}
for mosaic in noise8 noise16; do
    agree w7 h9 --curve none --bits 16 $mosaic.pgm
    agree w7 h9 --curve none --dither floyd --levels 5 $mosaic.pgm
    agree w7 h9 --method quick --curve none --dither jarvis --noise 30 --levels 2 $mosaic.pgm
    agree w7 h9 --method quick --curve none --dither stucki --levels 3 $mosaic.pgm
    agree w7 h9 --method quick --curve none --dither ordered --noise 20 --levels 16 $mosaic.pgm
    agree px h9 --method quick --curve none --bits 16 $mosaic.pgm
    agree px g9 --method quick --bits 16 $mosaic.pgm
done
agree w7 h9 --white 65535 --curve none rggb.pgm
agree w7 g9 --black 1024 --dither ordered --levels 4 rggb.pgm
agree px g9 --black 1024 --method quick --bits 16 rggb.pgm
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
    works --method quick -o one.png $mosaic.pgm
    works --method quick -o more.png --threads 4 $mosaic.pgm
    same one.png more.png "$mosaic, quick: four threads give another picture"
done

# Sharpening: sums of parts of 32, continued by reflection, of what is there without it; exact, so that all variants agree.
for mosaic in 'noise8 211' 'noise16 101'; do
    width=${mosaic#* }
    mosaic=${mosaic% *}
    agree px h9 --method quick --curve none --bits 16 --sharpen $mosaic.pgm
    works --curve none --bits 16 -o plain.png $mosaic.pgm
    works --curve none --bits 16 --sharpen -o sharp.png $mosaic.pgm
    samples plain.png >plain.txt
    samples sharp.png >sharp.txt
    awk -v width="$width" '
        function within(i, count) { return i < 0 ? -i : i >= count ? 2 * count - 2 - i : i }
        function at(x, y) { return sample[within(y, height) * width + within(x, width), c] }
        NR == FNR { for (c = 1; c <= 3; c++) sample[NR - 1, c] = $c; height = int(NR / width); next }
        {
            x = (FNR - 1) % width
            y = int((FNR - 1) / width)
            for (c = 1; c <= 3; c++) {
                sum = 48 * at(x, y) - 2 * (at(x - 1, y) + at(x + 1, y) + at(x, y - 1) + at(x, y + 1))
                sum -= at(x - 2, y) + at(x + 2, y) + at(x, y - 2) + at(x, y + 2)
                sum -= at(x - 1, y - 1) + at(x + 1, y - 1) + at(x - 1, y + 1) + at(x + 1, y + 1)
                sum = sum < 0 ? 0 : sum > 32 * 65535 ? 65535 : int(sum / 32 + 0.5)
                if (sum != $c) { if (!wrong++) print "pixel " x ", " y ": " $c ", not " sum }
            }
        }
        END { exit wrong > 0 || FNR != 277 * width }' plain.txt sharp.txt || fail "$mosaic: sharpened"
done
works --sharpen
psnrAtLeast 21 20.4 20.2
works --sharpen --method quick -o sharp.png --times --region 0,0,200,100
grep -q '^times  *levels  *demosaic  *sharpen  *curve  *reduce$' out || fail "the stages in the table of times"

# Levels. 300 is a quarter of the way from 200 to 600.
grey() {
    printf 'P5 8 8 1000\n' >"$1"
    for i in $(seq 64); do printf '%b' "\\0$(printf %o $(($2 / 256)))\\0$(printf %o $(($2 % 256)))"; done >>"$1"
}
grey 300.pgm 300
linear='--curve none --bits 16 -o levels.png'
works $linear 300.pgm && flat levels.png 19661 19661 19661
works $linear --black 200 --white 600 300.pgm && flat levels.png 16384 16384 16384
works $linear --black 300 --white 600 300.pgm && flat levels.png 0 0 0
works $linear --black 100 --white 300 300.pgm && flat levels.png 65535 65535 65535
works $linear --white 200 300.pgm && flat levels.png 65535 65535 65535

# Curves, at that quarter.
quarter='--black 200 --white 600 --bits 16 -o curve.png'
works $quarter 300.pgm && flat curve.png 35200 35200 35200
works $quarter --curve screen 300.pgm && flat curve.png 35200 35200 35200
works $quarter --curve 0:0,1:1 300.pgm && flat curve.png 16384 16384 16384
works $quarter --curve 0:1,1:0 300.pgm && flat curve.png 49152 49152 49152
works $quarter --curve 0:0.25,0.5:0.75,1:1 300.pgm && flat curve.png 32768 32768 32768
# The cubic through these four is x squared.
works $quarter --curve 0:0,0.5:0.25,0.75:0.5625,1:1 300.pgm && flat curve.png 4096 4096 4096
works $quarter --curve 0:0,0.5:0.25,0.75:0.5625,1:1 --curve-form linear 300.pgm && flat curve.png 8192 8192 8192
works $quarter --curve-form step --curve 0:0.125,0.5:0.25,1:1 300.pgm && flat curve.png 8192 8192 8192

# Another size. Flat pictures stay as they are, the darkest and the lightest, too; of a ramp, what lies between two columns is between
# their samples.
for size in 1x1 3x9 40x7 200x100; do
    works $linear --resize $size 300.pgm && flat levels.png 19661 19661 19661
    works $linear --resize $size --black 300 --white 600 300.pgm && flat levels.png 0 0 0
    works $linear --resize $size --black 100 --white 300 300.pgm && flat levels.png 65535 65535 65535
done
works --resize 2000x90 --bits 16 -o one.png noise16.pgm
grep -q 'one.png: 2000 x 90, 16 bits' out || fail "the size of a resized picture"
works --resize 2000x90 --bits 16 --threads 7 -o more.png noise16.pgm
same one.png more.png "seven threads resize to another picture"
works --resize 50x333 -o one.png noise8.pgm
works --resize 50x333 --threads 2 -o more.png noise8.pgm
same one.png more.png "two threads resize to another picture"
works --resize 211x277 -o one.png noise8.pgm
works -o more.png noise8.pgm
same one.png more.png "the picture's own size gives another picture"
agree w7 g9 --resize 300x200 --white 65535 --curve none --bits 16 noise8.pgm
works --resize 480x320
psnrAtLeast 32.4 37.5 30.9
works --resize 1920x1280
psnrAtLeast 31.4 35.5 29.8
grep -q 'develop-scene.png: 1920 x 1280' out || fail "the size of a resized scene"
works --times --resize 100x50 --bits 16 --curve none -o times.png noise8.pgm
grep -q '^times  *levels  *demosaic  *resize$' out || fail "resizing in the table of times"
refuses 2 "\-\-resize: needs at least 2 x 2, not 1 x 9" --resize 5x5 --region 4,0,1,9 noise8.pgm
refuses 2 'numbers from 1 to 1000000' --resize 0x5
refuses 2 'numbers from 1 to 1000000' --resize 5x1000001
for size in '' 64 64x 64,2 64x2x; do refuses 2 "'$size' is not WxH" --resize "$size"; done

# Dithers: a grey ramp of 60 rows keeps its mean in every part, and has those samples and no others. The ordered dither's
# outermost thresholds are 0 and 1, which brightens shadows and darkens lights by half a level in 16.
{
    printf 'P5 256 60 255\n'
    awk 'BEGIN { for (y = 0; y < 60; y++) for (x = 0; x < 256; x++) printf "%c", x }'
} >ramp.pgm
ramp() {
    works --method quick --curve none -o ramp.png "$@" ramp.pgm
    samples ramp.png >ramp.txt
}
steps() {
    found=$(tr ' ' '\n' <ramp.txt | sort -nu | tr '\n' ' ')
    [ "$found" = "$1 " ] || fail "$2: samples $found, not $1"
}
for dither in none floyd jarvis stucki ordered; do
    ramp --dither $dither --levels 2
    steps '0 255' "$dither to 2 levels"
    if [ $dither != none ]; then
        awk '{ sum[int((NR - 1) % 256 / 32)] += $1 + $2 + $3 }
            END {
                for (i = 0; i < 8; i++) {
                    mean = sum[i] / (60 * 32 * 3)
                    if (mean < 32 * i + 6 || mean > 32 * i + 25) { print mean; wrong = 1 }
                }
                exit wrong
            }' ramp.txt || fail "$dither does not keep the mean"
    fi
    ramp --dither $dither --levels 4
    steps '0 85 170 255' "$dither to 4 levels"
    cp ramp.png calm-$dither.png
    ramp --dither $dither --levels 4 --noise 50
    if [ $dither = none ]; then
        same ramp.png calm-$dither.png "noise without a dither"
    else
        cmp -s ramp.png calm-$dither.png && fail "$dither: noise changes nothing"
    fi
done
[ "$(cksum calm-*.png | cut -d' ' -f1 | sort -u | wc -l)" -eq 5 ] || fail "two dithers are the same"
ramp --bits 16 --resize 640x60
awk '{
    p = ((NR - 1) % 640 + 0.5) * 0.4 - 0.5
    if (p > 1 && p < 254) for (c = 1; c <= 3; c++) if ($c < 257 * p - 1 || $c > 257 * p + 1) exit 1
}' ramp.txt || fail "a ramp between its columns"
ramp
awk '{ x = (NR - 1) % 256; if (x % 255 && ($1 != x || $2 != x || $3 != x)) exit 1 }' ramp.txt || fail "8 bits do not come back"

# Packed 4:2:2: eight bars of 8 pixels, two rows, in the colours of a test signal; limited to 0 to 255 at black and white.
bars='\0200\0353\0200\0353 \0054\0242\0216\0242 \0234\0203\0054\0203 \0110\0160\0072\0160'
bars="$bars \\0270\\0124\\0306\\0124 \\0144\\0101\\0324\\0101 \\0324\\0043\\0162\\0043 \\0200\\0020\\0200\\0020"
for row in 1 2; do
    for bar in $bars; do printf '%b' "$bar$bar$bar$bar"; done
done >bars.uyvy
works --video 64x2 -o bars.png bars.uyvy
samples bars.png | awk '
    BEGIN { split("255,255,255 191,191,0 0,191,191 0,191,0 191,0,191 191,0,0 0,0,191 0,0,0", bars, " ") }
    { split(bars[int((NR - 1) % 64 / 8) + 1], wanted, ",")
      for (c = 1; c <= 3; c++) if ($c < wanted[c] - 2 || $c > wanted[c] + 2) { print "pixel " NR ": " $0; wrong = 1 } }
    END { exit wrong || NR != 128 }' || fail "the bars of packed 4:2:2"
agree px w7 --video 64x2 bars.uyvy
agree s8 g9 --video 64x2 bars.uyvy
refuses 1 'bars.uyvy: has 256 bytes; 64 x 3 pixels of packed 4:2:2 are 384' --video 64x3 bars.uyvy
refuses 1 'has 256 bytes; 62 x 2 pixels of packed 4:2:2 are 248' --video 62x2 bars.uyvy
refuses 1 'has 256 bytes; 1000000 x 1000000 pixels of packed 4:2:2 are 2000000000000' --video 1000000x1000000 bars.uyvy
refuses 1 'none.uyvy: cannot be opened: No such file' --video 64x2 none.uyvy
refuses 1 "$directory: is not a regular file" --video 64x2 "$directory"
refuses 2 'its width is even, not 63' --video 63x2 bars.uyvy
refuses 2 'numbers from 1 to 1000000' --video 0x2 bars.uyvy
refuses 2 'numbers from 1 to 1000000' --video 2x1000001 bars.uyvy
for size in '' 64 64x 64,2 64x2x 64X2 x2 -64x2; do
    refuses 2 "'$size' is not WxH" --video "$size" bars.uyvy
done
refuses 2 'needs a file' --video 64x2
refuses 2 '\-\-dither is for mosaics, not for --video' --video 64x2 --dither floyd bars.uyvy
refuses 2 '\-\-sharpen is for mosaics, not for --video' --video 64x2 --sharpen bars.uyvy
refuses 2 'would be overwritten' --video 64x2 -o bars.uyvy bars.uyvy

# A camera's raw file: its own levels, and its white balance.
if "$program" --help | grep -q "raw file\.$"; then
    "$python" -B "$here/make_dng.py" raw.dng 512 4608 1536 2560 1024
    works --curve none --bits 16 -o raw.png raw.dng
    grep -q 'raw.dng: 64 x 48, rggb, black 512, white 4608' out || fail "size, layout or levels of the raw file"
    flat raw.png 32768 32768 8192
    works --curve none --bits 16 -o raw.png --black 1024 --white 5120 raw.dng
    flat raw.png 16384 24576 0
    "$python" -B "$here/make_dng.py" raw.dng 4608 4608 1536 2560 1024
    refuses 2 'black level 4608 is not below white level 4608' raw.dng
fi

# The table of times has a line for each variant and a column for each stage, and the picture is written as without it.
works --times -o times.png noise8.pgm
works -o untimed.png noise8.pgm
same times.png untimed.png "--times changes the picture"
works --times --method quick --curve none --bits 16 -o times.png noise8.pgm
grep -q '^times  *levels  *demosaic$' out || fail "the stages in the table of times"
works --times --dither floyd --variant px -o times.png noise8.pgm
grep -q '^times  *levels  *demosaic  *curve  *reduce$' out || fail "the stages in the table of times"
grep -Eq '^px( +[0-9]+\.[0-9]+){8}$' out || fail "a line of the table of times"
grep -q 'variant px' out || fail "--times changes the variant"
works --times --video 64x2 -o times.png bars.uyvy
same times.png bars.png "--times changes the picture"
for variant in $variants; do
    flags=${variant#??}
    processorHas "$(echo "${flags#:}" | tr , ' ')" || continue
    grep -Eq "^${variant%%:*}( +[0-9]+\.[0-9]+){2}$" out || fail "${variant%%:*} is missing in the table of times"
done

# The other outputs.
works --compare compare.png --compare-at 0,0 --colour-mosaic colours.png
grep -q 'compare.png: 1168 x 384' out || fail "the size of the comparison"
grep -q 'colours.png: 960 x 640' out || fail "the size of the mosaic in colours"

# Statistics are those of the picture that is written, and of the mosaic as it was read.
line='mean %9.3f, deviation %9.3f, from %5d to %5d\n'
measured() {
    samples "$1" | awk -v line="%-10s $line" '
        { for (c = 1; c <= 3; c++) { s[c] += $c; q[c] += $c * $c; if (NR == 1 || $c < lo[c]) lo[c] = $c; if ($c > hi[c]) hi[c] = $c } }
        END {
            split("red green blue", name)
            for (c = 1; c <= 3; c++) {
                v = q[c] / NR - (s[c] / NR) ^ 2
                printf line, name[c], s[c] / NR, sqrt(v < 0 ? -v : v), lo[c], hi[c]
            }
        }'
}
works --stats --bits 16 --curve none -o stats.png noise8.pgm
grep -E '^(red|green|blue) ' out >told
measured stats.png >wanted
same told wanted "the statistics of 16 bits"
works --stats -o stats.png noise8.pgm
grep -E '^(red|green|blue) ' out >told
measured stats.png >wanted
same told wanted "the statistics of 8 bits"
grep -q 'stats-histogram.png: 544 x 544, 8 bits' out || fail "the size of the histograms"
printf 'P5 6 5 255 %030d' 0 | tr 0 A | sed 's/AAAAA$/zzzzz/' >letters.pgm
works --stats -o letters.png letters.pgm
printf "mosaic     $line" 74.5 21.242646 65 122 >wanted
grep '^mosaic ' out >told
same told wanted "the statistics of the mosaic"

# The red bars: a value's count, and at the full height the largest one but for those of the ends.
samples stats.png >values
samples stats-histogram.png | awk '
    NR == FNR { count[$1]++; next }
    $0 == "205 70 60" { height[(FNR - 1) % 544]++ }
    END {
        for (v = 1; v < 255; v++) if (count[v] > full) full = count[v]
        for (v = 0; v < 256; v++) {
            wanted = int(((count[v] < full ? count[v] : full) * 120 + full - 1) / full)
            for (x = 16 + 2 * v; x < 18 + 2 * v; x++) if (height[x] + 0 != wanted) { print v, height[x] + 0, wanted; wrong = 1 }
        }
        exit wrong
    }' values - || fail "the red bars"
grep -E '^(mosaic|red|green|blue) ' out >letters.told
for variant in $variants; do
    flags=${variant#??}
    processorHas "$(echo "${flags#:}" | tr , ' ')" || continue
    works --stats --variant "${variant%%:*}" -o variant.png letters.pgm
    grep -E '^(mosaic|red|green|blue) ' out >told
    same told letters.told "the statistics of ${variant%%:*}"
    same variant-histogram.png letters-histogram.png "the histograms of ${variant%%:*}"
done
cp letters.pgm letters-histogram.png
refuses 2 'would be overwritten' --stats -o letters.png letters-histogram.png
works --stats --video 64x2 -o bars.png bars.uyvy
grep -E '^(red|green|blue) ' out >told
measured bars.png >wanted
same told wanted "the statistics of video"

# The smallest images, and samples of an odd range.
printf 'P5 5 5 255 %025d' 0 >five.pgm
works -o five.png --compare compare.png five.pgm
printf 'P5 2 2 255 %04d' 0 >two.pgm
works -o two.png --method quick --curve none --compare compare.png two.pgm
flat two.png 48 48 48
printf 'P5 7 5 60 %035d' 0 >sixty.pgm
works -o sixty.png --curve none --save-mosaic saved.pgm sixty.pgm
flat sixty.png 204 204 204
works -o again.png --curve none saved.pgm
same again.png sixty.png "the saved mosaic gives another picture"

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
refuses 1 'is 1 x 1; method quick needs at least 2 x 2' --method quick bad.pgm

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
refuses 2 'named for two outputs' -o new.png --compare ./new.png five.pgm
refuses 2 'named for two outputs' -o new.png --stats --colour-mosaic new-histogram.png five.pgm
refuses 2 'named for two outputs' -o new.png --save-mosaic new-scene.png
[ ! -e new.png ] || fail "something was written"

# Options that make no sense.
refuses 2 "'q9' is none of px" --variant q9
refuses 2 "'rgbg' is none of bggr" --layout rgbg
refuses 2 "'none' is not known; there is: ahd, quick" --method none
refuses 2 "'no' is not known; there is: none, floyd, jarvis, stucki, ordered" --dither no
refuses 2 "'square' is not known; there is: step, linear, cubic" --curve-form square
for curve in '' bright 0 0: :0 0:0,1:1, 0:0,1:1:1 0,0:1,1 '0:0, 1:1' -0.1:0,1:1 0:0,1:1.1 0:nan,1:1 0:0,0.5,1:1; do
    refuses 2 "'$curve' is not screen, none or X:Y" --curve "$curve"
done
refuses 2 'a greater X than the one before' --curve 0:0,0.5:0.5,0.5:0.6,1:1
refuses 2 'a greater X than the one before' --curve 1:1,0:0
refuses 2 'X must be 0, the last one' --curve 0:0
refuses 2 'X must be 0, the last one' --curve 0.1:0,1:1
refuses 2 'X must be 0, the last one' --curve 0:0,0.9:1
refuses 2 "'65535' is not a number from 0 to 65534" --black 65535
refuses 2 "'-1' is not a number from 0 to 65534" --black -1
refuses 2 "'0' is not a number from 1 to 65535" --white 0
refuses 2 'black level 255 is not below white level 255' --black 255 five.pgm
refuses 2 'black level 30 is not below white level 20' --black 30 --white 20
for levels in 1 257 many; do refuses 2 'number from 2 to 256' --levels $levels; done
for noise in -1 101 1.5; do refuses 2 'number from 0 to 100' --noise "$noise"; done
refuses 2 '\-\-levels is for the reduction to 8 bits' --levels 4 --bits 16
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
refuses 2 "more than one file given: 'b'" a b

[ $failures -eq 0 ] && echo "all well"
exit $((failures > 0))
