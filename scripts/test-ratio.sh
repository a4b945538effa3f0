#!/usr/bin/env bash
# Prints the non-blank lines of the program's code and of its tests, and how
# large the tests are against the code. Code is every .cpp and .h outside
# tests/ and bench/ that the program is built from; tests count their support
# and fakes too.
set -euo pipefail
cd "$(dirname "$0")/.."

count() {
    git ls-files -- "$@" | grep -E '\.(cpp|h)$' | xargs -r cat | grep -cv '^[[:space:]]*$' || true
}

code=$(count app core titles foldermenus prefs finder dialogs platform resources)
tests=$(count tests)
printf 'code  %6d lines\ntests %6d lines\nratio %5d%%\n' "$code" "$tests" $((100 * tests / code))
