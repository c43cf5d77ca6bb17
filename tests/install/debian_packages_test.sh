#!/usr/bin/env bash
# The Debian packages of a configured and built tree:
#   debian_packages_test.sh BUILD_DIR SOURCE_DIR
# with, in the environment (tests/install.cmake sets them): KOVA_VERSION, KOVA_LIBDIR, KOVA_DOCDIR,
# KOVA_DATADIR, KOVA_MANDIR and KOVA_PYTHON_DIR (install folders, relative to the prefix),
# KOVA_WITH_C_API, KOVA_WITH_TOOL and KOVA_WITH_MANPAGE (1 or 0), KOVA_PYTHON (the interpreter of
# the Python package, empty when it is not built), KOVA_CMAKE and KOVA_CPACK (the build's cmake and
# cpack; those of PATH when unset).
#
# Runs `cpack -G DEB` into a scratch folder, then checks:
# - the packages made are exactly libkovamappingservices2, libkovamappingservices-dev, kova-mapping
#   and python3-kovamapping (those that the build has), with their fields and dependencies;
# - each holds exactly its files, and together they hold exactly what `cmake --install` installs;
# - every library an ELF file needs is the runtime package's (and the package depends on it) or a
#   Debian package's that the package depends on;
# - each package unpacked alone into a scratch root (dpkg -x) has what it should, and with the
#   runtime package beside it: the tool runs, the Python package imports, a CMake, a pkg-config and
#   a C consumer build and run against the development files; the development files without the
#   runtime package do not configure.
set -uo pipefail
build_dir="$(realpath "$1")"
source_dir="$(realpath "$2")"
: "${KOVA_VERSION:?}" "${KOVA_LIBDIR:?}" "${KOVA_DOCDIR:?}" "${KOVA_DATADIR:?}" "${KOVA_MANDIR:?}"
: "${KOVA_PYTHON_DIR:?}" "${KOVA_WITH_C_API:?}" "${KOVA_WITH_TOOL:?}" "${KOVA_WITH_MANPAGE:?}"
python="${KOVA_PYTHON:-}"
cmake="${KOVA_CMAKE:-cmake}"
cpack="${KOVA_CPACK:-cpack}"
version=$KOVA_VERSION
major=${version%%.*}
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
unset LD_LIBRARY_PATH PYTHONPATH

failures=0
checks=0
fail() {
  echo "FAIL: $*"
  failures=$((failures + 1))
}
check() {  # check DESCRIPTION COMMAND...
  local description="$1"
  shift
  checks=$((checks + 1))
  "$@" || fail "$description"
}

