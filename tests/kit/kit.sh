#!/bin/sh
# kit.sh CASE SOURCE BUILD: installs the build into a new folder, moves that to another place, and
# uses it there as a stranger does. Prints what is wrong and fails. The variable PLUGINS lists the plug-ins that
# the build has.
set -eu
LC_ALL=C
export LC_ALL
unset DISPLAY LD_LIBRARY_PATH DESTDIR CMAKE_PREFIX_PATH CXXFLAGS LDFLAGS

case=$1
source=$2
build=$3
fact=$source/tests/abi/binary_fact.sh

room=$(mktemp -d)
trap 'rm -rf "$room"' EXIT
P=$room/moved
export P

fail() {
  echo "$*"
  exit 1
}

install_and_move() {
  cmake --install "$build" --prefix "$room/installed" >/dev/null
  mv "$room/installed" "$P"
  # The default generator is the case's own affair, not the machine's.
  cp "$build/tests/fake_libs/known_path/whole/libcrypt_known_path.so" "$P/lib"
  export RNG_TEST_TREE="$P"
}

# What the plug-ins add to an installation.
installed_plugins() {
  for plugin in $PLUGINS; do sed -n "s/^$plugin //p" "$source/tests/kit/installed_plugins.txt"; done
}

remove_plugins() { installed_plugins | grep '^lib/' | sed "s,^,$P/," | xargs rm; }

