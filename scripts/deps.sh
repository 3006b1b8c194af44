#!/usr/bin/env bash
# Installs what the tests need beyond the preinstalled toolchain: ffmpeg, for
# the interoperability tests of the command-line tool (Debian's package).
set -euo pipefail
if command -v ffmpeg >/dev/null 2>&1; then
  exit 0
fi
sudo=""
if [ "$(id -u)" -ne 0 ]; then
  sudo=sudo
fi
$sudo apt-get update
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y --no-install-recommends ffmpeg
