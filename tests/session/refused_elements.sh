#!/bin/sh
# refused_elements.sh COMPILER INCLUDE: what must not be filled with random bytes does not compile, and the compiler
# says why. What may be filled does, in C++17.
set -eu
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

cat >"$folder/refused.cpp" <<'SOURCE'
#include <rngaggregator/session.h>
#include <vector>
struct Padded { char byte; int number; };
void Refuse(const rng::Generator& generator) {
  const unsigned char constants[4] = {};
  generator.Fill(constants);                      // line 6
  std::array<std::string, 2> texts;
  generator.Fill(texts);                          // line 8
  std::vector<Padded> structures(2);
  generator.Fill(structures);                     // line 10
  bool flags[2];
  generator.Fill(flags);                          // line 12
  char* pointers[2];
  generator.Fill(pointers);                       // line 14
  unsigned char rows[2][2];
  generator.Fill(rows);                           // line 16
  int number = 0;
  generator.Fill(&number, sizeof number);         // line 18
}
SOURCE
cat >"$folder/accepted.cpp" <<'SOURCE'
#include <rngaggregator/session.h>
#include <algorithm>
#include <random>
#include <vector>
int Accept(const rng::Generator& generator) {
  unsigned char bytes[4];
  std::vector<std::byte> more(4);
  generator.Fill(bytes);
  generator.Fill(more);
  generator.Fill(more.data(), more.size());
  rng::Engine engine(generator);
  std::shuffle(bytes, bytes + 4, engine);
  return std::uniform_int_distribution<int>(1, 6)(engine);
}
SOURCE
compiler=$1
include=$2
compile() { # SOURCE OPTION...
  source=$1
  shift
  "$compiler" "$@" -Wall -Wextra -Wpedantic -Wconversion -Werror -fsyntax-only -I "$include" \
    "$folder/$source.cpp" 2>"$folder/log"
}

for standard in c++17 c++20; do
  compile accepted -std=$standard || { cat "$folder/log"; exit 1; }
done
compile accepted -std=c++17 -fno-rtti || { cat "$folder/log"; exit 1; }
compile accepted -std=c++17 -fno-exceptions && exit 1
# The first error, before what follows from it.
grep -m 1 error "$folder/log" | grep -q 'needs exceptions. Compile without' || { cat "$folder/log"; exit 1; }
if compile refused -std=c++17; then
  echo "compiled"
  exit 1
fi
# The compiler names each instantiation with its line.
for line in 6 8 10 12 14 16 18; do
  grep -Eq "refused.cpp:$line:.*(required from|requested) here" "$folder/log" || { echo "line $line:"; cat "$folder/log"; exit 1; }
done
text="Fill needs elements that are integers other than bool, or std::byte, and not const"
[ "$(grep -c "$text" "$folder/log")" -ge 6 ] || { cat "$folder/log"; exit 1; }
