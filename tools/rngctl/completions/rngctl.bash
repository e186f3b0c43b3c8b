# Completion of rngctl for bash.

# The kinds in $@, first those that are loaded. Listing starts the plug-ins, so it gets two seconds.
_rngctl_loaded_first() {
  local rngctl loaded kind first=() rest=()
  rngctl=$(type -P -- "${COMP_WORDS[0]/#\~/$HOME}") || rngctl=
  [[ -z $rngctl ]] || loaded=$(timeout 2 "$rngctl" list </dev/null 2>/dev/null | sed -n '1d; /^$/q; s/ .*//p')
  for kind; do
    if [[ $'\n'$loaded$'\n' == *$'\n'"$kind"$'\n'* ]]; then first+=("$kind"); else rest+=("$kind"); fi
  done
  echo "${first[@]}" "${rest[@]}"
}

_rngctl() {
  local kinds="bioqt unixx11 dsdr accord sobol JacartaGost Rutoken EsmartGost biokbd unixdev grandmaster biocore"
  local checks="catalogue-pair one-export no-unique-symbols no-static-tls no-executable-stack opens
    gives-object null-settings empty-settings built-in-settings reload available name name-length
    name-in-catalogue description description-line hardware-id plain-texts device-report stable-flags some-flag
    self-test any-device unknown-device own-device empty-draw draw-succeeds waits-are-flagged
    refused-device draws-after-calls cancel failed-draw-is-zero draw-fills-buffer drawn-values
    draws-differ draws-look-random concurrent-calls release-ends-threads release-closes-files no-handlers-left
    clean-exit exit-without-release unmapped process-state load-cycles no-exceptions
    no-lifecycle-calls no-output"
  local word=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]} words

  case ${COMP_WORDS[COMP_CWORD - 1]} in
    -o | --picture | --record) compopt -o default; return ;;
    --only)
      # The last of several: a comma does not begin a new word.
      local before=
      [[ $word == *,* ]] && before=${word%,*},
      mapfile -t COMPREPLY < <(compgen -P "$before" -W "$checks" -- "${word##*,}")
      return
      ;;
    --from)
      # The last of several, as above.
      local given=
      [[ $word == *,* ]] && given=${word%,*},
      mapfile -t COMPREPLY < <(compgen -P "$given" -W "$kinds" -- "${word##*,}")
      return
      ;;
    --user) compopt -o nosort; mapfile -t COMPREPLY < <(compgen -u -- "$word"); return ;;
    -n | --device | --factory | --mask | --need | --restarts | --timeout) return ;; # the user types the value
  esac

  [[ $command == default && $COMP_CWORD -gt 2 && ${COMP_WORDS[2]} == set ]] && command="default set"
  ((COMP_CWORD == 1)) && command=
  case $command in
    "") words="list read default doctor check test --help --version" ;;
    list) words="--json --help" ;;
    read)
      compopt -o nosort
      # shellcheck disable=SC2086 # a list of words
      [[ $word == -* ]] || kinds=$(_rngctl_loaded_first $kinds)
      words="$kinds -n --raw --hex --base64 -o --force --device --unchecked --from --need --record --help"
      ;;
    test)
      compopt -o nosort
      # shellcheck disable=SC2086 # a list of words
      [[ $word == -* ]] || kinds=$(_rngctl_loaded_first $kinds)
      words="$kinds -n --restarts --device --json --picture --help"
      ;;
    default) words="set --mask --help" ;;
    "default set") words="$kinds --help" ;;
    doctor) words="$kinds --json --openssl --timeout --user --help" ;;
    check)
      words="--factory --json --only --timeout --help"
      [[ $word == -* ]] || compopt -o default
      [[ $word == -* ]] || words=
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

complete -F _rngctl rngctl
