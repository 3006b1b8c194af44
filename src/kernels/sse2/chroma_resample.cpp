// Chroma resampling between 4:2:0 and 4:2:2, SSE2: the two-row upsampling
// kernels (8-bit, 10-bit and raw 16-bit samples, and raw 16-bit samples to
// bytes), the 3:1 merge of two 4:2:2 chroma rows (8-bit and 10-bit), and two
// packed 4:2:2 rows (8-bit, or 16-bit to bytes or to 16-bit) to 4:2:0.
//
// The weights are exact chains of unsigned averages (bytes or 16-bit lanes),
// a lane's width of samples an instruction. With fl(x, y) = (x + y) >> 1 and
// rd(x, y) = (x + y + 1) >> 1, integer floors nest: (x + (y >> k)) >> 1 ==
// (2^k x + y) >> (k + 1). So
//   (7a + b + 4) >> 3 == rd(a, fl(a, fl(a, b)))
//   (5a + 3b + 4) >> 3 == rd(a, fl(b, fl(b, a)))
//   (3a + b + 2) >> 2  == rd(a, fl(a, b))
//   (3a + b) >> 2      == fl(a, fl(a, b))
// (the rounding term enters as the +1 of the last average: x = a + 1). The
// averages never leave the lane's range, so full 16-bit samples are exact.
//
// The raw 16-bit sums to bytes are done in 16-bit lanes and wrap there, which
// is exact for what is kept of them: the stored byte is bits 5 to 12 of the
// sum, and those depend only on the sum modulo 2^16.
#include "kernels/kernel_slots.hpp"
#include "kernels/x86/in_blocks.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using x86::Advance;

// Samples per block: 16 bytes of each 8-bit destination row, 32 bytes of a
// 16-bit one.
constexpr int kBlock = 16;

inline __m128i Not(__m128i x) { return _mm_xor_si128(x, _mm_set1_epi32(-1)); }

// Unsigned lanes of one width: their rounding average, and the even and odd
// lanes of two vectors packed into one (exact for every lane value).
struct Lane8 {
  using T = uint8_t;
  static __m128i Avg(__m128i a, __m128i b) { return _mm_avg_epu8(a, b); }
  static __m128i Even(__m128i v0, __m128i v1) {
    const __m128i low = _mm_set1_epi16(0xFF);
    return _mm_packus_epi16(_mm_and_si128(v0, low), _mm_and_si128(v1, low));
  }
  static __m128i Odd(__m128i v0, __m128i v1) {
    return _mm_packus_epi16(_mm_srli_epi16(v0, 8), _mm_srli_epi16(v1, 8));
  }
};

// 16-bit lanes: a sign-extended 32-bit lane packs back to its own 16 bits
// under the signed saturating pack.
struct Lane16 {
  using T = uint16_t;
  static __m128i Avg(__m128i a, __m128i b) { return _mm_avg_epu16(a, b); }
  static __m128i Even(__m128i v0, __m128i v1) {
    return _mm_packs_epi32(_mm_srai_epi32(_mm_slli_epi32(v0, 16), 16),
                           _mm_srai_epi32(_mm_slli_epi32(v1, 16), 16));
  }
  static __m128i Odd(__m128i v0, __m128i v1) {
    return _mm_packs_epi32(_mm_srai_epi32(v0, 16), _mm_srai_epi32(v1, 16));
  }
};

// fl(c, fl(c, d)) == ~rd(~c, rd(~c, ~d)): the floor average is the rounding
// one on complements, so a chain of floor averages costs one instruction a
// link.
template <class L>
inline __m128i FloorChain(__m128i notC, __m128i notD) {
  return Not(L::Avg(notC, L::Avg(notC, notD)));
}

// (kWa a + (8 - kWa) b + 4) >> 3 for kWa 5 or 7.
template <class L, int kWa>
inline __m128i Weigh8(__m128i a, __m128i b) {
  static_assert(kWa == 5 || kWa == 7);
  // c is the sample weighted 3 in (3c + d) >> 2.
  const __m128i c = kWa == 7 ? a : b, d = kWa == 7 ? b : a;
  return L::Avg(a, FloorChain<L>(Not(c), Not(d)));
}

