#!/bin/sh
# The race: one 7 x 7 collage of 49 camera-sized photos (12 to 24 megapixels, landscape and
# portrait), every photo cropped about its centre into a 728 x 728 tile, written as a
# 5096 x 5096 (26 megapixel) PNG, TIFF and JPEG, by Tessary, by vips and by ImageMagick 6, in
# the same run on the same warm files. Prints wall, user and system time and peak memory (best
# of 3 by wall time, /usr/bin/time -v) and the ratios of Tessary's wall time to the others'.
#
#   bench/race.sh [BUILD_DIR]        (default: build)
#
# The photos are made by build/bin/tessary-race-photos the first time (deterministic, about
# 140 MB) in $TESSARY_RACE_PHOTOS (default: a folder in the temporary folder). vips and
# ImageMagick come with TESSARY_BENCH_TOOLS=1 scripts/install-deps.sh. All three write PNG at
# zlib level 1, JPEG at quality 90 and uncompressed TIFF. The race is heavy: run it when the
# machine is otherwise idle.
set -eu

build=${1:-build}
cli="$build/bin/tessary-cli"
maker="$build/bin/tessary-race-photos"
for tool in "$cli" "$maker"; do
    [ -x "$tool" ] || { echo "$0: $tool is missing; build first" >&2; exit 1; }
done
for tool in /usr/bin/time vipsthumbnail vips /usr/bin/convert /usr/bin/montage; do
    command -v "$tool" >/dev/null || { echo "$0: $tool is missing (TESSARY_BENCH_TOOLS=1 scripts/install-deps.sh)" >&2; exit 1; }
done

photos=${TESSARY_RACE_PHOTOS:-${TMPDIR:-/tmp}/tessary-race-photos}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TESSARY_RESOURCES="${TESSARY_RESOURCES:-$build/resources}"
export TESSARY_DEFAULTS="$work/defaults.sqlite"
export QT_LOGGING_RULES="tessary.info=false"

"$maker" "$photos" 49
list=$(ls "$photos"/photo-*.jpg | sort | tr "\n" " ")
# Warm the file cache so that every contestant reads from memory.
cat $list >/dev/null

# The first-start template is a 7 x 7 grid of equal tiles; shown 728 points wide without
# spacing, each tile is 104 points, 728 pixels at scale 7.
template=298
tiles=$("$cli" render --builtin $template --size 728 --increments 0 0 $list --layout-only | grep -c '^tile')
[ "$tiles" = 49 ] || { echo "$0: built-in template $template has $tiles tiles, not 49" >&2; exit 1; }

# measure NAME COMMAND: runs COMMAND three times under /usr/bin/time -v and keeps the fastest.
# Prints "wall user system peakMB" of that run.
measure() {
    best=""
    for run in 1 2 3; do
        /usr/bin/time -v -o "$work/time.txt" sh -c "$2" >/dev/null 2>"$work/err.txt" ||
            { echo "$0: $1 failed:" >&2; cat "$work/err.txt" "$work/time.txt" >&2; exit 1; }
        this=$(awk -F': ' '
            /Elapsed \(wall clock\)/ { n = split($2, p, ":"); w = 0; for (i = 1; i <= n; i++) w = w * 60 + p[i] }
            /User time/ { u = $2 } /System time/ { s = $2 } /Maximum resident set size/ { m = $2 / 1024 }
            END { printf "%.2f %.2f %.2f %.0f\n", w, u, s, m }' "$work/time.txt")
        if [ -z "$best" ] || [ "$(echo "$this $best" | awk '{ print ($1 < $5) }')" = 1 ]; then best=$this; fi
    done
    echo "$best"
}

row() { printf '%-12s %-5s %8s %8s %8s %8s\n' "$@"; }

echo "Photos: 49 JPEGs, 12-24 MP, in $photos; output 5096 x 5096; load before: $(cut -d' ' -f1-3 /proc/loadavg)"
row tool format wall_s user_s sys_s peak_MB
for fmt in png tif jpg; do
    case $fmt in
        png) vips_opts="[compression=1]" im_opts="-quality 10" ;;
        jpg) vips_opts="[Q=90]" im_opts="-quality 90" ;;
        tif) vips_opts="" im_opts="-compress none" ;;
    esac
    t=$(measure "Tessary $fmt" "\"$cli\" render --builtin $template --size 728 --increments 0 0 --scale 7 --align 0 \
        --background white $list -o \"$work/tessary.$fmt\"")
    v=$(measure "vips $fmt" "rm -rf \"$work/v\" && mkdir \"$work/v\" && \
        ls $list | xargs -P2 -n25 vipsthumbnail -s 728x728 -m centre -o \"$work/v/%s.v\" && \
        vips arrayjoin \"\$(ls \"$work\"/v/*.v | sort | tr '\n' ' ')\" \"$work/vips.$fmt$vips_opts\" --across 7")
    m=$(measure "ImageMagick $fmt" "rm -rf \"$work/m\" && mkdir \"$work/m\" && \
        ls $list | xargs -P2 -I{} sh -c 'f=\$(basename {} .jpg); /usr/bin/convert -define jpeg:size=1456x1456 {} \
            -thumbnail 728x728^ -gravity center -extent 728x728 \"$work/m/\$f.miff\"' && \
        /usr/bin/montage \$(ls \"$work\"/m/*.miff | sort) -tile 7x7 -geometry +0+0 $im_opts \"$work/im.$fmt\"")
    row Tessary $fmt $t
    row vips $fmt $v
    row ImageMagick $fmt $m
    echo "$fmt $t $v $m" >>"$work/all.txt"
done

for f in "$work/tessary.png" "$work/vips.png" "$work/im.png"; do
    size=$(vipsheader -f width "$f")x$(vipsheader -f height "$f")
    [ "$size" = 5096x5096 ] || echo "$0: warning: $(basename "$f") is $size" >&2
done

echo
awk '{
    printf "%s: Tessary/vips %.2f (goal <= 0.80)  Tessary/ImageMagick %.2f (goal <= 0.50)  Tessary peak %d MB (goal <= 400)\n",
        $1, $2 / $6, $2 / $10, $5
}' "$work/all.txt"
