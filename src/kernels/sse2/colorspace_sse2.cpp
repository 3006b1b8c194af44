// The SSE2 kernel object's own operations. Each runs whole blocks in SSE2
// through the block loop (x86/in_blocks.hpp), which hands the rest of the row
// to the portable operation at the pixel where the blocks stopped, with the
// pointers advanced by the operation's extents (object_extents.hpp); the
// portable operation applies its own tail rules there.
#include "kernels/colorspace.hpp"
#include "kernels/kernel_slots.hpp"
#include "kernels/object_extents.hpp"
#include "kernels/sse2/rgb_to_yuv_8bit.hpp"
#include "kernels/sse2/v210.hpp"
#include "kernels/x86/in_blocks.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using x86::Advance;
using x86::ShiftWords;

// Stores 16-bit lanes as samples of type D: 16-bit lanes as they are, bytes
// through an unsigned saturating pack (every caller's values fit a byte).
// Two vectors: 16 samples.
template <class D>
inline void Store2(D *dst, __m128i v0, __m128i v1) {
  if constexpr (sizeof(D) == 2) {
    x86::Store(dst, v0);
    x86::Store(dst + 8, v1);
  } else {
    x86::Store(dst, _mm_packus_epi16(v0, v1));
  }
}
// One vector: 8 samples.
template <class D>
inline void Store1(D *dst, __m128i v) {
  if constexpr (sizeof(D) == 2) {
    x86::Store(dst, v);
  } else {
    x86::Store64(dst, _mm_packus_epi16(v, v));
  }
}

// ---- Ops 11, 12: the rounded average of two rows, 16 bytes ---------------
template <class T>
void AverageRows(T *dst, const T *src, int64_t srcPitch) {
  const __m128i a = x86::Load(src), c = x86::Load(Advance(src, srcPitch));
  x86::Store(dst, sizeof(T) == 1 ? _mm_avg_epu8(a, c) : _mm_avg_epu16(a, c));
}

// ---- Ops 13, 14: 4-tap interpolation, (9(b + c) - a - d + 8) >> 4, clamped --
// Bytes in 16-bit lanes: the sum stays within -510..4598.
inline __m128i Tap8(__m128i a, __m128i b, __m128i c, __m128i d) {
  const __m128i bc = _mm_add_epi16(b, c);
  const __m128i sum = _mm_sub_epi16(_mm_add_epi16(_mm_slli_epi16(bc, 3), bc), _mm_add_epi16(a, d));
  return _mm_srai_epi16(_mm_add_epi16(sum, _mm_set1_epi16(8)), 4);
}

// 16-bit samples in 32-bit lanes. Each sample is taken less 32768 so that the
// signed multiply-adds see it exactly; the offsets cancel to -32768 after the
// shift ((16 * 32768) >> 4), which the signed saturating pack turns into the
// 0..65535 clamp and the final flip of the top bit undoes.
inline __m128i Tap16(__m128i a, __m128i b, __m128i c, __m128i d) {
  const __m128i flip = _mm_set1_epi16(-32768), nine = _mm_set1_epi16(9), minus = _mm_set1_epi16(-1),
                round = _mm_set1_epi32(8);
  a = _mm_xor_si128(a, flip), b = _mm_xor_si128(b, flip);
  c = _mm_xor_si128(c, flip), d = _mm_xor_si128(d, flip);
  __m128i half[2];
  for (int k = 0; k < 2; ++k) {
    const __m128i bc = k ? _mm_unpackhi_epi16(b, c) : _mm_unpacklo_epi16(b, c);
    const __m128i ad = k ? _mm_unpackhi_epi16(a, d) : _mm_unpacklo_epi16(a, d);
    const __m128i sum = _mm_add_epi32(_mm_madd_epi16(bc, nine), _mm_madd_epi16(ad, minus));
    half[k] = _mm_srai_epi32(_mm_add_epi32(sum, round), 4);
  }
  return _mm_xor_si128(_mm_packs_epi32(half[0], half[1]), flip);
}

