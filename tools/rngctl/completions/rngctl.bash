# Completion of rngctl for bash.

_rngctl() {
  local kinds="bioqt unixx11 dsdr accord sobol JacartaGost Rutoken EsmartGost biokbd unixdev grandmaster biocore"
  local word=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]} words

  case ${COMP_WORDS[COMP_CWORD - 1]} in
    -o) compopt -o default; return ;;
    -n | --factory | --mask | --timeout) return ;; # the user types the value
  esac

  [[ $command == default && $COMP_CWORD -gt 2 && ${COMP_WORDS[2]} == set ]] && command="default set"
  ((COMP_CWORD == 1)) && command=
  case $command in
    "") words="list read default doctor check --help --version" ;;
    list) words="--help" ;;
    read) words="$kinds -n --raw --hex --base64 -o --help" ;;
    default) words="set --mask --help" ;;
    "default set") words="$kinds --help" ;;
    doctor) words="$kinds --json --timeout --help" ;;
    check)
      words="--factory --json --timeout --help"
      [[ $word == -* ]] || compopt -o default
      [[ $word == -* ]] || words=
      ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

complete -F _rngctl rngctl
