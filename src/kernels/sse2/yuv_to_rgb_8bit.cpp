// 8-bit YUV to RGB matrix kernels, SSE2 tier: packed or planar 4:2:2 and
// YUVA 4:4:4 to 3- or 4-byte RGB, R-first or B-first.
//
// One body for every member: a reader turns 16 source pixels into luma (16-bit
// lanes) and one (u, v) pair of 16-bit lanes per pixel; three madds against
// (0, rv), (gu, gv) and (bu, 0) give the exact 32-bit sums of the portable
// code, which are shifted, packed, added to luma and clamped by the unsigned
// pack. A layout writes the three channels and alpha as 3- or 4-byte pixels;
// where alpha comes from is a policy.
//
// Ranges: every chroma input is at most 256 in magnitude, so a sum of two
// products of int16 weights stays below 2^25 and the shifted delta within
// +-512 for any weights; the signed 32-to-16 pack and the 16-bit luma add are
// therefore exact, and the unsigned pack clamps to 0..255 as the portable code
// does.
#include "kernels/kernel_slots.hpp"
#include "kernels/x86/in_blocks.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using Index = std::ptrdiff_t;
using x86::Load;
using x86::Load32;
using x86::Load64;
using x86::Store;

// Sixteen source pixels: luma of pixels 0-7 and 8-15, the (u, v) inputs of
// pixels 4i to 4i + 3 in c[i], and the source's own alpha bytes where it has
// them.
struct Block {
  __m128i y[2];
  __m128i c[4];
  __m128i a;
};

// ---- 4:2:2 ------------------------------------------------------------------
// The even pixel's product is taken on twice its pair's centred chroma and
// the odd pixel's on the sum of its pair's and the next pair's, both shifted
// by 15: floor(2x / 2^15) is floor(x / 2^14), so the even pixel keeps its
// truncating shift of 14.

// Pairs p to p + 3 as centred (u, v) lanes c and those of pairs p + 1 to
// p + 4 as next: the per-pixel inputs of pixels 2p to 2p + 7.
inline void PairsToPixels(__m128i c, __m128i next, __m128i *out) {
  const __m128i even = _mm_add_epi16(c, c), odd = _mm_add_epi16(c, next);
  out[0] = _mm_unpacklo_epi32(even, odd);
  out[1] = _mm_unpackhi_epi32(even, odd);
}

inline __m128i Centre(__m128i c) { return _mm_sub_epi16(c, _mm_set1_epi16(128)); }

// Each block reads the chroma of the pair after it, so the last pair (2
// pixels) is left to the portable routine.
constexpr int kKeep422 = 2;

struct YUYV {
  static __m128i Luma(__m128i x) { return _mm_and_si128(x, _mm_set1_epi16(0xFF)); }
  static __m128i Chroma(__m128i x) { return _mm_srli_epi16(x, 8); }
};
struct UYVY {
  static __m128i Luma(__m128i x) { return _mm_srli_epi16(x, 8); }
  static __m128i Chroma(__m128i x) { return _mm_and_si128(x, _mm_set1_epi16(0xFF)); }
};

template <class Order>
struct PackedReader {
  static constexpr int kShift = 15, kRound = 0, kKeep = kKeep422;
  const uint8_t *src;
  Block Read() const {
    const uint8_t *s = src;
    const __m128i x0 = Load(s), x1 = Load(s + 16);
    const __m128i c0 = Centre(Order::Chroma(x0)), c1 = Centre(Order::Chroma(x1));
    const __m128i c8 = Centre(Order::Chroma(Load32(s + 32)));
    Block b{};
    b.y[0] = Order::Luma(x0);
    b.y[1] = Order::Luma(x1);
    PairsToPixels(c0, _mm_or_si128(_mm_srli_si128(c0, 4), _mm_slli_si128(c1, 12)), b.c);
    PairsToPixels(c1, _mm_or_si128(_mm_srli_si128(c1, 4), _mm_slli_si128(c8, 12)), b.c + 2);
    return b;
  }
};

