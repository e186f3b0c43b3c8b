#!/bin/bash
# are_all_built.sh FOLDER SOURCE...: fails, and shows them, when the folder has other sources than these.
set -eu
diff <(printf '%s\n' "${@:2}" | sort -u) <(cd "$1" && find . -name '*.c' -o -name '*.cpp' | sed 's,^\./,,' | sort)
