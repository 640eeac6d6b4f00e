#!/usr/bin/env bash
# Configures, builds and runs every test: `scripts/test.sh [ci|sanitize]`.
# Installs the Debian packages the build needs when they are missing.
# The ci suite is followed by the Windows server's: the mingw-w64 build and
# its tests under Wine (TYLHART_SKIP_WINDOWS=1 leaves them out).
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-ci}"

# Installs those of the given packages that are missing; fails when apt does.
install_missing() {
    local missing=()
    for pkg in "$@"; do
        dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed" || missing+=("$pkg")
    done
    [ "${#missing[@]}" -gt 0 ] || return 0
    echo "Installing missing packages: ${missing[*]}"
    local sudo_cmd=""
    [ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
    $sudo_cmd apt-get update -q && DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -q "${missing[@]}"
}

install_missing cmake g++ locales libgtest-dev libgmock-dev libbenchmark-dev pybind11-dev python3-dev pkg-config

cmake --workflow --preset "$preset"

if [ "$preset" = ci ] && [ "${TYLHART_SKIP_WINDOWS:-0}" != 1 ]; then
    # A machine without these packages skips the Windows part with one line
    # instead of failing the suite that did run.
    if install_missing g++-mingw-w64-x86-64 mingw-w64-tools wine64 wine; then
        cmake --workflow --preset windows
    else
        echo "Windows server: skipped, the mingw-w64 and Wine packages could not be installed"
    fi
fi
