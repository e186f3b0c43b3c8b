#!/bin/sh
# translations.sh ROOT LUPDATE: each translation of the dialog has all its texts, and no others.
set -eu
room=$(mktemp -d)
trap 'rm -rf "$room"' EXIT
for file in "$1"/helpers/qt/*.ts; do
  updated=$room/${file##*/}
  cp "$file" "$updated"
  "$2" "$1"/helpers/qt/*.cpp -ts "$updated" -locations none -no-obsolete >/dev/null 2>&1
  diff "$file" "$updated"
  if grep unfinished "$file"; then exit 1; fi
done
