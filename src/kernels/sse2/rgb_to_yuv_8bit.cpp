// 8-bit RGB to YUV matrix kernels, SSE2 tier. One body over blocks of eight
// pixels: the source (3 or 4 bytes a pixel) is brought to one pixel per 32-bit
// lane, each output is a pair of _mm_madd_epi16 dot products on the zero-
// extended bytes (exact in int32 for any int16 weights, as the portable sums
// are) whose second pair carries the term added before the arithmetic shift
// by 14 (the chroma centre folded in as 128 << 14, which commutes with the
// shift) as a product of a constant lane, and a signed then an
// unsigned saturating pack, which together clamp to 0..255. The destination
// layout is a writer policy; the rest of a row goes to the portable routine.
#include "kernels/sse2/rgb_to_yuv_8bit.hpp"

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>

#include "kernels/kernel_slots.hpp"
#include "kernels/x86/in_blocks.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using x86::Load;
using x86::Load32;
using x86::Store;
using x86::Store64;

// Pixel and block indices; offsets of huge rows need 64 bits.

constexpr int32_t kBlock = 8;

// ---------------------------------------------------------------- matrices

// Two int16 weights repeated over the 32-bit lanes, for _mm_madd_epi16.
inline __m128i WeightPair(int16_t lo, int16_t hi) {
  return _mm_set1_epi32(static_cast<int32_t>(
      static_cast<uint16_t>(lo) | static_cast<uint32_t>(static_cast<uint16_t>(hi)) << 16));
}

// The lane that pairs with byte 1 holds kTermLane for every pixel, so the
// term added before the shift (a multiple of it) is the third product of the
// second madd.
constexpr int32_t kTermLane = 128;

// One output: the weights of source bytes 0 and 2, and of byte 1 with the
// term added before the shift.
struct Output {
  __m128i w02, w1;
};

inline Output MakeOutput(int16_t w0, int16_t w1, int16_t w2, int32_t add) {
  return {WeightPair(w0, w2), WeightPair(w1, static_cast<int16_t>(add / kTermLane))};
}

constexpr int32_t kRound = 8192;
constexpr int32_t kCentre = 128 << 14;
static_assert(kRound % kTermLane == 0 && (kRound + kCentre) / kTermLane <= INT16_MAX);

struct Matrix {
  Output y, u, v;
};

// The element patterns of the portable kernels: the common rounded layout
// (luma from r1[2..4], chroma from r2[0..2] and r3[0..2]) and the truncating
// pair layout of the RGB32 -> packed 4:2:2 kernels.
Matrix RoundedMatrix(const int16_t *r1, const int16_t *r2, const int16_t *r3) {
  return {MakeOutput(r1[2], r1[3], r1[4], kRound),
          MakeOutput(r2[0], r2[1], r2[2], kRound + kCentre),
          MakeOutput(r3[0], r3[1], r3[2], kRound + kCentre)};
}
Matrix PairMatrix(const int16_t *r1, const int16_t *r2, const int16_t *r3) {
  return {MakeOutput(r1[0], r2[1], r1[1], 0), MakeOutput(r3[0], r2[0], r3[1], kCentre),
          MakeOutput(r3[2], r2[2], r3[3], kCentre)};
}
// Luma only (grey): elements 2, 3, 4 of one row, rounded.
Matrix LumaMatrix(const int16_t *coef) {
  const Output y = MakeOutput(coef[2], coef[3], coef[4], kRound);
  return {y, y, y};
}

// ---------------------------------------------------------------- pixels

// Four pixels, one per 32-bit lane, as 16-bit lanes: bytes 0 and 2 of each
// pixel, and byte 1 with kTermLane (the high half of byte 1's lane times 256,
// whatever the fourth byte is).
struct Split {
  __m128i b02, b1t;
};

inline Split SplitPixels(__m128i p) {
  return {_mm_and_si128(p, _mm_set1_epi16(0xFF)),
          _mm_or_si128(_mm_mulhi_epu16(p, _mm_set1_epi32(0x100)), _mm_set1_epi32(kTermLane << 16))};
}

// One output of four pixels: (dot + add) >> 14 in int32 lanes.
inline __m128i Apply(const Output &o, const Split &s) {
  return _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(s.b02, o.w02), _mm_madd_epi16(s.b1t, o.w1)),
                        14);
}

