// Chroma resampling between 4:2:0 and 4:2:2, SSE2: the two-row upsampling
// kernels (8-bit, and raw 16-bit samples to bytes), the 3:1 merge of two
// 4:2:2 chroma rows, and two packed 4:2:2 rows to 4:2:0.
//
// The 8-bit weights are exact chains of byte averages, 16 samples an
// instruction. With fl(x, y) = (x + y) >> 1 and rd(x, y) = (x + y + 1) >> 1,
// integer floors nest: (x + (y >> k)) >> 1 == (2^k x + y) >> (k + 1). So
//   (7a + b + 4) >> 3 == rd(a, fl(a, fl(a, b)))
//   (5a + 3b + 4) >> 3 == rd(a, fl(b, fl(b, a)))
//   (3a + b + 2) >> 2  == rd(a, fl(a, b))
// (the rounding term enters as the +1 of the last average: x = a + 1).
//
// The raw 16-bit sums are done in 16-bit lanes and wrap there, which is exact
// for what is kept of them: the stored byte is bits 5 to 12 of the sum, and
// those depend only on the sum modulo 2^16.
#include "kernels/kernel_slots.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using x86::Advance;
using x86::WholeBlocks;

// Samples per block: one 16-byte store of bytes per destination row.
constexpr int kBlock = 16;

inline __m128i Not(__m128i x) { return _mm_xor_si128(x, _mm_set1_epi32(-1)); }

// fl(c, fl(c, d)) == ~rd(~c, rd(~c, ~d)): the floor average is the rounding
// one on complements, so a chain of floor averages costs one instruction a
// link.
inline __m128i FloorChain(__m128i notC, __m128i notD) {
  return Not(_mm_avg_epu8(notC, _mm_avg_epu8(notC, notD)));
}

// How a family reads a block of 16 samples (Read) and weighs two blocks into
// 16 bytes, (kWa a + (8 - kWa) b + round) >> shift for kWa 5 or 7 (Weigh8).
// The first-row and last-row kernels, 8-bit only, also store a block as it
// stands (Plain).
struct Bytes {
  using Src = uint8_t;
  using Block = __m128i;
  static Block Read(const uint8_t *p) { return x86::Load(p); }
  template <int kWa>
  static __m128i Weigh8(Block a, Block b) {
    static_assert(kWa == 5 || kWa == 7);
    // c is the sample weighted 3 in (3c + d) >> 2.
    const Block c = kWa == 7 ? a : b, d = kWa == 7 ? b : a;
    return _mm_avg_epu8(a, FloorChain(Not(c), Not(d)));
  }
  static __m128i Plain(Block a) { return a; }
};

// Raw 16-bit samples, weighted as they stand and shifted by 5; the byte is
// the low 8 bits of the shifted sum (a truncating cast, not a saturation).
struct Raw16To8 {
  using Src = uint16_t;
  struct Block {
    __m128i lo, hi;  // samples 0-7, 8-15
  };
  static Block Read(const uint16_t *p) { return {x86::Load(p), x86::Load(p + 8)}; }
  template <int kWa>
  static __m128i Weigh8(Block a, Block b) {
    return _mm_packus_epi16(Weigh(a.lo, b.lo, kWa), Weigh(a.hi, b.hi, kWa));
  }