// 16 bytes of the new row from four rows of 16 bytes.
template <class T>
void Interpolate4Tap(T *dst, const T *src, int64_t srcPitch) {
  __m128i v[4];
  for (int r = 0; r < 4; ++r) v[r] = x86::Load(Advance(src, r * srcPitch));
  if constexpr (sizeof(T) == 2) {
    x86::Store(dst, Tap16(v[0], v[1], v[2], v[3]));
  } else {
    const __m128i zero = _mm_setzero_si128();
    __m128i lo[4], hi[4];
    for (int r = 0; r < 4; ++r) {
      lo[r] = _mm_unpacklo_epi8(v[r], zero);
      hi[r] = _mm_unpackhi_epi8(v[r], zero);
    }
    x86::Store(
        dst, _mm_packus_epi16(Tap8(lo[0], lo[1], lo[2], lo[3]), Tap8(hi[0], hi[1], hi[2], hi[3])));
  }
}

// ---- Ops 6, 7, 15 to 22: packed 4:2:2 rows to planes, 16 pixels -----------
constexpr int kPackedBlock = 16;

// 16 pixels of a packed row (32 samples) as luma (two vectors) and chroma
// (two vectors of U, V alternating), in 16-bit lanes.
template <class S, bool kUyvy>
inline void LoadPairs(const S *src, __m128i y[2], __m128i c[2]) {
  if constexpr (sizeof(S) == 1) {
    const __m128i low = _mm_set1_epi16(0xFF);
    for (int k = 0; k < 2; ++k) {
      const __m128i v = x86::Load(src + 16 * k);
      y[k] = kUyvy ? _mm_srli_epi16(v, 8) : _mm_and_si128(v, low);
      c[k] = kUyvy ? _mm_and_si128(v, low) : _mm_srli_epi16(v, 8);
    }
  } else {
    for (int k = 0; k < 2; ++k) {
      const __m128i v0 = x86::Load(src + 16 * k), v1 = x86::Load(src + 16 * k + 8);
      if (kUyvy) {
        Split16(v0, v1, c[k], y[k]);
      } else {
        Split16(v0, v1, y[k], c[k]);
      }
    }
  }
}

// Every sample moved by kShift (+8, -8 or 0); the chroma of two rows is
// averaged with rounding first. With one row (kRows 1) dstYPitch and
// srcPitch are not used.
template <class S, class D, bool kUyvy, int kShift, int kRows>
void PackedToPlanar(D *dstY, D *dstU, D *dstV, const S *src, int64_t dstYPitch, int64_t srcPitch) {
  __m128i y[2], c[2];
  for (int r = 0; r < kRows; ++r) {
    __m128i cr[2];
    LoadPairs<S, kUyvy>(Advance(src, r * srcPitch), y, r ? cr : c);
    if (r)
      for (int k = 0; k < 2; ++k) c[k] = _mm_avg_epu16(c[k], cr[k]);
    Store2(Advance(dstY, r * dstYPitch), ShiftWords<kShift>(y[0]), ShiftWords<kShift>(y[1]));
  }
  // Chroma that fits a byte (8-bit sources, or 16-bit ones going down to 8
  // bits) is split through one byte pack.
  constexpr bool kBytes = sizeof(S) == 1 || kShift < 0;
  constexpr int kAfter = kShift < 0 ? 0 : kShift;
  __m128i u, v;
  if constexpr (kBytes) {
    const __m128i bytes =
        _mm_packus_epi16(ShiftWords<kShift - kAfter>(c[0]), ShiftWords<kShift - kAfter>(c[1]));
    u = _mm_and_si128(bytes, _mm_set1_epi16(0xFF));
    v = _mm_srli_epi16(bytes, 8);
  } else {
    Split16(c[0], c[1], u, v);
  }
  Store1(dstU, ShiftWords<kAfter>(u));
  Store1(dstV, ShiftWords<kAfter>(v));
}

// ---- Ops 0, 1: planar 4:1:1 to packed 4:2:2 ------------------------------
// 16 pixels: 16 luma bytes, 4 of each chroma, every chroma pair used twice.
template <bool kUyvy>
void Yuv411ToPacked(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV) {
  const __m128i uv = _mm_unpacklo_epi8(x86::Load32(srcU), x86::Load32(srcV));
  const __m128i chroma = _mm_unpacklo_epi16(uv, uv), y = x86::Load(srcY);
  x86::Store(dst, kUyvy ? _mm_unpacklo_epi8(chroma, y) : _mm_unpacklo_epi8(y, chroma));
  x86::Store(dst + 16, kUyvy ? _mm_unpackhi_epi8(chroma, y) : _mm_unpackhi_epi8(y, chroma));
}

