// SSE2 8-bit 4:2:2 repacking kernels: packed pairs <-> Y,U,V,A (with or
// without a key plane) and planar <-> packed 4:2:2.
//
// The 4:2:2 families meet in one register form, sixteen pairs held as luma
// vectors and interleaved chroma vectors (Pairs16); readers build it from a
// layout and writers store it into one, so every slot of a family is one
// reader and one writer around the same body. Where alpha comes from (an
// argument or a key plane) and whether the odd pixel's chroma mean rounds
// are policies of the same bodies.
#include <emmintrin.h>

#include <cstddef>

#include "kernels/kernel_slots.hpp"
#include "kernels/x86/in_blocks.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using x86::Every32;
using x86::Load;
using x86::LowBytes16;
using x86::Mean;
using x86::Store;

// ---- 4:2:2 pairs ----------------------------------------------------------

// Sixteen pairs in two halves: y[h] = Y0 .. Y15 of pairs 8h .. 8h + 7,
// uv[h] = U0 V0 U1 V1 .. U7 V7 of the same pairs.
struct Pairs16 {
  __m128i y[2], uv[2];
};

// Packed pairs, luma first (YUYV) or chroma first (UYVY).
template <bool kLumaFirst>
struct PackedReader {
  const uint8_t *src;
  Pairs16 Read() const {
    Pairs16 s;
    for (int h = 0; h < 2; ++h) {
      const __m128i a = Load(src + 32 * h), b = Load(src + 32 * h + 16);
      const __m128i even =
          _mm_packus_epi16(_mm_and_si128(a, LowBytes16()), _mm_and_si128(b, LowBytes16()));
      const __m128i odd = _mm_packus_epi16(_mm_srli_epi16(a, 8), _mm_srli_epi16(b, 8));
      s.y[h] = kLumaFirst ? even : odd;
      s.uv[h] = kLumaFirst ? odd : even;
    }
    return s;
  }
  // The chroma of the pair after the block, U | V << 8 in lane 0.
  __m128i ChromaAfter() const {
    const __m128i x = x86::Load32(src + 64);
    const __m128i c = kLumaFirst ? _mm_srli_epi16(x, 8) : _mm_and_si128(x, LowBytes16());
    return _mm_packus_epi16(c, c);
  }
};

template <bool kLumaFirst>
struct PackedWriter {
  uint8_t *dst;
  void Write(const Pairs16 &s) const {
    for (int h = 0; h < 2; ++h) {
      const __m128i first = kLumaFirst ? s.y[h] : s.uv[h], second = kLumaFirst ? s.uv[h] : s.y[h];
      Store(dst + 32 * h, _mm_unpacklo_epi8(first, second));
      Store(dst + 32 * h + 16, _mm_unpackhi_epi8(first, second));
    }
  }
};

struct PlanarReader {
  const uint8_t *y, *u, *v;
  Pairs16 Read() const {
    const __m128i cu = Load(u), cv = Load(v);
    return {{Load(y), Load(y + 16)}, {_mm_unpacklo_epi8(cu, cv), _mm_unpackhi_epi8(cu, cv)}};
  }
  __m128i ChromaAfter() const { return _mm_cvtsi32_si128(u[16] | v[16] << 8); }
};

struct PlanarWriter {
  uint8_t *y, *u, *v;
  void Write(const Pairs16 &s) const {
    Store(y, s.y[0]);
    Store(y + 16, s.y[1]);
    Store(u, _mm_packus_epi16(_mm_and_si128(s.uv[0], LowBytes16()),
                              _mm_and_si128(s.uv[1], LowBytes16())));
    Store(v, _mm_packus_epi16(_mm_srli_epi16(s.uv[0], 8), _mm_srli_epi16(s.uv[1], 8)));
  }
};

// Thirty-two Y,U,V,A pixels as pairs: every luma, the chroma of the even
// pixels.
inline Pairs16 ReadYUVA(const uint8_t *src) {
  const __m128i luma = Every32(0xFF);
  constexpr int kEvenFirst = _MM_SHUFFLE(3, 1, 2, 0);
  Pairs16 s;
  for (int h = 0; h < 2; ++h) {
    const uint8_t *q = src + 64 * h;
    const __m128i a0 = Load(q), a1 = Load(q + 16), a2 = Load(q + 32), a3 = Load(q + 48);
    s.y[h] = _mm_packus_epi16(_mm_packs_epi32(_mm_and_si128(a0, luma), _mm_and_si128(a1, luma)),
                              _mm_packs_epi32(_mm_and_si128(a2, luma), _mm_and_si128(a3, luma)));
    // Pixels 0, 2, 4, 6 and 8, 10, 12, 14, whole.
    const __m128i e0 =
        _mm_unpacklo_epi64(_mm_shuffle_epi32(a0, kEvenFirst), _mm_shuffle_epi32(a1, kEvenFirst));
    const __m128i e1 =
        _mm_unpacklo_epi64(_mm_shuffle_epi32(a2, kEvenFirst), _mm_shuffle_epi32(a3, kEvenFirst));
    // U | V << 8 sign-extended, so the signed pack keeps it whole.
    s.uv[h] = _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(e0, 8), 16),
                              _mm_srai_epi32(_mm_slli_epi32(e1, 8), 16));
  }
  return s;
}

