#!/usr/bin/env bash
# Installs the built library into a temporary prefix, then configures, builds and runs a consumer
# project against the installed CMake package.
set -euo pipefail
build_dir="$1"
consumer_dir="$2"
cxx_flags="${3:-}"  # the library's own sanitizer flags, when it was built with them
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cmake --install "$build_dir" --prefix "$work/prefix" >/dev/null
test -f "$work/prefix/include/KOVAMappingServices/KOVAMappingServices.h"
test -f "$work/prefix/lib/cmake/KOVAMappingServices/KOVAMappingServicesConfigVersion.cmake" \
  || test -f "$work/prefix/lib/x86_64-linux-gnu/cmake/KOVAMappingServices/KOVAMappingServicesConfigVersion.cmake"
cmake -S "$consumer_dir" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_CXX_FLAGS="$cxx_flags" -DCMAKE_EXE_LINKER_FLAGS="$cxx_flags" >/dev/null
cmake --build "$work/build" >/dev/null
output="$("$work/build/consumer")"
test "$output" = "consumer ok"
echo "installed package builds and runs a consumer"