runtime=libkovamappingservices$major
dev=libkovamappingservices-dev
tool=kova-mapping
pypkg=python3-kovamapping
lib=usr/$KOVA_LIBDIR
doc=usr/$KOVA_DOCDIR
pydir=usr/${KOVA_PYTHON_DIR#/usr/}
arch="$(dpkg --print-architecture)"

# --- Making the packages -----------------------------------------------------------------------

packages="$work/packages"
if ! "$cpack" --config "$build_dir/CPackConfig.cmake" -G DEB -B "$packages" >"$work/cpack.log" 2>&1; then
  cat "$work/cpack.log"
  echo "FAIL: cpack -G DEB"
  exit 1
fi
checks=$((checks + 1))
if grep -Eiq 'warning|error' "$work/cpack.log"; then
  fail "cpack wrote warnings:
$(grep -Ei -A3 'warning|error' "$work/cpack.log")"
fi

expected_packages=("$runtime" "$dev")
[ "$KOVA_WITH_TOOL" = 1 ] && expected_packages+=("$tool")
[ -n "$python" ] && expected_packages+=("$pypkg")
made="$(cd "$packages" && ls -1 -- *.deb | sort)"
wanted="$(for p in "${expected_packages[@]}"; do echo "${p}_${version}_${arch}.deb"; done | sort)"
check "the packages made:
$made
expected:
$wanted" test "$made" = "$wanted"
deb() { echo "$packages/${1}_${version}_${arch}.deb"; }

# --- Fields ------------------------------------------------------------------------------------

# Each package's control fields and file listing, read once.
for package in "${expected_packages[@]}"; do
  [ -f "$(deb "$package")" ] || continue
  dpkg-deb --field "$(deb "$package")" >"$work/fields-$package"
  dpkg-deb --contents "$(deb "$package")" >"$work/listing-$package"
done
# field PACKAGE NAME: the value of a field (a multi-line value whole, without its indentation).
field() {
  awk -v name="$2" '
    /^[^ ]/ { inside = (index($0, name ": ") == 1) ; if (inside) print substr($0, length(name) + 3); next }
    inside { sub(/^ /, ""); print }' "$work/fields-$1"
}
expect_field() {  # expect_field PACKAGE FIELD VALUE
  local actual
  actual="$(field "$1" "$2")"
  check "$1: $2 is \"$actual\", expected \"$3\"" test "$actual" = "$3"
}
# The names of the packages a Depends field lists (alternatives included).
depends_names() { field "$1" Depends | tr ',|' '\n\n' | sed -E 's/^ *//; s/[ (].*//' | sed '/^$/d'; }

for package in "${expected_packages[@]}"; do
  [ -f "$(deb "$package")" ] || continue
  expect_field "$package" Package "$package"
  expect_field "$package" Version "$version"
  expect_field "$package" Architecture "$arch"
  expect_field "$package" Breaks kovamappingservices
  expect_field "$package" Replaces kovamappingservices
  check "$package: a maintainer" test -n "$(field "$package" Maintainer)"
  summary="$(field "$package" Description | head -n 1)"
  check "$package: a summary of its own: $summary" test -n "$summary"
  depends="$(field "$package" Depends)"
  if [ "$package" = "$runtime" ]; then
    check "$runtime depends on no package of the project: $depends" test "${depends/kova/}" = "$depends"
    names="$(depends_names "$runtime")"
    for needed in libc6 'libstdc++6' libssl3 libdeflate0 zlib1g 'libsimdjson[0-9]*'; do
      check "$runtime depends on $needed: $depends" grep -qx "$needed" <<<"$names"
    done
  else
    check "$package depends on $runtime (= $version) first: $depends" \
      grep -q "^$runtime (= $version)" <<<"$depends"
  fi
done
expect_field "$runtime" Section libs
expect_field "$dev" Section libdevel
expect_field "$dev" Depends "$runtime (= $version)"
if [ "$KOVA_WITH_TOOL" = 1 ]; then
  expect_field "$tool" Section utils
fi
if [ -n "$python" ]; then
  expect_field "$pypkg" Section python
  read -r py_major py_minor < <("$python" -c 'import sys; print(*sys.version_info[:2])')
  check "$pypkg takes python3 $py_major.$py_minor only: $(field "$pypkg" Depends)" \
    grep -Fq "python3 (>= $py_major.$py_minor), python3 (<< $py_major.$((py_minor + 1)))" <<<"$(field "$pypkg" Depends)"
fi

# The runtime package's shlibs file, and ldconfig after it is installed or removed.
mkdir -p "$work/control"
dpkg-deb --control "$(deb "$runtime")" "$work/control/$runtime"
shlibs="libKOVAMappingServices $major $runtime (>= $version)"
if [ "$KOVA_WITH_C_API" = 1 ]; then
  shlibs+=$'\n'"libkovamapping_c 1 $runtime (>= $version)"
fi
check "$runtime: shlibs is
$(cat "$work/control/$runtime/shlibs" 2>&1)" test "$(cat "$work/control/$runtime/shlibs" 2>/dev/null)" = "$shlibs"
check "$runtime: postinst runs ldconfig" grep -q ldconfig "$work/control/$runtime/postinst"

# --- Contents ----------------------------------------------------------------------------------

# The files (and links) of a package, one a line, without "./" and without the link's target.
contents() {
  awk '$1 !~ /^d/ { print $6 }' "$work/listing-$1" | sed 's|^\./||' | sort
}

# What each package holds: one shell pattern a line; every file must match one pattern of its
# package, every pattern must match a file.
{
  echo "$lib/libKOVAMappingServices.so.$major"
  echo "$lib/libKOVAMappingServices.so.$version"
  if [ "$KOVA_WITH_C_API" = 1 ]; then
    echo "$lib/libkovamapping_c.so.1"
    echo "$lib/libkovamapping_c.so.$version"
  fi
} >"$work/expected-$runtime"
{
  for header in "$source_dir"/include/KOVAMappingServices/*.h; do
    echo "usr/include/KOVAMappingServices/${header##*/}"
  done
  echo "$lib/libKOVAMappingServices.so"
  echo "$lib/cmake/KOVAMappingServices/KOVAMappingServicesConfig.cmake"
  echo "$lib/cmake/KOVAMappingServices/KOVAMappingServicesConfigVersion.cmake"
  echo "$lib/cmake/KOVAMappingServices/KOVAMappingServicesTargets.cmake"
  echo "$lib/cmake/KOVAMappingServices/KOVAMappingServicesTargets-*.cmake"
  echo "$lib/pkgconfig/KOVAMappingServices.pc"
  if [ "$KOVA_WITH_C_API" = 1 ]; then
    echo "$lib/libkovamapping_c.so"
    echo "$lib/pkgconfig/kovamapping_c.pc"
  fi
  echo "$doc/README.md"
  echo "$doc/c-api.md"
} >"$work/expected-$dev"
{
  echo usr/bin/kova-mapping
  [ "$KOVA_WITH_MANPAGE" = 1 ] && echo "usr/$KOVA_MANDIR/man1/kova-mapping.1"
  echo "usr/$KOVA_DATADIR/bash-completion/completions/kova-mapping"
  for schema in "$source_dir"/schemas/*.json; do
    [ -e "$schema" ] && echo "usr/$KOVA_DATADIR/KOVAMappingServices/schemas/${schema##*/}"
  done
  echo "$doc/kova-mapping.md"
  for example in "$source_dir"/examples/documents/*; do
    echo "$doc/examples/${example##*/}"
  done
} >"$work/expected-$tool"
{
  for file in "$source_dir"/python/kovamapping/*.py "$source_dir"/python/kovamapping/*.pyi \
    "$source_dir"/python/kovamapping/py.typed; do
    [ -e "$file" ] && echo "$pydir/kovamapping/${file##*/}"
  done
  echo "$pydir/kovamapping/_kovamapping.cpython-*.so"
  echo "$doc/python.md"
  for example in "$source_dir"/examples/python/*; do
    echo "$doc/examples/python/${example##*/}"
  done
} >"$work/expected-$pypkg"

