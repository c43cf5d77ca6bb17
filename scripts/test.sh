#!/usr/bin/env bash
# Builds KOVAMappingServices with its tests (debug preset) and runs every test.
# Usage: scripts/test.sh [preset]   (debug by default; asan and release work too)
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-debug}"
scripts/setup-debian.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
ctest --preset "$preset" --output-on-failure
