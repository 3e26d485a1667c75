#!/usr/bin/env bash
# Installs what is missing of the packages that this project needs, as root or with sudo.
#   tools/packages.sh [build] [test] [abuse] [tidy] [usb] [package] [package-test]
#          default: build
set -euo pipefail

# What the programs are built with is said once, in debian/control.
mapfile -t sources < <(sed -n '/^Build-Depends:/,/^[^ ]/s/^ \([a-z0-9.+-]*\).*/\1/p' \
  "$(dirname "$0")/../debian/control" | grep -vx debhelper-compat)
build=(g++ "${sources[@]}" libegl-dev libxcb1-dev libgtest-dev libgmock-dev libbenchmark-dev
  fonts-open-sans libqt6svg6 libgl1-mesa-dri libegl-mesa0)
test=(xvfb xauth openbox xdotool imagemagick x11-utils libumockdev-dev umockdev dbus-x11 ffmpeg
  clang-format python3 desktop-file-utils strace locales appstream bash-completion groff-base
  librsvg2-bin weston qt6-wayland libimage-exiftool-perl xclip at-spi2-core dbus-daemon
  python3-pyatspi gir1.2-atspi-2.0)
abuse=(fuse3 libfuse3-dev)
tidy=(clang-tidy)
package=(build-essential "${sources[@]}" debhelper lintian)
package_test=(autopkgtest mmdebstrap)
usb=(qemu-system-x86 busybox-static kmod cpio v4l-utils udev python3 ffmpeg guvcview)

wanted=()
for group in "${@:-build}"; do
  case $group in
    build) wanted+=("${build[@]}") ;;
    test) wanted+=("${test[@]}") ;;
    abuse) wanted+=("${abuse[@]}") ;;
    tidy) wanted+=("${tidy[@]}") ;;
    usb) wanted+=("${usb[@]}") ;;
    package) wanted+=("${package[@]}") ;;
    package-test) wanted+=("${package_test[@]}") ;;
    *) echo "tools/packages.sh: no group '$group' (build, test, abuse, tidy, usb, package, package-test)" >&2; exit 2 ;;
  esac
done

missing=()
for package in "${wanted[@]}"; do
  [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
    missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

sudo=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || {
    echo "These packages are missing and can only be installed as root or with sudo: ${missing[*]}" >&2
    exit 1
  }
  sudo=(sudo)
fi
echo "Installing ${missing[*]}"
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
