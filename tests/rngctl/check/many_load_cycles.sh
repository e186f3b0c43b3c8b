#!/bin/sh
# many_load_cycles.sh RNGCTL PLUGIN RUNS [SECONDS]: runs the check load-cycles RUNS times on a plug-in that has 1 to 64
# threads and leaks nothing. SECONDS is the time limit; the default is 1. If fewer than a tenth of the runs pass
# because the machine is busy, more runs get a minute each. Fails if a run reports growth, or if still fewer pass.
set -eu
rngctl=$1
plugin=$2
runs=$3
seconds=${4-1}
results=$(mktemp)
trap 'rm -f "$results"' EXIT

# check COUNT SECONDS
check() {
  # shellcheck disable=SC2016 # the inner shell expands these
  seq "$1" | xargs -P 2 -n 1 sh -c '
    rngctl=$1 plugin=$2 seconds=$3
    set -- $(($4 % 10)) 1 2 3 4 5 8 12 16 32 64
    shift "$1"
    RNG_FAKE_THREADS=$2 "$rngctl" check --only load-cycles --timeout "$seconds" "$plugin" 2>&1 |
      sed "s/^/$2 threads: /"
  ' one "$rngctl" "$plugin" "$2" >>"$results"
}

count() {
  grep -c "^[0-9]* threads: $1 " "$results" || true
}

least=$((runs / 10))
check "$runs" "$seconds"
missing=$((least - $(count passed)))
if [ "$missing" -gt 0 ]; then
  check "$missing" 60
  runs=$((runs + missing))
fi
passed=$(count passed)
unexamined=$(count 'not examined')
echo "$runs runs: $passed passed, $unexamined had too little time"
if [ $((passed + unexamined)) -ne "$runs" ] || [ "$passed" -lt "$least" ]; then
  grep -v -e ' threads: passed ' -e ' threads: $' "$results" | head -n 20
  exit 1
fi
