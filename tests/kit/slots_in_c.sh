#!/bin/sh
# slots_in_c.sh SOURCE BUILD: the plug-in in C of docs/slots.md works as it is written, with an installation of BUILD,
# and the header for C lacks nothing that those for C++ have. Prints what is wrong and fails.
set -eu
LC_ALL=C
export LC_ALL
unset DISPLAY LD_LIBRARY_PATH DESTDIR
document=$1/docs/slots.md
build=$2

room=$(mktemp -d)
trap 'rm -rf "$room"' EXIT
P=$room/P
cmake --install "$build" --prefix "$P" >/dev/null
cd "$room"

awk '/^```c$/ { inside = 1; next } /^```/ { inside = 0 } inside' "$document" >plugin.c
gcc -std=gnu11 -Wall -Wextra -Wpedantic -Werror -fPIC -shared -fvisibility=hidden -Wl,-z,defs,-z,now \
  -I"$P/include" plugin.c -o librnggrandmaster.so
"$P/bin/rngctl" check librnggrandmaster.so >log 2>&1 || { cat log; exit 1; }

# names PATTERN HEADER: what the pattern finds in this header.
names() { grep -oP "$1" "$P/include/rngaggregator/$2" | sort; }

# same WHAT PATTERN_IN_C HEADER PATTERN: the header for C has the names that this one for C++ has, among others.
same() {
  names "$2" aggregator_c.h >in_c
  names "$4" "$3" >in_cxx
  [ -s in_cxx ] || { echo "found none of the $1 of $3"; exit 1; }
  comm -13 in_c in_cxx >missing
  [ ! -s missing ] || { echo "missing $1 of $3:"; cat missing; exit 1; }
}

for header in aggregator.h provider.h; do
  same constants '(?<=^#define )k\w+' $header '^constexpr std::(size_t|uint32_t) \Kk\w+'
done
same variables '^extern const char\* \Krng\w+' aggregator.h '^extern const char\* \Krng\w+'
same operations '^  .*\(\*\K\w+(?=\))' provider.h '^  virtual .* \*?\K\w+(?=\()'
same functions '^(?!typedef|extern|#)\w.* \*?\K[A-Z]\w+(?=\(.*;)' aggregator.h '^(?!extern|#)\w.* \*?\K[A-Z]\w+(?=\(.*;)'
