#!/usr/bin/env bash
# Instruction sets in the built library. Each unit may hold only its own
# tier's instructions: the portable code, the frame and the SSE2 tier the
# x86-64 baseline, the SSSE3 tier no SSE4 or VEX encoding. In the linked
# library, every exported or shared (non-local) function that holds newer
# instructions than SSE2 must belong to the tier that owns them, so no
# SSSE3 or VEX copy of a shared inline function can stand in for a baseline one.
#
# usage: check_isa.sh LIBRARY BASELINE_OBJECTS SSSE3_OBJECTS SSE41_OBJECTS
#   (object lists separated by ';', as CMake gives them)
set -euo pipefail
library=$1
IFS=';' read -r -a baseline <<<"${2:-}"
IFS=';' read -r -a ssse3 <<<"${3:-}"
IFS=';' read -r -a sse41 <<<"${4:-}"

command -v objdump >/dev/null || { echo "objdump is missing (Debian package binutils)"; exit 1; }

# Mnemonics past SSE2, by the set that introduced them.
sse3='lddqu|movddup|movshdup|movsldup|addsubp[sd]|haddp[sd]|hsubp[sd]|fisttp'
ssse3_ops='pshufb|palignr|phadd(w|d|sw)|phsub(w|d|sw)|pmaddubsw|pmulhrsw|psign[bwd]|pabs[bwd]'
sse4='pblendw|pblendvb|blendv?p[sd]|dpp[sd]|extractps|insertps|movntdqa|mpsadbw|packusdw|pcmpeqq|pextr[bdq]|phminposuw|pinsr[bdq]|pmax(sb|sd|ud|uw)|pmin(sb|sd|ud|uw)|pmov[sz]x[a-z]*|pmuldq|pmulld|ptest|round[ps][sd]|pcmp[ei]str[im]|pcmpgtq|crc32'
vex='v[a-z0-9]+'
bmi='andn|bextr|blsi|blsmsk|blsr|tzcnt|lzcnt|shlx|shrx|sarx|rorx|pdep|pext|popcnt'
past_sse2="$sse3|$ssse3_ops|$sse4|$vex|$bmi"
past_ssse3="$sse4|$vex|$bmi"

# Instructions of the given pattern in an object or library, as
# "function: mnemonic" lines.
offending() {
  objdump -d --no-show-raw-insn "$1" | awk -v pat="^($2)\$" '
    /^[0-9a-f]+ <.*>:$/ { fn = $2; gsub(/[<>:]/, "", fn) }
    /^ +[0-9a-f]+:\t/ { split($0, f, "\t"); split(f[2], w, " "); if (w[1] ~ pat) print fn ": " w[1] }'
}

status=0
check_units() {  # tier, pattern, objects...
  local tier=$1 pattern=$2; shift 2
  for obj in "$@"; do
    [ -n "$obj" ] || continue
    local found
    found=$(offending "$obj" "$pattern" | sort -u | head -5)
    if [ -n "$found" ]; then
      echo "$(basename "$obj") ($tier unit) holds instructions it may not:"; echo "$found"
      status=1
    fi
  done
}
check_units baseline "$past_sse2" "${baseline[@]}"
check_units ssse3 "$past_ssse3" "${ssse3[@]}"
echo "checked ${#baseline[@]} baseline, ${#ssse3[@]} SSSE3 and ${#sse41[@]} SSE4.1 units"

# In the library: local symbols are one unit's own; any other function with
# instructions past SSE2 must be a tier routine of the set that has them.
locals=$(nm --defined-only "$library" | awk '$2 ~ /^[tw]$/ && $2 == "t" { print $3 }' | sort -u)
while IFS= read -r line; do
  fn=${line%%: *}
  op=${line##*: }
  grep -qxF "$fn" <<<"$locals" && continue
  name=$(c++filt "$fn")
  case "$name" in
    # The mingw-w64 runtime linked into the Windows DLL formats numbers with
    # tzcnt, which runs as bsf on processors without it.
    *_D2A) continue ;;
    tqcs::sse41::*) continue ;;
    tqcs::ssse3::*) [[ $op =~ ^($past_ssse3)$ ]] || continue ;;
  esac
  echo "library: $name holds $op"
  status=1
done < <(offending "$library" "$past_sse2" | sort -u)

# Every SSE2 slot routine and kernel-object operation is SIMD code: it, or a
# routine of its own tier that it calls, holds packed SSE2 arithmetic (a
# routine that only handed the row to its portable twin would not). The zero
# fills are left out: a compiler may turn their store loop into a memset call.
packed='pmaddwd|pack(uswb|sswb|ssdw)|punpck[lh][a-z]+|pshuf(d|lw|hw)|pavg[bw]|padd[a-z]+|psub[a-z]+|pmul[a-z]+|ps(rl|ra|ll)[wdq]|psrldq|pslldq|pand|pandn|por|pcmpeq[bwd]|pcmpgt[bwd]|pmax(sw|ub)|pmin(sw|ub)|movdq[au]|movntdq|cvttps2dq|cvtdq2ps|divps|mulps|movup[sd]|movap[sd]|movntp[sd]|xorp[sd]|andn?p[sd]|orp[sd]|shufp[sd]|unpck[lh]p[sd]|mov[lh]p[sd]'
not_simd=$(objdump -d -C --no-show-raw-insn "$library" | awk -v pat="^($packed)\$" '
  /^[0-9a-f]+ <.*>:$/ {
    fn = substr($0, index($0, "<") + 1); sub(/>:$/, "", fn)
    # The routines themselves (not their lambdas, nor the constructor of the object).
    if (fn ~ /^tqcs::(sse2|ColorSpaceSSE2)::[A-Za-z0-9_]+\([^()]*\)$/ && fn !~ /Clear_Row_|::ColorSpaceSSE2\(/)
      slots[fn] = 1
    next
  }
  /^ +[0-9a-f]+:\t/ {
    split($0, f, "\t"); split(f[2], w, " ")
    if (w[1] ~ pat && f[2] ~ /%xmm/) simd[fn] = 1
    if ((w[1] == "call" || w[1] == "jmp") && match(f[2], /<.*>/)) {
      target = substr(f[2], RSTART + 1, RLENGTH - 2)
      if (target !~ /\+0x/ && target ~ /(^| )tqcs::(sse2::|ColorSpaceSSE2::|x86::)/)
        callees[fn] = callees[fn] "\n" target
    }
  }
  END {
    # A routine is SIMD code if it or anything it calls in its tier is.
    for (round = 0; round < 6; ++round)
      for (fn in callees) if (!(fn in simd)) {
        n = split(callees[fn], list, "\n")
        for (i = 1; i <= n; ++i) if (list[i] in simd) { simd[fn] = 1; break }
      }
    for (fn in slots) if (!(fn in simd)) print fn
  }')
routines=$(nm -C --defined-only "$library" | grep -cE ' tqcs::(sse2::[A-Za-z0-9_]+|ColorSpaceSSE2::[A-Za-z0-9_]+)\(' || true)
if [ -n "$not_simd" ]; then
  echo "SSE2 routines without packed SSE2 code:"; echo "$not_simd"
  status=1
fi
echo "checked $routines SSE2 slot routines and kernel-object operations for packed code"
[ $status -eq 0 ] && echo "instruction sets in place"
exit $status