// Eight int32 results to eight int16 lanes; a later _mm_packus_epi16 makes the
// clamp to 0..255 exact (the signed saturation keeps the sign and stays
// outside 0..255 whenever the value was).
inline __m128i Apply8(const Output &o, const Split &lo, const Split &hi) {
  return _mm_packs_epi32(Apply(o, lo), Apply(o, hi));
}

// Eight source pixels, one per 32-bit lane (pixels 0-3 and 4-7; byte 3 of
// each lane is the pixel's fourth byte or whatever follows its third), and
// each half split once for all outputs.
struct Block {
  __m128i p0, p1;
  Split s0, s1;
};

inline Block MakeBlock(__m128i p0, __m128i p1) {
  return {p0, p1, SplitPixels(p0), SplitPixels(p1)};
}

template <int kBytes>
Block LoadBlock(const uint8_t *s);

template <>
inline Block LoadBlock<4>(const uint8_t *s) {
  return MakeBlock(Load(s), Load(s + 16));
}

// 3-byte pixels: a 32-bit load at each pixel; the last one is loaded one byte
// early and shifted, so the block reads its own 24 bytes and no more.
inline __m128i Gather4(__m128i a, __m128i b, __m128i c, __m128i d) {
  return _mm_unpacklo_epi64(_mm_unpacklo_epi32(a, b), _mm_unpacklo_epi32(c, d));
}
template <>
inline Block LoadBlock<3>(const uint8_t *s) {
  return MakeBlock(
      Gather4(Load32(s), Load32(s + 3), Load32(s + 6), Load32(s + 9)),
      Gather4(Load32(s + 12), Load32(s + 15), Load32(s + 18), _mm_srli_si128(Load32(s + 20), 1)));
}

// The even pixels 0, 2, 4, 6 of a block, split.
inline __m128i EvenLanes(__m128i a, __m128i b) {
  return _mm_castps_si128(
      _mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), _MM_SHUFFLE(2, 0, 2, 0)));
}
inline Split EvenPixels(const Block &b) {
  return {EvenLanes(b.s0.b02, b.s1.b02), EvenLanes(b.s0.b1t, b.s1.b1t)};
}

// Chroma of the even pixels as int16 lanes U0..U3, V0..V3.
inline __m128i EvenChroma(const Matrix &m, const Block &b) {
  const Split e = EvenPixels(b);
  return _mm_packs_epi32(Apply(m.u, e), Apply(m.v, e));
}

// ---------------------------------------------------------------- writers
// A writer stands at the destination rows of one step and converts kBlocks
// consecutive blocks (8 or 16 pixels, the width of its narrowest store).

struct PairOrderYUYV {
  static __m128i Lo(__m128i y, __m128i c) { return _mm_unpacklo_epi16(y, c); }
  static __m128i Hi(__m128i y, __m128i c) { return _mm_unpackhi_epi16(y, c); }
};
struct PairOrderUYVY {
  static __m128i Lo(__m128i y, __m128i c) { return _mm_unpacklo_epi16(c, y); }
  static __m128i Hi(__m128i y, __m128i c) { return _mm_unpackhi_epi16(c, y); }
};

// Alpha of eight pixels as int16 lanes: a constant, or byte 3 of the source.
struct ConstAlpha {
  __m128i value;
  explicit ConstAlpha(uint8_t a) : value(_mm_set1_epi16(a)) {}
  __m128i operator()(const Block &) const { return value; }
};
struct SourceAlpha {
  __m128i operator()(const Block &b) const {
    return _mm_packs_epi32(_mm_srli_epi32(b.p0, 24), _mm_srli_epi32(b.p1, 24));
  }
};

inline __m128i Luma8(const Matrix &m, const Block &b) { return Apply8(m.y, b.s0, b.s1); }

template <class Alpha>
struct YuvaWriter {
  static constexpr int kBlocks = 1;
  uint8_t *dst;
  Alpha alpha;
  void operator()(const Matrix &m, const Block (&b)[kBlocks]) const {
    const Split &lo = b[0].s0, &hi = b[0].s1;
    // Y0..Y7 V0..V7 and U0..U7 A0..A7, then Y U pairs and V A pairs.
    const __m128i yv = _mm_packus_epi16(Apply8(m.y, lo, hi), Apply8(m.v, lo, hi));
    const __m128i ua = _mm_packus_epi16(Apply8(m.u, lo, hi), alpha(b[0]));
    const __m128i yuPairs = _mm_unpacklo_epi8(yv, ua), vaPairs = _mm_unpackhi_epi8(yv, ua);
    Store(dst, _mm_unpacklo_epi16(yuPairs, vaPairs));
    Store(dst + 16, _mm_unpackhi_epi16(yuPairs, vaPairs));
  }
};

