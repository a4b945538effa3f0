#!/usr/bin/env bash
# Measures the running program on a private desktop (Xvfb, openbox, a session
# bus offering a file manager): time from start to the title shown, idle CPU
# over 60 seconds with the pointer away from the titles, resident memory, and,
# from outside, the first click on a title whose folder holds 1,000 to 50,000
# entries until its menu is on screen.
#   scripts/bench-titles.sh BUILD-FOLDER [IDLE-SECONDS]
set -uo pipefail

build=${1:?usage: bench-titles.sh BUILD-FOLDER [IDLE-SECONDS]}
idle=${2:-60}
program=$build/app/kestrel-menu
[ -x "$program" ] || { echo "no program at $program"; exit 1; }

work=$(mktemp -d)
pids=()
cleanup() {
    for (( i=${#pids[@]}-1; i>=0; i-- )); do
        kill "${pids[i]}" 2>/dev/null
        wait "${pids[i]}" 2>/dev/null
    done
    rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 1' INT TERM

fifo=$work/display; mkfifo "$fifo"
Xvfb -displayfd 3 -screen 0 1920x1080x24 -nolisten tcp 3>"$fifo" >/dev/null 2>&1 &
pids+=($!)
read -r number <"$fifo"
export DISPLAY=":$number"

mkdir -p "$work/services"
printf '[D-BUS Service]\nName=org.freedesktop.FileManager1\nExec=/bin/false\n' \
    >"$work/services/filemanager.service"
cat >"$work/bus.conf" <<CONF
<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>
<servicedir>$work/services</servicedir>
<policy context="default"><allow send_destination="*" eavesdrop="true"/>
<allow eavesdrop="true"/><allow own="*"/></policy></busconfig>
CONF
dbus-daemon --nofork --print-address=1 --config-file="$work/bus.conf" >"$work/bus" 2>/dev/null &
pids+=($!)
for _ in $(seq 50); do [ -s "$work/bus" ] && break; sleep 0.1; done
export DBUS_SESSION_BUS_ADDRESS=$(head -n1 "$work/bus")

openbox --sm-disable >/dev/null 2>&1 &
pids+=($!)
for _ in $(seq 50); do xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id' && break; sleep 0.1; done
unset WAYLAND_DISPLAY
export QT_QPA_PLATFORM=xcb
xdotool mousemove 600 600

title_shown() { xwininfo -name 'Kestrel Menu title' 2>/dev/null | grep -q IsViewable; }
private_home() { # HOME RUN-TIME-FOLDER
    export HOME=$1 XDG_CONFIG_HOME=$1/.config XDG_RUNTIME_DIR=$2
    mkdir -p "$HOME" "$XDG_RUNTIME_DIR"; chmod 700 "$XDG_RUNTIME_DIR"
}
# The program runs as `app`, stopped here or at the end.
start_program() { "$program" 2>/dev/null & app=$!; pids+=($app); }
stop_program() { kill $app; wait $app 2>/dev/null; unset 'pids[-1]'; }
wait_title() {
    until title_shown; do
        kill -0 $app 2>/dev/null || { echo "the program ended before its title showed"; exit 1; }
        sleep 0.002
    done
}

# Start-up: five runs, each with a fresh home; the median is reported.
startups=()
for run in 1 2 3 4 5; do
    private_home "$work/home$run" "$work/run$run"
    [ $run -gt 1 ] && cp -a "$work/home1/.config" "$HOME/" # settings as a returning user has them
    start=$(date +%s%N)
    start_program
    wait_title
    startups+=($(( ($(date +%s%N) - start) / 1000000 )))
    [ $run -lt 5 ] && stop_program
done
sorted=($(printf '%s\n' "${startups[@]}" | sort -n))
echo "start-up to title shown: median ${sorted[2]} ms (runs: ${startups[*]} ms; first run makes the settings)"

# Idle: the last copy keeps running with the pointer away from the titles; the
# scheduler's own count of the time it ran, in nanoseconds.
sleep 2
ran() { awk '{print $1}' "/proc/$app/schedstat"; }
before=$(ran)
sleep "$idle"
after=$(ran)
awk -v ns=$(( after - before )) -v s="$idle" \
    'BEGIN { printf "idle CPU over %d s with the pointer away: %.4f%% of one core (%.1f ms)\n", s, 100 * ns / 1e9 / s, ns / 1e6 }'
# Resident counts the pages of shared libraries (Qt, GLib) that other programs
# share; the program's own anonymous memory is given beside it.
echo "resident memory: $(awk '/^VmRSS/ {rss = $2} /^RssAnon/ {anon = $2}
    END {printf "%.1f MB, of which %.1f MB its own anonymous memory, the rest pages of shared libraries", rss / 1024, anon / 1024}' \
    "/proc/$app/status")"

# The first click, from outside: a menu folder that holds `entries` files,
# from the press on the title (xdotool) until the menu's window is mapped.
stop_program
# Menus are the program's untitled windows (no WM_NAME); titles carry a name.
menus_mapped() { xdotool search --onlyvisible --name '^$' 2>/dev/null | wc -l; }
first_click() { # ENTRIES RUN: appends the time in ms to `clicks`
    local home=$work/click$1-$2
    private_home "$home" "$work/clickrun$1-$2"
    start_program
    wait_title
    # The first run made the menu folder; its menu is built at the first click.
    (cd "$HOME/.config/Kestrel Menu Items" && seq -f 'Item %.0f.txt' 1 "$1" | xargs -d '\n' touch)
    xdotool mousemove 20 10
    sleep 0.5
    # Timed from the press (the title answers it); a poll takes a few ms.
    local before=$(menus_mapped) start=$(date +%s%N) deadline=$(( $(date +%s) + 10 ))
    xdotool mousedown 1
    until [ "$(menus_mapped)" -gt "$before" ] || [ "$(date +%s)" -gt $deadline ]; do :; done
    clicks+=($(( ($(date +%s%N) - start) / 1000000 )))
    xdotool mouseup 1 key Escape
    stop_program
    rm -rf "$home"
}
for entries in 1000 10000 50000; do
    clicks=()
    for run in 1 2 3; do first_click $entries $run; done
    sorted=($(printf '%s\n' "${clicks[@]}" | sort -n))
    echo "first click from outside, $entries entries: median ${sorted[1]} ms (runs: ${clicks[*]} ms)"
done
