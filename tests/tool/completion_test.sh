#!/usr/bin/env bash
# The bash completion of kova-mapping against the tool's own help:
#   completion_test.sh TOOL COMPLETION_FILE
#
# The commands of `kova-mapping --help` and, for each command, the options of
# `kova-mapping COMMAND --help` must be exactly what the completion offers, and each option must
# be completed as its help says: after an option that takes a value, its values (files for FILE,
# the words of a choice like text|dot, the numbers of a small range like [6 - 12]) or nothing;
# after a flag, the options again. The arguments that are not options complete to files, but for a
# CE stamp's text (nothing) and a choice or small range (its values). The whole comparison runs
# with the completion alone, then again after bash-completion's own functions when they are
# installed (the completion then lists files through them).
set -uo pipefail
tool="$(realpath "$1")"
completion="$(realpath "$2")"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

failures=0
checks=0
fail() {
  echo "FAIL ($mode): $*"
  failures=$((failures + 1))
}

# --- What the tool's help says ---------------------------------------------------------------

# The entries of one section ("Options", "Positionals", "Subcommands") of a CLI11 help text, one a
# line: the first column (names, then the value text), without the description. The description
# starts after a run of blanks, or alone on the next line (indented by 30) when the names are long.
help_entries() {
  local text="$1" section="$2" inside=0 line next entry
  local -a lines
  mapfile -t lines <<<"$text"
  local n=${#lines[@]} i
  for ((i = 0; i < n; i++)); do
    line=${lines[i]}
    if [[ $line == "$section:" ]]; then
      inside=1
      continue
    fi
    ((inside)) || continue
    [[ -z $line ]] && break
    [[ $line =~ ^\ \ [^\ ] ]] || continue  # a description's own line
    entry=${line:2}
    next=""
    ((i + 1 < n)) && next=${lines[i + 1]}
    if [[ $entry == *"  "* ]]; then
      entry=${entry%%  *}
    elif [[ $next =~ ^\ {30} ]]; then
      :  # long names: the description is on the next line
    elif ((${#line} > 30)) && [[ ${line:29:1} == " " ]]; then
      entry=${line:2:27}  # names of 27 characters, then one blank and the description
      entry=${entry%% }
    fi
    printf '%s\n' "$entry"
  done
}

# The names of an entry ("-o,--output FILE" gives "-o --output"); negated flags lose their
# "{false}".
entry_names() {
  local first=${1%% *}
  first=${first//\{false\}/}
  first=${first//\{true\}/}
  printf '%s\n' "${first//,/ }"
}

# The value text of an entry ("FILE", "text|dot", "INT:INT in [1 - 1024]"), empty for a flag.
entry_value() {
  local rest=""
  [[ $1 == *" "* ]] && rest=${1#* }
  case $rest in
    "" | Excludes:* | Needs:* | "(Env:"*) rest="" ;;
  esac
  printf '%s\n' "$rest"
}

# What the completion must offer for a value text, as words: "FILES" (the files of the folder),
# the words of a choice ({a,b} or a|b), the numbers of a small range ([6 - 12] or 6..12), or nothing.
expected_values() {
  local text="$1" low high
  if [[ $text =~ ^FILE( |$) ]]; then
    echo FILES
  elif [[ $text =~ \{([^}]*)\} ]]; then
    echo "${BASH_REMATCH[1]//,/ }"
  elif [[ ${text%% *} =~ ^[A-Za-z0-9_-]+(\|[A-Za-z0-9_-]+)+$ ]]; then
    echo "${BASH_REMATCH[0]//|/ }"
  elif [[ $text =~ in\ \[(-?[0-9]+)\ -\ (-?[0-9]+)\] || $text =~ ([0-9]+)\.\.([0-9]+) ]]; then
    low=${BASH_REMATCH[1]} high=${BASH_REMATCH[2]}
    if ((high - low <= 20)); then
      local numbers=""
      for ((; low <= high; low++)); do numbers+="$low "; done
      echo "${numbers% }"
    fi
  fi
}

global_help="$("$tool" --help)" || { echo "FAIL: $tool --help"; exit 1; }
mapfile -t commands < <(help_entries "$global_help" Subcommands)
[ "${#commands[@]}" -ge 9 ] || { echo "FAIL: found ${#commands[@]} commands in kova-mapping --help"; exit 1; }
global_options="$(help_entries "$global_help" Options | while read -r entry; do entry_names "$entry"; done)"

# For each command: its options (all names), each option's value text ("" for a flag) and the
# words it completes to, its first argument's entry and the words that argument completes to.
declare -A command_options option_value option_values first_argument argument_values
for command in "${commands[@]}"; do
  help="$("$tool" "$command" --help)" || { echo "FAIL: $tool $command --help"; exit 1; }
  while IFS= read -r entry; do
    value="$(entry_value "$entry")"
    values="$(expected_values "$value")"
    for option in $(entry_names "$entry"); do
      command_options[$command]+="$option "
      option_value[$command $option]=$value
      option_values[$command $option]=$values
    done
  done < <(help_entries "$help" Options)
  argument="$(help_entries "$help" Positionals | head -n 1)"
  first_argument[$command]=$argument
  if [ -z "$argument" ]; then
    argument_values[$command]=""
  elif [[ ${argument%% *} == CESTAMP ]]; then
    argument_values[$command]=""  # the text of a CE stamp
  else
    values="$(expected_values "$(entry_value "$argument")")"
    argument_values[$command]=${values:-FILES}
  fi
done

# --- What the completion offers --------------------------------------------------------------

# complete_line WORD... : sets `offered` to the completion's words for a command line whose last
# WORD is being completed (split as bash splits it: "--format=d" is "--format" "=" "d").
complete_line() {
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  COMP_LINE="$*"
  COMP_POINT=${#COMP_LINE}
  COMPREPLY=()
  local previous=""
  (($# > 1)) && previous=${COMP_WORDS[COMP_CWORD - 1]}
  _kova_mapping kova-mapping "${COMP_WORDS[COMP_CWORD]}" "$previous"
  offered="${COMPREPLY[*]}"
}

# expect DESCRIPTION EXPECTED-WORDS WORD... : completing the command line WORD... offers exactly
# the expected words, in any order, each once.
expect() {
  local description="$1" expected="$2"
  shift 2
  complete_line "$@"
  checks=$((checks + 1))
  local -A want=() got=()
  local word
  for word in $expected; do want[$word]=1; done
  for word in $offered; do
    if [[ -n ${got[$word]-} ]]; then
      fail "$description: $word offered twice"
      return
    fi
    got[$word]=1
  done
  local same=1
  ((${#want[@]} == ${#got[@]})) || same=0
  for word in "${!want[@]}"; do [[ -n ${got[$word]-} ]] || same=0; done
  ((same)) || fail "$description:
expected: $(printf '%s ' $expected)
offered:  $offered"
}

# Files of the folder the completion runs in, and what completing "" to files gives there.
mkdir -p "$work/files/folder"
touch "$work/files/a.json" "$work/files/b.envelope"
files_offered="a.json b.envelope folder"

# Words of a list that start with a prefix.
starting_with() {
  local prefix="$1" words="$2" word result=""
  for word in $words; do [[ $word == "$prefix"* ]] && result+="$word "; done
  echo "$result"
}

run_checks() {
  cd "$work/files" || exit 1
  checks=$((checks + 1))
  [[ "$(complete -p kova-mapping 2>&1)" == *"-F _kova_mapping kova-mapping" ]] ||
    fail "complete -p kova-mapping: $(complete -p kova-mapping 2>&1)"

  expect "kova-mapping <TAB>: the commands" "${commands[*]}" kova-mapping ""
  expect "kova-mapping -<TAB>: the tool's options" "$global_options" kova-mapping -
  expect "kova-mapping c<TAB>" "$(starting_with c "${commands[*]}")" kova-mapping c
  expect "kova-mapping nosuchcommand <TAB>" "" kova-mapping nosuchcommand ""

  local command option value expected all_options argument
  for command in "${commands[@]}"; do
    all_options=${command_options[$command]}
    expect "kova-mapping $command -<TAB>" "$all_options" kova-mapping "$command" -
    # Long options by their start, as they are typed.
    expect "kova-mapping $command --<TAB>" "$(starting_with -- "$all_options")" kova-mapping "$command" --

    for option in $all_options; do
      value=${option_value[$command $option]}
      if [ -z "$value" ]; then
        # A flag: what follows it is an option or an argument again.
        expect "kova-mapping $command $option -<TAB> (a flag)" "$all_options" kova-mapping "$command" "$option" -
        continue
      fi
      expected=${option_values[$command $option]}
      [ "$expected" = FILES ] && expected=$files_offered
      expect "kova-mapping $command $option <TAB> (value $value)" "$expected" kova-mapping "$command" "$option" ""
      # An option's value is never an option.
      expect "kova-mapping $command $option -<TAB> (value $value)" "" kova-mapping "$command" "$option" -
      if [[ $option == --* ]]; then
        expect "kova-mapping $command $option=<TAB> (value $value)" "$expected" \
          kova-mapping "$command" "$option" = ""
      fi
    done

    # Arguments that are not options: as their help says, the first one's kind.
    argument=${first_argument[$command]}
    expected=${argument_values[$command]}
    [ "$expected" = FILES ] && expected=$files_offered
    expect "kova-mapping $command <TAB> (argument ${argument:-none})" "$expected" kova-mapping "$command" ""
  done

  # A prefix narrows the files.
  expect "kova-mapping check a<TAB>" "a.json" kova-mapping check a
  expect "kova-mapping convert --output=b<TAB>" "b.envelope" kova-mapping convert --output = b
  expect "kova-mapping diff a.json -o f<TAB>" "folder" kova-mapping diff a.json -o f
  # Options after arguments, and the second argument of diff.
  expect "kova-mapping diff a.json --f<TAB>" "--format" kova-mapping diff a.json --f
  expect "kova-mapping diff a.json <TAB>" "$files_offered" kova-mapping diff a.json ""
}

# With the completion alone.
mode="completion alone"
# shellcheck source=/dev/null
source "$completion"
run_checks

# With the bash-completion package's functions (_filedir) loaded first, as in an interactive shell.
framework=/usr/share/bash-completion/bash_completion
if [ -r "$framework" ]; then
  mode="with bash-completion"
  (
    unset -f _kova_mapping
    complete -r kova-mapping 2>/dev/null
    # shellcheck source=/dev/null
    source "$framework" >/dev/null 2>&1
    declare -F _filedir >/dev/null || { echo "FAIL: $framework defines no _filedir"; exit 1; }
    # shellcheck source=/dev/null
    source "$completion"
    run_checks
    echo "$checks $failures" >"$work/framework-counts"
  )
  read -r checks failures <"$work/framework-counts" || { echo "FAIL: the run with bash-completion did not finish"; exit 1; }
fi

if [ "$failures" -ne 0 ]; then
  echo "$failures of $checks checks failed"
  exit 1
fi
echo "$checks checks passed (${#commands[@]} commands)"
