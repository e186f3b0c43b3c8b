#!/bin/bash
# help_test.sh RNGCTL COMPLETIONS PAGE: for each command, both shells complete and the manual page
# describes exactly what --help lists. Every number in --help is also in the page.
set -eu
rngctl=$1
completions=$2
page=$3

listed() { # COMMAND...: options and subcommands in its help
  "$rngctl" "$@" --help | awk '
    /^[A-Z].*:$/ { part = $1 }
    (part == "Options:" || part == "Subcommands:") && /^  [^ ]/ { print $1 }' |
    tr , '\n' | sort
}

# Without the kinds, which --help does not list. Bash does not complete -h, so that is not compared.
offered_by_bash() { # COMMAND...
  bash -c '
    . "$0/rngctl.bash"
    compopt() { :; }
    for typed in "" -; do
      COMP_WORDS=(rngctl "$@" "$typed")
      COMP_CWORD=$(($# + 1))
      COMPREPLY=()
      _rngctl
      printf "%s\n" "${COMPREPLY[@]}"
    done' "$completions" "$@" | grep -vxF "$kinds" | grep . | sort -u
}

offered_by_zsh() { # COMMAND...
  zsh -fc '
    _arguments() { print -l -- "$@" }
    compdef() { : }
    words=(rngctl "${@:2}" "") CURRENT=$(($# + 1))
    . "$1/_rngctl"' zsh "$completions" "$@" |
    sed -nE -e 's/^1:command:\((.*)\)$/\1/p' -e 's/^(\([^)]*\))?(--?[a-z0-9-]+).*/\2/p' |
    tr ' ' '\n' | sort -u
}

# The options of a command that a section of the page mentions.
told_in() { # SECTION COMMAND...
  awk -v section="$1" -v wanted="${*:2}" '
    function words(from, text) {
      for (text = ""; from <= NF && $from !~ /^(Ar|Op|Fl)$/; ++from) text = text (text ? " " : "") $from
      return text
    }
    /^\.Sh / { part = $2 }
    part == "SYNOPSIS" && /^\.Nm/ { command = "" }
    part == "SYNOPSIS" && /^\.Cm / { command = words(2) }
    part == "DESCRIPTION" && /^\.It Cm / { command = words(3) }
    part == section && command == wanted && (part == "SYNOPSIS" || /^\.It Fl /) {
      for (i = 1; i < NF; ++i) if ($i ~ /^\.?Fl$/) print "-" $(i + 1)
    }' "$page" | sort
}

# The part of the page about a command, as one line. With an option: only what it says of that option.
page_about() { # OPTION COMMAND...
  awk -v wanted="${*:2}" -v option="$1" '
    /^\.Sh / { part = $2 }
    part != "DESCRIPTION" { next }
    /^\.It Cm / {
      command = $3
      if ($4 == "set") command = "default set"
      in_option = 0
    }
    /^\.(It|El)/ { in_option = 0 }
    /^\.It Fl / { for (i = 3; i <= NF; ++i) if ("-" $i == option) in_option = 1 }
    command == wanted && (option == "" || in_option) { sub(/^\.[A-Z][a-z] /, ""); printf "%s ", $0 }' "$page"
}

# Each number of the text, with its unit: the word that follows it, unless the number is a default.
numbers() {
  sed -E 's/=([0-9]+)/ \1;/' | tr '\n' ' ' | tr -s ' ' | grep -oE '\b[0-9][0-9,]*\b( [A-Za-z][A-Za-z0-9]*)?' || :
}

# The numbers that --help gives for an option, or elsewhere if there is none.
helped() { # OPTION COMMAND...
  "$rngctl" "${@:2}" --help | awk -v wanted="$1" '
    /^Exit status/ { exit }
    /^[A-Z].*:$/ { part = $1 }
    /^[^ ]/ && !/:$/ { part = "" }
    part == "Options:" && /^  [^ ]/ { option = $1; $1 = "" }
    part != "Options:" { option = "" }
    option == wanted' | numbers
}

kinds=$(zsh -fc '_values() { print -l -- "${@:2}" }; _arguments() { : }; words=(rngctl x ""); CURRENT=3
  . "$0/_rngctl"; _rngctl_kinds' "$completions")
[ "$(echo "$kinds" | wc -l)" = 12 ]

status=0
count=0
compare_numbers() { # OPTION COMMAND...
  while read -r number; do
    count=$((count + 1))
    page_about "$@" | grep -qE "(^|[^0-9,])$number\b" && continue
    status=1
    echo "page: rngctl ${*:2}: $1: there is no \"$number\", as in the help"
  done < <(helped "$@")
}

compare() { # WHAT WANTED GOT
  [ "$2" = "$3" ] && return
  status=1
  echo "$1"
  diff <(echo "$2") <(echo "$3") || :
}

commands=$(listed | grep -v '^-')
compare "page: commands" "$(printf '%s\ndefault set' "$commands" | sort)" \
  "$(sed -n 's/^\.It Cm \([a-z ]*[a-z]\).*/\1/p' "$page" | sort)"
compare "page: rngctl" "$(listed | grep ^--)" "$(told_in SYNOPSIS)"
[ "$(echo "$commands" | wc -l)" -ge 5 ]
while read -r command; do
  # shellcheck disable=SC2086 # one or two words
  wanted=$(listed $command)
  # shellcheck disable=SC2086
  compare "bash: rngctl $command" "$(echo "$wanted" | grep -vx -e -h)" "$(offered_by_bash $command)"
  # shellcheck disable=SC2086
  compare "zsh: rngctl $command" "$wanted" "$(offered_by_zsh $command)"
  [ -n "$command" ] || continue
  for option in "" $(echo "$wanted" | grep -e '^-'); do
    # shellcheck disable=SC2086
    compare_numbers "$option" $command
  done
  for section in SYNOPSIS DESCRIPTION; do
    # shellcheck disable=SC2086
    compare "page, $section: rngctl $command" "$(echo "$wanted" | grep -e '^-' | grep -vxe --help -e -h)" \
      "$(told_in $section $command)"
  done
done <<<"$(printf '\n%s\ndefault set' "$commands")"
[ $count -ge 15 ]
compare "page: exit status" \
  "$(for command in doctor check test; do "$rngctl" $command --help; done |
    sed -n '/^Exit status/,$p' | grep -oE '(^|[:;] | )[0-9] ' | tr -dc '0-9\n' | sort -u)" \
  "$(sed -n '/^\.Sh EXIT STATUS/,/^\.El/s/^\.It //p' "$page")"
compare "help: exit status" "doctor: 0 Every,1 One,2 Wrong,3 Without
check: 0 no,1 a,2 wrong
test: 0 nothing,1 the,2 wrong,3 the
--help: 0 success,1 negative,2 wrong,3 no" \
  "$(for command in doctor check test --help; do
    echo "$command: $("$rngctl" $command --help | sed -n '/^Exit status/,$p' |
      grep -oE '\b[0-9] +[A-Za-z]+' | tr -s ' ' | paste -sd ,)"
  done)"
compare "help: what the options take" "default --mask UINT
read -n BYTES
read -o FILE
read --device ID
read --from NAME[:ID],...
read --need N
read --record FILE
test -n BYTES
test --restarts N
test --device ID
test --picture FILE
check --factory NAME
check --timeout SECONDS:INT
check --only CHECK[,CHECK]
doctor --timeout SECONDS:INT
doctor --user NAME" \
  "$(for command in list default read test check doctor; do
    "$rngctl" $command --help | sed -nE "s/^  (-[^ ]+) ([A-Z][]A-Z[,:.]*)([ :=].*|$)/$command \1 \2/p"
  done)"
# Both shells know the same checks.
checks_in_zsh=$(zsh -fc '_values() { print -l -- "${@:4}" }; _arguments() { : }; words=(rngctl x ""); CURRENT=3
  . "$0/_rngctl"; _rngctl_checks' "$completions")
checks_in_bash=$(bash -c '. "$0/rngctl.bash"; COMP_WORDS=(rngctl check --only ""); COMP_CWORD=3; _rngctl
  printf "%s\n" "${COMPREPLY[@]}"' "$completions")
compare "checks" "$checks_in_bash" "$checks_in_zsh"
# The doctor knows every kind that the shells offer.
while read -r kind; do  # the doctor exits with 2 for an unknown kind
  "$rngctl" doctor "$kind" --timeout 1 >/dev/null 2>&1 || [ $? != 2 ] || compare "kinds" "$kind" "unknown"
done <<<"$kinds"
exit $status
