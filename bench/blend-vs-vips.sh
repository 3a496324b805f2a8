#!/bin/sh
# Blends four 12-megapixel photos (4000 x 3000 JPEGs) left to right with a 50-pixel blending
# margin, as Tessary's Blend Left to Right does, and makes the same join with the vips
# command-line tool (three "vips merge" steps, each placing the next photo 3950 pixels to the
# right of the last with a 50-pixel feathered overlap), in the same run. Prints each one's
# wall-clock time and peak resident memory (from /usr/bin/time -v; for vips the largest of its
# three processes), the median of three runs, and the ratio of the times.
#
#   bench/blend-vs-vips.sh [BUILD_DIR]      (default: build)
#
# Tessary is measured twice: the blend itself, and the whole command, which first brings the
# photos to one size (uniform cropping, on by default). The photos are made the first time, in
# $TESSARY_BENCH_BLEND_PHOTOS (default: a folder in the temporary folder).
set -eu

build=${1:-build}
blend="$build/bin/tessary-blend-photos"
[ -x "$blend" ] || { echo "$0: $blend is missing; build it first (cmake --build $build --target tessary-blend-photos)" >&2; exit 1; }
command -v vips >/dev/null || { echo "$0: vips is missing (Debian package libvips-tools)" >&2; exit 1; }
[ -x /usr/bin/time ] || { echo "$0: /usr/bin/time is missing (Debian package time)" >&2; exit 1; }

photos=${TESSARY_BENCH_BLEND_PHOTOS:-${TMPDIR:-/tmp}/tessary-bench-blend-photos}
"$blend" --make "$photos"
set -- "$photos/photo-0.jpg" "$photos/photo-1.jpg" "$photos/photo-2.jpg" "$photos/photo-3.jpg"
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

# Runs a command under /usr/bin/time; prints "wall-ms peak-kB".
timed() {
    /usr/bin/time -v -o "$out/time.txt" "$@" >"$out/stdout.txt" 2>"$out/stderr.txt" ||
        { cat "$out/stderr.txt" >&2; exit 1; }
    awk -F': ' '/Elapsed \(wall clock\)/ { n = split($2, t, ":"); s = 0; for (i = 1; i <= n; i++) s = s * 60 + t[i]; ms = s * 1000 }
                /Maximum resident set size/ { kb = $2 }
                END { printf "%d %d\n", ms, kb }' "$out/time.txt"
}

# One vips run: the sum of the three steps' times and the largest of their peaks.
vips_run() {
    rm -f "$out"/t*.v
    set -- $(timed vips merge "$1" "$2" "$out/t1.v" horizontal --mblend 50 -- -3950 0) \
           $(timed vips merge "$out/t1.v" "$3" "$out/t2.v" horizontal --mblend 50 -- -7900 0) \
           $(timed vips merge "$out/t2.v" "$4" "$out/t3.v" horizontal --mblend 50 -- -11850 0)
    echo "$(( $1 + $3 + $5 )) $(printf '%s\n' "$2" "$4" "$6" | sort -n | tail -n1)"
}

median() { sort -n | sed -n 2p; }

: >"$out/tessary.txt"; : >"$out/crop.txt"; : >"$out/vips.txt"
for run in 1 2 3; do
    timed "$blend" "$@" >>"$out/tessary.txt"
    timed "$blend" --crop "$@" >>"$out/crop.txt"
    vips_run "$@" >>"$out/vips.txt"
done
size=$(vipsheader -f width "$out/t3.v")x$(vipsheader -f height "$out/t3.v")
"$blend" "$@" >"$out/check.txt"

t_ms=$(cut -d' ' -f1 "$out/tessary.txt" | median); t_kb=$(cut -d' ' -f2 "$out/tessary.txt" | median)
c_ms=$(cut -d' ' -f1 "$out/crop.txt" | median); c_kb=$(cut -d' ' -f2 "$out/crop.txt" | median)
v_ms=$(cut -d' ' -f1 "$out/vips.txt" | median); v_kb=$(cut -d' ' -f2 "$out/vips.txt" | median)
echo "photos: 4 x 4000x3000 JPEG in $photos; picture: Tessary $(sed 's/.*, //' "$out/check.txt"), vips $size"
echo "Tessary blend:                  $t_ms ms, peak $(( t_kb / 1024 )) MB   (median of 3)"
echo "Tessary with uniform cropping:  $c_ms ms, peak $(( c_kb / 1024 )) MB"
echo "vips merge x 3 (command line):  $v_ms ms, peak $(( v_kb / 1024 )) MB (largest step)"
awk -v t="$t_ms" -v c="$c_ms" -v v="$v_ms" 'BEGIN { printf "ratio to vips: blend %.2f, with uniform cropping %.2f   (goal <= 1.0)\n", t / v, c / v }'
