#!/usr/bin/env bash
# The kova-mapping(1) manual page rendered from docs/kova-mapping.md:
#   manpage_test.sh MANPAGE TOOL VERSION
# groff renders it without a warning, man(1) reads it at 80 columns without a warning, its .TH line
# carries the name, section, date, version and manual, its NAME line is what apropos reads, and it
# has a subsection for every command of `kova-mapping --help` and names every option of every
# command (by one of its names: -o or --output).
set -uo pipefail
page="$(realpath "$1")"
tool="$2"
version="$3"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

failures=0
checks=0
check() {  # check DESCRIPTION COMMAND...
  local description="$1"
  shift
  checks=$((checks + 1))
  "$@" || { echo "FAIL: $description"; failures=$((failures + 1)); }
}

[ -s "$page" ] || { echo "FAIL: no manual page at $page"; exit 1; }

title_line="$(grep -m 1 '^\.TH ' "$page")"
check ".TH line: $title_line" \
  grep -Eq "^\.TH \"kova-mapping\" \"1\" \"[0-9]{4}-[0-9]{2}-[0-9]{2}\" \"KOVAMappingServices $version\" \"User Commands\"$" \
  <<<"$title_line"
# pandoc marks pages with tables for tbl, which man(1) then runs.
check "first line asks for tbl" test "$(head -n 1 "$page")" = "'\\\" t"

# groff with every warning on, for a terminal.
LC_ALL=C.UTF-8 groff -man -t -Tutf8 -ww -z "$page" 2>"$work/groff.err"
check "groff exit status" test $? -eq 0
check "groff warnings: $(cat "$work/groff.err")" test ! -s "$work/groff.err"

# man(1) as users run it, 80 columns wide.
if command -v man >/dev/null; then
  env -u MAN_KEEP_FORMATTING -u MANPAGER -u PAGER LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -l "$page" >"$work/page.txt" 2>"$work/man.err"
  check "man exit status" test $? -eq 0
  check "man warnings: $(cat "$work/man.err")" test ! -s "$work/man.err"
else
  LC_ALL=C.UTF-8 groff -man -t -Tutf8 -P-cbou "$page" >"$work/page.txt" 2>/dev/null
fi
text="$work/page.txt"
check "rendered page starts with the header" \
  grep -Eq '^kova-mapping\(1\) +User Commands +kova-mapping\(1\)$' <(head -n 1 "$text")
check "rendered page ends with the version and date" \
  grep -Eq "^KOVAMappingServices $version +[0-9]{4}-[0-9]{2}-[0-9]{2} +kova-mapping\(1\)$" <(tail -n 1 "$text")
for section in NAME SYNOPSIS DESCRIPTION COMMANDS ERRORS ENVIRONMENT FILES; do
  check "section $section" grep -qx "$section" "$text"
done
# No heading of the Markdown is left over as a section of its own.
check "no section named after the page" bash -c "! grep -q '^kova-mapping(1)$' '$text'"

# The NAME line, as mandb and apropos read it.
if command -v lexgrog >/dev/null; then
  whatis="$(lexgrog "$page")"
  check "lexgrog: $whatis" grep -Fq '"kova-mapping - look into, convert and make mapping documents' <<<"$whatis"
fi

# Every command has its subsection (a heading naming it as a word), every long option is named.
help="$("$tool" --help)" || { echo "FAIL: $tool --help"; exit 1; }
mapfile -t commands < <(sed -n '/^Subcommands:$/,/^$/p' <<<"$help" | sed -n 's/^  \([a-z][a-z0-9-]*\) .*/\1/p')
check "commands found in kova-mapping --help (${#commands[@]})" test "${#commands[@]}" -ge 9
sed 's/\\-/-/g' "$page" >"$work/page.plain"
grep '^\.SS ' "$work/page.plain" | sed 's/^\.SS //' >"$work/subsections"
for command in "${commands[@]}"; do
  check "a subsection for the command $command (subsections: $(tr '\n' '|' <"$work/subsections"))" \
    grep -Eq "(^|[ /])$command( |$)" "$work/subsections"
  # Each option by one of its names (-o or --output), from the entries of the Options section.
  while read -r names; do
    [ "$names" = "-h,--help" ] && continue
    documented=0
    for name in ${names//,/ }; do
      name=${name%%\{*}
      grep -Eq -- "(^|[^a-z0-9-])$name([^a-z0-9-]|$)" "$work/page.plain" && documented=1
    done
    check "the option $names of $command is in the page" test "$documented" -eq 1
  done < <("$tool" "$command" --help | sed -n '/^Options:$/,/^$/s/^  \(-[^ ]*\).*/\1/p')
done

if [ "$failures" -ne 0 ]; then
  echo "$failures of $checks checks failed"
  exit 1
fi
echo "$checks checks passed (${#commands[@]} commands)"
