#!/usr/bin/env bash
# Runs Kestrel Menu. On a desktop ($DISPLAY works) it simply starts there, for
# the user, with the user's own settings.
#
# With no display it runs a demo that keeps to itself: a private home and
# private XDG folders (configuration, data, cache, state, run time) in a
# temporary folder, so the user's settings, menu folder and autostart entries
# are never read or written; a private Xvfb with openbox, a top panel (tint2), a
# wallpaper, the Adwaita icon theme published over XSETTINGS (xsettingsd) and a
# session bus of its own. It saves screenshots in light and in dark (the
# top-left of the screen, an open menu, an item's context menu, the program's
# commands, the preferences, the About box), keeps running until Ctrl-C, then stops everything it started
# and removes the temporary folder.
set -uo pipefail

program=$(realpath "${1:?usage: run.sh PROGRAM [SCREENSHOT-FOLDER]}")
shots=$(realpath -m "${2:-$(dirname "$program")/../screenshots}")

if [ -n "${DISPLAY:-}" ] && xdpyinfo >/dev/null 2>&1; then
    exec "$program"
fi

# The demo's desktop: a file manager to show what a choice does, a panel, the
# settings manager.
"$(dirname "$0")/install-deps.sh" demo

pids=()
demo=$(mktemp -d -t kestrel-demo.XXXXXX)
cleanup() {
    # Newest first, each by the id it was started with.
    for (( i=${#pids[@]}-1; i>=0; i-- )); do
        kill "${pids[i]}" 2>/dev/null
        wait "${pids[i]}" 2>/dev/null
    done
    rm -rf "$demo"
}
trap cleanup EXIT
trap 'exit 0' INT TERM

# Private folders only; the system's data folders (icons, applications) stay.
export HOME=$demo/home
export XDG_CONFIG_HOME=$HOME/.config XDG_DATA_HOME=$HOME/.local/share
export XDG_CACHE_HOME=$HOME/.cache XDG_STATE_HOME=$HOME/.local/state
export XDG_RUNTIME_DIR=$demo/run
unset XDG_CURRENT_DESKTOP XDG_SESSION_DESKTOP DESKTOP_SESSION WAYLAND_DISPLAY
mkdir -p "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$XDG_STATE_HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"

# Something worth seeing in the menu: a few folders and files, a launcher, a
# separator; the first run adds the home folder, the applications and the file
# system below them.
files() { local folder=$1; shift; mkdir -p "$folder"; for f in "$@"; do : >"$folder/$f"; done; }
files "$HOME/Documents" "Project Plan.odt" "Budget 2026.ods" "Meeting Notes.txt" "Slides.pdf"
files "$HOME/Pictures" "Holiday.jpg" "Sunset.png" "Family.png"
files "$HOME/Music" "Evening Playlist.m3u" "Concert.ogg"
items="$XDG_CONFIG_HOME/Kestrel Menu Items"
files "$items/30>>Projects/Website" "index.html" "style.css" "logo.svg"
files "$items/30>>Projects/Garden" "Plants.ods" "Layout.svg" "Ideas.txt"
ln -s "$HOME/Documents" "$items/10>>Documents"
ln -s "$HOME/Pictures" "$items/20>>Pictures"
ln -s /usr/share/applications/thunar.desktop "$items/File Manager.desktop"
: >"$items/50>>-"

fifo=$demo/display; mkfifo "$fifo"
Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$fifo" >/dev/null 2>&1 &
pids+=($!)
read -r number <"$fifo"
export DISPLAY=":$number"

# Waits up to five seconds for a condition.
until_true() { for _ in $(seq 50); do "$@" && return 0; sleep 0.1; done; return 1; }

dbus-daemon --session --nofork --print-address=1 >"$demo/bus" 2>/dev/null &
pids+=($!)
until_true [ -s "$demo/bus" ]
export DBUS_SESSION_BUS_ADDRESS=$(head -n1 "$demo/bus")
export QT_QPA_PLATFORM=xcb QT_LOGGING_RULES="${QT_LOGGING_RULES:-qt.qpa.xcb=false}"

# look light|dark: the toolkit theme over XSETTINGS, the panel and the wallpaper.
settings=""; panel=""
look() {
    local mode=$1 theme=Adwaita bar='#f6f5f4' task='#deddda' text='#2e3436' wall='#6d9cc6-#2f5d8a'
    [ "$mode" = dark ] && { theme=Adwaita-dark bar='#2b2b2b' task='#454545' text='#eeeeec' wall='#33475c-#10171f'; }
    printf 'Net/ThemeName "%s"\nNet/IconThemeName "Adwaita"\n' "$theme" >"$demo/xsettingsd.conf"
    if [ -z "$settings" ]; then
        xsettingsd -c "$demo/xsettingsd.conf" >/dev/null 2>&1 &
        settings=$!; pids+=($settings)
    else
        kill -HUP "$settings"
    fi
    convert -size 1280x800 "gradient:$wall" "$demo/wallpaper.png" && display -window root "$demo/wallpaper.png"
    cat >"$demo/tint2rc" <<PANEL
rounded = 0
border_width = 0
background_color = $bar 100
border_color = $bar 100
rounded = 4
border_width = 0
background_color = $task 100
border_color = $task 100
panel_items = TC
panel_size = 100% 24
panel_padding = 52 2 8
panel_background_id = 1
panel_position = top center horizontal
panel_layer = normal
strut_policy = follow_size
taskbar_mode = single_desktop
taskbar_name = 0
task_icon = 1
task_text = 1
task_maximum_size = 180 20
task_padding = 6 2 4
task_font = sans 9
task_font_color = $text 100
task_active_font_color = $text 100
task_background_id = 0
task_active_background_id = 2
time1_format = %a %e %b  %H:%M
time1_font = sans bold 9
clock_font_color = $text 100
clock_padding = 6 0
PANEL
    [ -n "$panel" ] && kill "$panel" 2>/dev/null
    tint2 -c "$demo/tint2rc" >/dev/null 2>&1 &
    panel=$!; pids+=($panel)
}
look light
openbox --sm-disable >/dev/null 2>&1 &
pids+=($!)

echo "Kestrel Menu is running on the virtual display $DISPLAY (Ctrl-C stops it)."
QT_LOGGING_RULES="$QT_LOGGING_RULES;kestrel.look=true" "$program" 2>"$demo/program.log" &
app=$!
pids+=($app)

mkdir -p "$shots"
shot() { # shot NAME WHAT IMPORT-ARGS...
    local name=$1 what=$2; shift 2
    import "$@" +repage "$shots/$name.png" 2>/dev/null &&
        echo "Screenshot of $what: $shots/$name.png"
}
window() { xdotool search --onlyvisible --name "$1" 2>/dev/null | head -n1; }
has_window() { [ -n "$(window "$1")" ]; }
logged() { grep -q "$1" "$demo/program.log"; }
menu() { # opens the menu and walks it with the keys given
    xdotool mousemove 20 10 click 1; sleep 0.8
    [ $# -gt 0 ] && xdotool key "$@"; sleep 0.8
}
dialog() { # dialog TITLE NAME WHAT: waits for the dialog, takes it, closes it
    if until_true has_window "$1"; then
        sleep 0.5
        shot "$2" "$3" -window "$(window "$1")"
        xdotool key Escape; sleep 0.5
    fi
}
shots() { # shots SUFFIX: the title, a menu and submenu, a context menu, the commands, the preferences, the About box
    local s=$1
    xdotool mousemove 640 500; sleep 0.5
    shot "top-left$s" "the top-left of the screen" -window root -crop 360x90+0+0
    menu Down Right
    shot "menu$s" "an open menu and submenu" -window root -crop 720x420+0+0
    xdotool key Escape Escape Escape; sleep 0.5
    menu Down Down Menu
    shot "context$s" "an item's context menu" -window root -crop 480x300+0+0
    xdotool key Escape Escape; sleep 0.5
    menu Up Right
    shot "commands$s" "the program's commands" -window root -crop 480x380+0+0
    xdotool key Down Return
    dialog '^Kestrel Menu Preferences$' "preferences$s" "the preferences"
    menu Up Right Return
    dialog '^About Kestrel Menu$' "about$s" "the About box"
}

if until_true has_window '^Kestrel Menu title$' && until_true logged 'colour scheme'; then
    sleep 1
    shots ""
    look dark
    if until_true logged 'colour scheme dark'; then
        sleep 1
        shots "-dark"
    fi
fi
wait "$app"
