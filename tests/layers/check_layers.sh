#!/usr/bin/env bash
# The library's layers, floor to roof: each folder of src/ may include only
# itself and the folders listed for it (the public headers are outside src/
# and free to all). Fails on an include that runs back up a layer or across
# between drivers and video, and on a folder that is not a layer.
set -euo pipefail
src="$1"

declare -A allowed=(
  [base]="base"
  [kernels]="base kernels"
  [frame]="base kernels frame"
  [drivers]="base kernels frame drivers"
  [video]="base kernels frame video"
  [startup]="base kernels frame drivers video startup"
)

status=0
for dir in "$src"/*/; do
  layer=$(basename "$dir")
  if [[ -z "${allowed[$layer]+set}" ]]; then
    echo "src/$layer is not a layer of the library"
    status=1
    continue
  fi
  while IFS=: read -r file line include; do
    target=$(sed -E 's/^#include "([^/"]+)\/.*/\1/' <<<"$include")
    if [[ " ${allowed[$layer]} " != *" $target "* ]]; then
      echo "${file#"$src"/}:$line: $layer includes $target: ${include}"
      status=1
    fi
  done < <(grep -rnE '^#include "[^/"]+/' "$dir" || true)
done
exit $status
