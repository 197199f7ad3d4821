#!/usr/bin/env bash
# Sets up what is missing, builds the native release, and runs the main job on a real measurement set-up.
set -eu
cd "$(dirname "$0")"
scripts/setup-native.sh
log=build/native/build.log
mkdir -p build/native
echo "Building (the log is in $log) ..."
if ! { cmake --preset native && cmake --build --preset native --target korutil; } >"$log" 2>&1; then
  tail -n 30 "$log" >&2
  echo "run.sh: the build failed; the whole log is in $log" >&2
  exit 1
fi
exec examples/measurement.sh build/native/bin/korutil
