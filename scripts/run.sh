#!/usr/bin/env bash
# Runs Kestrel Menu. On a desktop ($DISPLAY works) it simply starts there. With
# no display it starts a private Xvfb, openbox and session bus, runs the program
# on them, saves screenshots (the top-left of the screen, the title's menu with a
# submenu open, the program's commands, the preferences and the About box), and
# stops everything it started on Ctrl-C.
set -uo pipefail

program=${1:?usage: run.sh PROGRAM [SCREENSHOT-FOLDER]}
shots=${2:-$(dirname "$program")/../screenshots}

if [ -n "${DISPLAY:-}" ] && xdpyinfo >/dev/null 2>&1; then
    exec "$program"
fi

# On a virtual display the demo needs a file manager to show what a choice does.
"$(dirname "$0")/install-deps.sh" demo

pids=()
runtime=""
cleanup() {
    # Newest first, each by the id it was started with.
    for (( i=${#pids[@]}-1; i>=0; i-- )); do
        kill "${pids[i]}" 2>/dev/null
        wait "${pids[i]}" 2>/dev/null
    done
    [ -n "$runtime" ] && rm -rf "$runtime"
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
# A private run-time folder for the private session, and quiet about window
# manager messages that Qt does not handle.
if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
    export XDG_RUNTIME_DIR=$(mktemp -d)
    runtime=$XDG_RUNTIME_DIR
fi
export QT_LOGGING_RULES="${QT_LOGGING_RULES:-qt.qpa.xcb=false}"

echo "Kestrel Menu is running on the virtual display $DISPLAY (Ctrl-C stops it)."
"$program" &
pids+=($!)
app=$!

mkdir -p "$shots"
shot() { # shot NAME WHAT IMPORT-ARGS...
    local name=$1 what=$2; shift 2
    import "$@" +repage "$shots/$name.png" 2>/dev/null &&
        echo "Screenshot of $what: $(realpath "$shots/$name.png")"
}
window() { xdotool search --onlyvisible --name "$1" 2>/dev/null | head -n1; }
wait_for_window() {
    for _ in $(seq 50); do [ -n "$(window "$1")" ] && return 0; sleep 0.1; done
    return 1
}

sleep 2
if kill -0 "$app" 2>/dev/null; then
    shot top-left "the top-left of the screen" -window root -crop 320x120+0+0
    # The title's menu with the submenu of its first folder open, then closed again.
    xdotool mousemove 20 10 click 1; sleep 1
    xdotool key Down Right; sleep 1
    shot menu "an open menu and submenu" -window root -crop 800x500+0+0
    xdotool key Escape Escape Escape; sleep 0.5
    # The program's own commands: the last item of the menu, then Preferences and About.
    xdotool mousemove 20 10 click 1; sleep 1
    xdotool key Up Right; sleep 0.5
    shot commands "the program's commands" -window root -crop 420x200+0+0
    xdotool key Down Return
    if wait_for_window '^Kestrel Menu Preferences$'; then
        sleep 0.5
        shot preferences "the preferences" -window "$(window '^Kestrel Menu Preferences$')"
        xdotool key Escape; sleep 0.5
    fi
    xdotool mousemove 20 10 click 1; sleep 1
    xdotool key Up Right Return
    if wait_for_window '^About Kestrel Menu$'; then
        sleep 0.5
        shot about "the About box" -window "$(window '^About Kestrel Menu$')"
        xdotool key Escape
    fi
fi
wait "$app"
