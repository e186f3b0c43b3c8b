#!/bin/sh
# relative_links_test.sh SCRIPT: the script finds what it has to find, and nothing else.
set -eu
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/docs"
cat >"$folder/docs/other.md" <<'TEXT'
# Other things, `code` too
[back](../README.md) [up](..)
TEXT

# expect OUTPUT LINE...: what the script says of a README with these lines.
expect() {
  expected=$1
  shift
  printf '%s\n' "$@" >"$folder/README.md"
  found=$("$script" "$folder") || true
  [ "$found" = "$expected" ] || { echo "of $*: $found"; exit 1; }
}

script=$1
expect "" '[a](docs/other.md), [b](docs)' '[c](docs/other.md#other-things-code-too)' '[d](https://example.org/x)'
expect "" '# Here' '[a](#here)' '```cpp' 'auto f = [](int x) {};' '```' 'and `[](int x)`'
expect "./README.md: docs/none.md" '[a](docs/other.md), [b](docs/none.md)'
expect "./README.md: docs/other.md#none" '[a](docs/other.md#none)'
expect "./README.md: #there" '# Here' '[a](#there)'
rm "$folder/docs/other.md"
expect "no links at all" 'nothing'
