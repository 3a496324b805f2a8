#!/usr/bin/env bash
# Installs what is missing, builds Tessary and its tests, runs every test, then checks the
# Debian package installed into a scratch root.
# Exits non-zero when anything fails.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
build=${TESSARY_BUILD_DIR:-build}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" --parallel "$(nproc)"
export QT_QPA_PLATFORM=offscreen
# The window's soak test runs a minute; CI runs it for 20 seconds.
if [ "${CI:-}" = true ]; then export TESSARY_SOAK_SECONDS=${TESSARY_SOAK_SECONDS:-20}; fi
ctest --test-dir "$build" --output-on-failure --parallel "$(nproc)" --timeout 600
# The Debian package, installed into a scratch root and started from there.
if [ "${TESSARY_SKIP_INSTALL_CHECK:-0}" != 1 ]; then
  TESSARY_BUILD_DIR="$build" ./scripts/install-check.sh
fi
if [ "${TESSARY_SKIP_FUZZ:-0}" != 1 ]; then
  ./scripts/fuzz.sh --smoke
fi