// ---- Op 8: per-byte Q14 gain, (s * coef[i % 8] + 8192) >> 14, clamped -----
// Blocks of 16 bytes start at multiples of 8, so lane k always takes coef[k].
inline void ScaleQ14(uint8_t *dst, const uint8_t *src, __m128i k) {
  const __m128i zero = _mm_setzero_si128(), round = _mm_set1_epi32(8192);
  const __m128i s = x86::Load(src);
  __m128i out[2];
  for (int h = 0; h < 2; ++h) {
    const __m128i v = h ? _mm_unpackhi_epi8(s, zero) : _mm_unpacklo_epi8(s, zero);
    const __m128i lo = _mm_mullo_epi16(v, k), hi = _mm_mulhi_epi16(v, k);
    const __m128i p0 = _mm_srai_epi32(_mm_add_epi32(_mm_unpacklo_epi16(lo, hi), round), 14);
    const __m128i p1 = _mm_srai_epi32(_mm_add_epi32(_mm_unpackhi_epi16(lo, hi), round), 14);
    out[h] = _mm_packs_epi32(p0, p1);
  }
  x86::Store(dst, _mm_packus_epi16(out[0], out[1]));
}

// ---- Ops 2, 3, 4: V210 and 8-bit planes ----------------------------------
// Two V210 blocks: 24 pixels, 16 words.
constexpr int kV210Pixels = 4 * kV210BlockPairs;

// 24 pixels of V210 as 8-bit values in 16-bit lanes: luma (three vectors)
// and chroma, U and V alternating (three vectors).
inline void LoadV210Planar(const uint8_t *src, __m128i y[3], __m128i c[3]) {
  __m128i s[6];
  LoadV210Block(src, s);
  LoadV210Block(src + kV210BlockBytes, s + 3);
  for (int k = 0; k < 3; ++k)
    Split16(_mm_srli_epi16(s[2 * k], 2), _mm_srli_epi16(s[2 * k + 1], 2), c[k], y[k]);
}

// 24 luma bytes.
inline void StoreLuma24(uint8_t *dstY, const __m128i y[3]) {
  x86::Store(dstY, _mm_packus_epi16(y[0], y[1]));
  x86::Store64(dstY + 16, _mm_packus_epi16(y[2], y[2]));
}

// 12 bytes of each chroma from c (U, V alternating).
inline void StoreChroma12(uint8_t *dstU, uint8_t *dstV, const __m128i c[3]) {
  __m128i u[2], v[2];
  Split16(c[0], c[1], u[0], v[0]);
  Split16(c[2], c[2], u[1], v[1]);
  const __m128i ub = _mm_packus_epi16(u[0], u[1]), vb = _mm_packus_epi16(v[0], v[1]);
  x86::Store64(dstU, ub);
  x86::Store32(dstU + 8, _mm_srli_si128(ub, 8));
  x86::Store64(dstV, vb);
  x86::Store32(dstV + 8, _mm_srli_si128(vb, 8));
}

// 24 pixels of one V210 row, or of two (src, src + srcPitch) with the chroma
// of both rows as (3 top + bottom + 2) >> 2 of the 8-bit values.
template <int kRows>
void V210ToPlanar(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                  int64_t dstYPitch, int64_t srcPitch) {
  __m128i y[3], c[3];
  LoadV210Planar(src, y, c);
  StoreLuma24(dstY, y);
  if constexpr (kRows == 2) {
    __m128i yb[3], cb[3];
    LoadV210Planar(src + srcPitch, yb, cb);
    StoreLuma24(dstY + dstYPitch, yb);
    for (int k = 0; k < 3; ++k) {
      const __m128i three = _mm_add_epi16(_mm_slli_epi16(c[k], 1), c[k]);
      c[k] = _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(three, cb[k]), _mm_set1_epi16(2)), 2);
    }
  }
  StoreChroma12(dstU, dstV, c);
}

