#!/usr/bin/env bash
# The C++ example of the README compiles against the library and runs.
set -euo pipefail
readme="$1"; include_dir="$2"; library="$3"; cxx="${4:-c++}"; flags="${5:-}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
awk '/^```cpp$/ {inside=1; next} /^```$/ {if (inside) exit} inside {print}' "$readme" > "$work/example.cpp"
grep -q 'int main' "$work/example.cpp"
# shellcheck disable=SC2086
"$cxx" -std=c++20 $flags -I"$include_dir" "$work/example.cpp" "$library" -Wl,-rpath,"$(dirname "$library")" -o "$work/example"
"$work/example"
