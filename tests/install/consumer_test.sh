#!/usr/bin/env bash
# Installs the built library into a temporary prefix, then configures, builds and runs a consumer
# project against the installed CMake package. An optional third argument gives compiler flags the
# consumer needs too (the sanitizer flags of a sanitizer build).
set -euo pipefail
build_dir="$1"
consumer_dir="$2"
compiler_flags="${3:-}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cmake --install "$build_dir" --prefix "$work/prefix" >/dev/null
test -f "$work/prefix/include/KOVAMappingServices/KOVAMappingServices.h"
test -f "$work/prefix/lib/cmake/KOVAMappingServices/KOVAMappingServicesConfigVersion.cmake" \
  || test -f "$work/prefix/lib/x86_64-linux-gnu/cmake/KOVAMappingServices/KOVAMappingServicesConfigVersion.cmake"
cmake -S "$consumer_dir" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_CXX_FLAGS="$compiler_flags" >/dev/null
cmake --build "$work/build" >/dev/null
output="$("$work/build/consumer")"
test "$output" = "consumer ok"
echo "installed package builds and runs a consumer"