// Alpha of the 32 pixels of pairs p to p + 15 as the high bytes of 16-bit
// lanes, the even pixels' and the odd pixels' of half h apart.
struct AlphaWords {
  __m128i even, odd;
};
struct ConstAlpha {
  __m128i a;
  explicit ConstAlpha(uint8_t alpha) : a(_mm_set1_epi16(static_cast<int16_t>(alpha << 8))) {}
  AlphaWords operator()(int) const { return {a, a}; }
};
// One byte per pixel from a key plane.
struct KeyAlpha {
  const uint8_t *key;
  AlphaWords operator()(int h) const {
    const __m128i k = Load(key + 16 * h);
    return {_mm_slli_epi16(k, 8), _mm_andnot_si128(LowBytes16(), k)};
  }
};

// One block of sixteen pairs. It also reads the chroma of the pair after it,
// so the last pair is left to the portable routine's last-pair rule.
template <int kRound, class Reader, class Alpha>
inline void PairsToYUVA(uint8_t *dst, Reader src, Alpha alpha) {
  const Pairs16 s = src.Read();
  // The chroma of pairs 1 to 16.
  const __m128i next[2] = {
      _mm_or_si128(_mm_srli_si128(s.uv[0], 2), _mm_slli_si128(s.uv[1], 14)),
      _mm_or_si128(_mm_srli_si128(s.uv[1], 2), _mm_slli_si128(src.ChromaAfter(), 14))};
  for (int h = 0; h < 2; ++h) {
    const __m128i y = s.y[h], uv = s.uv[h];
    const __m128i odd = Mean<kRound>(uv, next[h]);
    const AlphaWords a = alpha(h);
    // Per pixel two words: Y | U << 8 and V | A << 8.
    const __m128i e0 = _mm_or_si128(_mm_and_si128(y, LowBytes16()), _mm_slli_epi16(uv, 8));
    const __m128i e1 = _mm_or_si128(_mm_srli_epi16(uv, 8), a.even);
    const __m128i o0 = _mm_or_si128(_mm_srli_epi16(y, 8), _mm_slli_epi16(odd, 8));
    const __m128i o1 = _mm_or_si128(_mm_srli_epi16(odd, 8), a.odd);
    const __m128i evenLo = _mm_unpacklo_epi16(e0, e1), evenHi = _mm_unpackhi_epi16(e0, e1);
    const __m128i oddLo = _mm_unpacklo_epi16(o0, o1), oddHi = _mm_unpackhi_epi16(o0, o1);
    uint8_t *d = dst + 64 * h;
    Store(d, _mm_unpacklo_epi32(evenLo, oddLo));
    Store(d + 16, _mm_unpackhi_epi32(evenLo, oddLo));
    Store(d + 32, _mm_unpacklo_epi32(evenHi, oddHi));
    Store(d + 48, _mm_unpackhi_epi32(evenHi, oddHi));
  }
}

// Byte 3 of the sixteen 4-byte pixels at src.
inline __m128i FourthBytes16(const uint8_t *src) {
  __m128i a[4];
  for (int k = 0; k < 4; ++k) a[k] = _mm_srli_epi32(Load(src + 16 * k), 24);
  return _mm_packus_epi16(_mm_packs_epi32(a[0], a[1]), _mm_packs_epi32(a[2], a[3]));
}

// One block of 32 pixels; an odd tail is the portable routine's. With a key
// plane, every pixel's alpha is also copied there. Everything is read before
// anything is stored.
template <class Writer>
inline void YUVAToPairs(Writer dst, const uint8_t *src, uint8_t *dstKey = nullptr) {
  const Pairs16 s = ReadYUVA(src);
  if (dstKey != nullptr) {
    const __m128i k0 = FourthBytes16(src), k1 = FourthBytes16(src + 64);
    Store(dstKey, k0);
    Store(dstKey + 16, k1);
  }
  dst.Write(s);
}

// Blocks of 32 pixels (sixteen pairs) of the 4:2:2 families, by the slot's
// reader and writer over the block's rows. Luma first is YUYV, chroma first
// UYVY.
constexpr int kPairBlock = 32;

// The last pair is the portable routine's (kept: 2 pixels).
template <K kSlot, bool kLumaFirst>
void PackedToYUVA(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  const ConstAlpha a(alpha);
  x86::InBlocks<kSlot, kPairBlock, 2>(
      [&](uint8_t *d, const uint8_t *s) { PairsToYUVA<1>(d, PackedReader<kLumaFirst>{s}, a); }, dst,
      src, count, alpha);
}

