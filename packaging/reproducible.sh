#!/bin/sh
# reproducible.sh BUILD: builds the packages again, from a copy of the sources in other folders and with
# another umask, time zone and language, and compares the results. BUILD is the first build;
# SOURCE_DATE_EPOCH must have the same value as there. Takes as long as that build.
set -eu
: "${SOURCE_DATE_EPOCH:?}"
source=$(cd "$(dirname "$0")/.." && pwd)
first=$(cd "$1" && pwd)

room=$(mktemp -d)
trap 'rm -rf "$room"' EXIT
again=$room/a/longer/way/to/the/build
copy=$room/copy

umask 027
export TZ=Pacific/Kiritimati LC_ALL=C.UTF-8
mkdir "$copy"
(cd "$source" && tar --exclude=./.git --exclude='./build*' -cf - .) | tar -xmf - -C "$copy"
(
  cd "$copy"
  cmake --preset package -B "$again"
  cmake --build "$again"
  cd "$again"
  umask 022 # as for the first packages: CPack stores the resulting modes in them
  cpack
) >"$room/log" 2>&1 || {
  cat "$room/log"
  exit 1
}

results() {
  cd "$1" && ls aggregator/librngaggregator.so.*.*.* combine/librngcombine.so.*.*.* tools/rngctl/rngctl plugins/*/librng*.so \
    openssl/rngaggregator.so openssl/rng-openssl-draw helpers/*/rng-gather-* ./*.deb
}

(results "$first") >"$room/results"
(results "$again") | diff "$room/results" - || { echo "one build has other files than the other"; exit 1; }
while read -r file; do
  cmp "$first/$file" "$again/$file"
done <"$room/results"
echo "Built twice, in different folders: library, tool, plug-ins, helpers and packages are identical," \
  "$(wc -l <"$room/results") files."
