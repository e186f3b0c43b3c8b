#!/bin/sh
# guide_code.sh SOURCE BUILD: what docs/host-guide.md and docs/plugin-guide.md tell readers to copy works with an
# installation of BUILD. Prints what is wrong and fails.
set -eu
unset DISPLAY LD_LIBRARY_PATH DESTDIR CXXFLAGS LDFLAGS
source=$1
build=$2

room=$(mktemp -d)
trap 'rm -rf "$room"' EXIT
P=$room/P
export P
cmake --install "$build" --prefix "$P" >/dev/null
cp "$build/tests/fake_libs/known_path/whole/libcrypt_known_path.so" "$P/lib"
export RNG_TEST_TREE="$P" PATH="$P/bin:$PATH"
cd "$room"

fail() {
  echo "$*"
  cat log
  exit 1
}

# block GUIDE LANGUAGE PATTERN: the piece of code that contains a line with PATTERN.
block() {
  awk -v language="$2" -v pattern="$3" '
    /^```/ { if (found) printf "%s", code; code = ""; found = 0; inside = $0 == "```" language; next }
    inside { code = code $0 "\n"; if (index($0, pattern)) found = 1 }' "$source/docs/$1.md"
}

run_block() { # PATTERN: of the guide for plug-ins
  commands=$(block plugin-guide sh "$1")
  [ -n "$commands" ] || fail "no commands with $1"
  sh -euc "$commands" >log 2>&1
}

# A draw that waits for a user who is not there ends at its limit.
{
  printf '%s\n' '#include <rngaggregator/aggregator.h>'
  block host-guide cpp GenerateWithin
  cat <<'HOST'
int main() {
  Initialize(nullptr);
  unsigned char bytes[8];
  IRngProvider* const rng = GetRng("dsdr");
  const bool isCancelled = rng && !GenerateWithin(rng, bytes, sizeof bytes, std::chrono::seconds(1));
  const bool isDrawn = GenerateWithin(GetRng("unixdev"), bytes, sizeof bytes, std::chrono::seconds(60));
  ShutDown();
  return isCancelled && isDrawn ? 0 : 1;
}
HOST
} >host.cpp
cp "$build/tests/fake_plugins/breaking/waits_for_user/librngdsdr.so" "$P/lib"
g++ -std=c++11 -Wall -Wextra -Werror -pthread host.cpp -o host -I"$P/include" -L"$P/lib" -lrngaggregator -Wl,-rpath,"$P/lib"
timeout 300 ./host >log 2>&1 || fail "the limit of a draw: $?"

# The host of the README, with its default and without, and what the guide says about sessions.
{
  block ../README cpp rng::Session
  printf '%s\n' '#include <algorithm>' '#include <vector>' 'using Card = int;'
  block host-guide cpp MakeKeyAndDeal | sed 's/  const std::array/  [[maybe_unused]] &/'
} >readme.cpp
g++ -std=c++17 -Wall -Wextra -Werror readme.cpp -o readme -I"$P/include" -L"$P/lib" -lrngaggregator -Wl,-rpath,"$P/lib"
rngctl default set unixdev >log 2>&1 || fail "default set"
./readme >log 2>&1 && grep -qE '^[0-9a-f]{64}$' log || fail "the host of the README"
block host-guide cpp 'DefaultRngInfo choice' >plain.cpp
g++ -std=c++11 -Wall -Wextra -Werror plain.cpp -o plain -I"$P/include" -L"$P/lib" -lrngaggregator -Wl,-rpath,"$P/lib"
./plain || fail "the host without sessions: $?"
rngctl default set sobol >log 2>&1 || fail "default set"
status=0
./readme >log 2>&1 || status=$?
[ $status = 1 ] && grep -q '^The generator "sobol" is not loaded[.] Run' log || fail "without its generator: $status"
rngctl default set "" >log 2>&1 || fail "default set"

# A checked draw of a host.
{
  printf '%s\n' '#include <rngaggregator/aggregator.h>'
  block host-guide cpp CheckedRng | sed '/^IRngProvider/i int main() {\n  Initialize(nullptr);\n  {'
  printf '%s\n' '  }' '  ShutDown();' '}'
} >checked.cpp
g++ -std=c++11 -Wall -Wextra -Werror -pthread checked.cpp -o checked -I"$P/include" -L"$P/lib" -lrngaggregator -Wl,-rpath,"$P/lib"
./checked || fail "a checked draw: $?"