for package in "${expected_packages[@]}"; do
  [ -f "$(deb "$package")" ] || continue
  contents "$package" >"$work/contents-$package"
  mapfile -t patterns <"$work/expected-$package"
  while read -r file; do
    matched=0
    for pattern in "${patterns[@]}"; do
      # shellcheck disable=SC2053
      [[ $file == $pattern ]] && matched=1
    done
    check "$package holds $file, which it should not" test "$matched" -eq 1
  done <"$work/contents-$package"
  for pattern in "${patterns[@]}"; do
    found=0
    while read -r file; do
      # shellcheck disable=SC2053
      [[ $file == $pattern ]] && found=1
    done <"$work/contents-$package"
    check "$package lacks $pattern" test "$found" -eq 1
  done
done

# Links: the unversioned names (dev) and the SONAMEs (runtime) point at the runtime's files.
link_target() { awk -v f="./$2" '$6 == f { print $8 }' "$work/listing-$1"; }
check "$dev: libKOVAMappingServices.so -> libKOVAMappingServices.so.$major" \
  test "$(link_target "$dev" "$lib/libKOVAMappingServices.so")" = "libKOVAMappingServices.so.$major"
check "$runtime: libKOVAMappingServices.so.$major -> libKOVAMappingServices.so.$version" \
  test "$(link_target "$runtime" "$lib/libKOVAMappingServices.so.$major")" = "libKOVAMappingServices.so.$version"