// (3a + b + 2) >> 2, or (3a + b) >> 2 without kRound.
template <class L, bool kRound = true>
inline __m128i Merge31(__m128i a, __m128i b) {
  if constexpr (kRound) {
    return L::Avg(a, Not(L::Avg(Not(a), Not(b))));
  } else {
    return FloorChain<L>(Not(a), Not(b));
  }
}

// A block of 16 samples in 16-bit lanes: samples 0-7 and 8-15.
struct Halves {
  __m128i lo, hi;
};

inline Halves ReadHalves(const uint16_t *p) { return {x86::Load(p), x86::Load(p + 8)}; }

// How a family reads a block of 16 samples (Read), weighs two blocks
// (Weigh8<kWa>, kWa 5 or 7) or merges them 3:1 (Merge31), passes a block
// through as its destination sample (Plain), and stores a result (Write).
struct Bytes {
  using Src = uint8_t;
  using Dst = uint8_t;
  using Block = __m128i;
  static Block Read(const uint8_t *p) { return x86::Load(p); }
  template <int kWa>
  static __m128i Weigh8(Block a, Block b) {
    return sse2::Weigh8<Lane8, kWa>(a, b);
  }
  static __m128i Merge31(Block a, Block b) { return sse2::Merge31<Lane8>(a, b); }
  static __m128i Plain(Block a) { return a; }
  static void Write(uint8_t *p, __m128i v) { x86::Store(p, v); }
};

// 16-bit samples whose value is the sample shifted right by kDrop (10-bit
// values in bits 6-15 for kDrop 6, raw samples for 0); a result is stored
// shifted back left, so a plain block loses its low kDrop bits.
template <int kDrop>
struct Words {
  using Src = uint16_t;
  using Dst = uint16_t;
  using Block = Halves;
  static Block Read(const uint16_t *p) {
    const Halves s = ReadHalves(p);
    return {x86::ShiftWords<-kDrop>(s.lo), x86::ShiftWords<-kDrop>(s.hi)};
  }
  template <int kWa>
  static Halves Weigh8(Block a, Block b) {
    return Out(sse2::Weigh8<Lane16, kWa>(a.lo, b.lo), sse2::Weigh8<Lane16, kWa>(a.hi, b.hi));
  }
  static Halves Merge31(Block a, Block b) {
    return Out(sse2::Merge31<Lane16>(a.lo, b.lo), sse2::Merge31<Lane16>(a.hi, b.hi));
  }
  static Halves Plain(Block a) { return Out(a.lo, a.hi); }
  static void Write(uint16_t *p, Halves v) {
    x86::Store(p, v.lo);
    x86::Store(p + 8, v.hi);
  }

 private:
  static Halves Out(__m128i lo, __m128i hi) {
    return {x86::ShiftWords<kDrop>(lo), x86::ShiftWords<kDrop>(hi)};
  }
};

using TenBit16 = Words<6>;
using Raw16 = Words<0>;

