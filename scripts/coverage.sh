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
# so they are left out of the branch figure. gcov marks most of them; it
# does not mark the clean-up of the temporaries on the member-table lines
# (a class's one-time table: its builder calls and the end of the
# initialiser), which runs only if building a table throws, so those lines'
# branches are left out by pattern. Their lines still count.
table_lines='^\s*(\}\(\);|static const (::tylhart::)?ClassInfo info = |(b\.|\.|return b\.)(method|property|getter|field|rawMethod|setter|withId|asLet|build)\b)'
gcovr --root . --object-directory build/coverage --filter 'src/' --filter 'include/' \
      --exclude-throw-branches --exclude-unreachable-branches --exclude-directories '.*CompilerId.*' \
      --exclude-branches-by-pattern "$table_lines" \
      --print-summary --branches \
      --txt build/coverage/coverage.txt -j 2 | tail -3
echo "Per-file figures: build/coverage/coverage.txt"
