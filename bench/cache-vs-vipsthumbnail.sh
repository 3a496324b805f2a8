#!/bin/sh
# Fills Tessary's image cache from 49 synthetic 12-megapixel JPEGs and makes thumbnails of the
# same files to the same half-megapixel bound with vipsthumbnail in two processes, then prints
# both times and their ratios: wall-clock time, and CPU time (user + system, every thread and
# process), which stays meaningful when other work shares the machine.
#
#   bench/cache-vs-vipsthumbnail.sh [BUILD_DIR]      (default: build)
#
# TESSARY_BENCH_CASE=BM_BrowserThumbnailsCold compares the browser's cold thumbnails (256 pixels)
# instead; TESSARY_BENCH_PHOTO_COUNT and TESSARY_BENCH_PHOTO_SIZE ask for another set of photos
# (1000 and 2310x1732 for a thousand photos of 4 megapixels).
#
# The photos are made by tessary-bench the first time, in $TESSARY_BENCH_PHOTOS (default: a
# folder in the temporary folder). vipsthumbnail comes with TESSARY_BENCH_TOOLS=1
# scripts/install-deps.sh.
set -eu

build=${1:-build}
bench="$build/bin/tessary-bench"
[ -x "$bench" ] || { echo "$0: $bench is missing; build first" >&2; exit 1; }
command -v vipsthumbnail >/dev/null || { echo "$0: vipsthumbnail is missing (TESSARY_BENCH_TOOLS=1 scripts/install-deps.sh)" >&2; exit 1; }
[ -x /usr/bin/time ] || { echo "$0: /usr/bin/time is missing (Debian package time)" >&2; exit 1; }

TESSARY_BENCH_PHOTOS=${TESSARY_BENCH_PHOTOS:-${TMPDIR:-/tmp}/tessary-bench-photos}
export TESSARY_BENCH_PHOTOS
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

# Tessary: a cold cache, two decoding threads, the mean of three fills. The cache's log lines
# are switched off.
bench_case=${TESSARY_BENCH_CASE:-BM_ImageCacheColdFill}
QT_LOGGING_RULES="tessary.info=false" "$bench" --benchmark_filter="$bench_case/2/" \
    --benchmark_format=csv >"$out/tessary.csv" 2>"$out/tessary.log"
line=$(grep "^\"$bench_case/2" "$out/tessary.csv" || true)
[ -n "$line" ] || { echo "$0: the benchmark did not run:" >&2; cat "$out/tessary.log" >&2; exit 1; }
# name,iterations,real_time,cpu_time,time_unit,bytes_per_second,items_per_second,label,...
tessary_ms=$(echo "$line" | cut -d, -f3)
tessary_cpu=$(echo "$line" | cut -d, -f4)
size=$(echo "$line" | cut -d, -f8 | tr -d '"')

# vipsthumbnail: the same files, two processes, each writing its thumbnails in vips' own
# format (no compression) so encoding costs next to nothing, as keeping a copy in memory does.
# Run as it comes (each process also starts worker threads of its own) and with one thread per
# process, which matches Tessary's two decoding threads on a busy machine.
# Prints "wall-ms cpu-ms", each the mean of three runs.
run_vips() {
    wall=0
    cpu=0
    for run in 1 2 3; do
        rm -f "$out"/*.v
        start=$(date +%s%N)
        ls "$TESSARY_BENCH_PHOTOS"/photo-*.jpg |
            /usr/bin/time -f '%U %S' -o "$out/time.txt" xargs -P2 -n25 vipsthumbnail --size "$size" -o "$out/%s.v"
        end=$(date +%s%N)
        wall=$(( wall + (end - start) / 1000000 ))
        cpu=$(awk -v c="$cpu" '{ printf "%d", c + ($1 + $2) * 1000 }' "$out/time.txt")
    done
    echo "$(( wall / 3 )) $(( cpu / 3 ))"
}
set -- $(run_vips)
vips_ms=$1
vips_cpu=$2
set -- $(VIPS_CONCURRENCY=1 run_vips)
vips1_ms=$1
vips1_cpu=$2
count=$(ls "$out"/*.v | wc -l)
first=$(ls "$out"/*.v | head -n1)
vips_size=$(vipsheader -f width "$first")x$(vipsheader -f height "$first")

echo "photos:        $count x $(vipsheader -f width "$TESSARY_BENCH_PHOTOS/photo-00.jpg")x$(vipsheader -f height "$TESSARY_BENCH_PHOTOS/photo-00.jpg") JPEG in $TESSARY_BENCH_PHOTOS"
echo "Tessary ($bench_case): wall ${tessary_ms} ms, CPU ${tessary_cpu} ms (2 threads, mean of 3), copies of $size"
echo "vipsthumbnail: wall ${vips_ms} ms, CPU ${vips_cpu} ms (2 processes, mean of 3), thumbnails of $vips_size"
echo "  one thread each (VIPS_CONCURRENCY=1): wall ${vips1_ms} ms, CPU ${vips1_cpu} ms"
awk -v t="$tessary_ms" -v v="$vips_ms" -v tc="$tessary_cpu" -v vc="$vips_cpu" -v v1="$vips1_ms" \
    'BEGIN { printf "ratio Tessary / vipsthumbnail: wall %.2f (%.2f against one thread each), CPU %.2f\n", t / v, t / v1, tc / vc }'
