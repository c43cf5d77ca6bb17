#!/usr/bin/env bash
# Installs the build into a temporary prefix and runs the installed kova-mapping on the installed
# example documents; then builds the consumer program with the installed pkg-config file.
#   install_test.sh BUILD_DIR SOURCE_DIR [COMPILER_FLAGS]
# COMPILER_FLAGS are those the library was built with that a program linking it needs too (the
# sanitizer flags of a sanitizer build).
set -euo pipefail
build_dir="$1"
source_dir="$2"
compiler_flags="${3:-}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cmake --install "$build_dir" --prefix "$work/prefix" >/dev/null
prefix="$work/prefix"
tool="$prefix/bin/kova-mapping"
examples="$prefix/share/doc/KOVAMappingServices/examples"

fail() { echo "FAIL: $*"; exit 1; }

[ -x "$tool" ] || fail "no installed tool"
[ -f "$prefix/share/doc/KOVAMappingServices/kova-mapping.md" ] || fail "no installed manual"
# The installed tool uses the installed library, not the build tree's.
libraries="$(ldd "$tool")"
grep -q "libKOVAMappingServices.so.2 => $prefix/" <<<"$libraries" || fail "library not found beside the tool: $libraries"

version="$("$tool" --version)"
[ "$version" = "kova-mapping 2.0.0 (KOVAMappingServices 2.0.0, writes mapping documents of version 12)" ] ||
  fail "--version: $version"

cd "$examples"
checked="$("$tool" check v6_bracket.json v8_gearbox.json v10_pump.json v12_conveyor.json v12_conveyor.envelope)" ||
  fail "check failed: $checked"
[ "$checked" = "v6_bracket.json: ok, version 6, 1 references, 2 instances, root BRK-2041
v8_gearbox.json: ok, version 8, 3 references, 4 instances, root GBX-100
v10_pump.json: ok, version 10, 2 references, 2 instances, root PMP-500
v12_conveyor.json: ok, version 12, 4 references, 6 instances, root CNV-1000
v12_conveyor.envelope: ok, version 12, 4 references, 6 instances, root CNV-1000" ] || fail "check printed: $checked"

set +e
broken="$("$tool" check broken_v11.json)"
status=$?
set -e
[ "$status" -eq 1 ] || fail "check of broken_v11.json exited with $status"
[ "$broken" = "broken_v11.json: error 0x80004005: UNVALUATED MANDATORY FIELD IsLocal; UNVALUATED MANDATORY FIELD KOVASynchroStamp" ] ||
  fail "check of broken_v11.json printed: $broken"

dumped="$("$tool" dump v10_pump.json | tail -n 1)"
[ "$dumped" = 'custom IMP-510: {"material":"CuZn39Pb3"}' ] || fail "dump ends with: $dumped"

# pkg-config: a program built with its flags alone.
pc_file="$(find "$prefix" -name KOVAMappingServices.pc)"
[ -n "$pc_file" ] || fail "no installed pkg-config file"
export PKG_CONFIG_PATH="$(dirname "$pc_file")"
[ "$(pkg-config --modversion KOVAMappingServices)" = "2.0.0" ] || fail "pkg-config version"
libdir="$(pkg-config --variable=libdir KOVAMappingServices)"
# shellcheck disable=SC2046
g++ -std=c++20 $compiler_flags "$source_dir/tests/install/consumer/main.cpp" $(pkg-config --cflags --libs KOVAMappingServices) \
  -Wl,-rpath,"$libdir" -o "$work/consumer"
[ "$("$work/consumer")" = "consumer ok" ] || fail "the pkg-config consumer did not run"
echo "installed tool, examples and pkg-config file work"
