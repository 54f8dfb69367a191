#!/bin/sh
# soak.sh BUILD SECONDS: everything at once, round after round, until the time is over: processes and threads on one
# registry, processes that are killed, watchers, the tool that compacts beside them, and the tool's own test with full
# disks and damaged files. Ends at the first finding, and prints the line that runs it again.
set -eu
build=$1 seconds=$2
end=$(($(date +%s) + seconds))
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
rounds=0

# Runs a part until the time is over; a finding is left in the folder.
repeat() {
  name=$1
  shift
  while [ "$(date +%s)" -lt "$end" ] && [ ! -e "$folder/found" ]; do
    if "$@" >"$folder/$name.log" 2>&1; then
      echo 1 >>"$folder/$name.rounds"
    else
      cp "$folder/$name.log" "$folder/found.$name"
      echo "$*" >>"$folder/found"
    fi
  done
}

mkdir "$folder/device"
repeat processes "$build/tests/yax_process_tests" --gtest_filter='-DamagedJournal.*' &
repeat journal "$build/tests/yax_process_tests" --gtest_filter='DamagedJournal.*' &
repeat selftest "$build/tools/yaxreg/yaxreg" selftest "$folder/device" --time 30 &
repeat tool "$build/tests/yaxreg_tests" --gtest_filter='SharedTool.*' &
wait

if [ -e "$folder/found" ]; then
  cat "$folder"/found.*
  echo "A part has found something. Again:"
  cat "$folder/found"
  exit 1
fi
for name in processes journal selftest tool; do
  rounds=$(wc -l <"$folder/$name.rounds" 2>/dev/null || echo 0)
  echo "$name: $rounds rounds, nothing found"
done
