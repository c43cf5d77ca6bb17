#!/usr/bin/env bash
# Runs one test case of the kova-mapping tool: run_case.sh TOOL CASE.sh SOURCE_DIR
#
# The case is a bash script sourced in a fresh temporary directory, with these helpers:
#   run ARGS...            runs the tool (standard input empty); keeps its output, errors and status
#   run_stdin FILE ARGS... the same with standard input read from FILE
#   expect_status N        the last run's exit status is N
#   expect_out / expect_err   the last run's standard output / error is exactly the here-document
#                          given (a leading "\t" of a line, repeated, stands for a tab)
#   expect_file FILE       FILE holds exactly the here-document given
#   expect_text TEXT       the last run's standard output is exactly TEXT (no newline added)
#   expect_file_text FILE TEXT   FILE holds exactly TEXT
#   expect_no_err          the last run wrote nothing on standard error
#   expect_same A B        files A and B have the same bytes
#   digest64               base64 of the SHA-256 digest of standard input (openssl)
# and variables TOOL, EXAMPLES (examples/documents), DOCS (tests/data/documents), WORK.
set -uo pipefail
TOOL="$(realpath "$1")"
CASE="$(realpath "$2")"
SOURCE_DIR="$(realpath "$3")"
EXAMPLES="$SOURCE_DIR/examples/documents"
DOCS="$SOURCE_DIR/tests/data/documents"
WORK="$(mktemp -d)"
trap 'rm -rf "$WORK"' EXIT
cd "$WORK" || exit 1

failures=0
checks=0
status=0
last=""

fail() {
  echo "FAIL at ${CASE##*/}:${BASH_LINENO[1]} after: $last"
  echo "$*"
  failures=$((failures + 1))
}

run() {
  last="kova-mapping $*"
  "$TOOL" "$@" </dev/null >"$WORK/.out" 2>"$WORK/.err"
  status=$?
}

run_stdin() {
  local input="$1"
  shift
  last="kova-mapping $* < $input"
  "$TOOL" "$@" <"$input" >"$WORK/.out" 2>"$WORK/.err"
  status=$?
}

expect_status() {
  checks=$((checks + 1))
  [ "$status" -eq "$1" ] || fail "exit status $status, expected $1; standard error: $(cat "$WORK/.err")"
}

# Standard input with each leading "\t" turned into a tab.
expected_text() { sed -e ':a' -e 's/^\(\t*\)\\t/\1\t/' -e 'ta'; }

expect_out() {
  checks=$((checks + 1))
  expected_text >"$WORK/.expected"
  diff -u "$WORK/.expected" "$WORK/.out" >"$WORK/.diff" || fail "standard output differs:
$(cat "$WORK/.diff")"
}

expect_err() {
  checks=$((checks + 1))
  expected_text >"$WORK/.expected"
  diff -u "$WORK/.expected" "$WORK/.err" >"$WORK/.diff" || fail "standard error differs:
$(cat "$WORK/.diff")"
}

expect_file() {
  checks=$((checks + 1))
  expected_text >"$WORK/.expected"
  diff -u "$WORK/.expected" "$1" >"$WORK/.diff" || fail "$1 differs:
$(cat "$WORK/.diff")"
}

expect_text() {
  checks=$((checks + 1))
  printf '%s' "$1" >"$WORK/.expected"
  cmp -s "$WORK/.expected" "$WORK/.out" || fail "standard output differs:
expected: $1
actual:   $(cat "$WORK/.out")"
}

expect_file_text() {
  checks=$((checks + 1))
  printf '%s' "$2" >"$WORK/.expected"
  cmp -s "$WORK/.expected" "$1" || fail "$1 differs:
expected: $2
actual:   $(cat "$1")"
}

expect_no_err() {
  checks=$((checks + 1))
  [ ! -s "$WORK/.err" ] || fail "unexpected standard error: $(cat "$WORK/.err")"
}

expect_same() {
  checks=$((checks + 1))
  cmp -s "$1" "$2" || fail "$1 and $2 differ"
}

digest64() { openssl dgst -sha256 -binary | base64 -w0; }

# shellcheck source=/dev/null
source "$CASE"

if [ "$failures" -ne 0 ]; then
  echo "$failures of $checks checks failed"
  exit 1
fi
if [ "$checks" -eq 0 ]; then
  echo "the case checked nothing"
  exit 1
fi
echo "$checks checks passed"
