# shellcheck shell=bash disable=SC2034  # tqcs and sws are for the sourcing script
# Sourced by the ffmpeg tests with the build folder as $1: skips (status 77)
# when ffmpeg is absent outside CI, installs the build into a scratch prefix,
# enters a scratch folder and defines ff, sws, fail and finish for the checks.
build_dir=$1
if ! command -v ffmpeg >/dev/null 2>&1; then
  if [ "${CI:-}" = true ]; then
    echo "FAIL: ffmpeg is required under CI (scripts/deps.sh installs it)"
    exit 1
  fi
  echo "SKIP: ffmpeg is not installed; run scripts/deps.sh to test against it"
  exit 77
fi
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cmake --install "$build_dir" --prefix "$scratch/prefix" >/dev/null
unset LD_LIBRARY_PATH
tqcs=$scratch/prefix/bin/tqcs
cd "$scratch" || exit 1
ff() { ffmpeg -hide_banner -loglevel error -nostdin -y "$@"; }
# ffmpeg's most exact conversions: accurate rounding, full chroma interpolation.
sws=(-sws_flags bicubic+accurate_rnd+full_chroma_int)
failures=0
fail() {
  echo "FAIL: $*"
  failures=$((failures + 1))
}
finish() { # WHAT: the closing line and status
  if [ "$failures" -ne 0 ]; then
    echo "$failures check(s) failed"
    exit 1
  fi
  echo "$1 passed"
}
