// Chroma resampling between 4:2:0 and 4:2:2, SSE2: the two-row upsampling
// kernels (8-bit, and raw 16-bit samples to bytes), the 3:1 merge of two
// 4:2:2 chroma rows, and two packed 4:2:2 rows to 4:2:0.
//
// Every weighted sum is done in 16-bit lanes. The 8-bit sums stay below
// 2048. The raw 16-bit sums wrap in their lanes, which is exact for what is
// kept of them: the stored byte is bits 5 to 12 of the sum, and those depend
// only on the sum modulo 2^16.
#include "kernels/kernel_slots.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using x86::Advance;
using x86::WholeBlocks;

// Samples per block: one 16-byte store of bytes per destination row.
constexpr int kBlock = 16;

// How a family reads a block of 16 samples into two vectors of 16-bit lanes
// (samples 0-7, 8-15) and makes bytes of two vectors of results.
struct Bytes {
  using Src = uint8_t;
  static constexpr int kShift = 3;
  static void Read(const uint8_t *p, __m128i &lo, __m128i &hi) {
    const __m128i v = x86::Load(p), zero = _mm_setzero_si128();
    lo = _mm_unpacklo_epi8(v, zero);
    hi = _mm_unpackhi_epi8(v, zero);
  }
  // Results are 0..255 already.
  static __m128i Bytes8(__m128i lo, __m128i hi) { return _mm_packus_epi16(lo, hi); }
};

// Raw 16-bit samples, weighted as they stand and shifted by 5; the byte is
// the low 8 bits of the shifted sum (a truncating cast, not a saturation).
struct Raw16To8 {
  using Src = uint16_t;
  static constexpr int kShift = 5;
  static void Read(const uint16_t *p, __m128i &lo, __m128i &hi) {
    lo = x86::Load(p);
    hi = x86::Load(p + 8);
  }
  static __m128i Bytes8(__m128i lo, __m128i hi) {
    const __m128i low = _mm_set1_epi16(0xFF);
    return _mm_packus_epi16(_mm_and_si128(lo, low), _mm_and_si128(hi, low));
  }
};

// (wa * a + wb * b + round) >> kShift in wrapping 16-bit lanes.
template <int kWa, int kWb, int kShift>
inline __m128i Weigh(__m128i a, __m128i b) {
  const __m128i sum = _mm_add_epi16(_mm_mullo_epi16(a, _mm_set1_epi16(kWa)),
                                    _mm_mullo_epi16(b, _mm_set1_epi16(kWb)));
  return _mm_srli_epi16(_mm_add_epi16(sum, _mm_set1_epi16(1 << (kShift - 1))), kShift);
}

// ---------------------------------------------------------------------------
// 4:2:0 -> 4:2:2: one chroma row `a` gives two destination rows.
//   First:    a,                  (5a + 3b + r) >> s   with b at +srcPitch
//   Last:     a,                  (7a + b + r) >> s    with b at +srcPitch
//   Interior: (7a + p + r) >> s,  (5a + 3n + r) >> s   with p at -srcPitch,
//                                                      n at +srcPitch
// The second destination row is at +dstPitch. Each block is read whole (all
// its source rows) before either destination row is written.
enum class Edge { First, Last, Interior };

template <Edge E, class P>
void UpsamplePlane(uint8_t *dst, int64_t dstPitch, const typename P::Src *src, int64_t srcPitch,
                   int32_t blocks) {
  constexpr int s = P::kShift;
  uint8_t *dst2 = Advance(dst, dstPitch);
  const typename P::Src *next = Advance(src, srcPitch);
  const typename P::Src *prev = Advance(src, -srcPitch);
  for (int32_t b = 0; b < blocks; ++b) {
    const int32_t i = b * kBlock;
    __m128i a0, a1, n0, n1;
    P::Read(src + i, a0, a1);
    P::Read(next + i, n0, n1);
    __m128i top, bottom;
    if constexpr (E == Edge::Interior) {
      __m128i p0, p1;
      P::Read(prev + i, p0, p1);
      top = P::Bytes8(Weigh<7, 1, s>(a0, p0), Weigh<7, 1, s>(a1, p1));
      bottom = P::Bytes8(Weigh<5, 3, s>(a0, n0), Weigh<5, 3, s>(a1, n1));
    } else {
      constexpr int kWa = E == Edge::First ? 5 : 7;
      top = P::Bytes8(a0, a1);
      bottom = P::Bytes8(Weigh<kWa, 8 - kWa, s>(a0, n0), Weigh<kWa, 8 - kWa, s>(a1, n1));
    }
    x86::Store(dst + i, top);
    x86::Store(dst2 + i, bottom);
  }
}

