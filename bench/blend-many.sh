#!/bin/sh
# Blends many large photos left to right as Blend Left to Right does with "keep results within
# the megapixel limit" on (the default): 49 JPEGs of 24 megapixels (6000 x 4000). Prints the
# wall-clock time and the peak resident memory (goal: under 1.5 GB), then starts the same blend
# again, cancels it after a few seconds and prints how long it took to stop (goal: 0.5 s).
#
#   bench/blend-many.sh [--quick] [BUILD_DIR]      (default: build)
#
# Not part of the tests: the full run needs minutes and about 3 GB of disk for the photos, made
# the first time in $TESSARY_BENCH_MANY_PHOTOS (default: a folder in the temporary folder).
# --quick blends 6 photos of 1200 x 800 instead, in seconds.
set -eu

count=49 width=6000 height=4000 abort_ms=5000
if [ "${1:-}" = --quick ]; then
    count=6 width=1200 height=800 abort_ms=200
    shift
fi
build=${1:-build}
blend="$build/bin/tessary-blend-photos"
[ -x "$blend" ] || { echo "$0: $blend is missing; build it first (cmake --build $build --target tessary-blend-photos)" >&2; exit 1; }
[ -x /usr/bin/time ] || { echo "$0: /usr/bin/time is missing (Debian package time)" >&2; exit 1; }

photos=${TESSARY_BENCH_MANY_PHOTOS:-${TMPDIR:-/tmp}/tessary-bench-many-$count-${width}x$height}
"$blend" --make "$photos" "$count" "$width" "$height"
set --
i=0
while [ "$i" -lt "$count" ]; do
    set -- "$@" "$photos/photo-$i.jpg"
    i=$((i + 1))
done
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

/usr/bin/time -v -o "$out/time.txt" "$blend" --limit "$@" >"$out/blend.txt"
peak_kb=$(awk -F': ' '/Maximum resident set size/ { print $2 }' "$out/time.txt")
echo "photos: $count x ${width}x$height JPEG in $photos"
echo "blend within the megapixel limit: $(cat "$out/blend.txt"), peak $((peak_kb / 1024)) MB   (goal < 1536 MB)"
echo "abort: $("$blend" --limit --abort "$abort_ms" "$@")   (goal <= 500 ms)"
echo "load average: $(cut -d' ' -f1-3 /proc/loadavg)"