# Together, the packages hold what an install of the build holds: no install rule is left out of
# the packages (a rule without a component would make a package of its own, caught above).
"$cmake" --install "$build_dir" --prefix "$work/full/usr" >/dev/null
(cd "$work/full" && find . ! -type d | sed 's|^\./||' | sort) >"$work/installed"
cat "$work"/contents-* | sort >"$work/packaged"
check "the packages hold what cmake --install installs:
$(diff "$work/installed" "$work/packaged")" cmp -s "$work/installed" "$work/packaged"

# --- Libraries and dependencies ----------------------------------------------------------------

# The libraries of the system, by SONAME (ldconfig's cache), and the Debian package of each, asked
# once (dpkg -S is slow): the path as the cache gives it and as it resolves, since dpkg knows one.
declare -A system_library owner_of
while read -r soname path; do
  [ -n "${system_library[$soname]-}" ] || system_library[$soname]=$path
done < <(/sbin/ldconfig -p | awk '/=>/ { print $1, $NF }')

# needed-PACKAGE: "FILE SONAME" for every library that an ELF file of the package needs.
for package in "${expected_packages[@]}"; do
  [ -f "$(deb "$package")" ] || continue
  root="$work/alone/$package"
  mkdir -p "$root"
  dpkg -x "$(deb "$package")" "$root"
  while read -r file; do
    [ -f "$root/$file" ] && [ ! -L "$root/$file" ] || continue
    [ "$(head -c 4 "$root/$file" | tr -d '\0')" = $'\x7fELF' ] || continue
    readelf -d "$root/$file" | sed -n "s|.*(NEEDED).*\\[\\(.*\\)\\]|$file \\1|p"
  done <"$work/contents-$package" >"$work/needed-$package"
done
paths=()
for soname in $(cat "$work"/needed-* | awk '{ print $2 }' | sort -u); do
  path=${system_library[$soname]-}
  [ -n "$path" ] && paths+=("$path" "$(realpath "$path")")
