#!/usr/bin/env bash
# Runs every benchmark of a build (BUILD/bench/*_bench) on a private Xvfb, then
# stops the server it started, by its id.
set -uo pipefail

build=${1:?usage: bench.sh BUILD-FOLDER}
benchmarks=$(find "$build/bench" -maxdepth 1 -type f -name '*_bench' -perm -u+x | sort)
[ -n "$benchmarks" ] || { echo "no benchmarks in $build/bench"; exit 1; }

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
    echo "== $(basename "$benchmark")"
    "$benchmark" || status=1
done
exit $status