// 24 pixels of 8-bit planes as two V210 blocks.
void PlanarToV210(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU, const uint8_t *srcV) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i u = _mm_unpacklo_epi64(x86::Load64(srcU), x86::Load32(srcU + 8));
  const __m128i v = _mm_unpacklo_epi64(x86::Load64(srcV), x86::Load32(srcV + 8));
  const __m128i y0 = x86::Load(srcY), y1 = x86::Load64(srcY + 16);
  const __m128i uv0 = _mm_unpacklo_epi8(u, v), uv1 = _mm_unpackhi_epi8(u, v);
  // U Y V Y bytes, 16 components each.
  const __m128i t[3] = {_mm_unpacklo_epi8(uv0, y0), _mm_unpackhi_epi8(uv0, y0),
                        _mm_unpacklo_epi8(uv1, y1)};
  __m128i s[6];
  for (int k = 0; k < 3; ++k) {
    s[2 * k] = _mm_unpacklo_epi8(t[k], zero);
    s[2 * k + 1] = _mm_unpackhi_epi8(t[k], zero);
  }
  StoreV210Block<4>(dst, s);
  StoreV210Block<4>(dst + kV210BlockBytes, s + 3);
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

using Op = ColorSpaceOp;

// Whole blocks by the RGB to YUV unit's luma loop, in one call.
void ColorSpaceSSE2::RGB_2_YUV_Matrix(uint8_t *dst, const uint8_t *src, const int16_t *coef,
                                      int32_t count) {
  constexpr int kBlock = 16;  // RGB32_Luma_Blocks' block
  const auto luma = x86::AllBlocks([coef](uint8_t *d, const uint8_t *s, int64_t blocks) {
    sse2::RGB32_Luma_Blocks(d, s, coef, static_cast<int32_t>(kBlock * blocks));
  });
  x86::InBlocks<Op::RGB_2_YUV_Matrix, kBlock>(*this, luma, dst, src, coef, count);
}

void ColorSpaceSSE2::Scale_Q14(uint8_t *dst, const uint8_t *src, const int16_t *coef,
                               int32_t count) {
  // Made only when a block runs: a short row may not reach every coefficient.
  const auto scale = x86::Prepare([coef] {
    return [k = x86::Load(coef)](uint8_t *d, const uint8_t *s) { sse2::ScaleQ14(d, s, k); };
  });
  x86::InBlocks<Op::Scale_Q14, 16>(*this, scale, dst, src, coef, count);
}

// Ops 9, 10 are the SSE2 RGB48 to packed 16-bit 4:2:2 row kernels.
void ColorSpaceSSE2::RGB48_2_YUYV16_Matrix(uint16_t *dst, const uint16_t *src, const int16_t *coefY,
                                           const int16_t *coefUV, int32_t count) {
  sse2::RGB48_2_YUYV16_Row(dst, src, count, coefY, coefUV);
}
void ColorSpaceSSE2::RGB48_2_UYVY16_Matrix(uint16_t *dst, const uint16_t *src, const int16_t *coefY,
                                           const int16_t *coefUV, int32_t count) {
  sse2::RGB48_2_UYVY16_Row(dst, src, count, coefY, coefUV);
}

// Ops 0, 1.
#define TQCS_YUV411_TO_PACKED(Name, kUyvy)                                                  \
  void ColorSpaceSSE2::Name(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,         \
                            const uint8_t *srcV, int32_t count) {                           \
    x86::InBlocks<Op::Name, 16>(                                                            \
        *this, [](auto... p) { sse2::Yuv411ToPacked<kUyvy>(p...); }, dst, srcY, srcU, srcV, \
        count);                                                                             \
  }
TQCS_YUV411_TO_PACKED(YUV411_2_YUYV, false)
TQCS_YUV411_TO_PACKED(YUV411_2_UYVY, true)
#undef TQCS_YUV411_TO_PACKED

// Ops 2, 3, 4: V210 in whole groups of 24 pixels (64 bytes).
void ColorSpaceSSE2::V210_2_YUV422(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint8_t *src,
                                   int32_t count) {
  x86::InBlocks<Op::V210_2_YUV422, sse2::kV210Pixels>(
      *this, [](auto... p) { sse2::V210ToPlanar<1>(p..., 0, 0); }, dstY, dstU, dstV, src, count);
}
void ColorSpaceSSE2::YUV422_2_V210(uint8_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                                   const uint8_t *srcV, int32_t count) {
  x86::InBlocks<Op::YUV422_2_V210, sse2::kV210Pixels>(
      *this, [](auto... p) { sse2::PlanarToV210(p...); }, dst, srcY, srcU, srcV, count);
}
void ColorSpaceSSE2::V210_2_YUV420(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, uint8_t *dstV,
                                   const uint8_t *src, int64_t srcPitch, int32_t count) {
  x86::InBlocks<Op::V210_2_YUV420, sse2::kV210Pixels>(
      *this, [=](auto... p) { sse2::V210ToPlanar<2>(p..., dstYPitch, srcPitch); }, dstY, dstYPitch,
      dstU, dstV, src, srcPitch, count);
}

