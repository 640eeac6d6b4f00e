#!/usr/bin/env bash
# A long robustness run on the sanitized build: `scripts/fuzz.sh [seed] [calls]`
# (defaults: a seed from the clock, one million calls). The seed is printed
# first, so a failing run can be repeated exactly.
set -euo pipefail
cd "$(dirname "$0")/.."
seed="${1:-$(date +%s)}"
calls="${2:-1000000}"

cmake --preset sanitize >/dev/null
cmake --build --preset sanitize --target tylhart-fuzzer
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
    build/sanitize/tools/fuzzer/tylhart-fuzzer --seed "$seed" --calls "$calls"
