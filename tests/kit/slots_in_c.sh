#!/bin/sh
# slots_in_c.sh SOURCE BUILD: the C code of docs/slots.md compiles as it is written, and its host and its plug-in work
# with an installation of BUILD. Prints what is wrong and fails.
set -eu
unset DISPLAY LD_LIBRARY_PATH DESTDIR
document=$1/docs/slots.md
build=$2

room=$(mktemp -d)
trap 'rm -rf "$room"' EXIT
P=$room/P
cmake --install "$build" --prefix "$P" >/dev/null

block() { # N: the Nth piece of C
  awk -v wanted="$1" '/^```c$/ { inside = ++block == wanted; next } /^```/ { inside = 0 } inside' "$document"
}

compile() { gcc -std=gnu11 -Wall -Wextra -Wpedantic -Werror "$@"; }

cd "$room"
block 1 >rng.h
block 2 >host.c
block 3 >plugin.c
compile host.c -o host -L"$P/lib" -lrngaggregator -Wl,-rpath,"$P/lib"
./host | grep -qE '^[0-9a-f]{64}$' || { echo "the host drew nothing"; exit 1; }
compile -fPIC -shared -fvisibility=hidden plugin.c -o librnggrandmaster.so
"$P/bin/rngctl" check librnggrandmaster.so >log 2>&1 || { cat log; exit 1; }

# The declarations are those of the headers: the same functions, and the same number of slots in the same order.
grep -oE '\(\*[a-zA-Z]+\)' rng.h | tr -d '(*)' | tr '[:upper:]' '[:lower:]' >found
grep -ohE '^  virtual .* [A-Z][A-Za-z]+\(' "$P/include/rngaggregator/provider.h" |
  sed 's/.* \(.*\)(/\1/' | tr '[:upper:]' '[:lower:]' >expected
diff expected found || { echo "the slots differ from those of provider.h"; exit 1; }
grep -oE '[A-Z][A-Za-z]+\(' rng.h | sort >found
sed -n '/^extern "C"/,$p' "$P/include/rngaggregator/aggregator.h" | grep -E '^[a-zA-Z].*;$' | grep -v '^extern' |
  grep -oE '[A-Z][A-Za-z]+\(' | sort >expected
diff expected found || { echo "the functions differ from those of aggregator.h"; exit 1; }
