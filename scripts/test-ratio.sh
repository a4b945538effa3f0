#!/usr/bin/env bash
# Prints the non-blank lines of the program's code and of its tests, and how
# large the tests are against the code. Code is every .cpp and .h outside
# tests/ and bench/ that the program is built from; tests count their support
# and the platform's test doubles (platform/doubles) too.
set -euo pipefail
cd "$(dirname "$0")/.."

count() {
    git ls-files -- "$@" | grep -E '\.(cpp|h)$' | xargs -r cat | grep -cv '^[[:space:]]*$' || true
}

code=$(count app core titles foldermenus prefs finder dialogs platform resources \
    ':!platform/doubles')
tests=$(count tests platform/doubles)
printf 'code  %6d lines\ntests %6d lines\nratio %5d%%\n' "$code" "$tests" $((100 * tests / code))