struct PlanarReader {
  static constexpr int kShift = 15, kRound = 0, kKeep = kKeep422;
  const uint8_t *y, *u, *v;
  // Eight pairs from pair p as centred (u, v) lanes, pairs p to p + 3 in
  // out[0] and p + 4 to p + 7 in out[1].
  void Chroma(Index p, __m128i *out) const {
    const __m128i uv = _mm_unpacklo_epi8(Load64(u + p), Load64(v + p)), zero = _mm_setzero_si128();
    out[0] = Centre(_mm_unpacklo_epi8(uv, zero));
    out[1] = Centre(_mm_unpackhi_epi8(uv, zero));
  }
  Block Read() const {
    const __m128i luma = Load(y), zero = _mm_setzero_si128();
    __m128i c[2], next[2];
    Chroma(0, c);
    Chroma(1, next);
    Block b{};
    b.y[0] = _mm_unpacklo_epi8(luma, zero);
    b.y[1] = _mm_unpackhi_epi8(luma, zero);
    PairsToPixels(c[0], next[0], b.c);
    PairsToPixels(c[1], next[1], b.c + 2);
    return b;
  }
};

// ---- 4:4:4 ------------------------------------------------------------------

struct YuvaReader {
  static constexpr int kShift = 14, kRound = 8192, kKeep = 0;
  const uint8_t *src;
  Block Read() const {
    const __m128i low = _mm_set1_epi32(0xFF), third = _mm_set1_epi32(0xFF0000);
    __m128i x[4], luma[4], alpha[4];
    Block b{};
    for (int i = 0; i < 4; ++i) x[i] = Load(src + 16 * i);
    for (int i = 0; i < 4; ++i) {
      // Y U V A -> (U, V) in 16-bit lanes.
      const __m128i uv =
          _mm_or_si128(_mm_and_si128(_mm_srli_epi32(x[i], 8), low), _mm_and_si128(x[i], third));
      b.c[i] = Centre(uv);
      luma[i] = _mm_and_si128(x[i], low);
      alpha[i] = _mm_srli_epi32(x[i], 24);
    }
    b.y[0] = _mm_packs_epi32(luma[0], luma[1]);
    b.y[1] = _mm_packs_epi32(luma[2], luma[3]);
    b.a =
        _mm_packus_epi16(_mm_packs_epi32(alpha[0], alpha[1]), _mm_packs_epi32(alpha[2], alpha[3]));
    return b;
  }
};

// ---- Alpha ----------------------------------------------------------------------

struct ConstAlpha {
  __m128i value;
  explicit ConstAlpha(uint8_t a) : value(_mm_set1_epi8(static_cast<char>(a))) {}
  __m128i operator()(const Block &) const { return value; }
};

// One byte per pixel from a key plane.
struct KeyAlpha {
  const uint8_t *key;
  __m128i operator()(const Block &) const { return Load(key); }
};

struct SourceAlpha {
  __m128i operator()(const Block &b) const { return b.a; }
};

// ---- Arithmetic -------------------------------------------------------------------

// Element 0 of each row as madd weights on (u, v) lanes.
struct Weights {
  __m128i r, g, b;
};
inline Weights LoadWeights(const int16_t *rv, const int16_t *gu, const int16_t *gv,
                           const int16_t *bu) {
  return {_mm_setr_epi16(0, rv[0], 0, rv[0], 0, rv[0], 0, rv[0]),
          _mm_setr_epi16(gu[0], gv[0], gu[0], gv[0], gu[0], gv[0], gu[0], gv[0]),
          _mm_setr_epi16(bu[0], 0, bu[0], 0, bu[0], 0, bu[0], 0)};
}

