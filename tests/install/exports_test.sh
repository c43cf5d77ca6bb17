#!/usr/bin/env bash
# The shared library exports the library's classes and services, with a SONAME, and nothing of its
# internals (the kova:: namespace) or of the libraries it is built on.
set -euo pipefail
lib="$1"
soname="$(objdump -p "$lib" | awk '/SONAME/ {print $2}')"
case "$soname" in libKOVAMappingServices.so.*) ;; *) echo "bad SONAME: $soname"; exit 1 ;; esac
exported="$(nm -DC --defined-only "$lib" | awk '$2 ~ /^[TWVBDR]$/')"
echo "$exported" | grep -q 'KOVAMappingTable::AddReference' || { echo "KOVAMappingTable not exported"; exit 1; }
echo "$exported" | grep -q 'KOVAKSSVersioning::GetKSSVersion' || { echo "KOVAKSSVersioning not exported"; exit 1; }
leaks="$(echo "$exported" | grep -E ' (kova::|simdjson::|rapidjson::|libdeflate_|EVP_)' || true)"
if [ -n "$leaks" ]; then
  echo "internal symbols exported:"; echo "$leaks" | head -20; exit 1
fi
echo "SONAME $soname; $(echo "$exported" | wc -l) exported symbols, no internals"
