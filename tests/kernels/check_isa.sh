#!/usr/bin/env bash
# Instruction sets in the built libraries (TQColorSpace and TQMemProc). Each
# unit may hold only its own tier's instructions: the portable code, the frame
# and the SSE2 tier the x86-64 baseline, the SSSE3 tier no SSE4 or VEX
# encoding, the AVX2 tier nothing past AVX2. In a linked library, every
# function that holds newer instructions than SSE2 and is not one unit's own
# (a local symbol of its object) must belong to the tier that owns them, so no
# SSSE3 or VEX copy of a shared inline function can stand in for a baseline one.
#
# usage: check_isa.sh LIBRARIES BASELINE_OBJECTS SSSE3_OBJECTS SSE41_OBJECTS AVX2_OBJECTS
#   (lists separated by ';', as CMake gives them)
set -euo pipefail
IFS=';' read -r -a libraries <<<"${1:-}"
IFS=';' read -r -a baseline <<<"${2:-}"
IFS=';' read -r -a ssse3 <<<"${3:-}"
IFS=';' read -r -a sse41 <<<"${4:-}"
IFS=';' read -r -a avx2 <<<"${5:-}"

command -v objdump >/dev/null || { echo "objdump is missing (Debian package binutils)"; exit 1; }

# Mnemonics past SSE2, by the set that introduced them; "evex" stands for any
# instruction on an AVX-512 register (zmm, xmm16-31, ymm16-31, a mask).
sse3='lddqu|movddup|movshdup|movsldup|addsubp[sd]|haddp[sd]|hsubp[sd]|fisttp'
ssse3_ops='pshufb|palignr|phadd(w|d|sw)|phsub(w|d|sw)|pmaddubsw|pmulhrsw|psign[bwd]|pabs[bwd]'
sse4='pblendw|pblendvb|blendv?p[sd]|dpp[sd]|extractps|insertps|movntdqa|mpsadbw|packusdw|pcmpeqq|pextr[bdq]|phminposuw|pinsr[bdq]|pmax(sb|sd|ud|uw)|pmin(sb|sd|ud|uw)|pmov[sz]x[a-z]*|pmuldq|pmulld|ptest|round[ps][sd]|pcmp[ei]str[im]|pcmpgtq|crc32'
vex='v[a-z0-9]+'
bmi='andn|bextr|blsi|blsmsk|blsr|tzcnt|lzcnt|shlx|shrx|sarx|rorx|pdep|pext'
fma_f16c='vf(n?m(add|sub)|maddsub|msubadd)[0-9]+[ps][sd]|vcvtph2ps|vcvtps2ph'
avx512='evex|k[a-z]+[bwdq]|vpternlog[dq]|vperm[it]2[a-z]+|vp(compress|expand)[a-z]+|vpro[lr]v?[dq]|vpmov(u?s)?(q[bwd]|d[bw]|wb)|vpabsq|vp(max|min)[su]q|vpconflict[dq]|vplzcnt[dq]|vpermw|vpsravw|vpsllvw|vpsrlvw|vpsraq|vpsravq|vdbpsadbw|vpdp[a-z]+|vpshl[dv][a-z]*|vpshr[dv][a-z]*'
past_sse2="$sse3|$ssse3_ops|$sse4|$vex|$bmi|popcnt|$avx512"
past_ssse3="$sse4|$vex|$bmi|popcnt|$avx512"
# -mavx2 brings SSE4.2 and with it popcnt.
past_avx2="$bmi|$fma_f16c|$avx512"

