#!/usr/bin/env bash
# Line and branch coverage of the library (src/ and include/) by the whole
# test suite: `scripts/coverage.sh`. Builds in build/coverage with gcc's
# --coverage and installs gcovr (Debian package) when it is missing.
set -euo pipefail
cd "$(dirname "$0")/.."

if ! command -v gcovr >/dev/null; then
    sudo_cmd=""
    [ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
    $sudo_cmd apt-get update -q
    DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y -q gcovr
fi

find build/coverage -name '*.gcda' -delete 2>/dev/null || true
cmake --workflow --preset coverage
# Branches the compiler adds for exceptions are not decisions of the code,
# so they are left out of the branch figure.
gcovr --root . --object-directory build/coverage --filter 'src/' --filter 'include/' \
      --exclude-throw-branches --exclude-unreachable-branches --exclude-directories '.*CompilerId.*' \
      --print-summary --branches \
      --txt build/coverage/coverage.txt -j 2 | tail -3
echo "Per-file figures: build/coverage/coverage.txt"
