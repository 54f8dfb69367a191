#!/bin/sh
# run.sh PROGRAMS CORPUS SECONDS HARNESS...: fuzzes with each harness for so long, beginning with its kept inputs; an
# input that finds something is kept in build/findings, and the line that runs it again is printed.
set -eu
programs=$1 corpus=$2 seconds=$3
shift 3
export ASAN_OPTIONS=allocator_may_return_null=1:detect_leaks=1
mkdir -p build/findings
for harness in "$@"; do
  mkdir -p "build/inputs/$harness"
  log=build/inputs/$harness.log
  if ! "$programs/fuzz_$harness" -max_total_time="$seconds" -max_len=600 -timeout=20 -rss_limit_mb=4096 \
    -print_final_stats=1 -artifact_prefix="build/findings/$harness-" \
    "build/inputs/$harness" "$corpus/$harness" >"$log" 2>&1; then
    tail -n 60 "$log"
    found=$(ls -t build/findings/"$harness"-* | head -n 1)
    echo "$harness has found something. Again: $programs/fuzz_$harness $found"
    exit 1
  fi
  echo "$harness: $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") inputs in $seconds s"
done