// Both planes over whole blocks; the rest of the row goes to kTail, the
// portable routine of the same slot.
template <Edge E, class P, auto kTail>
void Upsample(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch,
              const typename P::Src *srcU, int64_t srcUPitch, const typename P::Src *srcV,
              int64_t srcVPitch, int32_t width) {
  const int32_t blocks = WholeBlocks<kBlock>(width);
  UpsamplePlane<E, P>(dstU, dstUPitch, srcU, srcUPitch, blocks);
  UpsamplePlane<E, P>(dstV, dstVPitch, srcV, srcVPitch, blocks);
  const int32_t done = blocks * kBlock;
  if (done < width)
    kTail(dstU + done, dstUPitch, dstV + done, dstVPitch, srcU + done, srcUPitch, srcV + done,
          srcVPitch, width - done);
}

// 4:2:2 -> 4:2:0: (3a + b + 2) >> 2, a the given row, b the row at +srcPitch.
void DownsamplePlane(uint8_t *dst, const uint8_t *src, int64_t srcPitch, int32_t blocks) {
  const uint8_t *next = Advance(src, srcPitch);
  for (int32_t b = 0; b < blocks; ++b) {
    const int32_t i = b * kBlock;
    __m128i a0, a1, n0, n1;
    Bytes::Read(src + i, a0, a1);
    Bytes::Read(next + i, n0, n1);
    x86::Store(dst + i, Bytes::Bytes8(Weigh<3, 1, 2>(a0, n0), Weigh<3, 1, 2>(a1, n1)));
  }
}

// ---------------------------------------------------------------------------
// Two packed 4:2:2 rows (src and src + srcPitch) to 4:2:0: both luma rows (to
// dstY and dstY + dstYPitch) and one chroma row (3a + b + 2) >> 2, a from the
// first row. Blocks of 16 pairs: 64 bytes of each source row, 32 luma bytes
// of each destination row, 16 bytes of U and of V.
constexpr int kPairBlock = 16;

// The luma and chroma of one 16-byte vector of pairs, each in 16-bit lanes;
// the chroma lanes alternate U, V.
template <bool kLumaFirst>
inline void SplitPairs(__m128i v, __m128i &luma, __m128i &chroma) {
  const __m128i low = _mm_set1_epi16(0xFF);
  const __m128i even = _mm_and_si128(v, low), odd = _mm_srli_epi16(v, 8);
  luma = kLumaFirst ? even : odd;
  chroma = kLumaFirst ? odd : even;
}

// Alternating U, V lanes of four vectors (16 pairs) to 16 bytes of U and 16 of V.
inline void SeparateChroma(const __m128i c[4], __m128i &u, __m128i &v) {
  const __m128i low = _mm_set1_epi32(0xFFFF);
  __m128i u16[2], v16[2];
  for (int k = 0; k < 2; ++k) {
    u16[k] = _mm_packs_epi32(_mm_and_si128(c[2 * k], low), _mm_and_si128(c[2 * k + 1], low));
    v16[k] = _mm_packs_epi32(_mm_srli_epi32(c[2 * k], 16), _mm_srli_epi32(c[2 * k + 1], 16));
  }
  u = _mm_packus_epi16(u16[0], u16[1]);
  v = _mm_packus_epi16(v16[0], v16[1]);
}

