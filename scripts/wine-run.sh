#!/usr/bin/env bash
# Runs a Windows program under Wine (Debian's wine64): the emulator of the
# windows preset's tests. Without Wine it says so in one line and exits 77,
# which CTest reports as a skip. The Wine prefix is created once, under a
# lock, so tests running side by side do not race to set it up.
set -euo pipefail
wine=""
for candidate in wine64 /usr/lib/wine/wine64; do
  if command -v "$candidate" >/dev/null 2>&1; then
    wine=$(command -v "$candidate")
    break
  fi
done
if [ -z "$wine" ]; then
  echo "wine64 is not installed: Windows test skipped (scripts/deps.sh installs it)"
  exit 77
fi
export WINEPREFIX=${WINEPREFIX:-${TMPDIR:-/tmp}/tqcs-wine-$(id -u)}
export WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}
if [ ! -f "$WINEPREFIX/system.reg" ]; then
  mkdir -p "$(dirname "$WINEPREFIX")"
  (
    flock 9
    [ -f "$WINEPREFIX/system.reg" ] || "$wine" wineboot --init >/dev/null 2>&1 || true
  ) 9>"$WINEPREFIX.lock"
fi
exec "$wine" "$@"
