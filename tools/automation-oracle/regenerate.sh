#!/usr/bin/env bash
# Builds oracle.c with mingw-w64 and runs it under wine against the real
# oleaut32.
#
#   tools/automation-oracle/regenerate.sh
#       rewrites tests/data/automation_oracle.tsv (the committed table)
#   tools/automation-oracle/regenerate.sh --seed 7 --random 20000 --no-fixed > extra.tsv
#       any arguments are handed to the oracle and the table goes to
#       standard output instead; the committed table is left alone
#
# Needs the Debian packages gcc-mingw-w64-x86-64, wine64 (and wine) and
# faketime.
#
# A text without a year ("1/2", and also "1 2" or "1,23", which the runtime
# reads as month and day) converts to a DATE in the current year, so the
# oracle runs twice, under two pinned clocks, and only rows on which both
# runs agree are kept: the table must not change with the calendar.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
root="$(cd "$here/../.." && pwd)"
table="$root/tests/data/automation_oracle.tsv"

cc=x86_64-w64-mingw32-gcc
if ! command -v "$cc" >/dev/null 2>&1; then
    echo "regenerate.sh: $cc not found; apt-get install gcc-mingw-w64-x86-64" >&2
    exit 1
fi
if command -v wine >/dev/null 2>&1; then
    wine=wine
elif [ -x /usr/lib/wine/wine64 ]; then
    wine=/usr/lib/wine/wine64
else
    echo "regenerate.sh: wine not found; apt-get install wine64 wine" >&2
    exit 1
fi
if ! command -v faketime >/dev/null 2>&1; then
    echo "regenerate.sh: faketime not found; apt-get install faketime" >&2
    exit 1
fi

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

"$cc" -std=c11 -Wall -Wextra -Werror -O1 -ffp-contract=off \
    -o "$work/oracle.exe" "$here/oracle.c" -loleaut32

# A prefix of our own, so a user's ~/.wine settings cannot change what the
# runtime does.  Creating it takes a few seconds the first time.
export WINEPREFIX="${ORACLE_WINEPREFIX:-${XDG_CACHE_HOME:-$HOME/.cache}/tylhart-automation-oracle/wine}"
export WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml="   # no Mono/Gecko install prompts
export LC_ALL=C.UTF-8 TZ=UTC
mkdir -p "$WINEPREFIX"

# Bring the prefix up to date with the real clock first: under a pinned
# clock wine would rebuild the prefix on every run.
(cd "$work" && "$wine" wineboot >/dev/null 2>&1) || true

# Two clocks that differ in year, month, day and leap year.
clock_a='2024-02-29 12:00:00'
clock_b='2031-12-31 12:00:00'

run_oracle() {
    local clock="$1" table="$2"
    shift 2
    (cd "$work" && faketime -f "@$clock" "$wine" oracle.exe --out "$table" "$@")
}

# Writes the rows both clocks agree on to standard output.
stable_rows() {
    run_oracle "$clock_a" a.tsv "$@"
    run_oracle "$clock_b" b.tsv "$@"
    if [ "$(wc -l <"$work/a.tsv")" != "$(wc -l <"$work/b.tsv")" ]; then
        echo "regenerate.sh: the two runs wrote different row counts" >&2
        exit 1
    fi
    paste -d '\n' "$work/a.tsv" "$work/b.tsv" | awk '
        NR % 2 == 1 { a = $0; next }
        a == $0 { print a; next }
        { dropped++ }
        END { if (dropped) printf "regenerate.sh: left out %d clock-dependent rows\n", dropped > "/dev/stderr" }'
}

if [ "$#" -gt 0 ]; then
    stable_rows "$@"
    exit 0
fi

stable_rows >"$work/table.tsv"
mkdir -p "$(dirname "$table")"
mv "$work/table.tsv" "$table"
echo "regenerate.sh: wrote $table ($(($(wc -l <"$table") - 1)) rows)" >&2