template <K kSlot, bool kLumaFirst>
void YUVAToPacked(uint8_t *dst, const uint8_t *src, int32_t count) {
  x86::InBlocks<kSlot, kPairBlock>(
      [](uint8_t *d, const uint8_t *s) { YUVAToPairs(PackedWriter<kLumaFirst>{d}, s); }, dst, src,
      count);
}

template <K kSlot, bool kLumaFirst>
void PlanarToPacked(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV,
                    int32_t count) {
  x86::InBlocks<kSlot, kPairBlock>(
      [](uint8_t *d, const uint8_t *y, const uint8_t *u, const uint8_t *v) {
        PackedWriter<kLumaFirst>{d}.Write(PlanarReader{y, u, v}.Read());
      },
      dst, srcY, srcU, srcV, count);
}

template <K kSlot, bool kLumaFirst>
void PackedToPlanar(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                    int32_t count) {
  x86::InBlocks<kSlot, kPairBlock>(
      [](uint8_t *y, uint8_t *u, uint8_t *v, const uint8_t *s) {
        PlanarWriter{y, u, v}.Write(PackedReader<kLumaFirst>{s}.Read());
      },
      dstY, dstU, dstV, src, count);
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

// ---- Packed 4:2:2 <-> Y,U,V,A ------------------------------------------------

void sse2::YUYV_2_YUVA_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  PackedToYUVA<K::YUYV_2_YUVA_Row, true>(dst, src, count, alpha);
}
void sse2::UYVY_2_YUVA_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha) {
  PackedToYUVA<K::UYVY_2_YUVA_Row, false>(dst, src, count, alpha);
}
void sse2::YUV422_2_YUVA_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                             const uint8_t *srcV, int32_t count, uint8_t alpha) {
  const ConstAlpha a(alpha);
  x86::InBlocks<K::YUV422_2_YUVA_Row, kPairBlock, 2>(
      [&](uint8_t *d, const uint8_t *y, const uint8_t *u, const uint8_t *v) {
        PairsToYUVA<1>(d, PlanarReader{y, u, v}, a);
      },
      dst, srcY, srcU, srcV, count, alpha);
}

void sse2::YUVA_2_YUYV_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  YUVAToPacked<K::YUVA_2_YUYV_Row, true>(dst, src, count);
}
void sse2::YUVA_2_UYVY_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  YUVAToPacked<K::YUVA_2_UYVY_Row, false>(dst, src, count);
}
void sse2::YUVA_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                             int32_t count) {
  x86::InBlocks<K::YUVA_2_YUV422_Row, kPairBlock>(
      [](uint8_t *y, uint8_t *u, uint8_t *v, const uint8_t *s) {
        YUVAToPairs(PlanarWriter{y, u, v}, s);
      },
      dstY, dstU, dstV, src, count);
}

// ---- Planar 4:2:2 <-> packed 4:2:2 -------------------------------------------

void sse2::YUV422_2_YUYV_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                             const uint8_t *srcV, int32_t count) {
  PlanarToPacked<K::YUV422_2_YUYV_Row, true>(dst, srcY, srcU, srcV, count);
}
void sse2::YUV422_2_UYVY_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                             const uint8_t *srcV, int32_t count) {
  PlanarToPacked<K::YUV422_2_UYVY_Row, false>(dst, srcY, srcU, srcV, count);
}
void sse2::YUYV_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                             int32_t count) {
  PackedToPlanar<K::YUYV_2_YUV422_Row, true>(dstY, dstU, dstV, src, count);
}
void sse2::UYVY_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                             int32_t count) {
  PackedToPlanar<K::UYVY_2_YUV422_Row, false>(dstY, dstU, dstV, src, count);
}

// ---- Key planes --------------------------------------------------------------------

// The key forms halve the odd pixel's chroma sum without the rounding one.
void sse2::YUYV_Key_2_YUVA_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key,
                               int32_t count) {
  x86::InBlocks<K::YUYV_Key_2_YUVA_Row, kPairBlock, 2>(
      [](uint8_t *d, const uint8_t *s, const uint8_t *k) {
        PairsToYUVA<0>(d, PackedReader<true>{s}, KeyAlpha{k});
      },
      dst, src, key, count);
}
void sse2::YUVA_2_YUYV_Key_Row(uint8_t *dst, uint8_t *dstKey, const uint8_t *src, int32_t count) {
  x86::InBlocks<K::YUVA_2_YUYV_Key_Row, kPairBlock>(
      [](uint8_t *d, uint8_t *k, const uint8_t *s) { YUVAToPairs(PackedWriter<true>{d}, s, k); },
      dst, dstKey, src, count);
}

}  // namespace tqcs
