#!/usr/bin/env bash
# Fuzzes each target (tests/fuzz/*_target.cpp) in turn for the given number of
# seconds, from its corpus in tests/fuzz/corpus/<target>, then minimizes that
# corpus with what the run found: the named examples stay, and of the rest only
# inputs that reach code the others do not. Prints for each target the runs,
# the peak memory, the corpus's coverage before and after, and every crash,
# leak or time-out with the input that caused it (kept under BUILD/fuzz-work).
# Exits non-zero when any target found something.
set -euo pipefail
build=${1:?usage: fuzz.sh BUILD-FOLDER [SECONDS [TARGET...]]}
seconds=${2:-300}
shift $(($# < 2 ? $# : 2))
cd "$(dirname "$0")/.."
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=($(ls tests/fuzz/corpus))

# Edges and features the corpus in $2 reaches ("cov: N ft: M").
coverage() {
    "$1" -runs=0 "$2" 2>&1 | grep -o 'INITED cov: [0-9]* ft: [0-9]*' | cut -d' ' -f2-
}

# GLib allocates through malloc, so that LeakSanitizer sees what it keeps.
export G_SLICE=always-malloc
found=0
for name in "${targets[@]}"; do
    fuzzer="$build/tests/fuzz/${name}_fuzz"
    seeds="tests/fuzz/corpus/$name"
    work="$build/fuzz-work/$name"
    rm -rf "$work" && mkdir -p "$work/kept" "$work/found" "$work/tmp"
    before=$(coverage "$fuzzer" "$seeds")
    inputs=$(ls "$seeds" | wc -l)
    status=0
    TMPDIR="$work/tmp" "$fuzzer" "$work/kept" "$seeds" -max_total_time="$seconds" -max_len=4096 \
        -timeout=5 -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$work/found/" \
        >"$work/log" 2>&1 || status=$?
    # The corpus anew, minimized: its named examples, then whatever else reaches new code.
    mkdir "$work/corpus"
    find "$seeds" -type f -regextype posix-extended ! -regex '.*/[0-9a-f]{40}' \
        -exec cp {} "$work/corpus" \;
    TMPDIR="$work/tmp" "$fuzzer" -merge=1 "$work/corpus" "$seeds" "$work/kept" >/dev/null 2>&1 &&
        rm "$seeds"/* && cp "$work/corpus"/* "$seeds"
    figure() { grep -o "stat::$1: *[0-9]*" "$work/log" | grep -o '[0-9]*$' || echo '?'; }
    echo "$name: $(figure number_of_executed_units) runs in ${seconds} s, peak $(figure peak_rss_mb) MB;" \
        "corpus $inputs -> $(ls "$seeds" | wc -l) inputs, $before -> $(coverage "$fuzzer" "$seeds")"
    if [ "$status" -ne 0 ] || [ -n "$(ls "$work/found")" ]; then
        found=1
        grep -E '^(==[0-9]+==ERROR|SUMMARY|.*the input breaks)' "$work/log" | head -n 5
        ls -1 "$work/found"/* 2>/dev/null | sed 's/^/  input: /'
    fi
    rm -rf "$work/tmp"
done
exit $found
