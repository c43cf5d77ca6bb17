#!/usr/bin/env bash
# Renders the pictures of the documentation with the kova-mapping tool and Graphviz's dot:
#
#   docs/make-pictures.sh [TOOL [DIRECTORY]]
#
#   tree.svg   kova-mapping tree --format dot of examples/documents/v12_conveyor.json
#
# TOOL is the kova-mapping to run (default: the debug build's, else the release build's, else the
# one on PATH); DIRECTORY is where the pictures go (default: docs/). Run it again whenever the
# example document or the tool's graph output changes, and commit the pictures it wrote.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
source_dir="$(dirname "$here")"

tool="${1:-}"
if [ -z "$tool" ]; then
  for candidate in "$source_dir/build/debug/tools/kova-mapping/kova-mapping" \
    "$source_dir/build/release/tools/kova-mapping/kova-mapping"; do
    if [ -x "$candidate" ]; then
      tool="$candidate"
      break
    fi
  done
  tool="${tool:-kova-mapping}"
fi
out="${2:-$here}"
command -v dot >/dev/null || {
  echo "make-pictures.sh: dot not found (Debian package graphviz)" >&2
  exit 1
}
mkdir -p "$out"

# Written under a temporary name first, so that a failure leaves the picture as it was.
"$tool" tree --format dot "$source_dir/examples/documents/v12_conveyor.json" >"$out/tree.dot.tmp"
dot -Tsvg "$out/tree.dot.tmp" -o "$out/tree.svg.tmp"
mv "$out/tree.svg.tmp" "$out/tree.svg"
rm -f "$out/tree.dot.tmp"
echo "wrote $out/tree.svg"
