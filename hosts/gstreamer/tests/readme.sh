#!/usr/bin/env bash
# The README's GStreamer section as a newcomer runs it: the build installed
# into a fresh prefix, then the section's commands pasted as written (the
# prefix /opt/tq replaced by the fresh one); gst-inspect-1.0 must list the
# element from the install and the pipeline must run to its end.
set -euo pipefail
build=$1 readme=$2
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null
export GST_REGISTRY=$prefix/registry.bin
unset GST_PLUGIN_PATH
commands=$(awk '/^## GStreamer/ {on = 1; next} /^## / {on = 0} on && /^```sh/ {code = 1; next}
                on && /^```/ {code = 0} on && code' "$readme" | sed "s|/opt/tq|$prefix|g")
[ -n "$commands" ] || { echo "no commands in the README's GStreamer section"; exit 1; }
output=$(bash -euo pipefail -c "$commands" 2>&1) || { echo "$output"; exit 1; }
grep -q "^Factory Details" <<<"$output" && grep -q "$prefix/lib.*/gstreamer-1.0/libgsttqcs.so" <<<"$output" ||
  { echo "$output"; echo "gst-inspect-1.0 did not list tqcsconvert from the install"; exit 1; }
echo "the README's pipeline ran from $prefix"