template <class Order>
struct PackedWriter {
  static constexpr int kBlocks = 1;
  uint8_t *dst;
  void operator()(const Matrix &m, const Block (&b)[kBlocks]) const {
    const __m128i y = Luma8(m, b[0]);
    const __m128i uv = EvenChroma(m, b[0]);
    const __m128i c = _mm_unpacklo_epi16(uv, _mm_srli_si128(uv, 8));  // U0 V0 U1 V1 ...
    Store(dst, _mm_packus_epi16(Order::Lo(y, c), Order::Hi(y, c)));
  }
};

// A packed row plus a key plane of every pixel's byte 3.
template <class Order>
struct PackedKeyWriter {
  static constexpr int kBlocks = 1;
  uint8_t *dst, *dstKey;
  void operator()(const Matrix &m, const Block (&b)[kBlocks]) const {
    PackedWriter<Order>{dst}(m, b);
    Store64(dstKey, _mm_packus_epi16(SourceAlpha{}(b[0]), _mm_setzero_si128()));
  }
};

struct PlanarWriter {
  static constexpr int kBlocks = 2;
  uint8_t *y, *u, *v;
  void operator()(const Matrix &m, const Block (&b)[kBlocks]) const {
    Store(y, _mm_packus_epi16(Luma8(m, b[0]), Luma8(m, b[1])));
    const Split e0 = EvenPixels(b[0]), e1 = EvenPixels(b[1]);
    const __m128i uv = _mm_packus_epi16(Apply8(m.u, e0, e1), Apply8(m.v, e0, e1));
    Store64(u, uv);
    _mm_storeh_pi(reinterpret_cast<__m64 *>(v), _mm_castsi128_ps(uv));  // any alignment
  }
};

struct LumaWriter {
  static constexpr int kBlocks = 2;
  uint8_t *dst;
  void operator()(const Matrix &m, const Block (&b)[kBlocks]) const {
    Store(dst, _mm_packus_epi16(Luma8(m, b[0]), Luma8(m, b[1])));
  }
};

// One step of Writer::kBlocks blocks from src, read whole before it is
// written; the writer stands at the step's destination rows.
template <int kBytes, class Writer>
inline void Step(Writer write, const uint8_t *src, const Matrix &m) {
  Block b[Writer::kBlocks];
  for (int i = 0; i < Writer::kBlocks; ++i) b[i] = LoadBlock<kBytes>(src + kBytes * kBlock * i);
  write(m, b);
}
template <class Writer>
constexpr int kStepOf = kBlock *Writer::kBlocks;

// The 4:2:2 rows.
using MatrixOf = Matrix (*)(const int16_t *, const int16_t *, const int16_t *);

template <K kSlot, int kBytes, class Order, MatrixOf kMatrix>
void PackedRow(uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3) {
  using W = PackedWriter<Order>;
  const Matrix m = kMatrix(r1, r2, r3);
  x86::InBlocks<kSlot, kStepOf<W>>([&](uint8_t *d, const uint8_t *s) { Step<kBytes>(W{d}, s, m); },
                                   dst, src, count, r1, r2, r3);
}

template <K kSlot, class Order>
void PackedKeyRow(uint8_t *dst, uint8_t *dstKey, const uint8_t *src, int32_t count, TCS_R3) {
  using W = PackedKeyWriter<Order>;
  const Matrix m = PairMatrix(r1, r2, r3);
  x86::InBlocks<kSlot, kStepOf<W>>(
      [&](uint8_t *d, uint8_t *k, const uint8_t *s) {
        Step<4>(W{d, k}, s, m);
      },
      dst, dstKey, src, count, r1, r2, r3);
}

template <K kSlot, int kBytes>
void PlanarRow(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src, int32_t count,
               TCS_R3) {
  const Matrix m = RoundedMatrix(r1, r2, r3);
  x86::InBlocks<kSlot, kStepOf<PlanarWriter>>(
      [&](uint8_t *y, uint8_t *u, uint8_t *v, const uint8_t *s) {
        Step<kBytes>(PlanarWriter{y, u, v}, s, m);
      },
      dstY, dstU, dstV, src, count, r1, r2, r3);
}

}  // namespace