# run_block README N: the commands of its Nth block, as they are written.
run_block() {
  commands=$(awk -v wanted="$2" '
    /^```sh$/ { ++block; next }
    /^```$/ { ++block; next }
    block == 2 * wanted - 1' "$1")
  [ -n "$commands" ] || fail "$1 has no block $2"
  sh -euc "$commands" >"$room/log" 2>&1 || fail "$1, block $2: $(cat "$room/log")"
}

# use_example NAME BLOCK: builds a copy of it, and leaves in $room/log what it said.
use_example() {
  cp -r "$source/examples/$1" "$room/$1"
  cd "$room/$1"
  run_block README.md "$2"
}

exports_alone() { # FUNCTION FILE
  echo "T $1" >"$room/symbols"
  "$fact" exports "$2" "$room/symbols"
}

# The examples, built by the given block of their READMEs. The host finds nothing but the plug-in.
examples_work() {
  remove_plugins
  use_example minimal-plugin "$1"
  exports_alone GetGrandmasterRng "$P/lib/librnggrandmaster.so"
  run_block README.md 3
  grep -q '^grandmaster  no  *operating-system  A first plug-in$' "$room/log" ||
    fail "rngctl: $(cat "$room/log")"
  use_example minimal-host "$1"
  tail -n 1 "$room/log" | grep -qE '^[0-9a-f]{64}$' || fail "host: $(cat "$room/log")"
  use_example c-host "$1"
  "$P/bin/rngctl" default set grandmaster >/dev/null
  build/c_host | grep -qE '^[0-9a-f]{64}$' || fail "the host in C drew nothing"
  use_example session-host "$1"  # of the default
  for line in '^[0-9a-f]{64}$' '^from grandmaster, in the order( [1-6]){6}$'; do
    grep -qE "$line" "$room/log" || fail "no $line: $(cat "$room/log")"
  done
}

# host_says SENTENCE: the host built before, which is $host or the minimal one, fails with exactly that.
host_says() {
  status=0
  "${host-$room/minimal-host/minimal_host}" >"$room/log" 2>&1 || status=$?
  [ $status = 1 ] && [ "$(cat "$room/log")" = "$1" ] || fail "$status: $(cat "$room/log")"
}

# begin_project LANGUAGES: a project that finds the package. What follows is appended to it.
begin_project() {
  mkdir "$room/project"
  cd "$room/project"
  cat >CMakeLists.txt <<PROJECT
cmake_minimum_required(VERSION 3.25)
project(stranger LANGUAGES $1)
find_package(RngAggregator 1 REQUIRED)
PROJECT
}

configure() { cmake -S . -B build -DCMAKE_PREFIX_PATH="$P" "$@" >"$room/log" 2>&1; }

# configuring_says SENTENCE: it fails with that, however CMake breaks the lines.
configuring_says() {
  configure && fail "was configured"
  tr -s ' \n' ' ' <"$room/log" | grep -qF "$1" || fail "$(cat "$room/log")"
}

# Each line: what is wrong with a URI, and the URI.
token_uris_are_checked() {
  begin_project CXX
  cp CMakeLists.txt begun
  while IFS='|' read -r sentence kind uri; do
    { cat begun; echo "rng_add_token_plugin(token KIND $kind URI \"$uri\")"; } >CMakeLists.txt
    configuring_says "$sentence"
  done <<'URIS'
does not begin with "pkcs11:"|Rutoken|manufacturer=A
or has more than one "?"|Rutoken|pkcs11:model=A?module-name=B?C
contains "manufacturer=". Write name=value there|Rutoken|pkcs11:manufacturer=
contains "object=A". Write name=value there, where name is one of: manufacturer, model, serial, token|Rutoken|pkcs11:object=A
contains "pin-value=1234". Write name=value there|Rutoken|pkcs11:model=A?pin-value=1234
contains "module-path=/a". Write name=value there|Rutoken|pkcs11:module-path=/a
contains model twice|Rutoken|pkcs11:model=A;model=B
contains module-name twice|Rutoken|pkcs11:?module-name=a&module-name=b
contains "model=01234567890123456". A value of model has at most 16 bytes|Rutoken|pkcs11:model=01234567890123456
contains "serial=01234567890123456". A value of serial has at most 16 bytes|Rutoken|pkcs11:serial=01234567890123456
contains " ". Write special characters as %XX|Rutoken|pkcs11:model=A B
contains "%z". Write special characters as %XX|Rutoken|pkcs11:model=%zz
contains "%4". Write special characters as %XX|Rutoken|pkcs11:model=%4
contains "]". Write special characters as %XX|Rutoken|pkcs11:model=A];pin-value=1234
contains "%00". No text of a token does|Rutoken|pkcs11:model=%00A
contains "%4z". Write special characters as %XX|Rutoken|pkcs11:model=%4z1
is not an absolute path|Rutoken|pkcs11:model=A?module-path=libsofthsm2.so
"unixdev" is not a device. Choose from: accord, sobol|unixdev|pkcs11:model=A
There is no kind "token" of generator|token|pkcs11:model=A
Write rng_add_token_plugin(TARGET KIND kind URI "uri"), with the quotes|Rutoken|
URIS
  { cat begun; echo 'rng_add_token_plugin(token KIND sobol URI
    "pkcs11:manufacturer=A%20%25%410123456789012345678901234567;model=0123456789%41%42%43%44%45%46;serial=0123456789abcdef;token=01234567890123456789012345678901?module-name=m&module-path=%2Fa/b-c.so")
  foreach(kind accord JacartaGost Rutoken EsmartGost grandmaster biocore)
    rng_add_token_plugin(token_${kind} KIND ${kind} URI "pkcs11:")
    set_target_properties(token_${kind} PROPERTIES EXCLUDE_FROM_ALL ON)
  endforeach()'; } >CMakeLists.txt
  { configure && cmake --build build >"$room/log" 2>&1; } || fail "$(cat "$room/log")"
  exports_alone 'GetRngReport
T GetSobolRng' build/librngsobol.so
}

write_plugin() { # FILE FACTORY
  cat >"$1" <<SOURCE
#include <rngaggregator/provider.h>
// Without the right options these would be seen from outside, and the variable be GNU-unique.
int Unmarked() { return 0; }
__attribute__((visibility("default"))) inline int& Counter() { static int count; return ++count; }
__attribute__((visibility("default"))) int Stray() { return Counter(); }
extern "C" __attribute__((visibility("default"))) IRngProvider* $2() { return nullptr; }
SOURCE
}

