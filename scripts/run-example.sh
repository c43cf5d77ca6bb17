#!/usr/bin/env bash
# Builds KOVAMappingServices, its kova-mapping tool and its Python package (release preset), then
# runs the tool on the shipped example documents (examples/documents), the example program and the
# Python example.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup-debian.sh
cmake --preset release >/dev/null
cmake --build --preset release --target kova-mapping build_table _kovamapping
tool=./build/release/tools/kova-mapping/kova-mapping
docs=examples/documents

echo "== kova-mapping check: documents of versions 6, 8, 10 and 12, and an envelope"
"$tool" check "$docs/v6_bracket.json" "$docs/v8_gearbox.json" "$docs/v10_pump.json" \
  "$docs/v12_conveyor.json" "$docs/v12_conveyor.envelope"

echo
echo "== kova-mapping check: a document with errors (check exits with status 1)"
"$tool" check "$docs/broken_v11.json" || echo "(exit status $?)"

echo
echo "== kova-mapping dump: the table and its custom data"
"$tool" dump "$docs/v8_gearbox.json"

echo
echo "== kova-mapping tree: the product structure"
"$tool" tree "$docs/v12_conveyor.json"

echo
echo "== The example program: a table built with the library's API, its dump in the diagnostic log"
ActivateKOVALogger=1 ./build/release/examples/build_table

echo
echo "== The Python package: read, change, write and audit the example documents"
PYTHONPATH="$PWD/build/release/python" /usr/bin/python3 examples/python/first_steps.py "$docs"
