#!/usr/bin/env bash
# Builds KOVAMappingServices (release preset) and runs the shipped example program.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup-debian.sh
cmake --preset release >/dev/null
cmake --build --preset release
ActivateKOVALogger=1 ./build/release/examples/build_table
