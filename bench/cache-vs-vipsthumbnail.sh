#!/bin/sh
# Fills Tessary's image cache from 49 synthetic 12-megapixel JPEGs and makes thumbnails of the
# same files to the same half-megapixel bound with vipsthumbnail in two processes, then prints
# both wall-clock times and their ratio.
#
#   bench/cache-vs-vipsthumbnail.sh [BUILD_DIR]      (default: build)
#
# The photos are made by tessary-bench the first time, in $TESSARY_BENCH_PHOTOS (default: a
# folder in the temporary folder). vipsthumbnail comes with TESSARY_BENCH_TOOLS=1
# scripts/install-deps.sh.
set -eu

build=${1:-build}
bench="$build/bin/tessary-bench"
[ -x "$bench" ] || { echo "$0: $bench is missing; build first" >&2; exit 1; }
command -v vipsthumbnail >/dev/null || { echo "$0: vipsthumbnail is missing (TESSARY_BENCH_TOOLS=1 scripts/install-deps.sh)" >&2; exit 1; }

TESSARY_BENCH_PHOTOS=${TESSARY_BENCH_PHOTOS:-${TMPDIR:-/tmp}/tessary-bench-photos}
export TESSARY_BENCH_PHOTOS
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT

# Tessary: a cold cache, two decoding threads, the mean of three fills. The cache logs every
# photo it adds; that goes to a file.
QT_LOGGING_RULES="tessary.info=false" "$bench" --benchmark_filter='BM_ImageCacheColdFill/2/' \
    --benchmark_format=csv >"$out/tessary.csv" 2>"$out/tessary.log"
line=$(grep '^"BM_ImageCacheColdFill/2' "$out/tessary.csv")
# name,iterations,real_time,cpu_time,time_unit,bytes_per_second,items_per_second,label,...
tessary_ms=$(echo "$line" | cut -d, -f3)
size=$(echo "$line" | cut -d, -f8 | tr -d '"')
[ -n "$size" ] || { echo "$0: the benchmark did not run:" >&2; cat "$out/tessary.log" >&2; exit 1; }

# vipsthumbnail: the same files, two processes, each writing its thumbnails in vips' own
# format (no compression) so encoding costs next to nothing, as keeping a copy in memory does.
for run in 1 2 3; do
    rm -f "$out"/*.v
    start=$(date +%s%N)
    ls "$TESSARY_BENCH_PHOTOS"/photo-*.jpg | xargs -P2 -n25 vipsthumbnail --size "$size" -o "$out/%s.v"
    end=$(date +%s%N)
    ms=$(( (end - start) / 1000000 ))
    total=$(( ${total:-0} + ms ))
done
vips_ms=$(( total / 3 ))
count=$(ls "$out"/*.v | wc -l)
first=$(ls "$out"/*.v | head -n1)
vips_size=$(vipsheader -f width "$first")x$(vipsheader -f height "$first")

echo "photos:        $count x 4000x3000 JPEG in $TESSARY_BENCH_PHOTOS"
echo "Tessary cache: ${tessary_ms} ms (2 threads, mean of 3), copies of $size"
echo "vipsthumbnail: ${vips_ms} ms (2 processes, mean of 3), thumbnails of $vips_size"
awk -v t="$tessary_ms" -v v="$vips_ms" 'BEGIN { printf "ratio Tessary / vipsthumbnail: %.2f\n", t / v }'
