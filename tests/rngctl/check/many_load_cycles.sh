#!/bin/sh
# many_load_cycles.sh RNGCTL PLUGIN RUNS: makes the check load-cycles that often on a plug-in that has
# from 1 to 64 threads and leaks nothing. Fails if a run reports growth, or if few runs have enough time.
set -eu
rngctl=$1
plugin=$2
runs=$3
results=$(mktemp)
trap 'rm -f "$results"' EXIT

# shellcheck disable=SC2016 # the inner shell expands these
seq "$runs" | xargs -P 2 -n 1 sh -c '
  rngctl=$1 plugin=$2
  set -- $(($3 % 10)) 1 2 3 4 5 8 12 16 32 64
  shift "$1"
  RNG_FAKE_THREADS=$2 "$rngctl" check --only load-cycles --timeout 1 "$plugin" 2>&1 |
    sed "s/^/$2 threads: /"
' one "$rngctl" "$plugin" >"$results"

passed=$(grep -c '^[0-9]* threads: passed ' "$results" || true)
unexamined=$(grep -c '^[0-9]* threads: not examined ' "$results" || true)
echo "$runs runs: $passed passed, $unexamined had too little time"
if [ $((passed + unexamined)) -ne "$runs" ] || [ $((passed * 10)) -lt "$runs" ]; then
  grep -v -e ' threads: passed ' -e ' threads: $' "$results" | head -n 20
  exit 1
fi
