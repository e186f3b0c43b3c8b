#!/bin/sh
# install_test.sh BUILD: installs the packages from BUILD into a small separate system, uses them, and
# purges them. The machine itself is not changed.
#
# The system consists of the essential packages and the dependencies of ours, copied from this machine: no
# compiler, no Boost, and no X library until the plug-ins that open a window are installed at the end. Its own
# dpkg installs our packages, with dependencies and triggers. It runs in a user namespace with one user, root,
# so the test does not show what other users may do. It has no X server, so no window opens. It tests only
# with the package versions of this machine.
#
# Exits with 3 if this system does not allow such a namespace, so nothing could be tested.
set -eu
LC_ALL=C
PATH=$PATH:/usr/sbin:/sbin # ldconfig, chroot and dpkg's tools; an ordinary user's PATH may lack them
export LC_ALL PATH
unset LD_LIBRARY_PATH DISPLAY

if [ "$1" != inside ]; then
  unshare --map-root-user --mount --net --pid --fork true || exit 3
  room=$(mktemp -d)
  trap 'rm -rf "$room"' EXIT
  unshare --map-root-user --mount --net --pid --fork "$0" inside "$(cd "$1" && pwd)" "$room"
  exit
fi
build=$2
room=$3
root=$room/root

mkdir "$room/window" "$room/plain"
cp "$build"/*.deb "$room/plain"
find "$room/plain" -name 'rng-plugin-bio[xq]*' -exec mv {} "$room/window" \;

fail() {
  echo "install_test: $*"
  exit 1
}

# names DEB...: of the packages in these files
names() { for deb in "$@"; do dpkg-deb -f "$deb" Package; done; }

# dependencies DEB...: of the packages in these files
dependencies() { for deb in "$@"; do dpkg-deb -f "$deb" Depends; done | tr ',' '\n' | sed 's/(.*//'; }

# needed_packages PACKAGE...: the essential packages, these, and their dependencies in turn.
needed_packages() {
  { dpkg-query -W -f '${Essential} ${Package}\n' | sed -n 's/^yes //p'; echo "$*"; } |
    xargs apt-cache depends --important --recurse --installed | grep '^[a-z0-9]' |
    xargs dpkg-query -W -f '${db:Status-Status} ${binary:Package}\n' 2>/dev/null |
    sed -n 's/^installed //p' | sort -u
}

# copy_packages PACKAGE...: copies these and their dependencies, except those that the system has already.
copy_packages() {
  touch "$root/tmp/packages"
  needed_packages "$@" | comm -23 - "$root/tmp/packages" >"$room/packages"
  : >"$room/files"
  while read -r package; do
    dpkg-query -L "$package" >>"$room/files"
    dpkg-query -s "$package" >>"$root/var/lib/dpkg/status"
    echo >>"$root/var/lib/dpkg/status"
    cp "/var/lib/dpkg/info/$package".* "$root/var/lib/dpkg/info"
  done <"$room/packages"
  # Files that are listed but missing here are documents that this machine does not install: ignored.
  sed 's,^/,,' "$room/files" | sort -u |
    tar -C / --no-recursion --ignore-failed-read -cf - -T - 2>"$room/log" |
    tar -C "$root" --no-same-owner -xf -
  sort -o "$root/tmp/packages" "$root/tmp/packages" "$room/packages"
}

