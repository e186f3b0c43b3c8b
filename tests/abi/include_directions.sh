#!/bin/sh
# include_directions.sh ROOT: watches who includes whom in the project's folders. Prints every
# include that goes the wrong way and fails if there is one.
set -eu
cd "$1"

# "file header" for every include. A header without a folder is the file's neighbour. Only the
# project's own headers keep an "=" before them: quoted ones, and those in a folder of ours.
ours='^([.]|(rngaggregator|include|aggregator|providers|settings|plugins|helpers|combine|quality|tools|examples|benchmarks|tests)/)'
list_includes() {
  find include aggregator providers settings plugins helpers combine quality openssl tools examples benchmarks \
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

# keep_in ROOM HEADERS FILES: of that room's files, only such include such headers.
keep_in() {
  awk -v room="$1" -v headers="$2" -v files="$3" \
    '{ sub(/^=/, "", $2) } $1 ~ room && $2 ~ headers && $1 !~ files' "$list" >"$hits"
  report "in $1, $2 is kept to $3"
}

list=$(mktemp)
hits=$(mktemp)
trap 'rm -f "$list" "$hits"' EXIT
list_includes >"$list"
for folder in include aggregator providers settings plugins helpers combine quality openssl tools; do
  grep -q "^$folder/" "$list" || {
    echo "no includes found in $folder/"
    exit 1
  }
done

# --- The library
see '^include/' '^rngaggregator/'
see '^aggregator/' '^(aggregator|providers|settings|rngaggregator)/'
see '^providers/' '^(providers|rngaggregator)/'
see '^settings/' '^(settings|rngaggregator)/|^providers/library_handle[.]h$'
see '^settings/profile_' '^settings/profile_(file|stream)[.]h$'
keep '^boost/' '^(aggregator/process_state[.]h|quality/distributions[.]cpp)$'
# Only what opens libraries, closes them or looks into one.
keep_in '^aggregator/' '^dlfcn[.]h$' '/(lifecycle|load_provider|rng_info)[.]cpp$'
keep_in '^providers/' '^dlfcn[.]h$' '/((display_probe|dll_loader)[.]cpp|library_handle[.]h)$'
keep_in '^settings/' '^dlfcn[.]h$' '/known_path[.]cpp$'

# --- What uses the library
see '^plugins/unixdev/' '^(plugins/unixdev|rngaggregator)/'
see '^plugins/interactive/' '^(plugins/interactive|rngaggregator)/'
see '^plugins/token/' '^(plugins/token|pkcs11|rngaggregator)/'
see '^plugins/token/pkcs11/' '^plugins/token/pkcs11/'
keep '^p11-kit/' '^(plugins/token/pkcs11|benchmarks/timing/peers|tests/token)/'
see '^examples/' '^(examples|rngaggregator)/'
see '^quality/' '^(quality|rngaggregator)/'
see '^combine/' '^(combine|rngaggregator)/|^helpers/gathering/hmac_drbg[.]h$'
keep_in '^(include|combine|quality)/' '^dlfcn[.]h$' '^$'
# A plug-in that starts a program finds out where its own file is.
keep_in '^plugins/' '^dlfcn[.]h$' '^plugins/interactive/kind[.]cpp$'

# --- The programs that the interactive plug-ins start. The front ends stand beside each other, on rooms that know
# none of them.
see '^helpers/gathering/' '^(helpers/gathering|rngaggregator)/'
see '^helpers/session/' '^helpers/(gathering|session)/|^plugins/interactive/request[.]h$'
for front_end in tty x11 qt; do
  see "^helpers/$front_end/" "^helpers/(gathering|session|$front_end)/"
done
see '^helpers/' '^(helpers|plugins/interactive|rngaggregator)/'
# No input and no output: of the system's headers none, and of the language's none that reads or writes.
keep_in '^helpers/gathering/' '^([a-z0-9_]+[.]h|sys/.*|[a-z]*stream|cstdio|filesystem|print|format)$' '^$'
keep '^openssl/' '^(helpers/gathering|combine|openssl|tools/rngctl/doctor/openssl|benchmarks/timing/peers|tests/openssl)/'
# The module runs in other people's programs, the helper in a process of its own. They share the protocol, and the start
# of a program in the background.
see '^openssl/module/' '^openssl/(module/|request[.]h$)|^plugins/interactive/start_orphan[.]h$'
see '^openssl/helper/' '^openssl/(helper/|request[.]h$)|^plugins/interactive/start_orphan[.]h$|^rngaggregator/'
keep_in '^openssl/' '^dlfcn[.]h$' '^openssl/(module/helper_process|helper/chosen_generator)[.]cpp$'
keep '^X11/' '^helpers/x11/'  # the library's display probe looks up what it calls
keep '^cairo' '^helpers/x11/'
keep '^Q[A-Za-z]*(/|$)|^ui_' '^helpers/qt/'
keep '^(termios|sys/ioctl|curses)[.]h$' '^(helpers/tty|tools/rngctl)/'
keep_in '^helpers/' '^dlfcn[.]h$' '^$'

# --- The tool. Two families of commands, doctor and check, stand beside each other on rooms that know
# neither.
see '^tools/' '^(tools|providers|quality|rngaggregator)/|^settings/known_path[.]h$|^helpers/gathering/hmac[.]h$'
tool='^tools/rngctl/'
common="${tool}refusal[.]h\$"
see "${tool}terminal/" "${tool}terminal/|$common"
see "${tool}channel/" "${tool}channel/"
see "${tool}process/" "${tool}(channel|process)/|$common|^rngaggregator/"
see "${tool}loader/" "${tool}(loader|terminal)/|$common|^providers/library_handle[.]h$|^rngaggregator/"
see "${tool}devices/" \
  "${tool}(devices|channel|process|loader|terminal)/|$common|^providers/library_handle[.]h$|^rngaggregator/"
see "${tool}files/" "${tool}(files|terminal)/|$common"
see "${tool}settings/" \
  "${tool}(settings|files|channel|terminal|process/forked)/|${tool}process/descriptor[.]h\$|$common|^settings/known_path[.]h$|^providers/catalogue[.]h$|^rngaggregator/"
started="${tool}started_aggregator[.]h\$"
see "${tool}commands/[^/]*\$" "${tool}(commands|devices|settings|terminal|process/forked)/|$common|$started|^providers/catalogue[.]h$|^rngaggregator/"
see "${tool}drawing/" \
  "${tool}(drawing|channel|process|settings|terminal)/|$common|$started|^rngaggregator/"
see "${tool}commands/read/" \
  "${tool}commands/(read/|provider_text[.]h$)|${tool}(drawing|channel|process|terminal)/|$common|^helpers/gathering/hmac[.]h$|^rngaggregator/"
see "${tool}test/" \
  "${tool}(test|drawing|channel|process|terminal)/|${tool}commands/provider_text[.]h$|$common|^(quality|rngaggregator)/"
keep_in "$tool" '^helpers/' "${tool}commands/read/"
keep_in "$tool" '^quality/' "${tool}(test|check)/"
keep_in "$tool" '^png[.]h$' "${tool}test/picture[.]cpp$"
see "${tool}doctor/" \
  "${tool}(doctor|devices|files|settings|channel|process|loader|terminal)/|$common|$started|^(providers|rngaggregator)/|^settings/"
# What judges files needs no answer of a child.
see "${tool}doctor/permissions/" \
  "${tool}(doctor/permissions/|doctor/report[.]h|files/|loader/|terminal/)|^providers/catalogue[.]h$"
# A draw by OpenSSL needs no plug-in.
see "${tool}doctor/openssl/" \
  "${tool}(doctor/openssl/|doctor/doctor[.]h|settings/|channel/|files/|process/|terminal/)|$common|^providers/library_handle[.]h$"
see "${tool}check/" \
  "${tool}(check|devices|channel|process|loader|terminal)/|$common|^providers/catalogue[.]h$|^(quality|rngaggregator)/"
# What judges bytes needs no plug-in.
see "${tool}check/looks/" "${tool}(check/looks|terminal)/|^(quality|rngaggregator)/"
see "${tool}check/plugin/" \
  "${tool}(check/plugin/|check/(finding|transcript)[.]h|channel/|process/)|^rngaggregator/"
keep_in "$tool" '^dlfcn[.]h$' "${tool}((process|loader|devices|doctor|check)/|started_aggregator[.]cpp$)"
keep_in "$tool" '^(libelf|gelf)[.]h$' "${tool}loader/"
keep_in "$tool" '^CLI/' "${tool}main[.]cpp$"

keep '^tests/' '^tests/'

# Comments may name it.
grep -rn CKP_GetPath include aggregator providers settings plugins helpers combine tools |
  awk -F: '$1 != "settings/known_path.cpp"' | sed 's,//.*,,' | grep CKP_GetPath >"$hits" || :
report "CKP_GetPath is kept to settings/known_path.cpp"

exit $status
