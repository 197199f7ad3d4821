#!/usr/bin/env bash
# suite.sh PRESET COUNTS: configures, builds and tests one preset; appends "passed failed skipped" to the file COUNTS.
# Exit status 0 when everything passed.
set -u
cd "$(dirname "$0")/.." || exit 1
preset=$1
counts=$2
build=build/$preset

configure_log=$build/configure.log
mkdir -p "$build"
echo "== $preset: configuring and building (minutes the first time; the log is in $build/build.log)"
if ! cmake --preset "$preset" >"$configure_log" 2>&1; then
  tail -n 30 "$configure_log"
  echo "0 1 0" >>"$counts"
  exit 1
fi
grep -E '^-- KorUtil:' "$configure_log"
if ! cmake --build --preset "$preset" >"$build/build.log" 2>&1; then
  grep -E -A 12 'FAILED|error:|Error' "$build/build.log" | head -n 60
  echo "0 1 0" >>"$counts"
  exit 1
fi

echo "== $preset: testing"
rm -rf "$build/test-results" "$build/ctest.xml"
ctest --preset "$preset" --output-junit "$PWD/$build/ctest.xml"
status=$?

# CTest counts programs; the cases inside a GoogleTest program stand in the program's own report.
awk '
  function attribute(name,   at) {
    if (!match($0, name "=\"[^\"]*\"")) return ""
    at = substr($0, RSTART, RLENGTH)
    sub(/^[^"]*"/, "", at); sub(/"$/, "", at)
    return at
  }
  /<testcase / {
    name = attribute("name"); state = attribute("status")
    if (name ~ /^wine\./) { if (state != "run") failed++; next }
    report = results "/" name ".xml"; tests = -1; bad = 0; skip = 0
    while ((getline line < report) > 0) {
      if (line ~ /<testsuites /) {
        tests = line; sub(/.* tests="/, "", tests); sub(/".*/, "", tests)
        bad = line; sub(/.* failures="/, "", bad); sub(/".*/, "", bad)
        off = line; sub(/.* disabled="/, "", off); sub(/".*/, "", off)
        skip += off
      }
      if (line ~ /<skipped /) skip++
    }
    close(report)
    if (tests >= 0) {
      passed += tests - bad - skip; failed += bad; skipped += skip
      if (state == "fail" && bad == 0) failed++
    } else if (state == "run") passed++
    else if (state == "notrun" || state == "disabled") skipped++
    else failed++
  }
  END { print passed + 0, failed + 0, skipped + 0 }
' results="$build/test-results" "$build/ctest.xml" >"$build/counts"
read -r passed failed skipped <"$build/counts"
if [ "$status" -ne 0 ] && [ "$failed" -eq 0 ]; then failed=1; fi
echo "$passed $failed $skipped" >>"$counts"
echo "== $preset: $passed passed, $failed failed, $skipped skipped"
[ "$failed" -eq 0 ]
