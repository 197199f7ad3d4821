#!/usr/bin/env bash
# Builds the benchmarks, runs them one after the other and prints one table; ends with 1 when a limit was exceeded.
# Usage: bench/run.sh [BUILD-FOLDER], build/native unless told otherwise.
set -u
cd "$(dirname "$0")/.." || exit 1

folder=${1:-build/native}
programs=(profile_bench tag_tree_bench arm_array_bench info_store_bench error_bench memory_file_bench)
log=$(mktemp)
trap 'rm -f "$log"' EXIT
scripts/setup-peers.sh
{ cmake --preset native -B "$folder" && cmake --build "$folder" --target "${programs[@]}"; } >"$log" 2>&1 ||
  { cat "$log" >&2; exit 1; }

echo "load before: $(cut -d ' ' -f 1-3 /proc/loadavg) on $(nproc) processors"
result=0
for program in "${programs[@]}"; do
  "$folder/bin/$program" || result=1
done
[ "$result" -eq 0 ] && echo "every limit was kept" || echo "a limit was EXCEEDED"
exit "$result"
