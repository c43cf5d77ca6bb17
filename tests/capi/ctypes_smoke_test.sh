#!/usr/bin/env bash
# Installs the build into a temporary prefix and runs the Python ctypes smoke test against the
# installed C library, which Python finds by its SONAME through LD_LIBRARY_PATH.
set -euo pipefail
build_dir="$1"
script="$2"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cmake --install "$build_dir" --prefix "$work/prefix" >/dev/null
libdir=""
for candidate in "$work/prefix/lib" "$work/prefix/lib/x86_64-linux-gnu" "$work/prefix/lib64"; do
  if [ -e "$candidate/libkovamapping_c.so.1" ]; then libdir="$candidate"; break; fi
done
if [ -z "$libdir" ]; then
  echo "libkovamapping_c.so.1 is not installed under $work/prefix"; exit 1
fi
docs="$work/prefix/share/doc/KOVAMappingServices/examples"
test -f "$docs/v8_gearbox.json"
LD_LIBRARY_PATH="$libdir" /usr/bin/python3 "$script" "$docs"