# A plug-in of the kind "sobol" that also reports its devices, and asks itself for them.
write_reporting_plugin() {
  cat >sobol.cpp <<'SOURCE'
#include <rngaggregator/provider.h>
std::int32_t GetRngReport(char*) { return 0; }
static int g_size;
IRngProvider* GetSobolRng() {
  g_size = GetRngReport(nullptr);
  return nullptr;
}
SOURCE
  echo 'rng_add_plugin(sobol SOURCES sobol.cpp)' >>CMakeLists.txt
}

exports_with_report() { # FILE
  printf 'T %s\n' GetRngReport GetSobolRng >"$room/symbols"
  "$fact" exports "$1" "$room/symbols"
}

for_each_kind() { # FUNCTION: called with kind, file and factory
  while read -r kind file factory; do "$1" "$kind" "$file" "$factory"; done <"$room/rows"
}

add_kind() {
  write_plugin "$1.cpp" "$3"
  echo "rng_add_plugin($1 SOURCES $1.cpp)" >>CMakeLists.txt
}

check_kind() {
  [ -f "build/$2" ] || fail "$1: there is no $2"
  exports_alone "$3" "build/$2"
  "$fact" binds_at_load "build/$2"
  # The linker hides everything in any case; the compiler is to know of it.
  target=${2#lib}
  object=build/CMakeFiles/${target%.so}.dir/$1.cpp.o
  "$fact" no_unique_symbols "$object"
  readelf -sW "$object" | grep -q 'HIDDEN .*Unmarked' || fail "$1: not compiled as hidden"
}

install_and_move
"$build/tests/kit/catalogue_rows" >"$room/rows"
[ "$(wc -l <"$room/rows")" = 12 ] || fail "rows: $(cat "$room/rows")"

case $case in
  EveryFileIsInItsPlace)
    rm "$P/lib/libcrypt_known_path.so"
    (installed_plugins && cat "$source/tests/kit/installed_files.txt") | sort >"$room/expected"
    (cd "$P" && find . ! -type d | sed 's,^\./,,' | sort) | diff "$room/expected" - || fail "see above"
    ;;
  InstalledFilesAreHardened)
    for file in bin/rngctl lib/librngaggregator.so.1 lib/ossl-modules/rngaggregator.so \
      libexec/rngaggregator/rng-openssl-draw $(installed_plugins); do
      for hardening in binds_at_load protects_relocations stack_is_data checks_its_stack; do
        "$fact" $hardening "$P/$file"
      done
      "$fact" is_type "$P/$file" DYN
    done
    for file in bin/rngctl lib/librngaggregator.so.1; do
      "$fact" checks_buffers "$P/$file"
    done
    # What the files do not show.
    "$source/tests/kit/compile_flags.py" "$source" "$build" -fstack-protector-strong \
      -fstack-clash-protection -fcf-protection -D_FORTIFY_SOURCE=2
    ;;
  FlagsOfTheEnvironmentAreKept)
    cd "$source"
    CXXFLAGS='-D_FORTIFY_SOURCE=3 -DFROM_THE_ENVIRONMENT' cmake --preset package -B "$room/build" >/dev/null
    "$source/tests/kit/compile_flags.py" "$source" "$room/build" -DFROM_THE_ENVIRONMENT \
      -D_FORTIFY_SOURCE=3 '!-D_FORTIFY_SOURCE=2'
    ;;
  PkgConfigFollowsTheMove)
    export PKG_CONFIG_PATH="$P/lib/pkgconfig"
    for variable in plugindir libdir; do
      folder=$(pkg-config --variable=$variable rngaggregator)
      [ "$(realpath "$folder")" = "$P/lib" ] || fail "$variable: $folder"
    done
    [ -f "$(pkg-config --variable=includedir rngaggregator)/rngaggregator/aggregator.h" ] || fail "no headers"
    version=$(pkg-config --modversion rngaggregator)
    [ -f "$P/lib/librngaggregator.so.$version" ] || fail "version: $version"
    ;;
  PackageNamesNoPlaceOfItsBuild)
    cd "$P/lib"
    cat cmake/RngAggregator/RngAggregatorConfig.cmake pkgconfig/rngaggregator.pc >/dev/null
    if grep -rF -e "$source" -e "$build" -e "$room" cmake pkgconfig; then fail "see above"; fi
    ;;
  PackageServesItsMajorVersionAlone)
    begin_project NONE
    configure || fail "$(cat "$room/log")"
    sed -i 's/RngAggregator 1/RngAggregator 0.9/' CMakeLists.txt
    configuring_says 'compatible with requested version "0.9"'
    ;;
  LinksOfTheGuidesLead) "$source/tests/documents/relative_links.sh" "$P/share/doc/rngaggregator" ;;
  ExamplesBuildWithCMake) examples_work 1 ;;
  ExamplesBuildWithPkgConfig) examples_work 2 ;;
  TokenExampleDraws)
    use_example token-plugin 1
    exports_alone 'GetRngReport
