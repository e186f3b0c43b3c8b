#!/bin/sh
# binary_fact.sh FACT FILE [ARGUMENT]: succeeds when the built FILE has the property. Otherwise it
# prints what stands against it and fails.
set -eu
LC_ALL=C
export LC_ALL

fact=$1
file=$2

fail() {
  echo "$file: $*"
  exit 1
}

# Fails when there is anything to read.
nothing() {
  found=$(cat)
  [ -z "$found" ] || fail "$fact: $found"
}

dynamic() { readelf -dW "$file"; }

# A file that cannot be read would have no fault.
readelf -hW "$file" >/dev/null || fail "not readable"

case $fact in
  exports) # exactly the sorted lines of the file ARGUMENT: type and name
    nm -D --defined-only "$file" | awk '{ print $2, $3 }' | sort | diff "$3" -
    ;;
  no_unique_symbols) readelf -sW "$file" | awk '$5 == "UNIQUE" { print $8 }' | nothing ;;
  no_protected_symbols) readelf -sW "$file" | awk '$6 == "PROTECTED" { print $8 }' | nothing ;;
  no_thread_storage) readelf -lW "$file" | awk '$1 == "TLS"' | nothing ;;
  no_text_relocations) dynamic | grep TEXTREL | nothing ;;
  no_symbolic_binding) dynamic | grep SYMBOLIC | nothing ;;
  no_run_path_tag) dynamic | grep '(RUNPATH)' | nothing ;;
  needs_only_the_runtime)
    dynamic | awk '/\(NEEDED\)/ { print $NF }' |
      grep -vxE '\[(libstdc\+\+\.so\.6|libgcc_s\.so\.1|libc\.so\.6)\]' | nothing
    ;;
  needs_no_x_nor_boost) dynamic | awk '/\(NEEDED\)/' | grep -iE 'libX|boost' | nothing ;;
  is_named) # ARGUMENT: the SONAME
    dynamic | grep -qF "Library soname: [$3]" || fail "not named $3"
    ;;
  has_version_links) # ARGUMENT: the version; FILE is the link without it
    [ "$(readlink "$file")" = "$(basename "$file").${3%%.*}" ] || fail "link to the major version"
    [ "$(readlink "$file.${3%%.*}")" = "$(basename "$file").$3" ] || fail "link to the file"
    [ -f "$file.$3" ] && [ ! -h "$file.$3" ] || fail "no file of version $3"
    ;;
  searches_lib_first) # DT_RPATH comes before LD_LIBRARY_PATH
    dynamic | grep -qE '\(RPATH\) +Library rpath: \[\$ORIGIN/\.\./lib\]$' || fail "no such tag"
    ;;
  binds_at_load) dynamic | grep -qE '\(FLAGS_1\) .*NOW' || fail "lazy binding" ;;
  protects_relocations) readelf -lW "$file" | grep -q '^ *GNU_RELRO ' || fail "no GNU_RELRO" ;;
  checks_its_stack) nm -D "$file" | grep -q ' U __stack_chk_fail' || fail "no stack protector" ;;
  checks_buffers) nm -D "$file" | grep -q ' U __.*printf_chk' || fail "not compiled with _FORTIFY_SOURCE" ;;
  stack_is_data)
    flags=$(readelf -lW "$file" | awk '$1 == "GNU_STACK" { print $7 $8 }')
    case $flags in RW0x*) ;; *) fail "stack flags: $flags" ;; esac
    ;;
  has_one_initialiser) # the compiler's frame_dummy and one of our own
    size=$(dynamic | awk '/\(INIT_ARRAYSZ\)/ { print $3 }')
    [ "$size" = 16 ] || fail "the array of initialisers has $size bytes"
    dynamic | grep PREINIT_ARRAY | nothing
    nm "$file" | grep -q ' frame_dummy$' || fail "frame_dummy is not one of them"
    own=$(nm "$file" | awk '$3 ~ /^_GLOBAL__sub_I_/ && $3 !~ /\.cold$/ { print $3 }')
    [ "$own" = _GLOBAL__sub_I_process_state.cpp ] || fail "initialisers: $own"
    ;;
  has_no_plugins_in_run_path) # in the build tree, a run finds no plug-in by accident
    find "$(dirname "$file")/../lib" -name 'librng*' 2>/dev/null | nothing
    ;;
  is_type) # ARGUMENT: EXEC or DYN
    readelf -hW "$file" | grep -qE "^ *Type: +$3 " || fail "not $3"
    ;;
  copies_variable) # ARGUMENT: a variable of a shared library that lives in this program instead
    readelf -rW "$file" | grep -qE "R_X86_64_COPY .* $3( |\$)" || fail "$3 is not copied"
    ;;
  initialises_no_name_variable) # it has the library's, or room for a copy of it
    nm "$file" | awk '$2 ~ /^[DdRr]$/ && $3 ~ /^rng[A-Z][A-Za-z0-9]*$/ { print $3 }' | nothing
    ;;
  exports_lifecycle_calls) # so a plug-in's calls of them arrive in this program, not in the library
    for name in Initialize ShutDown IsInitialized; do
      nm -D --defined-only "$file" | grep -q " T $name\$" || fail "$name is not exported"
    done
    ;;
  *) fail "unknown fact: $fact" ;;
esac
