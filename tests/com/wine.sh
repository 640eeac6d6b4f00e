#!/usr/bin/env bash
# One step of the server's tests under Wine, run by CTest from the windows
# build:  wine.sh register|vbscript|client|unregister DLL SOURCE_DIR
# Exit code 77 (skipped) only where Wine cannot run at all.
set -euo pipefail
step="$1" dll="$2" source="$3"
build="$(cd "$(dirname "$dll")" && pwd)"

# A prefix of our own in the build tree, English and quiet.
export WINEPREFIX="$build/wine-prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" LC_ALL=C.UTF-8
if ! command -v wine >/dev/null 2>&1; then
    echo "Wine is not installed: the Windows server tests are skipped (scripts/test.sh installs wine64)"
    exit 77
fi
if [ ! -f "$WINEPREFIX/system.reg" ] && ! wineboot -i >/dev/null 2>&1; then
    echo "Wine cannot start a prefix on this machine: the Windows server tests are skipped"
    exit 77
fi

# The identities of the class table, read from the one place that holds them.
table="$source/src/automation/Registry.cpp"
rows="$(grep -o 'TYLHART_CLASS_ROW([A-Za-z]*, "{[^}]*}", "{[^}]*}"' "$table")"
progids="$(sed 's/TYLHART_CLASS_ROW(\([A-Za-z]*\),.*/TylHartTypes.\1/' <<<"$rows")"
clsids="$(cut -d'"' -f2 <<<"$rows")"
iids="$(cut -d'"' -f4 <<<"$rows")"
libid="$(grep -o 'TypeLibraryInfo library{u"TylHartTypes", u"{[^}]*}' "$table" | grep -o '{[0-9A-F-]*}')"

# Counts how many of the names in $2 are subkeys of the key $1.
present() {
    local listing
    listing="$(wine reg query "$1" 2>/dev/null | tr -d '\r' || true)"
    local n=0
    while read -r name; do
        grep -qixF "$1\\$name" <<<"$listing" && n=$((n + 1))
    done <<<"$2"
    echo "$n"
}

keys() {  # "CLSID ProgID Interface TypeLib" counts
    echo "$(present 'HKEY_CLASSES_ROOT\CLSID' "$clsids") $(present 'HKEY_CLASSES_ROOT' "$progids")" \
         "$(present 'HKEY_CLASSES_ROOT\Interface' "$iids") $(present 'HKEY_CLASSES_ROOT\TypeLib' "$libid")"
}

expect() {  # label expected actual
    if [ "$2" != "$3" ]; then
        echo "FAILED: $1: expected [$2], got [$3]"
        exit 1
    fi
    echo "$1: $3"
}

classes="$(wc -l <<<"$clsids")"
case "$step" in
register)
    # Twice: registration overwrites what it wrote before.
    wine regsvr32 /s "$dll"
    wine regsvr32 /s "$dll"
    expect "registered keys (CLSID ProgID Interface TypeLib)" "$classes $classes $classes 1" "$(keys)"
    first="$(head -1 <<<"$clsids")"
    server="$(wine reg query "HKEY_CLASSES_ROOT\\CLSID\\$first\\InprocServer32" | tr -d '\r')"
    expect "threading model" 1 "$(grep -c 'ThreadingModel *REG_SZ *Apartment' <<<"$server")"
    expect "server path" 1 "$(grep -ciF "$(basename "$dll")" <<<"$server")"
    progid="$(wine reg query "HKEY_CLASSES_ROOT\\$(head -1 <<<"$progids")\\CLSID" | tr -d '\r')"
    expect "ProgID to CLSID" 1 "$(grep -ciF "$first" <<<"$progid")"
    expect "type library file" yes "$([ -f "$build/TylHartTypes.tlb" ] && echo yes || echo no)"
    ;;
vbscript)
    out="$(cd "$source" && wine cscript //nologo tests/com/suite.vbs | tr -d '\r')" || true
    echo "$out"
    # A script that stops on an unexpected error prints no summary line.
    grep -qE '^[0-9]+ passed, 0 failed$' <<<"$out" || { echo "FAILED: the suite did not pass to its end"; exit 1; }
    ;;
client)
    cd "$build" && wine com_client.exe
    ;;
unregister)
    wine regsvr32 /u /s "$dll"
    wine regsvr32 /u /s "$dll"
    expect "keys left (CLSID ProgID Interface TypeLib)" "0 0 0 0" "$(keys)"
    expect "type library file left" no "$([ -f "$build/TylHartTypes.tlb" ] && echo yes || echo no)"
    ;;
*)
    echo "unknown step $step" >&2
    exit 2
    ;;
esac
