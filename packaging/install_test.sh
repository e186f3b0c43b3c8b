#!/bin/sh
# install_test.sh BUILD: installs the packages in BUILD in a small system of their own, uses them, and
# purges them. The machine itself stays as it is.
#
# The system consists of the essential packages and of those that ours depend on, copied from this
# machine: no compiler, no Boost, no X library. Its own dpkg installs ours, with dependencies and
# triggers. It lies in a user namespace with one user, root, so it does not show what other users may do;
# and the versions of its packages are this machine's alone.
set -eu
LC_ALL=C
export LC_ALL
unset LD_LIBRARY_PATH DISPLAY

if [ "$1" != inside ]; then
  room=$(mktemp -d)
  trap 'rm -rf "$room"' EXIT
  unshare --map-root-user --mount --net --pid --fork "$0" inside "$(cd "$1" && pwd)" "$room"
  exit
fi
build=$2
room=$3
root=$room/root

fail() {
  echo "install_test: $*"
  exit 1
}

# The essential packages, those that ours depend on, and all that these depend on.
needed_packages() {
  {
    dpkg-query -W -f '${Essential} ${Package}\n' | sed -n 's/^yes //p'
    for deb in "$build"/*.deb; do dpkg-deb -f "$deb" Depends; done | tr ',' '\n' | sed 's/(.*//'
  } | xargs apt-cache depends --important --recurse --installed | grep '^[a-z0-9]' |
    xargs dpkg-query -W -f '${db:Status-Status} ${binary:Package}\n' 2>/dev/null |
    sed -n 's/^installed //p' | sort -u
}

lay_out_system() {
  mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/triggers" "$root/var/lib/dpkg/updates" "$root/tmp"
  for folder in bin sbin lib lib64; do
    mkdir -p "$root/usr/$folder"
    ln -s usr/$folder "$root/$folder"
  done
  needed_packages >"$root/tmp/packages"
  while read -r package; do
    dpkg-query -L "$package" >>"$root/tmp/files"
    dpkg-query -s "$package" >>"$root/var/lib/dpkg/status"
    echo >>"$root/var/lib/dpkg/status"
    cp "/var/lib/dpkg/info/$package".* "$root/var/lib/dpkg/info"
  done <"$root/tmp/packages"
  cp /var/lib/dpkg/info/format "$root/var/lib/dpkg/info"
  cp /var/lib/dpkg/triggers/ldconfig "$root/var/lib/dpkg/triggers"
  # Documents that the machine has left out are no loss.
  sed 's,^/,,' "$root/tmp/files" | sort -u |
    tar -C / --no-recursion --ignore-failed-read -cf - -T - 2>"$root/tmp/log" |
    tar -C "$root" --no-same-owner -xf -
  touch "$root/dev/null"
  mount --bind /dev/null "$root/dev/null"
  mount -t proc proc "$root/proc"
}

inside() { chroot "$root" "$@"; }

# passes COMMAND...: it succeeds there; what it says is then in the log.
passes() { inside "$@" >"$room/log" 2>&1 || fail "$*: $(cat "$room/log")"; }
says() { grep -qE "$1" "$room/log" || fail "not \"$1\", but: $(cat "$room/log")"; }

# What is in the system, but for what dpkg and the loader note down.
listing() {
  (cd "$root" && find . \( -path ./dev -o -path ./proc -o -path ./var/lib/dpkg -o -path ./tmp \) -prune -o -print) |
    grep -vE '^\./(var/log/.*|var/cache/ldconfig.*|etc/ld\.so\.cache)$' | sort
}

lay_out_system
for absent in usr/bin/g++ usr/include/boost usr/lib/x86_64-linux-gnu/libX11.so.6; do
  [ ! -e "$root/$absent" ] || fail "the system is too large: it has $absent"
done
cp "$build"/*.deb "$root/tmp"
inside ldconfig
listing >"$room/before"

# Dependencies and the trigger.
if inside sh -c 'dpkg -i /tmp/rngctl_*.deb' >"$room/log" 2>&1; then fail "rngctl does without the library"; fi
says 'rngctl depends on librngaggregator1'
passes sh -c 'dpkg -i /tmp/*.deb'
says '^Processing triggers for libc-bin'
passes ldconfig -p
says 'librngaggregator\.so\.1 \(libc6,x86-64\) => /lib/librngaggregator\.so\.1'
passes dpkg --verify
[ ! -s "$room/log" ] || fail "changed files: $(cat "$room/log")"

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

# A host, built with the development package, finds library and plug-in where they are installed.
examples=$root/usr/share/doc/librngaggregator-dev/examples
PKG_CONFIG_PATH=$root/usr/lib/pkgconfig
export PKG_CONFIG_PATH
# shellcheck disable=SC2046 # words
g++ "$examples/minimal-host/minimal_host.cpp" -o "$root/tmp/host" $(pkg-config --cflags --libs rngaggregator)
passes /tmp/host
says '^[0-9a-f]{64}$'

# A debugger finds by their identities what belongs to library and plug-in.
for binary in librngaggregator.so.1 librngunixdev.so; do
  identity=$(readelf -n "$root/usr/lib/$binary" | sed -n 's/^ *Build ID: //p')
  readelf -SW "$root/usr/lib/debug/.build-id/$(echo "$identity" | sed 's,^..,&/,').debug" | grep -qF .debug_info ||
    fail "nothing to debug $binary with"
done

# The plug-in can go alone; after a purge nothing is left but the user's choice.
passes dpkg -r rng-plugin-unixdev rng-plugin-unixdev-dbgsym
if inside rngctl list >"$room/log" 2>&1; then fail "still there: $(cat "$room/log")"; fi
says '^rngctl: No generator is usable'
passes dpkg -P rngctl librngaggregator-dev rng-plugin-unixdev librngaggregator1 librngaggregator1-dbgsym
listing | diff "$room/before" - >"$room/left" || true
[ "$(sed -n 's/^[<>] //p' "$room/left")" = "./etc/rngaggregator
./etc/rngaggregator/rng.ini" ] || fail "after the purge: $(cat "$room/left")"

echo "Installed beside $(wc -l <"$root/tmp/packages") packages of the system, used, and purged."
