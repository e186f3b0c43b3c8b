#!/bin/sh
# dieharder.sh RNGCTL KIND: runs all tests of dieharder on a generator, and fails if one of them does.
# A perfect generator fails a test with a probability of one in a million. Takes an hour or more.
set -eu
rngctl=$1
kind=$2

log=$(mktemp)
trap 'rm -f "$log"' EXIT
# rngctl stops when dieharder has all the bytes that it needs and closes the pipe.
"$rngctl" read "$kind" --unchecked --raw -n 1000000000000 2>/dev/null | dieharder -a -g 200 | tee "$log"
grep -q PASSED "$log" || { echo "dieharder ran no tests"; exit 1; }
if grep FAILED "$log"; then exit 1; fi