// Ops 11 to 14: one pitched source row (or four) to one row, 16 bytes a block.
#define TQCS_ROWS_TO_ROW(Name, T, Block)                                                           \
  void ColorSpaceSSE2::Name(T *dst, const T *src, int64_t srcPitch, int32_t count) {               \
    x86::InBlocks<Op::Name, 16 / sizeof(T)>(                                                       \
        *this, [srcPitch](auto... p) { sse2::Block(p..., srcPitch); }, dst, src, srcPitch, count); \
  }
TQCS_ROWS_TO_ROW(YUV422_2_YUV420_UV_Avg, uint8_t, AverageRows)
TQCS_ROWS_TO_ROW(YUV422_16_2_YUV420_16_UV_Avg, uint16_t, AverageRows)
TQCS_ROWS_TO_ROW(UV_Interpolate_4Tap, uint8_t, Interpolate4Tap)
TQCS_ROWS_TO_ROW(UV_Interpolate_4Tap_16, uint16_t, Interpolate4Tap)
#undef TQCS_ROWS_TO_ROW

// Ops 6, 7: one packed row to 16-bit planes.
#define TQCS_PACKED_ROW_TO_422(Name, kUyvy)                                                        \
  void ColorSpaceSSE2::Name(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV, const uint8_t *src,    \
                            int32_t count) {                                                       \
    x86::InBlocks<Op::Name, sse2::kPackedBlock>(                                                   \
        *this,                                                                                     \
        [](auto... p) { sse2::PackedToPlanar<uint8_t, uint16_t, kUyvy, 8, 1>(p..., 0, 0); }, dstY, \
        dstU, dstV, src, count);                                                                   \
  }
TQCS_PACKED_ROW_TO_422(YUYV_2_YUV422_16, false)
TQCS_PACKED_ROW_TO_422(UYVY_2_YUV422_16, true)
#undef TQCS_PACKED_ROW_TO_422

// Ops 15 to 22: two packed rows to two luma rows and one chroma row; one
// pattern, instantiated by source and destination depth, pair order and
// depth change.
#define TQCS_PACKED_ROWS_TO_420(Name, S, D, kUyvy, kShift)                              \
  void ColorSpaceSSE2::Name(D *dstY, int64_t dstYPitch, D *dstU, D *dstV, const S *src, \
                            int64_t srcPitch, int32_t count) {                          \
    x86::InBlocks<Op::Name, sse2::kPackedBlock>(                                        \
        *this,                                                                          \
        [=](auto... p) {                                                                \
          sse2::PackedToPlanar<S, D, kUyvy, kShift, 2>(p..., dstYPitch, srcPitch);      \
        },                                                                              \
        dstY, dstYPitch, dstU, dstV, src, srcPitch, count);                             \
  }
TQCS_PACKED_ROWS_TO_420(YUYV_2_YUV420_Avg, uint8_t, uint8_t, false, 0)
TQCS_PACKED_ROWS_TO_420(UYVY_2_YUV420_Avg, uint8_t, uint8_t, true, 0)
TQCS_PACKED_ROWS_TO_420(YUYV16_2_YUV420_16_Avg, uint16_t, uint16_t, false, 0)
TQCS_PACKED_ROWS_TO_420(UYVY16_2_YUV420_16_Avg, uint16_t, uint16_t, true, 0)
TQCS_PACKED_ROWS_TO_420(YUYV_2_YUV420_16, uint8_t, uint16_t, false, 8)
TQCS_PACKED_ROWS_TO_420(UYVY_2_YUV420_16, uint8_t, uint16_t, true, 8)
TQCS_PACKED_ROWS_TO_420(YUYV16_2_YUV420, uint16_t, uint8_t, false, -8)
TQCS_PACKED_ROWS_TO_420(UYVY16_2_YUV420, uint16_t, uint8_t, true, -8)
#undef TQCS_PACKED_ROWS_TO_420

}  // namespace tqcs
