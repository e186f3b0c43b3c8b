#!/bin/sh
# relative_links.sh FOLDER: succeeds when every link of the Markdown documents in FOLDER that stays among its
# files leads to one, and its anchor to a heading there. Otherwise it prints those that do not, and fails.
set -eu
cd "$1"

# "document target", one a line. Code has brackets of its own.
links() {
  find . -name 'build*' -prune -o -name .git -prune -o -name '*.md' -print | sort | while read -r document; do
    awk -v document="$document" '
      /^ *```/ { inCode = !inCode; next }
      inCode { next }
      {
        gsub(/`[^`]*`/, "")
        while (match($0, /\]\([^)]*\)/)) {
          print document, substr($0, RSTART + 2, RLENGTH - 3)
          $0 = substr($0, RSTART + RLENGTH)
        }
      }' "$document"
  done | sed -E '/ (https?|mailto):/d'
}

# has_heading DOCUMENT ANCHOR: as the usual renderers name headings.
has_heading() {
  sed -n 's/^##* //p' "$1" | tr '[:upper:]' '[:lower:]' | tr -cd '[:alnum:] _\n-' | tr ' ' '-' | grep -qxF -e "$2"
}

is_alive() { # DOCUMENT TARGET
  file=${2%%#*}
  if [ -n "$file" ]; then file=$(dirname "$1")/$file; else file=$1; fi
  [ -e "$file" ] || return 1
  case $2 in *"#"*) has_heading "$file" "${2#*#}" ;; esac
}

list=$(links)
[ -n "$list" ] || { echo "no links at all"; exit 1; }
dead=$(echo "$list" | while read -r document target; do
  is_alive "$document" "$target" || echo "$document: $target"
done)
[ -z "$dead" ] || { echo "$dead"; exit 1; }
