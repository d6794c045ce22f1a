#!/usr/bin/env bash
# Configures a preset and builds targets of it: scripts/build.sh PRESET [TARGET...]. Says little unless it fails.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

preset=$1
shift
mkdir -p build
log=build/$preset.log
started=$SECONDS
echo "Building ($preset) ..."
if ! { cmake --preset "$preset" -DBUILD_TESTING=ON && cmake --build --preset "$preset" ${1+--target "$@"}; } >"$log" 2>&1; then
  grep -vE '^\[[0-9]+/[0-9]+\] ' "$log" | tail -n 60 >&2
  echo "The build failed; the whole log is in $log." >&2
  exit 1
fi
echo "Built in $((SECONDS - started)) s."