# A combined draw of a host, whose second source fails.
{
  block host-guide cpp CombinedRng
  cat <<'HOST'
int main() {
  Initialize(nullptr);
  unsigned char key[32];
  const bool isDrawn = DrawKey(key, sizeof key);
  ShutDown();
  return isDrawn ? 0 : 7;
}
HOST
} >combined.cpp
# shellcheck disable=SC2046 # words
g++ -std=c++11 -Wall -Wextra -Werror combined.cpp -o combined \
  $(PKG_CONFIG_PATH="$P/lib/pkgconfig" pkg-config --cflags --libs rngcombine) -Wl,-rpath,"$P/lib"
for end in stub:0 failing_device:7; do
  cp "$build/tests/fake_plugins/${end%:*}/librngdsdr.so" "$P/lib"
  status=0
  ./combined || status=$?
  [ $status = "${end#*:}" ] || fail "a combined draw: $status"
done

# With CMake, the target of the combination brings the aggregator, as its pkg-config package does.
cat >CMakeLists.txt <<'PROJECT'
cmake_minimum_required(VERSION 3.25)
project(combined LANGUAGES CXX)
find_package(RngAggregator 1 REQUIRED)
add_executable(combined combined.cpp)
target_link_libraries(combined PRIVATE RngAggregator::combine)
PROJECT
cp "$build/tests/fake_plugins/stub/librngdsdr.so" "$P/lib"
cmake -S . -B combined-build -DCMAKE_PREFIX_PATH="$P" >log 2>&1 && cmake --build combined-build >log 2>&1 ||
  fail "a combined draw with CMake"
combined-build/combined || fail "a combined draw with CMake: $?"

# A host in Python.
block host-guide python GetRng >draw.py
[ "$(wc -l <draw.py)" -le 20 ] || fail "the host in Python is long"
draw_in_python() { LD_LIBRARY_PATH="$P/lib" python3 "$1" >log 2>&1; }
draw_in_python draw.py || fail "a host in Python: $?"
grep -qE '^[0-9a-f]{64}$' log || fail "a host in Python"
cp log first
draw_in_python draw.py || fail "a second host in Python: $?"
# A buffer that is not filled is zero in both.
if cmp -s first log; then fail "two draws in Python are equal"; fi
cp "$build/tests/fake_plugins/failing_device/librngdsdr.so" "$P/lib"
for failure in 'absent|The generator is not usable.' 'dsdr|The draw failed.'; do
  sed "s/unixdev/${failure%|*}/" draw.py >failing.py
  status=0
  draw_in_python failing.py || status=$?
  [ $status = 1 ] && [ "$(cat log)" = "${failure#*|}" ] || fail "a host in Python that fails: $status"
done

# The health tests of raw noise.
{
  block plugin-guide cpp RngHealthTest
  cat <<'NOISE'
#include <cstring>
bool Noise::ReadDevice(unsigned char* bytes, std::size_t size) {
  static unsigned char isStuck = 0;
  std::memset(bytes, 0, size);
  for (std::size_t i = 0; i < size && !isStuck; ++i) bytes[i] = static_cast<unsigned char>(i % 251);
  isStuck = 1;
  return true;
}
int main() {
  Noise noise;
  unsigned char bytes[600];
  return noise.Read(bytes, sizeof bytes) && !noise.Read(bytes, sizeof bytes) ? 0 : 1;
}
NOISE
} >noise.cpp
g++ -std=c++11 -Wall -Wextra -Werror -pthread noise.cpp -o noise -I"$P/include"
./noise || fail "the tests of raw noise: $?"

# A plug-in is found, debugged and examined in the folder of its build.
cp -r "$source/examples/minimal-plugin/." .
cmake -S . -B build -DCMAKE_PREFIX_PATH="$P" >log && cmake --build build >log
run_block 'rngctl read grandmaster' || fail "LD_LIBRARY_PATH"
grep -q '^grandmaster ' log && grep -qE '^[0-9a-f]{64}$' log || fail "LD_LIBRARY_PATH"
run_block jq || fail "check --json"
grep -q '^not-examined: device-report$' log || fail "check --json"

# The sanitizer's finding fails a check.
run_block LD_PRELOAD || [ "$(grep '^failed ' log | cut -c 1-26)" = 'failed        load-cycles ' ] || fail "sanitizer"
sed -i 's/bool Generate(.*{/&\n    delete[] (new char[1] + size \/ 32);/' grandmaster_rng.cpp
if run_block LD_PRELOAD; then fail "the sanitizer found nothing"; fi
grep -q 'ERROR: AddressSanitizer' log || fail "not by the sanitizer"
