#!/usr/bin/env bash
# What a shared library of this project exports, symbol by symbol.
#
#   exports_test.sh libKOVAMappingServices.so [HEADER_DIR VERSION_SCRIPT]
#     SONAME libKOVAMappingServices.so.<major>; every exported name matches a pattern of
#     exported_symbols.txt (beside this script); the key classes are exported. With HEADER_DIR and
#     VERSION_SCRIPT: every class the headers mark KOVA_EXPORT has its line in the version script,
#     and every free function they mark KOVA_EXPORT is exported.
#   exports_test.sh libkovamapping_c.so [HEADER]
#     SONAME libkovamapping_c.so.1; every exported symbol starts with kova_ (C names only, nothing
#     of C++ or of the libraries it is built on). With HEADER (kova_mapping.h): every function the
#     header declares is exported.
#
# On failure the offending names are printed, all of them. (grep reads here-strings and files, not
# pipes: fed by a pipe, an early exit of grep -q could fail the pipeline under pipefail.)
set -euo pipefail
lib="$1"
here="$(cd "$(dirname "$0")" && pwd)"
status=0
fail() { echo "FAIL: $*"; status=1; }

soname="$(objdump -p "$lib" | awk '/SONAME/ {print $2}')"

# Defined dynamic symbols, one name a line, without the symbol version (name@@VERSION) and without
# the absolute symbols that only name a version node of the library's version script.
# $1: "demangle" or "raw".
defined_symbols() {
  local demangle=()
  [ "$1" = demangle ] && demangle=(--demangle)
  local versions
  versions="$(objdump -p "$lib" | awk '/^Version definitions:/ {on = 1; next} /^$/ {on = 0} on && NF >= 4 {print $4}')"
  nm -D --defined-only "${demangle[@]}" "$lib" \
    | awk -v versions="$versions" '
        BEGIN { n = split(versions, v, "\n"); for (i = 1; i <= n; i++) node[v[i]] = 1 }
        {
          type = $2
          name = $0
          sub(/^[0-9a-fA-F]* *[A-Za-z] /, "", name)
          sub(/@@?[A-Za-z0-9_.]+$/, "", name)
          if (type == "A" && (name in node)) next
          print name
        }'
}

case "$(basename "$lib")" in
  libkovamapping_c.so*)
    [ "$soname" = "libkovamapping_c.so.1" ] || fail "SONAME is '$soname', not libkovamapping_c.so.1"
    exported="$(defined_symbols raw)"
    stray="$(grep -vE '^kova_' <<<"$exported" || true)"
    if [ -n "$stray" ]; then
      fail "exported symbols outside kova_:"
      echo "$stray"
    fi
    for key in kova_version kova_table_new kova_table_read; do
      grep -qx "$key" <<<"$exported" || fail "$key is not exported"
    done
    if [ $# -ge 2 ]; then
      declared="$(grep -oE '^KOVA_C_API [^(]*[^A-Za-z0-9_]kova_[A-Za-z0-9_]+\(' "$2" | grep -oE 'kova_[A-Za-z0-9_]+\($' | tr -d '(' | sort -u)"
      [ -n "$declared" ] || fail "no KOVA_C_API function found in $2"
      missing="$(comm -23 <(echo "$declared") <(sort -u <<<"$exported"))"
      if [ -n "$missing" ]; then
        fail "declared in $(basename "$2") but not exported:"
        echo "$missing"
      fi
    fi
    ;;

  *)
    case "$soname" in libKOVAMappingServices.so.[0-9]*) ;; *) fail "SONAME is '$soname', not libKOVAMappingServices.so.<major>" ;; esac
    exported="$(defined_symbols demangle)"
    patterns="$(mktemp)"
    trap 'rm -f "$patterns"' EXIT
    grep -vE '^[[:space:]]*(#|$)' "$here/exported_symbols.txt" >"$patterns"
    [ -s "$patterns" ] || fail "no pattern in $here/exported_symbols.txt"
    stray="$(grep -vE -f "$patterns" <<<"$exported" || true)"
    if [ -n "$stray" ]; then
      fail "$(wc -l <<<"$stray") exported names are not public API (cmake/KOVAMappingServices.map decides what leaves the library):"
      echo "$stray"
    fi

    # Key classes and services: the mapping model, stamps, the log capture, an exception type.
    for key in 'KOVAMappingTable::AddReference(' 'KOVAKSSVersioning::GetKSSVersion(' \
               'KOVAMappingParser::TranslateToMappingTable(' 'KOVALogCapture::KOVALogCapture(' \
               'typeinfo for ZANNullVarError' 'vtable for KOVALogSink' 'ZANGetEnv('; do
      grep -qF "$key" <<<"$exported" || fail "not exported: $key"
    done

    if [ $# -ge 3 ]; then
      headers="$2"
      map="$3"
      # A public class is exported only when the version script names it.
      for class in $(cat "$headers"/*.h | grep -oE '(class|struct) KOVA_EXPORT [A-Za-z_][A-Za-z0-9_]*' | awk '{print $3}' | sort -u); do
        grep -qE "^[[:space:]]*${class}::\*;" "$map" || fail "class $class (KOVA_EXPORT) is not in $(basename "$map")"
      done
      # Free functions the headers export: ZANGetEnv, ZANSysCompress..., operator+.
      functions="$(cat "$headers"/*.h \
        | sed -nE 's/^KOVA_EXPORT [^(]*[^A-Za-z0-9_](operator[^ (A-Za-z0-9_]+|[A-Za-z_][A-Za-z0-9_]*)\(.*/\1/p' | sort -u)"
      [ -n "$functions" ] || fail "no KOVA_EXPORT free function found in $headers"
      while read -r fn; do
        awk -v prefix="$fn(" 'index($0, prefix) == 1 {found = 1} END {exit !found}' <<<"$exported" \
          || fail "free function $fn of the headers is not exported"
      done <<<"$functions"
    fi
    ;;
esac

if [ "$status" -ne 0 ]; then
  exit 1
fi
echo "SONAME $soname; $(wc -l <<<"$exported") exported symbols, all of them public API"
