#!/usr/bin/env bash
# Installs the build into a scratch folder and checks what a desktop and a
# distribution need: the program, its desktop entry, icon, metainfo (valid),
# manual page, copyright and changelog, and the user guide where the About box
# looks for it (../share/doc/kestrel-menu beside the program). Then makes the
# Debian packages and has lintian check them: no error, no warning.
set -euo pipefail
build=${1:?usage: install_layout_test.sh BUILD-FOLDER}
stage=$(mktemp -d)
# Whatever the tools keep goes in the scratch folder, and with it; installing
# writes a manifest into the build folder, which goes too unless it was there.
manifest="$build/install_manifest.txt"
[ -e "$manifest" ] && manifest=""
trap 'rm -rf "$stage" $manifest' EXIT
export TMPDIR="$stage/tmp" XDG_CACHE_HOME="$stage/cache"
mkdir -p "$TMPDIR"
for tool in desktop-file-validate appstreamcli lintian cpack dpkg-deb; do
    command -v "$tool" >/dev/null || { echo "missing tool: $tool (make test installs it)"; exit 1; }
done

DESTDIR="$stage/root" cmake --install "$build" --prefix /usr >/dev/null
root="$stage/root/usr"
fail=0
check() { [ -e "$root/$1" ] || { echo "missing: /usr/$1"; fail=1; }; }
check bin/kestrel-menu
check share/applications/kestrel-menu.desktop
check share/icons/hicolor/scalable/apps/kestrel-menu.svg
check share/man/man1/kestrel-menu.1.gz
check share/doc/kestrel-menu/copyright
check share/doc/kestrel-menu/changelog.gz
check share/doc/kestrel-menu/guide.html
check share/doc/kestrel-menu/images/menu.png
[ -x "$root/bin/kestrel-menu" ] || { echo "the program is not executable"; fail=1; }
guide=$(cd "$root/bin/../share/doc/kestrel-menu" 2>/dev/null && pwd)/guide.html
[ -f "$guide" ] || { echo "the guide is not beside the program"; fail=1; }
desktop-file-validate "$root/share/applications/kestrel-menu.desktop" || fail=1
grep -q '^Exec=kestrel-menu$' "$root/share/applications/kestrel-menu.desktop" ||
    { echo "the desktop entry does not start the installed program"; fail=1; }
metainfo=("$root"/share/metainfo/*.metainfo.xml)
appstreamcli validate --no-net "${metainfo[@]}" >"$stage/appstream.log" 2>&1 ||
    { cat "$stage/appstream.log"; fail=1; }
# Every screenshot the metainfo names is one of the repository's pictures.
for shot in $(grep -o '[^/]*\.png</image>' "${metainfo[@]}" | sed 's|</image>||'); do
    [ -f "$(dirname "$0")/../../docs/images/$shot" ] || { echo "no such screenshot: $shot"; fail=1; }
done

(cd "$build" && cpack -G DEB -B "$stage/packages" >/dev/null)
packages=("$stage"/packages/kestrel-menu_*.deb "$stage"/packages/kestrel-menu-dbgsym_*.ddeb)
for package in "${packages[@]}"; do
    [ -f "$package" ] || { echo "not made: $package"; fail=1; }
done
# Plugins that Qt loads at run time: the X11 platform, and SVG for the icons.
depends=$(dpkg-deb -f "${packages[0]}" Depends)
for needed in qt6-qpa-plugins libqt6svg6; do
    [[ ", $depends," == *", $needed,"* ]] || { echo "not a dependency: $needed"; fail=1; }
done
lintian --fail-on error,warning --tag-display-limit 0 "${packages[@]}" >"$stage/lintian.log" 2>&1 ||
    { grep -v 'running with root privileges' "$stage/lintian.log"; fail=1; }
exit $fail