 private:
  // Bits 5-12 of wa a + (8 - wa) b + 16 are bits 8-15 of eight times it (mod
  // 2^16): the lane's top byte, 0..255 for the pack.
  static __m128i Weigh(__m128i a, __m128i b, int wa) {
    const __m128i sum =
        _mm_add_epi16(_mm_mullo_epi16(a, _mm_set1_epi16(static_cast<int16_t>(8 * wa))),
                      _mm_mullo_epi16(b, _mm_set1_epi16(static_cast<int16_t>(8 * (8 - wa)))));
    return _mm_srli_epi16(_mm_add_epi16(sum, _mm_set1_epi16(128)), 8);
  }
};

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
  uint8_t *dst2 = Advance(dst, dstPitch);
  const typename P::Src *next = Advance(src, srcPitch);
  const typename P::Src *prev = Advance(src, -srcPitch);
  for (int32_t b = 0; b < blocks; ++b) {
    const int32_t i = b * kBlock;
    const typename P::Block a = P::Read(src + i), n = P::Read(next + i);
    __m128i top, bottom;
    if constexpr (E == Edge::Interior) {
      top = P::template Weigh8<7>(a, P::Read(prev + i));
      bottom = P::template Weigh8<5>(a, n);
    } else {
      top = P::Plain(a);
      bottom = P::template Weigh8 < E == Edge::First ? 5 : 7 > (a, n);
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

// (3a + b + 2) >> 2 per byte.
inline __m128i Merge31(__m128i a, __m128i b) {
  return _mm_avg_epu8(a, Not(_mm_avg_epu8(Not(a), Not(b))));
}

// 4:2:2 -> 4:2:0: a the given row, b the row at +srcPitch.
void DownsamplePlane(uint8_t *dst, const uint8_t *src, int64_t srcPitch, int32_t blocks) {
  const uint8_t *next = Advance(src, srcPitch);
  for (int32_t b = 0; b < blocks; ++b) {
    const int32_t i = b * kBlock;
    x86::Store(dst + i, Merge31(x86::Load(src + i), x86::Load(next + i)));
  }
}

// ---------------------------------------------------------------------------
// Two packed 4:2:2 rows (src and src + srcPitch) to 4:2:0: both luma rows (to
// dstY and dstY + dstYPitch) and one chroma row (3a + b + 2) >> 2, a from the
// first row. Blocks of 16 pairs: 64 bytes of each source row, 32 luma bytes
// of each destination row, 16 bytes of U and of V.
constexpr int kPairBlock = 16;

// One row's block of 16 pairs: 32 luma bytes and 16 pairs of chroma bytes (U,
// V alternating), each as two vectors.
template <bool kLumaFirst>
inline void SplitPairs(const uint8_t *src, __m128i luma[2], __m128i chroma[2]) {
  const __m128i low = _mm_set1_epi16(0xFF);
  for (int k = 0; k < 2; ++k) {
    const __m128i v0 = x86::Load(src + 32 * k), v1 = x86::Load(src + 32 * k + 16);
    const __m128i even = _mm_packus_epi16(_mm_and_si128(v0, low), _mm_and_si128(v1, low));
    const __m128i odd = _mm_packus_epi16(_mm_srli_epi16(v0, 8), _mm_srli_epi16(v1, 8));
    luma[k] = kLumaFirst ? even : odd;
    chroma[k] = kLumaFirst ? odd : even;
  }
}

template <bool kLumaFirst, auto kTail>
void PackedTo420(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                 int64_t srcPitch, int32_t count) {
  const int32_t blocks = WholeBlocks<2 * kPairBlock>(count);
  uint8_t *dstY2 = Advance(dstY, dstYPitch);
  const uint8_t *src2 = Advance(src, srcPitch);
  const __m128i low = _mm_set1_epi16(0xFF);
  for (int32_t b = 0; b < blocks; ++b) {
    const int64_t p = int64_t{b} * kPairBlock;
    __m128i ya[2], yb[2], ca[2], cb[2], c[2];
    SplitPairs<kLumaFirst>(src + 4 * p, ya, ca);
    SplitPairs<kLumaFirst>(src2 + 4 * p, yb, cb);
    for (int k = 0; k < 2; ++k) c[k] = Merge31(ca[k], cb[k]);
    x86::Store(dstY + 2 * p, ya[0]);
    x86::Store(dstY + 2 * p + 16, ya[1]);
    x86::Store(dstY2 + 2 * p, yb[0]);
    x86::Store(dstY2 + 2 * p + 16, yb[1]);
    x86::Store(dstU + p, _mm_packus_epi16(_mm_and_si128(c[0], low), _mm_and_si128(c[1], low)));
    x86::Store(dstV + p, _mm_packus_epi16(_mm_srli_epi16(c[0], 8), _mm_srli_epi16(c[1], 8)));
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
