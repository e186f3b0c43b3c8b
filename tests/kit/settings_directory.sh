#!/bin/sh
# settings_directory.sh BUILD DIRECTORY: who may write to the directory of rng.ini after an installation. Prints what
# is wrong and fails.
set -eu
build=$1
directory=$2

room=$(mktemp -d)
trap 'rm -rf "$room"' EXIT

expect() { # MODE ROOM
  found=$(stat -c %a "$2$directory")
  [ "$found" = "$1" ] || {
    echo "The settings directory has mode $found instead of $1"
    exit 1
  }
}

# Neither umask decides.
for umask in 000 077; do
  (umask "$umask" && DESTDIR=$room/$umask cmake --install "$build" --component librngaggregator1 >/dev/null)
  expect 755 "$room/$umask"
done

# What the administrator has narrowed stays so.
chmod 700 "$room/000$directory"
DESTDIR=$room/000 cmake --install "$build" --component librngaggregator1 >/dev/null
expect 700 "$room/000"

# An installation under another prefix has no settings directory of its own.
DESTDIR=$room/moved cmake --install "$build" --component librngaggregator1 --prefix /elsewhere >/dev/null
[ -e "$room/moved/elsewhere/lib" ] && [ ! -e "$room/moved$directory" ] && [ ! -e "$room/moved/elsewhere/etc" ] || {
  echo "A settings directory that the library does not use was created"
  exit 1
}