// One channel of 16 pixels: luma plus the shifted weighted chroma, clamped.
template <class Reader>
inline __m128i Channel(const Block &b, __m128i w) {
  __m128i d[4];
  for (int i = 0; i < 4; ++i) {
    __m128i sum = _mm_madd_epi16(b.c[i], w);
    if constexpr (Reader::kRound != 0) sum = _mm_add_epi32(sum, _mm_set1_epi32(Reader::kRound));
    d[i] = _mm_srai_epi32(sum, Reader::kShift);
  }
  return _mm_packus_epi16(_mm_add_epi16(_mm_packs_epi32(d[0], d[1]), b.y[0]),
                          _mm_add_epi16(_mm_packs_epi32(d[2], d[3]), b.y[1]));
}

// ---- Layouts ----------------------------------------------------------------------
// Store(d, first, second, third, alpha) writes 16 pixels from the channel
// bytes in memory order.

template <bool kBlueFirst>
struct Rgb32 {
  static constexpr int kBytes = 4, kBlue = kBlueFirst;
  static void Store16(uint8_t *d, __m128i c0, __m128i c1, __m128i c2, __m128i a) {
    const __m128i lo01 = _mm_unpacklo_epi8(c0, c1), hi01 = _mm_unpackhi_epi8(c0, c1);
    const __m128i lo2a = _mm_unpacklo_epi8(c2, a), hi2a = _mm_unpackhi_epi8(c2, a);
    Store(d, _mm_unpacklo_epi16(lo01, lo2a));
    Store(d + 16, _mm_unpackhi_epi16(lo01, lo2a));
    Store(d + 32, _mm_unpacklo_epi16(hi01, hi2a));
    Store(d + 48, _mm_unpackhi_epi16(hi01, hi2a));
  }
};

// Four pixels of 4 bytes with a zero fourth byte to 12 bytes at bytes 0-11
// (bytes 12-15 zero).
inline __m128i Compact(__m128i p) {
  // Within each 64-bit half: the second pixel moves down next to the first.
  const __m128i pairs = _mm_or_si128(_mm_and_si128(p, _mm_set1_epi64x(0xFFFFFFFF)),
                                     _mm_slli_epi64(_mm_srli_epi64(p, 32), 24));
  // The upper six bytes move down next to the lower six.
  return _mm_or_si128(_mm_move_epi64(pairs), _mm_slli_si128(_mm_srli_si128(pairs, 8), 6));
}

template <bool kBlueFirst>
struct Rgb24 {
  static constexpr int kBytes = 3, kBlue = kBlueFirst;
  static void Store16(uint8_t *d, __m128i c0, __m128i c1, __m128i c2, __m128i) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i lo01 = _mm_unpacklo_epi8(c0, c1), hi01 = _mm_unpackhi_epi8(c0, c1);
    const __m128i lo2 = _mm_unpacklo_epi8(c2, zero), hi2 = _mm_unpackhi_epi8(c2, zero);
    const __m128i p0 = Compact(_mm_unpacklo_epi16(lo01, lo2)),
                  p1 = Compact(_mm_unpackhi_epi16(lo01, lo2)),
                  p2 = Compact(_mm_unpacklo_epi16(hi01, hi2)),
                  p3 = Compact(_mm_unpackhi_epi16(hi01, hi2));
    Store(d, _mm_or_si128(p0, _mm_slli_si128(p1, 12)));
    Store(d + 16, _mm_or_si128(_mm_srli_si128(p1, 4), _mm_slli_si128(p2, 8)));
    Store(d + 32, _mm_or_si128(_mm_srli_si128(p2, 8), _mm_slli_si128(p3, 4)));
  }
};

// One block of 16 pixels, read whole before it is written.
template <class Layout, class Reader, class Alpha>
inline void ToRgb(uint8_t *dst, const Reader &src, const Alpha &alpha, const Weights &w) {
  const Block b = src.Read();
  const __m128i r = Channel<Reader>(b, w.r), g = Channel<Reader>(b, w.g),
                bl = Channel<Reader>(b, w.b);
  if constexpr (Layout::kBlue) {
    Layout::Store16(dst, bl, g, r, alpha(b));
  } else {
    Layout::Store16(dst, r, g, bl, alpha(b));
  }
}

