#!/bin/sh
# An A4 PDF at 300 dpi of the 49 factory photos (the template shown at first start):
#  - from the command line: wall time and peak resident memory of tessary-cli (median of three);
#  - from the result window: Export PDF… timed in process, with the longest main-thread stall
#    while the page is rendered and written and the most processor time the main thread spent
#    on its own in one tick (and the peak resident memory of that process, the window and its
#    collage included).
#
#   bench/page-pdf.sh [BUILD_DIR]      (default: build)
set -eu

build=${1:-build}
for program in tessary-cli tessary-bench; do
    [ -x "$build/bin/$program" ] || { echo "$0: $build/bin/$program is missing; build first" >&2; exit 1; }
done
[ -x /usr/bin/time ] || { echo "$0: /usr/bin/time is missing (TESSARY_BENCH_TOOLS=1 scripts/install-deps.sh)" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TESSARY_RESOURCES="$PWD/$build/resources"
export TESSARY_DEFAULTS="$work/defaults.sqlite"
photos=$(for i in $(seq 0 48); do printf '%s ' "$TESSARY_RESOURCES/images-$i.jpg"; done)

figures() { # seconds and MB from /usr/bin/time -v
    awk -F': ' '/Elapsed \(wall clock\)/ { n = split($2, t, ":"); s = t[n] + (n > 1 ? 60 * t[n-1] : 0) }
                /Maximum resident set size/ { mb = $2 / 1024 }
                END { printf "%.2f s, %.0f MB peak resident\n", s, mb }' "$1"
}

echo "== tessary-cli render --page A4 (300 dpi), 49 factory photos"
: >"$work/cli.txt"
for run in 1 2 3; do
    # shellcheck disable=SC2086
    /usr/bin/time -v -o "$work/time.txt" "$build/bin/tessary-cli" render --builtin 298 $photos --page A4 \
        -o "$work/a4.pdf" >"$work/out.txt"
    figures "$work/time.txt" >>"$work/cli.txt"
done
cat "$work/out.txt"
sort -n "$work/cli.txt" | sed -n 2p | sed 's/^/median: /'
if command -v pdfimages >/dev/null; then pdfimages -list "$work/a4.pdf" | sed -n 3p; fi

echo "== Export PDF… from the result window (A4, 300 dpi)"
QT_QPA_PLATFORM=offscreen /usr/bin/time -v -o "$work/time.txt" "$build/bin/tessary-bench" \
    --benchmark_filter=BM_ExportPdfA4At300Dpi 2>/dev/null | grep BM_
figures "$work/time.txt" | sed 's/^/whole benchmark process: /'
