#!/usr/bin/env bash
# Installs what the tests need beyond the preinstalled toolchain, from
# Debian's packages: ffmpeg (interoperability tests of the command-line tool)
# and binutils (objdump, for the instruction-set check of the built library);
# for the Windows build, the mingw-w64 cross compiler, Wine to run its tests
# and GoogleTest's sources to cross-build it. The Windows packages are
# optional: when they cannot be installed, the Windows stage is skipped.
set -euo pipefail
required=()
windows=()
command -v ffmpeg >/dev/null 2>&1 || required+=(ffmpeg)
command -v objdump >/dev/null 2>&1 || required+=(binutils)
command -v x86_64-w64-mingw32-g++-posix >/dev/null 2>&1 || windows+=(g++-mingw-w64-x86-64-posix)
command -v wine64 >/dev/null 2>&1 || [ -x /usr/lib/wine/wine64 ] || windows+=(wine64)
[ -f /usr/src/googletest/CMakeLists.txt ] || windows+=(googletest)
gstreamer=()
pkg-config --exists gstreamer-video-1.0 gstreamer-check-1.0 2>/dev/null ||
  gstreamer+=(libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev)
command -v gst-launch-1.0 >/dev/null 2>&1 || gstreamer+=(gstreamer1.0-tools)
gst-inspect-1.0 videoconvert >/dev/null 2>&1 || gstreamer+=(gstreamer1.0-plugins-base)
[ ${#required[@]} -eq 0 ] && [ ${#windows[@]} -eq 0 ] && [ ${#gstreamer[@]} -eq 0 ] && exit 0

sudo=""
if [ "$(id -u)" -ne 0 ]; then
  sudo=sudo
fi
install() {
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -q --no-install-recommends "$@"
}
$sudo apt-get update -q
[ ${#required[@]} -eq 0 ] || install "${required[@]}"
if [ ${#windows[@]} -gt 0 ] && ! install "${windows[@]}"; then
  echo "could not install ${windows[*]}: the Windows build and its tests will be skipped"
fi
if [ ${#gstreamer[@]} -gt 0 ] && ! install "${gstreamer[@]}"; then
  echo "could not install ${gstreamer[*]}: the GStreamer element and its tests will be skipped"
fi
