#!/usr/bin/env bash
# Fuzzes the preferences file loader for the given number of seconds, starting
# from the seed corpus, then merges inputs that found new paths back into it.
set -euo pipefail
build=${1:?usage: fuzz.sh BUILD-FOLDER SECONDS}
seconds=${2:-300}
seeds=tests/fuzz/corpus/prefsfile
work="$build/fuzz-corpus/prefsfile"
mkdir -p "$work"

"$build/tests/fuzz/prefsfile_fuzz" "$work" "$seeds" \
    -max_total_time="$seconds" -max_len=4096 -timeout=5 -rss_limit_mb=2048 \
    -print_final_stats=1 -jobs=1 2>&1 | grep -E '^(#|stat::|==|SUMMARY|Done)|ERROR|crash|leak' | tail -n 25
"$build/tests/fuzz/prefsfile_fuzz" -merge=1 "$seeds" "$work" >/dev/null 2>&1 || true
echo "Seed corpus now holds $(ls "$seeds" | wc -l) inputs ($seeds)."