template <bool kLumaFirst, auto kTail>
void PackedTo420(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                 int64_t srcPitch, int32_t count) {
  const int32_t blocks = WholeBlocks<2 * kPairBlock>(count);
  uint8_t *dstY2 = Advance(dstY, dstYPitch);
  const uint8_t *src2 = Advance(src, srcPitch);
  for (int32_t b = 0; b < blocks; ++b) {
    const int64_t p = int64_t{b} * kPairBlock;
    __m128i ya[4], yb[4], ca[4], cb[4], c[4];
    for (int k = 0; k < 4; ++k) {
      SplitPairs<kLumaFirst>(x86::Load(src + 4 * p + 16 * k), ya[k], ca[k]);
      SplitPairs<kLumaFirst>(x86::Load(src2 + 4 * p + 16 * k), yb[k], cb[k]);
      c[k] = Weigh<3, 1, 2>(ca[k], cb[k]);
    }
    __m128i u, v;
    SeparateChroma(c, u, v);
    x86::Store(dstY + 2 * p, _mm_packus_epi16(ya[0], ya[1]));
    x86::Store(dstY + 2 * p + 16, _mm_packus_epi16(ya[2], ya[3]));
    x86::Store(dstY2 + 2 * p, _mm_packus_epi16(yb[0], yb[1]));
    x86::Store(dstY2 + 2 * p + 16, _mm_packus_epi16(yb[2], yb[3]));
    x86::Store(dstU + p, u);
    x86::Store(dstV + p, v);
  }
  const int64_t done = int64_t{blocks} * kPairBlock;
  if (count - 2 * done >= 2)
    kTail(dstY + 2 * done, dstYPitch, dstU + done, dstV + done, src + 4 * done, srcPitch,
          static_cast<int32_t>(count - 2 * done));
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

void sse2::YUV420_2_YUV422_UV_FirstRow(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV,
                                       int64_t dstVPitch, const uint8_t *srcU, int64_t srcUPitch,
                                       const uint8_t *srcV, int64_t srcVPitch, int32_t width) {
  Upsample<Edge::First, Bytes, portable::YUV420_2_YUV422_UV_FirstRow>(
      dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch, width);
}

void sse2::YUV420_2_YUV422_UV_LastRow(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV,
                                      int64_t dstVPitch, const uint8_t *srcU, int64_t srcUPitch,
                                      const uint8_t *srcV, int64_t srcVPitch, int32_t width) {
  Upsample<Edge::Last, Bytes, portable::YUV420_2_YUV422_UV_LastRow>(
      dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch, width);
}

void sse2::YUV420_2_YUV422_UV_Row(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV,
                                  int64_t dstVPitch, const uint8_t *srcU, int64_t srcUPitch,
                                  const uint8_t *srcV, int64_t srcVPitch, int32_t width) {
  Upsample<Edge::Interior, Bytes, portable::YUV420_2_YUV422_UV_Row>(
      dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch, width);
}

// The interior rule on raw 16-bit samples, shifted by 5 into bytes.
void sse2::YUV420_10Bit_2_YUV422_UV_Row(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV,
                                        int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch,
                                        const uint16_t *srcV, int64_t srcVPitch, int32_t width) {
  Upsample<Edge::Interior, Raw16To8, portable::YUV420_10Bit_2_YUV422_UV_Row>(
      dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch, width);
}

void sse2::YUV422_2_YUV420_UV_Row(uint8_t *dstU, uint8_t *dstV, const uint8_t *srcU,
                                  int64_t srcUPitch, const uint8_t *srcV, int64_t srcVPitch,
                                  int32_t width) {
  const int32_t blocks = WholeBlocks<kBlock>(width);
  DownsamplePlane(dstU, srcU, srcUPitch, blocks);
  DownsamplePlane(dstV, srcV, srcVPitch, blocks);
  const int32_t done = blocks * kBlock;
  if (done < width)
    portable::YUV422_2_YUV420_UV_Row(dstU + done, dstV + done, srcU + done, srcUPitch, srcV + done,
                                     srcVPitch, width - done);
}

void sse2::YUYV_2_YUV420_UV_Row(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                const uint8_t *src, int64_t srcPitch, int32_t count) {
  PackedTo420<true, portable::YUYV_2_YUV420_UV_Row>(dstY, dstYPitch, dstU, dstV, src, srcPitch,
                                                    count);
}

void sse2::UYVY_2_YUV420_UV_Row(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                const uint8_t *src, int64_t srcPitch, int32_t count) {
  PackedTo420<false, portable::UYVY_2_YUV420_UV_Row>(dstY, dstYPitch, dstU, dstV, src, srcPitch,
                                                     count);
}

}  // namespace tqcs
