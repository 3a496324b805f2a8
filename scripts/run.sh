#!/usr/bin/env bash
# Installs what is missing, builds Tessary and starts it. Arguments go to the program.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
build=${TESSARY_BUILD_DIR:-build}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" --parallel "$(nproc)"
if [ -x "$build/bin/tessary" ]; then
  exec "$build/bin/tessary" "$@"
fi
# Until the window lands, show what the command line can do.
if [ $# -eq 0 ]; then
  "$build/bin/tessary-cli" --help
  echo
  echo "== The user defaults store (tessary-cli defaults read):"
  exec "$build/bin/tessary-cli" defaults read
fi
exec "$build/bin/tessary-cli" "$@"