int32_t RGB32_Luma_Blocks(uint8_t *dst, const uint8_t *src, const int16_t *coef, int32_t count) {
  constexpr int kStep = kStepOf<LumaWriter>;
  const Matrix m = LumaMatrix(coef);
  const int32_t steps = x86::WholeBlocks<kStep>(count);
  for (int32_t k = 0; k < steps; ++k) Step<4>(LumaWriter{dst + kStep * k}, src + 4 * kStep * k, m);
  return steps * kStep;
}

}  // namespace tqcs::sse2

// The slots. Qualified definitions: each must match its declaration exactly.
namespace tqcs {

// RGB -> YUV, rounding pattern.
void sse2::RGB32_2_YUVA_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3) {
  using W = YuvaWriter<SourceAlpha>;
  const Matrix m = RoundedMatrix(r1, r2, r3);
  x86::InBlocks<K::RGB32_2_YUVA_Row, kStepOf<W>>(
      [&](uint8_t *d, const uint8_t *s) {
        Step<4>(W{d, {}}, s, m);
      },
      dst, src, count, r1, r2, r3);
}
void sse2::RGB24_2_YUVA_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                            TCS_R3) {
  using W = YuvaWriter<ConstAlpha>;
  const Matrix m = RoundedMatrix(r1, r2, r3);
  const ConstAlpha a{alpha};
  x86::InBlocks<K::RGB24_2_YUVA_Row, kStepOf<W>>(
      [&](uint8_t *d, const uint8_t *s) {
        Step<3>(W{d, a}, s, m);
      },
      dst, src, count, alpha, r1, r2, r3);
}
void sse2::RGB32_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                              int32_t count, TCS_R3) {
  PlanarRow<K::RGB32_2_YUV422_Row, 4>(dstY, dstU, dstV, src, count, r1, r2, r3);
}
void sse2::RGB24_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                              int32_t count, TCS_R3) {
  PlanarRow<K::RGB24_2_YUV422_Row, 3>(dstY, dstU, dstV, src, count, r1, r2, r3);
}
void sse2::RGB24_2_YUYV_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3) {
  PackedRow<K::RGB24_2_YUYV_Row, 3, PairOrderYUYV, RoundedMatrix>(dst, src, count, r1, r2, r3);
}
void sse2::RGB24_2_UYVY_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3) {
  PackedRow<K::RGB24_2_UYVY_Row, 3, PairOrderUYVY, RoundedMatrix>(dst, src, count, r1, r2, r3);
}
void sse2::RGB24_2_Gray_Row(uint8_t *dst, const uint8_t *src, const int16_t *coef, int32_t count) {
  const Matrix m = LumaMatrix(coef);
  x86::InBlocks<K::RGB24_2_Gray_Row, kStepOf<LumaWriter>>(
      [&](uint8_t *d, const uint8_t *s) { Step<3>(LumaWriter{d}, s, m); }, dst, src, coef, count);
}

// RGB32 -> packed 4:2:2, pair pattern, truncating.
void sse2::RGB32_2_YUYV_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3) {
  PackedRow<K::RGB32_2_YUYV_Row, 4, PairOrderYUYV, PairMatrix>(dst, src, count, r1, r2, r3);
}
void sse2::RGB32_2_UYVY_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_R3) {
  PackedRow<K::RGB32_2_UYVY_Row, 4, PairOrderUYVY, PairMatrix>(dst, src, count, r1, r2, r3);
}

void sse2::RGB32_2_YUYV_Key_Row(uint8_t *dst, uint8_t *dstKey, const uint8_t *src, int32_t count,
                                TCS_R3) {
  PackedKeyRow<K::RGB32_2_YUYV_Key_Row, PairOrderYUYV>(dst, dstKey, src, count, r1, r2, r3);
}
void sse2::RGB32_2_UYVY_Key_Row(uint8_t *dst, uint8_t *dstKey, const uint8_t *src, int32_t count,
                                TCS_R3) {
  PackedKeyRow<K::RGB32_2_UYVY_Key_Row, PairOrderUYVY>(dst, dstKey, src, count, r1, r2, r3);
}

}  // namespace tqcs
