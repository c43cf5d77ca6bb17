#!/usr/bin/env bash
# The shared library exports the library's classes and services, with a SONAME, and nothing of its
# internals (the kova:: namespace) or of the libraries it is built on. (grep -q reads a here-string:
# fed by a pipe, its early exit could fail the pipeline under pipefail.)
set -euo pipefail
lib="$1"
soname="$(objdump -p "$lib" | awk '/SONAME/ {print $2}')"
case "$soname" in libKOVAMappingServices.so.*) ;; *) echo "bad SONAME: $soname"; exit 1 ;; esac
exported="$(nm -DC --defined-only "$lib" | awk '$2 ~ /^[TWVBDR]$/')"
grep -q 'KOVAMappingTable::AddReference' <<<"$exported" || { echo "KOVAMappingTable not exported"; exit 1; }
grep -q 'KOVAKSSVersioning::GetKSSVersion' <<<"$exported" || { echo "KOVAKSSVersioning not exported"; exit 1; }
leaks="$(echo "$exported" | grep -E ' (kova::|simdjson::|rapidjson::|libdeflate_|EVP_)' || true)"
if [ -n "$leaks" ]; then
  echo "internal symbols exported:"; echo "$leaks" | head -20; exit 1
fi
echo "SONAME $soname; $(echo "$exported" | wc -l) exported symbols, no internals"
