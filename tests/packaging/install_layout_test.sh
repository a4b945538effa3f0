#!/usr/bin/env bash
# Installs the build into a scratch folder and checks what a desktop needs:
# the program, its desktop entry (valid), its icon, and the user guide where
# the About box looks for it (../share/doc/kestrel-menu beside the program).
set -euo pipefail
build=${1:?usage: install_layout_test.sh BUILD-FOLDER}
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT

DESTDIR="$stage" cmake --install "$build" --prefix /usr >/dev/null
root="$stage/usr"
fail=0
check() { [ -e "$root/$1" ] || { echo "missing: /usr/$1"; fail=1; }; }
check bin/kestrel-menu
check share/applications/kestrel-menu.desktop
check share/icons/hicolor/scalable/apps/kestrel-menu.svg
check share/doc/kestrel-menu/guide.html
check share/doc/kestrel-menu/images/menu.png
[ -x "$root/bin/kestrel-menu" ] || { echo "the program is not executable"; fail=1; }
guide=$(cd "$root/bin/../share/doc/kestrel-menu" 2>/dev/null && pwd)/guide.html
[ -f "$guide" ] || { echo "the guide is not beside the program"; fail=1; }
desktop-file-validate "$root/share/applications/kestrel-menu.desktop" || fail=1
grep -q '^Exec=kestrel-menu$' "$root/share/applications/kestrel-menu.desktop" ||
    { echo "the desktop entry does not start the installed program"; fail=1; }
exit $fail