using RGB24 = Rgb24<false>;
using BGR24 = Rgb24<true>;
using RGB32 = Rgb32<false>;
using BGR32 = Rgb32<true>;

// The row shapes, in blocks of 16 pixels. Three-byte layouts take no alpha.
template <K kSlot, class Layout, class Order>
void PackedRow(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha, TCS_T4) {
  using R = PackedReader<Order>;
  const Weights w = LoadWeights(rv, gu, gv, bu);
  const ConstAlpha a(alpha);
  const auto body = [&](uint8_t *d, const uint8_t *s) { ToRgb<Layout>(d, R{s}, a, w); };
  if constexpr (Layout::kBytes == 4) {
    x86::InBlocks<kSlot, 16, R::kKeep>(body, dst, src, count, alpha, rv, gu, gv, bu);
  } else {
    x86::InBlocks<kSlot, 16, R::kKeep>(body, dst, src, count, rv, gu, gv, bu);
  }
}

// The key forms: alpha from the key plane, which the blocks read no further
// than their own pixels.
template <K kSlot, class Layout, class Order>
void PackedKeyRow(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count, TCS_T4) {
  using R = PackedReader<Order>;
  const Weights w = LoadWeights(rv, gu, gv, bu);
  x86::InBlocks<kSlot, 16, R::kKeep>(
      [&](uint8_t *d, const uint8_t *s, const uint8_t *k) {
        ToRgb<Layout>(d, R{s}, KeyAlpha{k}, w);
      },
      dst, src, key, count, rv, gu, gv, bu);
}

template <K kSlot, class Layout>
void PlanarRow(uint8_t *dst, const uint8_t *y, const uint8_t *u, const uint8_t *v, int32_t count,
               uint8_t alpha, TCS_T4) {
  const Weights w = LoadWeights(rv, gu, gv, bu);
  const ConstAlpha a(alpha);
  const auto body = [&](uint8_t *d, const uint8_t *sy, const uint8_t *su, const uint8_t *sv) {
    ToRgb<Layout>(d, PlanarReader{sy, su, sv}, a, w);
  };
  if constexpr (Layout::kBytes == 4) {
    x86::InBlocks<kSlot, 16, PlanarReader::kKeep>(body, dst, y, u, v, count, alpha, rv, gu, gv, bu);
  } else {
    x86::InBlocks<kSlot, 16, PlanarReader::kKeep>(body, dst, y, u, v, count, rv, gu, gv, bu);
  }
}

template <K kSlot, class Layout>
void YuvaRow(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  const Weights w = LoadWeights(rv, gu, gv, bu);
  x86::InBlocks<kSlot, 16, YuvaReader::kKeep>(
      [&](uint8_t *d, const uint8_t *s) { ToRgb<Layout>(d, YuvaReader{s}, SourceAlpha{}, w); }, dst,
      src, count, rv, gu, gv, bu);
}

}  // namespace
}  // namespace tqcs::sse2

// The slots. Qualified definitions: each must match its declaration exactly.
namespace tqcs {

// Packed 4:2:2 -> RGB.
void sse2::YUYV_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                            TCS_T4) {
  PackedRow<K::YUYV_2_RGB32_Row, RGB32, YUYV>(dst, src, count, alpha, rv, gu, gv, bu);
}
void sse2::YUYV_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                            TCS_T4) {
  PackedRow<K::YUYV_2_BGR32_Row, BGR32, YUYV>(dst, src, count, alpha, rv, gu, gv, bu);
}
void sse2::UYVY_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                            TCS_T4) {
  PackedRow<K::UYVY_2_RGB32_Row, RGB32, UYVY>(dst, src, count, alpha, rv, gu, gv, bu);
}
void sse2::UYVY_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, uint8_t alpha,
                            TCS_T4) {
  PackedRow<K::UYVY_2_BGR32_Row, BGR32, UYVY>(dst, src, count, alpha, rv, gu, gv, bu);
}
void sse2::YUYV_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  PackedRow<K::YUYV_2_RGB24_Row, RGB24, YUYV>(dst, src, count, 0, rv, gu, gv, bu);
}
void sse2::YUYV_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  PackedRow<K::YUYV_2_BGR24_Row, BGR24, YUYV>(dst, src, count, 0, rv, gu, gv, bu);
}
void sse2::UYVY_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  PackedRow<K::UYVY_2_RGB24_Row, RGB24, UYVY>(dst, src, count, 0, rv, gu, gv, bu);
}
void sse2::UYVY_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  PackedRow<K::UYVY_2_BGR24_Row, BGR24, UYVY>(dst, src, count, 0, rv, gu, gv, bu);
}

