#!/usr/bin/env bash
# Installs the Debian packages needed to build and test KOVAMappingServices, when missing.
# Idempotent and quiet when everything is present. Needs root (or sudo) only when installing.
set -euo pipefail

packages=(
  gcc g++ cmake ninja-build pkg-config python3
  libsimdjson-dev rapidjson-dev libdeflate-dev libssl-dev
  libcli11-dev
  libgtest-dev libgmock-dev libbenchmark-dev zlib1g-dev openssl perl
  clang-14 libfuzzer-14-dev clang-format-14 clang-tidy-14
  python3-dev pybind11-dev python3-pytest python3-hypothesis python3-pandas
  python3-dask python3-distributed python3-jsonschema
  graphviz
  pandoc groff-base man-db bash-completion dpkg-dev file binutils
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing missing packages: ${missing[*]}"
sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