T GetRuTokenRng' "$P/lib/librngrutoken.so"
    run_block README.md 2
    for line in '^Rutoken, device [0-9a-f]{16}: Token "example", model SoftHSM v2$' '^[0-9a-f]{64}$'; do
      grep -qE "$line" "$room/log" || fail "no $line: $(cat "$room/log")"
    done
    export SOFTHSM2_CONF="$PWD/build/softhsm2.conf"
    run_block README.md 3
    grep -q 'serial num *: ' "$room/log" || fail "$(cat "$room/log")"
    ;;
  TokenUriWithAnErrorIsNotBuilt) token_uris_are_checked ;;
  HostSaysWhatItLacks)
    use_example minimal-host 2
    "$P/bin/rngctl" default set grandmaster >/dev/null 2>&1
    host_says 'The default generator "grandmaster" is not usable now.'
    "$P/bin/rngctl" default set "" >/dev/null
    remove_plugins
    host_says 'No generator is usable.'
    # Neither started nor stopped without the lock.
    LD_PRELOAD=$build/tests/fake_libs/refuses_lock.so
    export LD_PRELOAD
    host_says 'refused
A plug-in failed: boost: mutex lock failed in pthread_mutex_lock: Invalid argument'
    ;;
  HostInCDrawsAndSaysWhatItLacks)
    use_example c-host 2
    run_block README.md 3
    tail -n 1 "$room/log" | grep -qE '^[0-9a-f]{64}$' || fail "host in C: $(cat "$room/log")"
    build/c_host >/dev/full 2>"$room/log" && fail "unprinted bytes are no failure"
    grep -qx 'The bytes cannot be printed: No space left on device' "$room/log" || fail "$(cat "$room/log")"
    host=build/c_host
    "$P/bin/rngctl" default set grandmaster >/dev/null 2>&1
    host_says 'The generator "grandmaster" is not usable. To find out why: rngctl doctor grandmaster'
    "$P/bin/rngctl" default set "" >/dev/null
    host_says 'No default generator is configured. Choose one: rngctl default set KIND'
    cp "$build/tests/fake_plugins/failing_device/librngdsdr.so" "$P/lib"
    "$P/bin/rngctl" default set dsdr >/dev/null
    host_says 'The draw failed.'
    "$P/bin/rngctl" default set unixdev absent >/dev/null 2>&1
    host_says 'The generator "unixdev" cannot use the device "absent" now.'
    # C catches nothing.
    cp "$build/tests/fake_plugins/throwing_start/librngdsdr.so" "$P/lib"
    status=0
    build/c_host >"$room/log" 2>&1 || status=$?
    [ $status = 134 ] && grep -q '^terminate called' "$room/log" || fail "$status: $(cat "$room/log")"
    ;;
  ServesAsPartOfAnotherProject) # whose own tests are on
    mkdir "$room/project"
    cd "$room/project"
    cp "$source/examples/minimal-host/minimal_host.cpp" "$source/examples/minimal-plugin/grandmaster_rng.cpp" .
    cat >CMakeLists.txt <<PROJECT