done
if [ "${#paths[@]}" -gt 0 ]; then
  while IFS= read -r line; do
    owner=${line%%: *}
    owner=${owner%%:*}
    owner_of[${line#*: }]=$owner
  done < <(dpkg -S "${paths[@]}" 2>/dev/null | grep -v ', ')
fi

checks=$((checks + 1))
[ -s "$work/needed-$runtime" ] || fail "$runtime: no ELF file needs a library"
for package in "${expected_packages[@]}"; do
  [ -f "$(deb "$package")" ] || continue
  names="$(depends_names "$package")"
  while read -r file soname; do
    if grep -qx "$lib/$soname" "$work/contents-$runtime"; then
      [ "$package" = "$runtime" ] && continue
      check "$package: $file needs $soname, from $runtime, and depends on it" grep -qx "$runtime" <<<"$names"
    else
      path=${system_library[$soname]-}
      owner=""
      if [ -n "$path" ]; then
        owner=${owner_of[$path]-}
        [ -n "$owner" ] || owner=${owner_of[$(realpath "$path")]-}
      fi
      check "$package: $file needs $soname (${path:-not found}, package ${owner:-none}), which its Depends ($(field "$package" Depends)) names" \
        grep -qx "${owner:-no package}" <<<"$names"
    fi
  done <"$work/needed-$package"
done

# Every dependency is installed here (Debian's packages) or made here (the runtime package): each
# package installs with what it depends on.
declare -A installed_version
while read -r name installed; do
  installed_version[$name]=$installed
done < <(cat "$work"/fields-* | awk '/^Depends: /' | sed 's/^Depends: //' | tr ',|' '\n\n' |
  sed -E 's/^ *//; s/[ (].*//' | sort -u | xargs dpkg-query -W -f '${Package} ${Version}\n' 2>/dev/null)
installed_version[$runtime]=$version
for package in "${expected_packages[@]}"; do
  [ -f "$(deb "$package")" ] || continue
  while read -r clause; do
    satisfied=0
    IFS='|' read -r -a alternatives <<<"$clause"
    for alternative in "${alternatives[@]}"; do
      read -r name relation wanted_version <<<"${alternative//[(),]/ }"
      installed=${installed_version[$name]-}
      [ -n "$installed" ] || continue
      if [ -z "${relation:-}" ] || dpkg --compare-versions "$installed" "$relation" "$wanted_version"; then
        satisfied=1
      fi
    done
    check "$package: the dependency $clause is installed here or made here" test "$satisfied" -eq 1
  done < <(field "$package" Depends | tr ',' '\n' | sed 's/^ *//')
done

# --- Each package unpacked with the runtime package --------------------------------------------

with_runtime() {  # with_runtime PACKAGE: a root holding PACKAGE and the runtime package
  local root="$work/with-runtime/$1"
  mkdir -p "$root"
  dpkg -x "$(deb "$runtime")" "$root"
  dpkg -x "$(deb "$1")" "$root"
  echo "$root"
}

system_has_library() { /sbin/ldconfig -p | grep -q "libKOVAMappingServices.so.$major "; }

if [ "$KOVA_WITH_TOOL" = 1 ]; then
  root="$(with_runtime "$tool")"
  check "the tool finds the runtime package's library beside it: $(ldd "$root/usr/bin/kova-mapping" | grep KOVA)" \
    grep -q "libKOVAMappingServices.so.$major => $root/" <(ldd "$root/usr/bin/kova-mapping")
  output="$("$root/usr/bin/kova-mapping" --version 2>&1)"
  check "kova-mapping --version: $output" grep -q "^kova-mapping $version " <<<"$output"
  output="$(cd "$root/$doc/examples" && "$root/usr/bin/kova-mapping" check v8_gearbox.json v12_conveyor.envelope 2>&1)"
  check "kova-mapping check on the packaged examples: $output" test "$output" = "v8_gearbox.json: ok, version 8, 3 references, 4 instances, root GBX-100
v12_conveyor.envelope: ok, version 12, 4 references, 6 instances, root CNV-1000"
  output="$(bash -c 'source "$1"; complete -p kova-mapping' _ "$root/usr/$KOVA_DATADIR/bash-completion/completions/kova-mapping" 2>&1)"
  check "the packaged completion loads: $output" grep -q -- '-F _kova_mapping kova-mapping' <<<"$output"
  if [ "$KOVA_WITH_MANPAGE" = 1 ] && command -v man >/dev/null; then
    output="$(LC_ALL=C.UTF-8 MANWIDTH=80 man -l "$root/usr/$KOVA_MANDIR/man1/kova-mapping.1" 2>&1 | head -n 1)"
    check "the packaged manual page: $output" grep -Eq '^kova-mapping\(1\) ' <<<"$output"
  fi
  if ! system_has_library; then
    check "the tool alone does not find the library" \
      grep -q "libKOVAMappingServices.so.$major => not found" <(ldd "$work/alone/$tool/usr/bin/kova-mapping")
  fi
fi

if [ -n "$python" ]; then
  root="$(with_runtime "$pypkg")"
  output="$(cd "$work" && PYTHONPATH="$root/$pydir" "$python" - "$root" 2>&1 <<'PY'
import sys
import kovamapping

root = sys.argv[1]
assert kovamapping.__file__.startswith(root), kovamapping.__file__
table = kovamapping.read('{"version": 12, "References": [{"kOVAId": "A", "PlexoId": "P", "IsLocal": false, "KOVASynchroStamp": "V2:s", "Instances": []}]}')
assert table.root.kova_id == "A", table.root.kova_id
with open("/proc/self/maps") as maps:
    loaded = {line.split()[-1] for line in maps if "libKOVAMappingServices.so" in line}
assert loaded and all(path.startswith(root) for path in loaded), loaded
print("imported", kovamapping.__version__)
PY
)"
  check "the Python package imports with the runtime package: $output" test "$output" = "imported $version"
  if ! system_has_library; then
    output="$(cd "$work" && PYTHONPATH="$work/alone/$pypkg/$pydir" "$python" -c 'import kovamapping' 2>&1)"
    check "the Python package alone does not import: $output" grep -q "libKOVAMappingServices.so.$major" <<<"$output"
  fi
fi

root="$(with_runtime "$dev")"
# CMake: the consumer project against the unpacked files.
if "$cmake" -S "$source_dir/tests/install/consumer" -B "$work/cmake-consumer" -G Ninja \
  -DCMAKE_PREFIX_PATH="$root/usr" >"$work/cmake-consumer.log" 2>&1 &&
  "$cmake" --build "$work/cmake-consumer" >>"$work/cmake-consumer.log" 2>&1; then
  output="$("$work/cmake-consumer/consumer" 2>&1)"
  check "the CMake consumer runs: $output" test "$output" = "consumer ok"
else
  fail "the CMake consumer does not build:
$(cat "$work/cmake-consumer.log")"
fi
# pkg-config: the same program with the relocatable .pc file's flags.
export PKG_CONFIG_PATH="$root/$lib/pkgconfig"
check "pkg-config version" test "$(pkg-config --modversion KOVAMappingServices)" = "$version"
# shellcheck disable=SC2046
if g++ -std=c++20 "$source_dir/tests/install/consumer/main.cpp" $(pkg-config --cflags --libs KOVAMappingServices) \
  -Wl,-rpath,"$root/$lib" -o "$work/pc-consumer" 2>"$work/pc-consumer.log"; then
  output="$("$work/pc-consumer" 2>&1)"
  check "the pkg-config consumer runs: $output" test "$output" = "consumer ok"
else
  fail "the pkg-config consumer does not build: $(cat "$work/pc-consumer.log")"
fi
# C: a host of the C interface, with kovamapping_c.pc.
if [ -f "$root/$lib/pkgconfig/kovamapping_c.pc" ]; then
  cat >"$work/host.c" <<'C'
#include <KOVAMappingServices/kova_mapping.h>

#include <stdio.h>
#include <string.h>

int main(void) {
  static const char document[] = "{\"version\": 12, \"References\": [{\"kOVAId\": \"A\", \"PlexoId\": \"P\", "
                                 "\"IsLocal\": false, \"KOVASynchroStamp\": \"V2:s\", \"Instances\": []}]}";
  kova_table* table = kova_table_new();
  const int32_t status = kova_table_read(table, document, strlen(document));
  const size_t references = kova_table_reference_count(table);
  kova_table_free(table);
  if (status != 0 || references != 1) return 1;
  printf("C host ok %s\n", kova_version());
  return 0;
}
C
  # shellcheck disable=SC2046
  if cc -std=c11 "$work/host.c" $(pkg-config --cflags --libs kovamapping_c) -Wl,-rpath,"$root/$lib" \
    -o "$work/c-host" 2>"$work/c-host.log"; then
    output="$("$work/c-host" 2>&1)"
    check "the C host runs: $output" test "$output" = "C host ok $version"
  else
    fail "the C host does not build: $(cat "$work/c-host.log")"
  fi
fi
# Without the runtime package the CMake package refuses to configure: the development files are
# not enough on their own, which is why they depend on the runtime package.
if ! system_has_library; then
  checks=$((checks + 1))
  if "$cmake" -S "$source_dir/tests/install/consumer" -B "$work/cmake-dev-alone" -G Ninja \
    -DCMAKE_PREFIX_PATH="$work/alone/$dev/usr" >"$work/cmake-dev-alone.log" 2>&1; then
    fail "the CMake consumer configured with the development files alone"
  elif ! grep -q "libKOVAMappingServices.so.$major" "$work/cmake-dev-alone.log"; then
    fail "the development files alone fail for another reason: $(cat "$work/cmake-dev-alone.log")"
  fi
fi

if [ "$failures" -ne 0 ]; then
  echo "$failures of $checks checks failed"
  exit 1
fi
echo "$checks checks passed: $(cd "$packages" && echo *.deb)"
