#!/usr/bin/env bash
# Runs Kestrel Menu. On a desktop ($DISPLAY works) it simply starts there. With
# no display it starts a private Xvfb, openbox and session bus, runs the program
# on them, saves screenshots (the top-left of the screen, and the title's menu
# opened with a submenu), and stops everything it started on Ctrl-C.
set -uo pipefail

program=${1:?usage: run.sh PROGRAM [SCREENSHOT-FOLDER]}
shots=${2:-$(dirname "$program")/../screenshots}

if [ -n "${DISPLAY:-}" ] && xdpyinfo >/dev/null 2>&1; then
    exec "$program"
fi

pids=()
cleanup() {
    # Newest first, each by the id it was started with.
    for (( i=${#pids[@]}-1; i>=0; i-- )); do
        kill "${pids[i]}" 2>/dev/null
        wait "${pids[i]}" 2>/dev/null
    done
}
trap cleanup EXIT
trap 'exit 0' INT TERM

fifo=$(mktemp -u); mkfifo "$fifo"
Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$fifo" >/dev/null 2>&1 &
pids+=($!)
read -r number <"$fifo"; rm -f "$fifo"
export DISPLAY=":$number"

bus=$(mktemp)
dbus-daemon --session --nofork --print-address=1 >"$bus" 2>/dev/null &
pids+=($!)
for _ in $(seq 50); do [ -s "$bus" ] && break; sleep 0.1; done
export DBUS_SESSION_BUS_ADDRESS=$(head -n1 "$bus"); rm -f "$bus"

openbox --sm-disable >/dev/null 2>&1 &
pids+=($!)
unset WAYLAND_DISPLAY
export QT_QPA_PLATFORM=xcb

echo "Kestrel Menu is running on the virtual display $DISPLAY (Ctrl-C stops it)."
"$program" &
pids+=($!)
app=$!

mkdir -p "$shots"
sleep 2
if kill -0 "$app" 2>/dev/null; then
    import -window root -crop 320x120+0+0 +repage "$shots/top-left.png" 2>/dev/null &&
        echo "Screenshot of the top-left of the screen: $(realpath "$shots/top-left.png")"
    # The title's menu with the submenu of its first folder open, then closed again.
    if command -v xdotool >/dev/null; then
        xdotool mousemove 20 10 click 1
        sleep 1
        xdotool key Down Right
        sleep 1
        import -window root -crop 800x500+0+0 +repage "$shots/menu.png" 2>/dev/null &&
            echo "Screenshot of an open menu and submenu: $(realpath "$shots/menu.png")"
        xdotool key Escape Escape
    fi
fi
wait "$app"
