#!/usr/bin/env bash
# Installs the build into a scratch prefix and imports the kovamapping package from
# <prefix>/lib/python3/dist-packages, with no LD_LIBRARY_PATH: the extension must find the library
# installed beside it, and the package must hold its stubs and its py.typed marker.
set -euo pipefail
build_dir="$1"
python="$2"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cmake --install "$build_dir" --prefix "$work/prefix" >/dev/null
package="$work/prefix/lib/python3/dist-packages/kovamapping"
for file in __init__.py __init__.pyi py.typed _error.py; do
  test -f "$package/$file" || { echo "missing $package/$file"; exit 1; }
done
ls "$package"/_kovamapping*.so >/dev/null
# The library the extension loads is the installed one.
output="$(cd "$work" && PYTHONPATH="$work/prefix/lib/python3/dist-packages" "$python" - "$work/prefix" <<'PY'
import sys
import kovamapping

prefix = sys.argv[1]
assert kovamapping.__file__.startswith(prefix), kovamapping.__file__
table = kovamapping.read('{"version": 12, "References": [{"kOVAId": "A", "PlexoId": "P", "IsLocal": false, "KOVASynchroStamp": "V2:s", "Instances": []}]}')
assert table.root.kova_id == "A"
with open("/proc/self/maps") as maps:
    loaded = [line.split()[-1] for line in maps if "libKOVAMappingServices.so" in line]
assert loaded and all(path.startswith(prefix) for path in loaded), loaded
print("installed package ok", kovamapping.__version__)
PY
)"
echo "$output"
case "$output" in "installed package ok"*) ;; *) exit 1 ;; esac
