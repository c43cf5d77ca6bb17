# bash completion for kova-mapping(1)                                    -*- shell-script -*-
#
# Completes the commands, each command's options, the values of --format and of the version
# options and arguments, and the files that the commands read and write. Installed as
# share/bash-completion/completions/kova-mapping, where the bash-completion package loads it the
# first time kova-mapping is completed; without that package, source this file.
#
# The lists below are those of `kova-mapping --help` and `kova-mapping COMMAND --help`. The test
# tool.completion (tests/tool/completion_test.sh) compares what this file offers with the built
# tool's help and fails on any difference: a command or option added to the tool goes here too.

_kova_mapping_commands='check dump convert pack unpack stamp ces diff tree audit drift generate schema'
_kova_mapping_global_options='-h --help --version'
_kova_mapping_versions='6 7 8 9 10 11 12'

# Sets `options` to the options of command $1 and `valued` to those of them that take a value;
# fails for a word that names no command.
_kova_mapping_command_options() {
  case $1 in
    check | dump | drift)
      options='-h --help --json -o --output' valued='-o --output' ;;
    convert)
      options='-h --help -o --output --compress --plain' valued='-o --output' ;;
    pack | unpack | ces | schema)
      options='-h --help -o --output' valued='-o --output' ;;
    stamp)
      options='-h --help --names --text --json -o --output' valued='--names -o --output' ;;
    diff)
      options='-h --help --format --json -o --output' valued='--format -o --output' ;;
    tree)
      options='-h --help --format --ascii --max-depth -o --output' valued='--format --max-depth -o --output' ;;
    audit)
      options='-h --help --glob -j --jobs --json --stamps --progress --no-progress --max-size -o --output'
      valued='--glob -j --jobs --max-size -o --output' ;;
    generate)
      options='-h --help --references --instances --version --seed --compress -o --output'
      valued='--references --instances --version --seed -o --output' ;;
    *) return 1 ;;
  esac
}

# Files and directories starting with $cur, through bash-completion's _filedir when it is loaded
# (quoting, ~), or compgen.
_kova_mapping_files() {
  if declare -F _filedir >/dev/null; then
    _filedir
  else
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$cur")
  fi
}

# The values of option $1: files for the output, the formats, the document versions; nothing for
# numbers, patterns and attribute names.
_kova_mapping_option_values() {
  case $1 in
    -o | --output) _kova_mapping_files ;;
    --format) mapfile -t COMPREPLY < <(compgen -W 'text dot' -- "$cur") ;;
    --version) mapfile -t COMPREPLY < <(compgen -W "$_kova_mapping_versions" -- "$cur") ;;
    *) COMPREPLY=() ;;
  esac
}

# The arguments of command $1 that are not options: files and directories, but for ces (the text
# of a CE stamp), generate (none) and schema (a document version).
_kova_mapping_arguments() {
  case $1 in
    ces | generate) COMPREPLY=() ;;
    schema) mapfile -t COMPREPLY < <(compgen -W "$_kova_mapping_versions" -- "$cur") ;;
    *) _kova_mapping_files ;;
  esac
}

_kova_mapping() {
  COMPREPLY=()
  # bash splits "--format=dot" into "--format", "=" and "dot": join them again.
  local -a words=()
  local i word cword=0
  for ((i = 0; i < ${#COMP_WORDS[@]}; i++)); do
    word=${COMP_WORDS[i]}
    if ((${#words[@]} > 1)) && [[ ${words[-1]} == -* && ($word == '=' || ${COMP_WORDS[i - 1]} == '=') ]]; then
      words[-1]+=$word
    else
      words+=("$word")
    fi
    if ((i == COMP_CWORD)); then
      cword=$((${#words[@]} - 1))
    fi
  done
  local cur=${words[cword]} prev=
  if ((cword > 0)); then
    prev=${words[cword - 1]}
  fi

  # The command: the first word after the tool's name that is not an option.
  local command=
  for ((i = 1; i < cword; i++)); do
    if [[ ${words[i]} != -* ]]; then
      command=${words[i]}
      break
    fi
  done
  if [[ -z $command ]]; then
    if [[ $cur == -* ]]; then
      mapfile -t COMPREPLY < <(compgen -W "$_kova_mapping_global_options" -- "$cur")
    else
      mapfile -t COMPREPLY < <(compgen -W "$_kova_mapping_commands" -- "$cur")
    fi
    return 0
  fi

  local options valued
  _kova_mapping_command_options "$command" || return 0
  if [[ $cur == -*=* ]]; then
    # --option=value: bash completes the part after "=".
    local option=${cur%%=*}
    cur=${cur#*=}
    if [[ " $valued " == *" $option "* ]]; then
      _kova_mapping_option_values "$option"
    fi
  elif [[ " $valued " == *" $prev "* ]]; then
    _kova_mapping_option_values "$prev"
  elif [[ $cur == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$cur")
  else
    _kova_mapping_arguments "$command"
  fi
  return 0
}

complete -F _kova_mapping kova-mapping
