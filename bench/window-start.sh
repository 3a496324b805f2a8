#!/bin/sh
# The window's start, measured as a person meets it, under a virtual X server:
#  - warm: the 49 factory photos with the image cache from the previous run: time from process
#    start to the first painted main window, and resident memory once every tile shows its
#    photo (median of three starts);
#  - cold: 49 photos of 24 megapixels and an empty cache: time to the first painted window, the
#    longest stall of the main thread while the tiles fill, and the time until every tile shows
#    its photo, beside the photo-list benchmark's cold fill of the same photos (same run).
#  - a thousand: 1,000 photos of 4 megapixels, every one cached: the cache figures of the store
#    (bytes per photo, quit), first paint and the longest stall, and resident memory after the
#    browser scrolled through the list and back (median of three starts).
#
#   bench/window-start.sh [BUILD_DIR [SECTION...]]      (default: build, and warm cold thousand)
set -eu

build=${1:-build}
[ $# -gt 0 ] && shift
sections=${*:-warm cold thousand}
wants() { case " $sections " in *" $1 "*) return 0 ;; esac; return 1; }
for program in tessary tessary-cli tessary-bench; do
    [ -x "$build/bin/$program" ] || { echo "$0: $build/bin/$program is missing; build first" >&2; exit 1; }
done
command -v xvfb-run >/dev/null || { echo "$0: xvfb-run is missing (scripts/install-deps.sh installs it)" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The resources of the build, unless $TESSARY_RESOURCES names others.
export TESSARY_RESOURCES="${TESSARY_RESOURCES:-$PWD/$build/resources}"
export TESSARY_DOCUMENTS="$work/Documents"
export QT_LOGGING_RULES="tessary.info=false"
unset QT_QPA_PLATFORM

# One start of the window, measured by the program's own probe; prints its line of figures.
start_window() {
    rm -f "$work/probe.json"
    TESSARY_PROBE="$work/probe.json" xvfb-run -a -s "-screen 0 1600x1000x24" "$build/bin/tessary" >/dev/null 2>&1 || true
    cat "$work/probe.json"
}
figure() { sed -n "s/.*\"$1\":\([-0-9.e]*\).*/\1/p" | awk '{ printf "%.0f\n", $1 }'; }
median3() { sort -n | sed -n 2p; }

if wants warm; then
    echo "== Warm start, 49 factory photos"
    export TESSARY_DEFAULTS="$work/warm.sqlite"
    start_window >/dev/null # fills the image cache, which is saved at quit
    : >"$work/warm.txt"
    for run in 1 2 3; do start_window >>"$work/warm.txt"; done
    cat "$work/warm.txt"
    echo "first paint, median: $(figure firstPaintMs <"$work/warm.txt" | median3) ms   (goal <= 800 ms)"
    echo "resident memory, median: $(figure residentMB <"$work/warm.txt" | median3) MB   (goal <= 350 MB)"
fi

if wants cold; then
    echo "== Cold start, 49 photos of 24 megapixels"
    export TESSARY_BENCH_PHOTOS="${TESSARY_BENCH_PHOTOS_24MP:-${TMPDIR:-/tmp}/tessary-bench-photos-24mp}"
    export TESSARY_BENCH_PHOTO_SIZE=6000x4000
    fill=$("$build/bin/tessary-bench" --benchmark_filter='BM_ImageCacheColdFill/2/' --benchmark_format=csv 2>/dev/null |
           grep '^"BM_ImageCacheColdFill/2' | cut -d, -f3)
    export TESSARY_DEFAULTS="$work/cold.sqlite"
    "$build/bin/tessary-cli" photos clear >/dev/null
    "$build/bin/tessary-cli" photos add "$TESSARY_BENCH_PHOTOS"/photo-*.jpg >/dev/null
    cold=$(start_window)
    echo "$cold"
    paint=$(echo "$cold" | figure firstPaintMs)
    filled=$(echo "$cold" | figure tilesFilledMs)
    stall=$(echo "$cold" | figure longestStallMs)
    echo "first paint: $paint ms   (goal <= 1000 ms)"
    echo "longest main-thread stall while the tiles fill: $stall ms   (goal <= 100 ms)"
    echo "all tiles filled: $filled ms after process start; photo-list cold fill of the same photos: $fill ms"
    awk -v a="$filled" -v b="$paint" -v f="$fill" 'BEGIN { if (f > 0) printf "filling after first paint / cold fill: %.2f   (goal <= 1.5)\n", (a - b) / f }'
fi

if wants thousand; then
    echo "== 1,000 photos of 4 megapixels, every one cached, the browser scrolled through the list and back"
    export TESSARY_BENCH_PHOTOS="${TESSARY_BENCH_PHOTOS_1000:-${TMPDIR:-/tmp}/tessary-bench-photos-1000}"
    export TESSARY_BENCH_PHOTO_SIZE=2310x1732
    export TESSARY_BENCH_PHOTO_COUNT=1000
    export TESSARY_DEFAULTS="$work/thousand.sqlite"
    # The cache benchmark makes the photos (the first time) and leaves its store with every photo
    # cached; its figures: store bytes per photo, the first save, and a later session's quit.
    TESSARY_BENCH_STORE="$TESSARY_DEFAULTS" "$build/bin/tessary-bench" --benchmark_filter='BM_ImageCacheLongList' 2>/dev/null |
        grep 'BM_ImageCacheLongList' | tr -s ' ' '\n' | grep '=' | sed 's/^/  /'
    "$build/bin/tessary-cli" photos clear >/dev/null
    "$build/bin/tessary-cli" photos add "$TESSARY_BENCH_PHOTOS"/photo-*.jpg >/dev/null
    export TESSARY_PROBE_SCROLL=1
    : >"$work/thousand.txt"
    : >"$work/quit.txt"
    for run in 1 2 3; do
        # The process's whole life, from which the probe's moment of asking to quit is taken.
        rm -f "$work/probe.json"
        TESSARY_PROBE="$work/probe.json" xvfb-run -a -s "-screen 0 1600x1000x24" \
            /usr/bin/time -f %e -o "$work/life.txt" "$build/bin/tessary" >/dev/null 2>&1 || true
        cat "$work/probe.json" >>"$work/thousand.txt"
        awk -v life="$(cat "$work/life.txt")" -v asked="$(figure quitRequestedMs <"$work/probe.json")" \
            'BEGIN { printf "%.0f\n", life * 1000 - asked }' >>"$work/quit.txt"
    done
    cat "$work/thousand.txt"
    echo "quit (from the probe's request to the end of the process), median: $(median3 <"$work/quit.txt") ms   (goal <= 1000 ms)"
    echo "first paint, median: $(figure firstPaintMs <"$work/thousand.txt" | median3) ms   (goal <= 1000 ms)"
    echo "longest stall until the tiles show, median: $(figure longestStallMs <"$work/thousand.txt" | median3) ms   (goal <= 100 ms)"
    echo "resident after scrolling through and back, median: $(figure scrolledResidentMB <"$work/thousand.txt" | median3) MB   (goal <= 600 MB)"
    echo "peak resident, median: $(figure peakResidentMB <"$work/thousand.txt" | median3) MB"
    echo "longest stall while scrolling, median: $(figure scrollStallMs <"$work/thousand.txt" | median3) ms"
    echo "store: $(( $(stat -c %s "$TESSARY_DEFAULTS") / 1024 / 1000 )) KB per photo (file size / 1000)"
fi