cmake_minimum_required(VERSION 3.25)
project(stranger LANGUAGES CXX)
include(CTest)
include(FetchContent)
FetchContent_Declare(RngAggregator SOURCE_DIR "$source")
FetchContent_MakeAvailable(RngAggregator)
rng_add_plugin(grandmaster SOURCES grandmaster_rng.cpp)
rng_add_token_plugin(token KIND sobol URI "pkcs11:?module-path=/absent")
add_executable(host minimal_host.cpp)
target_link_libraries(host PRIVATE RngAggregator::rngaggregator)
PROJECT
    { configure && cmake --build build >"$room/log" 2>&1; } || fail "$(cat "$room/log")"
    find build -name 'rngctl*' | grep . && fail "the tool was built"
    [ "$(find build -name 'librng*' -printf '%h\n' | sort -u | wc -l)" = 1 ] || fail "not in one folder"
    [ -f build/_deps/rngaggregator-build/lib/librnggrandmaster.so ] || fail "no plug-in"
    [ -f build/_deps/rngaggregator-build/lib/librngsobol.so ] || fail "no token plug-in"
    build/host | grep -qE '^[0-9a-f]{64}$' || fail "the host found no generator"
    (cd build && ctest -N) | grep -q '^Total Tests: 0$' || fail "it has our tests"
    ;;
  UninstallRemovesWhatWasInstalled)
    cmake -S "$source" -B "$room/build" -D BUILD_TESTING=OFF -D RNG_PLUGINS=unixdev \
      -D CMAKE_INSTALL_PREFIX="$room/tree" >/dev/null
    cmake --install "$build" --prefix "$room/tree" >/dev/null
    case $PLUGINS in *bio*) [ -d "$room/tree/libexec/rngaggregator" ] || fail "no helpers" ;; esac
    find "$room/tree" ! -type d >"$room/build/install_manifest.txt"
    echo mine >"$room/tree/lib/mine"
    cmake --build "$room/build" --target uninstall >/dev/null
    [ "$(find "$room/tree" ! -type d)" = "$room/tree/lib/mine" ] || fail "left: $(find "$room/tree" ! -type d)"
    [ -z "$(find "$room/tree" -iname '*rngaggregator*' ! -path '*/etc/*')" ] || fail "folders are left"
    mkdir "$room/tree/lib/stuck"
    echo "$room/tree/lib/stuck" >"$room/build/install_manifest.txt"
    cmake --build "$room/build" --target uninstall >"$room/log" 2>&1 && fail "a file that stays is no failure"
    tr -s " \n" " " <"$room/log" | grep -q "/stuck cannot be removed" || fail "the file that stays is not named"
    ;;
  EveryKindGetsItsFileAndFactory)
    begin_project CXX
    for_each_kind add_kind
    { configure && cmake --build build >"$room/log" 2>&1; } || fail "$(cat "$room/log")"
    for_each_kind check_kind
    ;;
  SettingsOfTheProjectDoNotSpoilThePlugin)
    begin_project CXX
    cat >>CMakeLists.txt <<'PROJECT'
set(CMAKE_BUILD_TYPE Debug)
set(CMAKE_DEBUG_POSTFIX _d)
set(CMAKE_CXX_STANDARD 98)
foreach(kind MODULE LIBRARY)
  set(CMAKE_SHARED_${kind}_PREFIX "")
  set(CMAKE_SHARED_${kind}_SUFFIX .plugin)