lay_out_system() {
  mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/triggers" "$root/var/lib/dpkg/updates" "$root/tmp"
  for folder in bin sbin lib lib64; do
    mkdir -p "$root/usr/$folder"
    ln -s usr/$folder "$root/$folder"
  done
  # shellcheck disable=SC2046 # words
  copy_packages $(dependencies "$room"/plain/*.deb) openssl
  cp /var/lib/dpkg/info/format "$root/var/lib/dpkg/info"
  cp /var/lib/dpkg/triggers/ldconfig "$root/var/lib/dpkg/triggers"
  for device in null tty; do
    touch "$root/dev/$device"
    mount --bind /dev/$device "$root/dev/$device"
  done
  mount -t proc proc "$root/proc"
}

# Runs a command inside, without a terminal even if this test has one.
inside() { setsid -w chroot "$root" "$@"; }

# inside_terminal WORDS: the same on a terminal, where standard input is typed.
inside_terminal() { script -qec "chroot $root $*" /dev/null; }

# Some 15 keys per second for 20 seconds, not at regular times.
type_keys() {
  awk 'BEGIN { srand(); for (i = 0; i < 300; ++i) printf "%c %.3f\n", 97 + int(rand() * 26), 0.02 + rand() * 0.09 }' |
    while read -r key pause; do
      sleep "$pause"
      printf %s "$key"
    done
}

# passes COMMAND...: runs it inside, fails if it fails, and leaves its output in the log.
passes() { inside "$@" >"$room/log" 2>&1 || fail "$*: $(cat "$room/log")"; }
says() { grep -qE "$1" "$room/log" || fail "expected \"$1\", got: $(cat "$room/log")"; }

# The files of the system, without the records of dpkg and of the loader.
listing() {
  (cd "$root" && find . \( -path ./dev -o -path ./proc -o -path ./var/lib/dpkg -o -path ./tmp \) -prune -o -print) |
    grep -vE '^\./(var/log/.*|var/cache/ldconfig.*|etc/ld\.so\.cache)$' | sort
}

lay_out_system
for absent in usr/bin/g++ usr/include/boost usr/lib/x86_64-linux-gnu/libX11.so.6; do
  [ ! -e "$root/$absent" ] || fail "the system must not contain $absent"
done
cp "$room"/plain/*.deb "$root/tmp"
inside ldconfig
listing >"$room/before"

# Dependencies and the trigger.
if inside sh -c 'dpkg -i /tmp/rngctl_*.deb' >"$room/log" 2>&1; then fail "rngctl was installed without the library"; fi
says 'rngctl depends on librngaggregator1'
passes sh -c 'dpkg -i /tmp/*.deb'
says '^Processing triggers for libc-bin'
passes ldconfig -p
says 'librngaggregator\.so\.1 \(libc6,x86-64\) => /lib/librngaggregator\.so\.1'
# Of ours alone: folders that an ordinary user cannot read, such as /root, are not part of the small system.
# shellcheck disable=SC2046 # words
passes dpkg --verify $(names "$room"/plain/*.deb)
[ ! -s "$room/log" ] || fail "changed files: $(cat "$room/log")"

# Only root may write the settings, before and after they are stored, whatever the umask.
passes stat -c '%a %u %g' /etc/rngaggregator
says '^755 0 0$'
passes sh -c 'umask 0; rngctl default set dsdr'
passes stat -c %a /etc/rngaggregator /etc/rngaggregator/rng.ini
[ "$(cat "$room/log")" = "755
644" ] || fail "modes of the settings: $(cat "$room/log")"

# Several sources, with a record.
passes ldconfig -p
says 'librngcombine\.so\.1 \(libc6,x86-64\) => /lib/librngcombine\.so\.1'
passes rngctl read --from unixdev -n 8 --record /tmp/record
passes cat /tmp/record
says '"plugin": "/usr/lib/librngunixdev.so"'
inside rm /tmp/record

# The tool, as in the demonstration.
passes rngctl list
says '^unixdev +no '
passes rngctl default set unixdev
passes cat /etc/rngaggregator/rng.ini
says '^RandomNumberGeneratorType=unixdev$'
passes rngctl default
says unixdev
passes rngctl read unixdev -n 32
says '^[0-9a-f]{64}$'

# The user is asked only if there is a terminal.
passes rngctl list
if grep biokbd "$room/log"; then fail "biokbd is listed without a terminal"; fi
inside rngctl doctor biokbd >"$room/log" 2>&1 && fail "the doctor finds no problem with biokbd without a terminal"
says 'There is no terminal'
inside_terminal rngctl list >"$room/log"
says '^biokbd '
type_keys 2>/dev/null | inside_terminal rngctl read biokbd -n 32 >"$room/log" || fail "the draw from biokbd failed: $(cat "$room/log")"
says '^[0-9a-f]{64}.?$'

# A host built with the development package finds the library and the plug-in where they are installed.
examples=$root/usr/share/doc/librngaggregator-dev/examples
PKG_CONFIG_PATH=$root/usr/lib/pkgconfig
export PKG_CONFIG_PATH
plugins=$(pkg-config --variable=plugindir rngaggregator)
[ "$plugins" = /usr/lib ] || fail "the folder for plug-ins is $plugins"
PKG_CONFIG_SYSROOT_DIR=$root
export PKG_CONFIG_SYSROOT_DIR
# shellcheck disable=SC2046 # words
g++ "$examples/minimal-host/minimal_host.cpp" -o "$root/tmp/host" $(pkg-config --cflags --libs rngaggregator)
passes /tmp/host
says '^[0-9a-f]{64}$'
# shellcheck disable=SC2046 # words
g++ -std=c++17 "$examples/session-host/session_host.cpp" -o "$root/tmp/host" $(pkg-config --cflags --libs rngaggregator)
passes /tmp/host unixdev
says '^[0-9a-f]{64}$'
# shellcheck disable=SC2046 # words
gcc -fexceptions "$examples/c-host/c_host.c" -o "$root/tmp/c_host" $(pkg-config --cflags --libs rngaggregator)
passes /tmp/c_host
says '^[0-9a-f]{64}$'

cat >"$room/combined.cpp" <<'SOURCE'
#include <rngaggregator/combined_rng.h>
int main() {
  Initialize(GetDefaultSettings());
  unsigned char key[32];
  const bool isDrawn = rng::CombinedRng(rng::FindSources("unixdev")).Generate(key, sizeof key);
  ShutDown();
  return isDrawn ? 0 : 1;
}
SOURCE
# shellcheck disable=SC2046 # words
g++ "$room/combined.cpp" -o "$root/tmp/combined" $(pkg-config --cflags --libs rngcombine)
passes /tmp/combined

# So does a token plug-in, whose sources are in the development package. The last part of this test uses it.
env -u PKG_CONFIG_SYSROOT_DIR -u PKG_CONFIG_PATH cmake -S "$examples/token-plugin" -B "$room/token" \
  -DCMAKE_PREFIX_PATH="$root/usr" >"$room/log" 2>&1 || fail "the token plug-in: $(cat "$room/log")"
cmake --build "$room/token" >"$room/log" 2>&1 || fail "the token plug-in: $(cat "$room/log")"

# OpenSSL draws from the default, and makes no key without it.
openssl_draws() { inside env OPENSSL_CONF=/usr/share/rngaggregator/openssl.cnf openssl genpkey -algorithm ED25519 >"$room/log" 2>&1; }
passes openssl version -m
says 'MODULESDIR: "/usr/lib/x86_64-linux-gnu/ossl-modules"'
[ -f "$root/usr/lib/x86_64-linux-gnu/ossl-modules/rngaggregator.so" ] || fail "the module for OpenSSL is not there"
openssl_draws || fail "openssl: $(cat "$room/log")"
says 'BEGIN PRIVATE KEY'
passes rngctl default set dsdr
if openssl_draws; then fail "openssl made a key without the default generator"; fi
says 'The generator "dsdr" is not loaded'
passes rngctl default set unixdev

# A debugger finds the debug symbols of the library and the plug-in by their build IDs.
for binary in lib/librngaggregator.so.1 lib/librngunixdev.so lib/librngbiokb.so libexec/rngaggregator/rng-gather-tty \
  lib/x86_64-linux-gnu/ossl-modules/rngaggregator.so libexec/rngaggregator/rng-openssl-draw; do
  identity=$(readelf -n "$root/usr/$binary" | sed -n 's/^ *Build ID: //p')
  readelf -SW "$root/usr/lib/debug/.build-id/$(echo "$identity" | sed 's,^..,&/,').debug" 2>/dev/null | grep -qF .debug_info ||
    fail "no debug symbols for $binary"
done

# The library can be upgraded alone: rngctl accepts a later one.
dpkg-deb -R "$build"/librngaggregator1_*.deb "$room/later"
sed -i 's/^Version: .*/Version: 1.99.0-1/' "$room/later/DEBIAN/control"
dpkg-deb -b "$room/later" "$root/tmp/later.deb" >"$room/log"
passes dpkg -i /tmp/later.deb
passes sh -c 'dpkg -i /tmp/rngctl_*.deb'
passes rngctl default
says unixdev
passes sh -c 'dpkg -i /tmp/librng*.deb'

# The plug-in can be removed alone. After a purge only the user's choice is left.
# shellcheck disable=SC2046 # words
passes dpkg -r $(names "$room"/plain/rng-plugin-*.deb)
if inside rngctl list >"$room/log" 2>&1; then fail "still listed: $(cat "$room/log")"; fi
says '^rngctl: No generator is usable'
# shellcheck disable=SC2046 # words
passes dpkg -P $(names "$room"/plain/*.deb)
listing | diff "$room/before" - >"$room/left" || true
[ "$(sed -n 's/^[<>] //p' "$room/left")" = "./etc/rngaggregator
./etc/rngaggregator/rng.ini" ] || fail "files differ after the purge: $(cat "$room/left")"
echo "Installed beside $(wc -l <"$root/tmp/packages") packages of the system, used, and purged."

# The plug-ins that open a window.
needs_library() { # PLUGIN LIBRARY: its package depends on the libraries of the helper
  inside sh -c "dpkg -i /tmp/rng-plugin-$1_*.deb" >"$room/log" 2>&1 && fail "rng-plugin-$1 was installed without its libraries"
  says "rng-plugin-$1 depends on $2"
}

starts() { # HELPER KIND
  inside "/usr/libexec/rngaggregator/$1" >"$room/log" 2>&1 && fail "$1 does not refuse to run without a plug-in"
  says 'This program is started by a plug-in'
  inside rngctl doctor "$2" >"$room/log" 2>&1 && fail "the doctor finds no problem with $2 without a display"
  says 'there is no X display'
}

cp "$room"/window/*.deb "$root/tmp"
passes sh -c 'dpkg -i /tmp/librngaggregator1_*.deb /tmp/librngcombine1_*.deb /tmp/rngctl_*.deb'
needs_library biox11 libcairo2
needs_library bioqt libqt6widgets6
# shellcheck disable=SC2046 # words
copy_packages $(dependencies "$room"/window/*.deb)
passes ldconfig
passes sh -c 'dpkg -i /tmp/rng-plugin-bio[xq]*.deb'
starts rng-gather-x11 unixx11
starts rng-gather-qt bioqt
# Qt loads this by itself when it finds a display.
passes sh -c 'ldd /usr/lib/x86_64-linux-gnu/qt6/plugins/platforms/libqxcb.so'
if grep 'not found' "$room/log"; then fail "Qt lacks a library for X11"; fi
# shellcheck disable=SC2046 # words
passes dpkg -P $(names "$room"/window/*.deb)
[ ! -e "$root/usr/libexec/rngaggregator" ] || fail "helpers are left after the purge"

echo "Plug-ins that open a window: installed beside $(wc -l <"$root/tmp/packages") packages, started, and purged."

# A token.
copy_packages softhsm2 libp11-kit0
passes ldconfig
passes sh -c 'dpkg -i /tmp/librngaggregator1_*.deb /tmp/librngcombine1_*.deb /tmp/rngctl_*.deb'
cp "$room/token/librngrutoken.so" "$root/usr/lib"
mkdir "$root/tmp/tokens"
echo 'directories.tokendir = /tmp/tokens' >"$root/tmp/softhsm2.conf"
SOFTHSM2_CONF=/tmp/softhsm2.conf
export SOFTHSM2_CONF
inside rngctl list >"$room/log" 2>&1 && fail "listed without a token: $(cat "$room/log")"
passes softhsm2-util --init-token --free --label bare --pin 1234 --so-pin 1234
passes rngctl doctor Rutoken
says '^Rutoken, device [0-9a-f]{16}: Token "bare"'
passes rngctl default set Rutoken "$(sed -n 's/^Rutoken, device \([0-9a-f]*\): .*/\1/p' "$room/log" | head -n 1)"
passes rngctl read -n 32
says '^[0-9a-f]{64}$'
rm -r "$root/tmp/tokens"/*
inside rngctl read -n 32 >"$room/log" 2>&1 && fail "a draw from a token that is gone: $(cat "$room/log")"
says 'rngctl: .*Rutoken'
echo "A plug-in for tokens: built from the development package, and used with a token in software."
