#!/bin/sh
# choose_plugins.sh CASE SOURCE: which plug-ins are built, depending on RNG_PLUGINS and on the packages of the
# machine. Packages are hidden from CMake, not removed. Prints what is wrong and fails.
set -eu
LC_ALL=C
export LC_ALL
unset CMAKE_PREFIX_PATH PKG_CONFIG_PATH

case=$1
source=$2

room=$(mktemp -d)
trap 'rm -rf "$room"' EXIT

no_openssl=-DCMAKE_DISABLE_FIND_PACKAGE_OpenSSL=ON
no_x11=-DCMAKE_DISABLE_FIND_PACKAGE_X11=ON
no_pkg_config=-DCMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON
no_qt="-DCMAKE_DISABLE_FIND_PACKAGE_Qt6=ON -DRNG_LRELEASE="

fail() {
  echo "$*"
  cat "$room/log"
  exit 1
}

# The choice without the rest of the project.
choose() {
  mkdir "$room/choice"
  cat >"$room/choice/CMakeLists.txt" <<PROJECT
cmake_minimum_required(VERSION 3.25)
project(choice LANGUAGES CXX)
include($source/cmake/ChoosePlugins.cmake)
message(STATUS "chosen: \${RNG_CHOSEN_PLUGINS}")
message(STATUS "lrelease: \${RNG_LRELEASE}")
PROJECT
  status=0
  cmake -S "$room/choice" -B "$room/build" "$@" >"$room/log" 2>&1 || status=$?
  rm -r "$room/choice" "$room/build"
  return $status
}

# shows TABLE: exactly these lines, and the plug-ins that it says are built.
shows() {
  sed -n '/^-- Plug-ins:$/,/^--   bioqt/ s/^--   //p' "$room/log" >"$room/table"
  [ "$(grep -A 4 '^-- Plug-ins:$' "$room/log" | grep -c '^--   ')" = 4 ] || fail "the table is not in one piece"
  echo "$1" | diff - "$room/table" || fail "another table"
  grep -qx -- "-- chosen: $(awk '$2 == "built" { printf "%s%s", separator, $1; separator = ";" }' "$room/table")" \
    "$room/log" || fail "the table and the choice differ"
}

# refuses SENTENCE: however CMake breaks the lines.
refuses() { tr -s ' \n' ' ' <"$room/log" | grep -qF "$1" || fail "not said: $1"; }

case $case in
  EveryPluginIsBuiltWhereItsPackagesAre)
    choose || fail "failed"
    shows 'unixdev  built
biokb    built
biox11   built
bioqt    built'
    # The path may have the program of another version of Qt.
    mkdir "$room/bin"
    printf '#!/bin/sh\n' >"$room/bin/lrelease"
    chmod +x "$room/bin/lrelease"
    PATH=$room/bin:$PATH choose || fail "failed"
    grep -qx -- '-- lrelease: /usr/lib/qt6/bin/lrelease' "$room/log" || fail "another lrelease"
    ;;
  MissingPackagesAreNamed)
    # shellcheck disable=SC2086 # words
    choose $no_openssl $no_x11 $no_pkg_config $no_qt || fail "failed"
    shows 'unixdev  built
biokb    not built. To build it, install libssl-dev
biox11   not built. To build it, install libssl-dev pkg-config libx11-dev libcairo2-dev
bioqt    not built. To build it, install libssl-dev qt6-base-dev qt6-l10n-tools'
    ;;
  OneMissingPackageConcernsItsPluginsAlone)
    choose $no_x11 || fail "failed"
    shows 'unixdev  built
biokb    built
biox11   not built. To build it, install libx11-dev
bioqt    built'
    choose -DPKG_CONFIG_EXECUTABLE=/bin/false || fail "failed"
    shows 'unixdev  built
biokb    built
biox11   not built. To build it, install pkg-config libcairo2-dev
bioqt    built'
    PKG_CONFIG_LIBDIR=$room choose || fail "failed"
    shows 'unixdev  built
biokb    built
biox11   not built. To build it, install libcairo2-dev
bioqt    built'
    ;;
  NamedPluginsAreBuiltAlone)
    choose '-DRNG_PLUGINS=biox11;unixdev' || fail "failed"
    shows 'unixdev  built
biokb    not in RNG_PLUGINS
biox11   built
bioqt    not in RNG_PLUGINS'
    choose -DRNG_PLUGINS=unixdev $no_openssl || fail "needs OpenSSL"
    ;;
  NamedPluginWithoutItsPackageIsAnError)
    choose '-DRNG_PLUGINS=unixdev;biokb' $no_openssl && fail "accepted"
    refuses 'RNG_PLUGINS contains biokb, which cannot be built here. Install from Debian: libssl-dev. Or'
    # shellcheck disable=SC2086 # words
    choose '-DRNG_PLUGINS=biokb;bioqt' $no_qt && fail "accepted"
    refuses 'RNG_PLUGINS contains bioqt, which cannot be built here. Install from Debian: qt6-base-dev qt6-l10n-tools. Or'
    ;;
  UnknownPluginIsAnErrorThatNamesThePlugins)
    choose '-DRNG_PLUGINS=unixdev;biokbd' && fail "accepted"
    refuses 'RNG_PLUGINS contains "biokbd", which is not a plug-in of this project. Choose from: unixdev, biokb, biox11, bioqt.'
    ;;
  ProjectNeedsNoneButOpenSsl) # with its tests and without
    for testing in ON OFF; do
      # shellcheck disable=SC2086 # words
      cmake -S "$source" -B "$room/build" -DBUILD_TESTING=$testing $no_qt $no_x11 >"$room/log" 2>&1 ||
        fail "not configured with BUILD_TESTING=$testing"
    done
    cmake -S "$source" -B "$room/other" -DBUILD_TESTING=OFF $no_openssl >"$room/log" 2>&1 && fail "accepted"
    refuses 'OpenSSL 3 is missing, which rngctl needs. Install from Debian: libssl-dev'
    ;;
  TestsNeedTheReferencePlugin)
    cmake -S "$source" -B "$room/build" -DRNG_PLUGINS=biokb >"$room/log" 2>&1 && fail "accepted"
    refuses 'The tests need the plug-in unixdev. Add it to RNG_PLUGINS, or configure with -DBUILD_TESTING=OFF.'
    cmake -S "$source" -B "$room/build" -DRNG_PLUGINS=biokb -DBUILD_TESTING=OFF >"$room/log" 2>&1 || fail "refused"
    ;;
  *) fail "unknown case: $case" ;;
esac