// Packed 4:2:2 plus key plane -> RGB32 / BGR32, alpha from the key.
void sse2::YUYV_Key_2_RGB32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count,
                                TCS_T4) {
  PackedKeyRow<K::YUYV_Key_2_RGB32_Row, RGB32, YUYV>(dst, src, key, count, rv, gu, gv, bu);
}
void sse2::YUYV_Key_2_BGR32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count,
                                TCS_T4) {
  PackedKeyRow<K::YUYV_Key_2_BGR32_Row, BGR32, YUYV>(dst, src, key, count, rv, gu, gv, bu);
}
void sse2::UYVY_Key_2_RGB32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count,
                                TCS_T4) {
  PackedKeyRow<K::UYVY_Key_2_RGB32_Row, RGB32, UYVY>(dst, src, key, count, rv, gu, gv, bu);
}
void sse2::UYVY_Key_2_BGR32_Row(uint8_t *dst, const uint8_t *src, const uint8_t *key, int32_t count,
                                TCS_T4) {
  PackedKeyRow<K::UYVY_Key_2_BGR32_Row, BGR32, UYVY>(dst, src, key, count, rv, gu, gv, bu);
}

// Planar 4:2:2 -> RGB.
void sse2::YUV422_2_RGB32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                              const uint8_t *srcV, int32_t count, uint8_t alpha, TCS_T4) {
  PlanarRow<K::YUV422_2_RGB32_Row, RGB32>(dst, srcY, srcU, srcV, count, alpha, rv, gu, gv, bu);
}
void sse2::YUV422_2_BGR32_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                              const uint8_t *srcV, int32_t count, uint8_t alpha, TCS_T4) {
  PlanarRow<K::YUV422_2_BGR32_Row, BGR32>(dst, srcY, srcU, srcV, count, alpha, rv, gu, gv, bu);
}
void sse2::YUV422_2_RGB24_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                              const uint8_t *srcV, int32_t count, TCS_T4) {
  PlanarRow<K::YUV422_2_RGB24_Row, RGB24>(dst, srcY, srcU, srcV, count, 0, rv, gu, gv, bu);
}
void sse2::YUV422_2_BGR24_Row(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                              const uint8_t *srcV, int32_t count, TCS_T4) {
  PlanarRow<K::YUV422_2_BGR24_Row, BGR24>(dst, srcY, srcU, srcV, count, 0, rv, gu, gv, bu);
}

// YUVA 4:4:4 -> RGB, rounding; 4-byte output copies the source's alpha.
void sse2::YUVA_2_RGB32_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaRow<K::YUVA_2_RGB32_Row, RGB32>(dst, src, count, rv, gu, gv, bu);
}
void sse2::YUVA_2_BGR32_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaRow<K::YUVA_2_BGR32_Row, BGR32>(dst, src, count, rv, gu, gv, bu);
}
void sse2::YUVA_2_RGB24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaRow<K::YUVA_2_RGB24_Row, RGB24>(dst, src, count, rv, gu, gv, bu);
}
void sse2::YUVA_2_BGR24_Row(uint8_t *dst, const uint8_t *src, int32_t count, TCS_T4) {
  YuvaRow<K::YUVA_2_BGR24_Row, BGR24>(dst, src, count, rv, gu, gv, bu);
}

}  // namespace tqcs
