#!/usr/bin/env bash
# Runs every benchmark of a build (BUILD/bench/*_bench) on a private Xvfb, then
# the whole-program measures (scripts/bench-titles.sh), and writes the figures
# to docs/PERFORMANCE.md. Stops every server it started, by its id.
set -uo pipefail

build=${1:?usage: bench.sh BUILD-FOLDER}
benchmarks=$(find "$build/bench" -maxdepth 1 -type f -name '*_bench' -perm -u+x | sort)
[ -n "$benchmarks" ] || { echo "no benchmarks in $build/bench"; exit 1; }
results="$build/bench-results"
rm -rf "$results"; mkdir -p "$results"

xvfb=""
cleanup() {
    if [ -n "$xvfb" ]; then
        kill "$xvfb" 2>/dev/null
        wait "$xvfb" 2>/dev/null
    fi
}
trap cleanup EXIT
trap 'exit 1' INT TERM

fifo=$(mktemp -u); mkfifo "$fifo"
Xvfb -displayfd 3 -screen 0 1920x1080x24 -nolisten tcp 3>"$fifo" >/dev/null 2>&1 &
xvfb=$!
read -r number <"$fifo"; rm -f "$fifo"
export DISPLAY=":$number"
unset WAYLAND_DISPLAY
export QT_QPA_PLATFORM=xcb

status=0
for benchmark in $benchmarks; do
    name=$(basename "$benchmark")
    echo "== $name"
    "$benchmark" --benchmark_counters_tabular=true \
        --benchmark_out="$results/$name.json" --benchmark_out_format=json || status=1
done
cleanup; xvfb=""

echo "== the running program"
scripts/bench-titles.sh "$build" 60 | tee "$results/program.txt" || status=1

python3 scripts/performance-report.py "$results" >docs/PERFORMANCE.md || status=1
echo "Figures written to docs/PERFORMANCE.md"
exit $status