// Raw 16-bit samples, weighted as they stand and shifted by 5; the byte is
// the low 8 bits of the shifted sum (a truncating cast, not a saturation).
struct Raw16To8 {
  using Src = uint16_t;
  using Dst = uint8_t;
  using Block = Halves;
  static Block Read(const uint16_t *p) { return ReadHalves(p); }
  template <int kWa>
  static __m128i Weigh8(Block a, Block b) {
    return _mm_packus_epi16(Weigh(a.lo, b.lo, kWa), Weigh(a.hi, b.hi, kWa));
  }
  static void Write(uint8_t *p, __m128i v) { x86::Store(p, v); }

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
inline void UpsampleBlock(typename P::Dst *dst, int64_t dstPitch, const typename P::Src *src,
                          int64_t srcPitch) {
  const typename P::Block a = P::Read(src), n = P::Read(Advance(src, srcPitch));
  if constexpr (E == Edge::Interior) {
    const auto top = P::template Weigh8<7>(a, P::Read(Advance(src, -srcPitch)));
    const auto bottom = P::template Weigh8<5>(a, n);
    P::Write(dst, top);
    P::Write(Advance(dst, dstPitch), bottom);
  } else {
    const auto top = P::Plain(a);
    const auto bottom = P::template Weigh8 < E == Edge::First ? 5 : 7 > (a, n);
    P::Write(dst, top);
    P::Write(Advance(dst, dstPitch), bottom);
  }
}

// Both planes, a block of each at a time.
template <K kSlot, Edge E, class P>
void Upsample(typename P::Dst *dstU, int64_t dstUPitch, typename P::Dst *dstV, int64_t dstVPitch,
              const typename P::Src *srcU, int64_t srcUPitch, const typename P::Src *srcV,
              int64_t srcVPitch, int32_t width) {
  using Dst = typename P::Dst;
  using Src = typename P::Src;
  x86::InBlocks<kSlot, kBlock>(
      [=](Dst *u, Dst *v, const Src *su, const Src *sv) {
        UpsampleBlock<E, P>(u, dstUPitch, su, srcUPitch);
        UpsampleBlock<E, P>(v, dstVPitch, sv, srcVPitch);
      },
      dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch, width);
}

// 4:2:2 -> 4:2:0: (3a + b + 2) >> 2, a the given row, b the row at +srcPitch.
template <K kSlot, class P>
void Downsample(typename P::Dst *dstU, typename P::Dst *dstV, const typename P::Src *srcU,
                int64_t srcUPitch, const typename P::Src *srcV, int64_t srcVPitch, int32_t width) {
  using Dst = typename P::Dst;
  using Src = typename P::Src;
  x86::InBlocks<kSlot, kBlock>(
      [=](Dst *u, Dst *v, const Src *su, const Src *sv) {
        P::Write(u, P::Merge31(P::Read(su), P::Read(Advance(su, srcUPitch))));
        P::Write(v, P::Merge31(P::Read(sv), P::Read(Advance(sv, srcVPitch))));
      },
      dstU, dstV, srcU, srcUPitch, srcV, srcVPitch, width);
}

// ---------------------------------------------------------------------------
// Two packed 4:2:2 rows (src and src + srcPitch) to 4:2:0: both luma rows (to
// dstY and dstY + dstYPitch) and one chroma row (3a + b + 2) >> 2, a from the
// first row ((3a + b) >> 2 without kRound). Work is done in lanes L of the
// destination's width; 16-bit samples to bytes keep their high bytes. A block
// is four vectors of each source row: 16 pairs in bytes, 8 in 16-bit lanes.

// Vector j of a source row as packed samples in lanes L.
template <class L, class Src>
inline __m128i Fetch(const Src *src, int j) {
  if constexpr (sizeof(Src) == sizeof(typename L::T)) {
    return x86::Load(src + j * (16 / sizeof(Src)));
  } else {
    static_assert(sizeof(Src) == 2 && sizeof(typename L::T) == 1);
    return _mm_packus_epi16(_mm_srli_epi16(x86::Load(src + 16 * j), 8),
                            _mm_srli_epi16(x86::Load(src + 16 * j + 8), 8));
  }
}

// One row's block: its luma as two vectors and its chroma (U, V alternating)
// as two vectors.
template <class L, bool kLumaFirst, class Src>
inline void SplitPairs(const Src *src, __m128i luma[2], __m128i chroma[2]) {
  for (int k = 0; k < 2; ++k) {
    const __m128i v0 = Fetch<L>(src, 2 * k), v1 = Fetch<L>(src, 2 * k + 1);
    const __m128i even = L::Even(v0, v1), odd = L::Odd(v0, v1);
    luma[k] = kLumaFirst ? even : odd;
    chroma[k] = kLumaFirst ? odd : even;
  }
}

template <K kSlot, class L, bool kLumaFirst, bool kRound, class Dst, class Src>
void PackedTo420(Dst *dstY, int64_t dstYPitch, Dst *dstU, Dst *dstV, const Src *src,
                 int64_t srcPitch, int32_t count) {
  static_assert(sizeof(Dst) == sizeof(typename L::T));
  constexpr int kLanes = 16 / sizeof(Dst);  // samples a vector; pairs a block
  x86::InBlocks<kSlot, 2 * kLanes>(
      [=](Dst *y, Dst *u, Dst *v, const Src *s) {
        __m128i ya[2], yb[2], ca[2], cb[2], c[2];
        SplitPairs<L, kLumaFirst>(s, ya, ca);
        SplitPairs<L, kLumaFirst>(Advance(s, srcPitch), yb, cb);
        for (int k = 0; k < 2; ++k) c[k] = Merge31<L, kRound>(ca[k], cb[k]);
        Dst *y2 = Advance(y, dstYPitch);
        x86::Store(y, ya[0]);
        x86::Store(y + kLanes, ya[1]);
        x86::Store(y2, yb[0]);
        x86::Store(y2 + kLanes, yb[1]);
        x86::Store(u, L::Even(c[0], c[1]));
        x86::Store(v, L::Odd(c[0], c[1]));
      },
      dstY, dstYPitch, dstU, dstV, src, srcPitch, count);
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

void sse2::YUV420_2_YUV422_UV_FirstRow(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV,
                                       int64_t dstVPitch, const uint8_t *srcU, int64_t srcUPitch,
                                       const uint8_t *srcV, int64_t srcVPitch, int32_t width) {
  Upsample<K::YUV420_2_YUV422_UV_FirstRow, Edge::First, Bytes>(
      dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch, width);
}

void sse2::YUV420_2_YUV422_UV_LastRow(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV,
                                      int64_t dstVPitch, const uint8_t *srcU, int64_t srcUPitch,
                                      const uint8_t *srcV, int64_t srcVPitch, int32_t width) {
  Upsample<K::YUV420_2_YUV422_UV_LastRow, Edge::Last, Bytes>(dstU, dstUPitch, dstV, dstVPitch, srcU,
                                                             srcUPitch, srcV, srcVPitch, width);
}

void sse2::YUV420_2_YUV422_UV_Row(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV,
                                  int64_t dstVPitch, const uint8_t *srcU, int64_t srcUPitch,
                                  const uint8_t *srcV, int64_t srcVPitch, int32_t width) {
  Upsample<K::YUV420_2_YUV422_UV_Row, Edge::Interior, Bytes>(dstU, dstUPitch, dstV, dstVPitch, srcU,
                                                             srcUPitch, srcV, srcVPitch, width);
}

void sse2::YUV420_16_2_YUV422_16_UV_FirstRow(uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV,
                                             int64_t dstVPitch, const uint16_t *srcU,
                                             int64_t srcUPitch, const uint16_t *srcV,
                                             int64_t srcVPitch, int32_t width) {
  Upsample<K::YUV420_16_2_YUV422_16_UV_FirstRow, Edge::First, TenBit16>(
      dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch, width);
}

void sse2::YUV420_16_2_YUV422_16_UV_LastRow(uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV,
                                            int64_t dstVPitch, const uint16_t *srcU,
                                            int64_t srcUPitch, const uint16_t *srcV,
                                            int64_t srcVPitch, int32_t width) {
  Upsample<K::YUV420_16_2_YUV422_16_UV_LastRow, Edge::Last, TenBit16>(
      dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch, width);
}

void sse2::YUV420_16_2_YUV422_16_UV_Row(uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV,
                                        int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch,
                                        const uint16_t *srcV, int64_t srcVPitch, int32_t width) {
  Upsample<K::YUV420_16_2_YUV422_16_UV_Row, Edge::Interior, TenBit16>(
      dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch, width);
}

// The interior rule on raw 16-bit samples, shifted by 5 into bytes.
void sse2::YUV420_10Bit_2_YUV422_UV_Row(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV,
                                        int64_t dstVPitch, const uint16_t *srcU, int64_t srcUPitch,
                                        const uint16_t *srcV, int64_t srcVPitch, int32_t width) {
  Upsample<K::YUV420_10Bit_2_YUV422_UV_Row, Edge::Interior, Raw16To8>(
      dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch, width);
}

// The interior rule on raw 16-bit samples, low six bits included.
void sse2::YUV420_10Bit_2_YUV422_10Bit_UV_Row(uint16_t *dstU, int64_t dstUPitch, uint16_t *dstV,
                                              int64_t dstVPitch, const uint16_t *srcU,
                                              int64_t srcUPitch, const uint16_t *srcV,
                                              int64_t srcVPitch, int32_t width) {
  Upsample<K::YUV420_10Bit_2_YUV422_10Bit_UV_Row, Edge::Interior, Raw16>(
      dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch, width);
}

void sse2::YUV422_2_YUV420_UV_Row(uint8_t *dstU, uint8_t *dstV, const uint8_t *srcU,
                                  int64_t srcUPitch, const uint8_t *srcV, int64_t srcVPitch,
                                  int32_t width) {
  Downsample<K::YUV422_2_YUV420_UV_Row, Bytes>(dstU, dstV, srcU, srcUPitch, srcV, srcVPitch, width);
}

void sse2::YUV422_16_2_YUV420_16_UV_Row(uint16_t *dstU, uint16_t *dstV, const uint16_t *srcU,
                                        int64_t srcUPitch, const uint16_t *srcV, int64_t srcVPitch,
                                        int32_t width) {
  Downsample<K::YUV422_16_2_YUV420_16_UV_Row, TenBit16>(dstU, dstV, srcU, srcUPitch, srcV,
                                                        srcVPitch, width);
}

// Packed rows to 4:2:0. The 8-bit kernels round the chroma merge; the
// 16-bit-source kernels do not.
void sse2::YUYV_2_YUV420_UV_Row(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                const uint8_t *src, int64_t srcPitch, int32_t count) {
  PackedTo420<K::YUYV_2_YUV420_UV_Row, Lane8, true, true>(dstY, dstYPitch, dstU, dstV, src,
                                                          srcPitch, count);
}

void sse2::UYVY_2_YUV420_UV_Row(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                const uint8_t *src, int64_t srcPitch, int32_t count) {
  PackedTo420<K::UYVY_2_YUV420_UV_Row, Lane8, false, true>(dstY, dstYPitch, dstU, dstV, src,
                                                           srcPitch, count);
}

void sse2::YUYV16_2_YUV420_Row(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                               const uint16_t *src, int64_t srcPitch, int32_t count) {
  PackedTo420<K::YUYV16_2_YUV420_Row, Lane8, true, false>(dstY, dstYPitch, dstU, dstV, src,
                                                          srcPitch, count);
}

void sse2::UYVY16_2_YUV420_Row(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                               const uint16_t *src, int64_t srcPitch, int32_t count) {
  PackedTo420<K::UYVY16_2_YUV420_Row, Lane8, false, false>(dstY, dstYPitch, dstU, dstV, src,
                                                           srcPitch, count);
}

void sse2::UYVY16_2_YUV420_16_Row(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU, uint16_t *dstV,
                                  const uint16_t *src, int64_t srcPitch, int32_t count) {
  PackedTo420<K::UYVY16_2_YUV420_16_Row, Lane16, false, false>(dstY, dstYPitch, dstU, dstV, src,
                                                               srcPitch, count);
}

void sse2::YUYV16_2_YUV420_16_Row(uint16_t *dstY, int64_t dstYPitch, uint16_t *dstU, uint16_t *dstV,
                                  const uint16_t *src, int64_t srcPitch, int32_t count) {
  PackedTo420<K::YUYV16_2_YUV420_16_Row, Lane16, true, false>(dstY, dstYPitch, dstU, dstV, src,
                                                              srcPitch, count);
}

}  // namespace tqcs