# Instructions of the given pattern in an object or library, as
# "function: mnemonic" lines.
offending() {
  objdump -d --no-show-raw-insn "$1" | awk -v pat="^($2)\$" '
    /^[0-9a-f]+ <.*>:$/ { fn = $2; gsub(/[<>:]/, "", fn) }
    /^ +[0-9a-f]+:\t/ {
      split($0, f, "\t"); split(f[2], w, " ")
      if (f[2] ~ /%(zmm|k[0-7]|[xy]mm(1[6-9]|2[0-9]|3[01]))/) w[1] = "evex"
      if (w[1] ~ pat) print fn ": " w[1]
    }'
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
check_units avx2 "$past_avx2" "${avx2[@]}"
echo "checked ${#baseline[@]} baseline, ${#ssse3[@]} SSSE3, ${#sse41[@]} SSE4.1 and ${#avx2[@]} AVX2 units"

# A unit's own functions: local symbols of its object (the linker makes every
# hidden symbol local in a shared library, so the library cannot tell). Code
# that is not from these objects (the runtime, the loader's entry point) is
# judged by its symbol in the library.
symbols=$(for obj in "${baseline[@]}" "${ssse3[@]}" "${sse41[@]}" "${avx2[@]}"; do
  [ -n "$obj" ] && nm --defined-only "$obj" | awk '$2 ~ /^[TtWw]$/ { print $2, $3 }'
done | sort -u)
locals=$(awk '$1 == "t" { print $2 }' <<<"$symbols")
ours=$(awk '{ print $2 }' <<<"$symbols" | sort -u)

# In each library: any other function with instructions past SSE2 must be a
# tier routine of a set that has them.
check_library() {
  local library=$1 line fn op name library_locals
  library_locals=$(nm --defined-only "$library" | awk '$2 == "t" { print $3 }' | sort -u)
  while IFS= read -r line; do
    fn=${line%%: *}
    op=${line##*: }
    grep -qxF "$fn" <<<"$locals" && continue
    if ! grep -qxF "$fn" <<<"$ours"; then
      grep -qxF "$fn" <<<"$library_locals" && continue
    fi
    name=$(c++filt "$fn")
    case "$name" in
      # The mingw-w64 runtime linked into the Windows DLLs formats numbers
      # with tzcnt, which runs as bsf on processors without it.
      *_D2A) continue ;;
      tq[a-z]*::sse41::*) continue ;;
      tq[a-z]*::avx2::*) [[ $op =~ ^($past_avx2)$ ]] || continue ;;
      tq[a-z]*::ssse3::*) [[ $op =~ ^($past_ssse3)$ ]] || continue ;;
    esac
    echo "$(basename "$library"): $name holds $op"
    status=1
  done < <(offending "$library" "$past_sse2" | sort -u)
}

# Every SSE2 slot routine and kernel-object operation is SIMD code: it, or a
# routine of its own tier that it calls, holds packed SSE2 arithmetic (a
# routine that only handed the row to its portable twin would not). The zero
# fills are left out: a compiler may turn their store loop into a memset call.
packed='pmaddwd|pack(uswb|sswb|ssdw)|punpck[lh][a-z]+|pshuf(d|lw|hw)|pavg[bw]|padd[a-z]+|psub[a-z]+|pmul[a-z]+|ps(rl|ra|ll)[wdq]|psrldq|pslldq|pand|pandn|por|pcmpeq[bwd]|pcmpgt[bwd]|pmax(sw|ub)|pmin(sw|ub)|movdq[au]|movntdq|cvttps2dq|cvtdq2ps|divps|mulps|movup[sd]|movap[sd]|movntp[sd]|xorp[sd]|andn?p[sd]|orp[sd]|shufp[sd]|unpck[lh]p[sd]|mov[lh]p[sd]'
check_packed() {
  local library=$1 not_simd routines
  not_simd=$(objdump -d -C --no-show-raw-insn "$library" | awk -v pat="^($packed)\$" '
    /^[0-9a-f]+ <.*>:$/ {
      fn = substr($0, index($0, "<") + 1); sub(/>:$/, "", fn)
      # The routines themselves (not their lambdas, nor the constructor of the object).
      if (fn ~ /^tq(cs|mp)::(sse2|ColorSpaceSSE2)::[A-Za-z0-9_]+\([^()]*\)$/ && fn !~ /Clear_Row_|::ColorSpaceSSE2\(/)
        slots[fn] = 1
      next
    }
    /^ +[0-9a-f]+:\t/ {
      split($0, f, "\t"); split(f[2], w, " ")
      if (w[1] ~ pat && f[2] ~ /%xmm/) simd[fn] = 1
      if ((w[1] == "call" || w[1] == "jmp") && match(f[2], /<.*>/)) {
        target = substr(f[2], RSTART + 1, RLENGTH - 2)
        if (target !~ /\+0x/ && target ~ /(^| )tq(cs|mp)::(sse2::|ColorSpaceSSE2::|x86::)/)
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
  routines=$(nm -C --defined-only "$library" |
    grep -cE ' tq(cs|mp)::(sse2::[A-Za-z0-9_]+|ColorSpaceSSE2::[A-Za-z0-9_]+)\(' || true)
  if [ -n "$not_simd" ]; then
    echo "$(basename "$library"): SSE2 routines without packed SSE2 code:"; echo "$not_simd"
    status=1
  fi
  echo "$(basename "$library"): checked $routines SSE2 routines for packed code"
}

for library in "${libraries[@]}"; do
  check_library "$library"
  check_packed "$library"
done
[ $status -eq 0 ] && echo "instruction sets in place"
exit $status
