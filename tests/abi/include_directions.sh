#!/bin/sh
# include_directions.sh ROOT: watches who includes whom in the project's folders. Prints every
# include that goes the wrong way and fails if there is one.
set -eu
cd "$1"

# "file header" for every include. A header without a folder is the file's neighbour. Only the
# project's own headers keep an "=" before them: quoted ones, and those in a folder of ours.
ours='^([.]|(rngaggregator|include|aggregator|providers|settings|plugins|tools|examples|benchmarks|tests)/)'
list_includes() {
  find include aggregator providers settings plugins tools examples benchmarks \
    -name '*.h' -o -name '*.cpp' -o -name '*.c' 2>/dev/null | sort |
    xargs awk -v ours="$ours" '
      /^[ \t]*#[ \t]*include/ {
        split($0, part, /[<">]/)
        header = part[2]
        quoted = $0 ~ /^[^<"]*"/
        folder = FILENAME
        sub(/[^\/]*$/, "", folder)
        if (quoted && header !~ /\//) header = folder header
        if (quoted || header ~ ours) header = "=" header
        print FILENAME, header
      }'
}

status=0
# report RULE: prints what is in $hits and remembers that there was something.
report() {
  [ -s "$hits" ] || return 0
  echo "$1:"
  cat "$hits"
  status=1
}

# see FILES HEADERS: of our own headers, such files include only such.
see() {
  awk -v files="$1" -v headers="$2" \
    '$1 ~ files && $2 ~ /^=/ && substr($2, 2) !~ headers' "$list" >"$hits"
  report "outside $2"
}

# keep HEADERS FILES: only such files include such headers.
keep() {
  awk -v headers="$1" -v files="$2" \
    '{ sub(/^=/, "", $2) } $2 ~ headers && $1 !~ files' "$list" >"$hits"
  report "$1 is kept to $2"
}

list=$(mktemp)
hits=$(mktemp)
trap 'rm -f "$list" "$hits"' EXIT
list_includes >"$list"
for folder in include aggregator providers settings plugins tools; do
  grep -q "^$folder/" "$list" || {
    echo "no includes found in $folder/"
    exit 1
  }
done

see '^aggregator/' '^(aggregator|providers|settings|rngaggregator)/'
see '^providers/' '^(providers|rngaggregator)/'
see '^settings/' '^(settings|rngaggregator)/|^providers/library_handle[.]h$'
see '^settings/profile_' '^settings/profile_(file|stream)[.]h$'
see '^include/' '^rngaggregator/'
see '^plugins/' '^(plugins|rngaggregator)/'
# It tells and checks what the library does without a word: which rows there are, how one is opened.
see '^tools/' '^(tools|providers|rngaggregator)/|^settings/known_path[.]h$'
see '^examples/' '^(examples|rngaggregator)/'
keep '^tests/' '^tests/'
keep '^boost/' '^aggregator/process_state[.]h$'
# Only those that open or close libraries, or look into one.
keep '^dlfcn[.]h$' '^(aggregator/(lifecycle|load_provider|rng_info)[.]cpp|providers/(display_probe[.]cpp|dll_loader[.]cpp|library_handle[.]h)|settings/known_path[.]cpp|tools/rngctl/library_handle[.]h|tools/rngctl/(check_release|check_start|doctor_row|doctor_surroundings|lifecycle_calls|search_order|watched_plugin)[.]cpp|(examples|benchmarks)/.*)$'

# Comments may name it.
grep -rn CKP_GetPath include aggregator providers settings plugins tools |
  awk -F: '$1 != "settings/known_path.cpp"' | sed 's,//.*,,' | grep CKP_GetPath >"$hits" || :
report "CKP_GetPath is kept to settings/known_path.cpp"

exit $status
