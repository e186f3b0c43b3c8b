#!/bin/sh
# false_alarms.sh RNGCTL RUNS: tests the system's generator RUNS times, with small sizes, and fails at the first
# alarm. A perfect source fails fewer than one run in a million.
set -eu
rngctl=$1
runs=$2

log=$(mktemp)
trap 'rm -f "$log"' EXIT
run=0
while [ $run -lt "$runs" ]; do
  for size in 16 100 1000 2500 4096 10000 30000 100000; do
    if ! "$rngctl" test unixdev --restarts 0 -n $size >"$log" 2>&1; then
      echo "run $run, $size bytes:"
      cat "$log"
      exit 1
    fi
    run=$((run + 1))
  done
done
echo "$run runs, no alarm"
