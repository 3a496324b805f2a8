#!/usr/bin/env bash
# Builds the fuzz targets with clang, libFuzzer and AddressSanitizer and runs each on its seed
# corpus.
#   scripts/fuzz.sh --smoke        a bounded number of runs per target, at most a minute each
#                                  (what the tests run)
#   scripts/fuzz.sh --seconds N    N seconds per target (default 300), for a longer hunt
#   scripts/fuzz.sh ... NAME...    only the named targets (e.g. fuzz_property_list)
set -euo pipefail
cd "$(dirname "$0")/.."
mode=seconds; seconds=300; runs=${TESSARY_FUZZ_RUNS:-50000}; targets=()
while [ $# -gt 0 ]; do
  case "$1" in
    --smoke) mode=smoke ;;
    --seconds) seconds=$2; shift ;;
    *) targets+=("$1") ;;
  esac
  shift
done
build=${TESSARY_FUZZ_BUILD_DIR:-build-fuzz}
cmake -S . -B "$build" -G Ninja -DTESSARY_FUZZ=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_COMPILER=clang++-14 >/dev/null
cmake --build "$build" --parallel "$(nproc)" >/dev/null
if [ ${#targets[@]} -eq 0 ]; then
  for f in "$build"/fuzz/fuzz_*; do
    [ -f "$f" ] && [ -x "$f" ] && targets+=("$(basename "$f")")
  done
fi
logs="$build/logs"; mkdir -p "$logs"
# Decoders warn on every malformed input; the fuzz logs only need the findings.
export QT_QPA_PLATFORM=offscreen ASAN_OPTIONS=detect_leaks=0 QT_LOGGING_RULES="*=false"
status=0
for t in "${targets[@]}"; do
  corpus=tests/fuzz/corpus/${t#fuzz_}
  work=$(mktemp -d)
  [ -d "$corpus" ] && cp -r "$corpus"/. "$work"/
  if [ "$mode" = smoke ]; then
    args=(-runs="$runs" -max_total_time="${TESSARY_FUZZ_SMOKE_SECONDS:-60}")
  else
    args=(-max_total_time="$seconds")
  fi
  if "$build/fuzz/$t" "${args[@]}" -max_len=65536 -rss_limit_mb=2048 -timeout=20 \
       -artifact_prefix="$logs/$t-" "$work" >"$logs/$t.log" 2>&1; then
    echo "fuzz: $t: $(grep -Eo '#[0-9]+' "$logs/$t.log" | tail -1 | tr -d '#') runs, no findings"
  else
    echo "fuzz: $t: FAILED (see $logs/$t.log)"; tail -30 "$logs/$t.log"; status=1
  fi
  rm -rf "$work"
done
exit $status
