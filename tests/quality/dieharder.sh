#!/bin/sh
# dieharder.sh RNGCTL KIND: runs all tests of dieharder over a generator, and fails if it fails one of them.
# A perfect one fails a test with a probability of one in a million. Takes an hour or more.
set -eu
rngctl=$1
kind=$2

log=$(mktemp)
trap 'rm -f "$log"' EXIT
# It takes as many bytes as it needs. Then the generator cannot write any more, and stops.
"$rngctl" read "$kind" --unchecked --raw -n 1000000000000 2>/dev/null | dieharder -a -g 200 | tee "$log"
grep -q PASSED "$log" || { echo "dieharder made no tests"; exit 1; }
if grep FAILED "$log"; then exit 1; fi