endforeach()
PROJECT
    add_kind sobol librngsobol.so GetSobolRng
    { configure && cmake --build build >"$room/log" 2>&1; } || fail "$(cat "$room/log")"
    check_kind sobol librngsobol.so GetSobolRng
    ;;
  PluginNeedsNoCxx)
    begin_project C
    echo '__attribute__((visibility("default"))) void* GetSobolRng(void) { return 0; }' >sobol.c
    echo 'rng_add_plugin(sobol SOURCES sobol.c)' >>CMakeLists.txt
    { configure && cmake --build build >"$room/log" 2>&1; } || fail "$(cat "$room/log")"
    exports_alone GetSobolRng build/librngsobol.so
    ;;
  MissingFunctionIsAnError) # a misspelt factory, or one that another library was to bring
    begin_project CXX
    write_plugin sobol.cpp GetSobolRgn
    write_plugin dsdr.cpp GetDsdrRng
    echo 'int Missing(); int Needs() { return Missing(); }' >>dsdr.cpp
    echo 'rng_add_plugin(sobol SOURCES sobol.cpp)' >>CMakeLists.txt
    echo 'rng_add_plugin(dsdr SOURCES dsdr.cpp)' >>CMakeLists.txt
    configure || fail "$(cat "$room/log")"
    for target in rngsobol:GetSobolRng rngdsdr:Missing; do
      cmake --build build --target ${target%:*} >"$room/log" 2>&1 && fail "$target was linked"
      grep -q "${target#*:}" "$room/log" || fail "$target: $(cat "$room/log")"
    done
    ;;
  HiddenFactoryIsAnError)
    begin_project C
    echo 'void* GetSobolRng(void) { return 0; }' >sobol.c
    echo 'rng_add_plugin(sobol SOURCES sobol.c)' >>CMakeLists.txt
    configure || fail "$(cat "$room/log")"
    if cmake --build build >"$room/log" 2>&1; then fail "was built"; fi
    tr -s ' \n' ' ' <"$room/log" | grep -qF 'librngsobol.so does not export its factory GetSobolRng' ||
      fail "$(cat "$room/log")"
    if cmake --build build >"$room/log" 2>&1; then fail "was built the second time"; fi
    ;;
  HeaderMakesTheFactoryVisible)
    begin_project CXX
    printf '%s\n' '#include <rngaggregator/provider.h>' \
      'IRngProvider* GetSobolRng() { return nullptr; }' >sobol.cpp
    echo 'rng_add_plugin(sobol SOURCES sobol.cpp)' >>CMakeLists.txt
    { configure && cmake --build build >"$room/log" 2>&1; } || fail "$(cat "$room/log")"
    exports_alone GetSobolRng build/librngsobol.so
    ;;
  ReportOfDevicesIsExported)
    begin_project CXX
    write_reporting_plugin
    { configure && cmake --build build >"$room/log" 2>&1; } || fail "$(cat "$room/log")"
    exports_with_report build/librngsobol.so
    # Its own call stays in the plug-in: another one's function has the same name.
    if readelf -rW build/librngsobol.so | grep GetRngReport; then fail "another plug-in can answer"; fi
    ;;
  OtherLinkersServe)
    begin_project CXX
    write_reporting_plugin
    add_kind accord librngaccord.so GetAccordRng
    echo 'void* GetDsdrRng(void) { return 0; }' >dsdr.cpp
    echo 'rng_add_plugin(dsdr SOURCES dsdr.cpp)' >>CMakeLists.txt
    for linker in lld gold; do
      command -v ld.$linker >/dev/null || fail "there is no ld.$linker"
      rm -rf build
      configure -DCMAKE_MODULE_LINKER_FLAGS=-fuse-ld=$linker || fail "$(cat "$room/log")"
      cmake --build build --target rngsobol rngaccord >"$room/log" 2>&1 || fail "$linker: $(cat "$room/log")"
      exports_with_report build/librngsobol.so
      exports_alone GetAccordRng build/librngaccord.so
      "$fact" binds_at_load build/librngaccord.so
      if cmake --build build --target rngdsdr >"$room/log" 2>&1; then fail "$linker: mangled"; fi
      grep -q GetDsdrRng "$room/log" || fail "$linker: $(cat "$room/log")"
    done
    ;;
  WrongKindIsAnErrorThatNamesTheKinds)
    kinds=$(awk '{ printf "%s%s", separator, $1; separator = ", " }' "$room/rows")
    for kind in bio Grandmaster rngsobol ""; do
      begin_project NONE
      echo "rng_add_plugin(\"$kind\" SOURCES my.cpp)" >>CMakeLists.txt
      configuring_says "There is no kind \"$kind\" of generator. The kinds are: $kinds."
      rm -r "$room/project"
    done
    ;;
  ForgottenKeywordIsAnError)
    begin_project NONE
    echo 'rng_add_plugin(sobol my.cpp)' >>CMakeLists.txt
    configuring_says 'Write rng_add_plugin(KIND SOURCES file...)'
    ;;
  *) fail "unknown case: $case" ;;
esac
