#!/usr/bin/env bash
# Installs what is missing, builds Tessary and starts it. Arguments go to the program (image
# files to add to the photo list).
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
build=${TESSARY_BUILD_DIR:-build}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" --parallel "$(nproc)"
exec "$build/bin/tessary" "$@"
