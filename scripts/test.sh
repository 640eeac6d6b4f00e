#!/usr/bin/env bash
# Configures, builds and runs every test: `scripts/test.sh [ci|sanitize]`.
# Installs the Debian packages the build needs when they are missing.
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-ci}"

needed=(cmake g++ locales libgtest-dev libgmock-dev libbenchmark-dev pybind11-dev python3-dev pkg-config)
missing=()
for pkg in "${needed[@]}"; do
    dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed" || missing+=("$pkg")
done
if [ "${#missing[@]}" -gt 0 ]; then
    echo "Installing missing packages: ${missing[*]}"
    sudo_cmd=""
    [ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
    $sudo_cmd apt-get update -q
    DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -q "${missing[@]}"
fi

cmake --workflow --preset "$preset"
