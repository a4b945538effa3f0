#!/usr/bin/env bash
# Installs the Debian 12 packages that building, running and testing need,
# and only those that are missing.
set -euo pipefail

packages=(
    # build
    cmake ninja-build g++ pkg-config make
    qt6-base-dev qt6-base-dev-tools libqt6svg6
    libglib2.0-dev libxcb1-dev libxcb-xinput-dev libxcb-xfixes0-dev qt6-svg-dev
    libgtest-dev libgmock-dev libbenchmark-dev
    clang libclang-rt-14-dev
    # run: icon themes, the virtual display, a window manager, a session bus, the
    # desktop's metadata store (launchers the user trusted carry its mark)
    hicolor-icon-theme adwaita-icon-theme breeze-icon-theme fonts-dejavu-core
    xvfb xauth openbox dbus-daemon gvfs gvfs-daemons
    # tests and screenshots
    xdotool x11-utils imagemagick desktop-file-utils dpkg-dev python3 shared-mime-info
    # tests: resizing the virtual screen (xrandr), a real XSETTINGS manager
    x11-xserver-utils xsettingsd
    # packaging checks
    lintian appstream
)

# The demo on a virtual display (make run without a display) also shows what a
# choice does, in a real file manager, under a panel, with the look published
# by a settings manager.
[ "${1:-}" = demo ] && packages=(thunar tint2 xsettingsd)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$package")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get -o DPkg::Lock::Timeout=600 update -qq
$sudo apt-get -o DPkg::Lock::Timeout=600 install -y -qq --no-install-recommends "${missing[@]}"
