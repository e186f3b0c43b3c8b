#!/bin/bash
# are_all_built.sh FOLDER SOURCE...: prints the difference and fails unless FOLDER has exactly these
# sources.
set -eu
diff <(printf '%s\n' "${@:2}" | sort -u) <(cd "$1" && find . -name '*.c' -o -name '*.cpp' | sed 's,^\./,,' | sort)
