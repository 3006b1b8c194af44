#!/usr/bin/env bash
# Installs what the tests need beyond the preinstalled toolchain, from
# Debian's packages: ffmpeg (interoperability tests of the command-line tool)
# and binutils (objdump, for the instruction-set check of the built library).
set -euo pipefail
missing=()
command -v ffmpeg >/dev/null 2>&1 || missing+=(ffmpeg)
command -v objdump >/dev/null 2>&1 || missing+=(binutils)
[ ${#missing[@]} -eq 0 ] && exit 0
sudo=""
if [ "$(id -u)" -ne 0 ]; then
  sudo=sudo
fi
$sudo apt-get update
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y --no-install-recommends "${missing[@]}"
