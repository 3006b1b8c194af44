// 16-bit sample kernels, SSE2: 4:2:2 between planes and packed pairs with a
// change of sample depth, 16-bit packed pairs to 8-bit packed pairs, and
// single-plane depth changes.
//
// Every sample goes through 16-bit lanes: 8-bit sources are widened first,
// depth changes are lane shifts, and byte destinations take the low 8 bits of
// each lane (a truncating cast, as the portable kernels store).
//
// Kept for compatibility: the 10-bit-to-byte kernels shift right (by 2 for
// the packed rows, by 6 for the single plane) and the byte stored is the low
// 8 bits of the shifted sample, so a value above 255 wraps. The lanes are
// masked to their low byte before any saturating pack.
#include "kernels/kernel_slots.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

// Pairs per block of the 4:2:2 kernels: 16 luma and 8 of each chroma sample.
constexpr int kPairs = 8;
// Samples per block of the single-plane kernels.
constexpr int kSamples = 16;

// A depth change of every 16-bit lane: left by kShift bits when positive,
// right when negative.
template <int kShift>
inline __m128i Shift(__m128i s) {
  if constexpr (kShift > 0) {
    return _mm_slli_epi16(s, kShift);
  } else if constexpr (kShift < 0) {
    return _mm_srli_epi16(s, -kShift);
  } else {
    return s;
  }
}

// 16 samples from p as 16-bit lanes, s[0] the first 8.
inline void Samples16(const uint16_t *p, __m128i s[2]) {
  s[0] = x86::Load(p);
  s[1] = x86::Load(p + 8);
}
inline void Samples16(const uint8_t *p, __m128i s[2]) {
  const __m128i bytes = x86::Load(p), zero = _mm_setzero_si128();
  s[0] = _mm_unpacklo_epi8(bytes, zero);
  s[1] = _mm_unpackhi_epi8(bytes, zero);
}

// 16 samples, a and b shifted by kShift, stored as D with a truncating cast.
template <int kShift>
inline void Store16(uint16_t *p, __m128i a, __m128i b) {
  x86::Store(p, Shift<kShift>(a));
  x86::Store(p + 8, Shift<kShift>(b));
}

// The low byte of every lane of a and b (a shift of 8 or more to the right
// leaves nothing above it to mask).
template <int kShift>
inline __m128i Narrow(__m128i a, __m128i b) {
  a = Shift<kShift>(a);
  b = Shift<kShift>(b);
  if constexpr (kShift > -8) {
    const __m128i low = _mm_set1_epi16(0xFF);
    a = _mm_and_si128(a, low);
    b = _mm_and_si128(b, low);
  }
  return _mm_packus_epi16(a, b);
}

template <int kShift>
inline void Store16(uint8_t *p, __m128i a, __m128i b) {
  x86::Store(p, Narrow<kShift>(a, b));
}

// 8 samples each to two rows (the U and V rows of a block), shifted by kShift.
template <int kShift>
inline void StoreHalves(uint16_t *u, uint16_t *v, __m128i a, __m128i b) {
  x86::Store(u, Shift<kShift>(a));
  x86::Store(v, Shift<kShift>(b));
}

template <int kShift>
inline void StoreHalves(uint8_t *u, uint8_t *v, __m128i a, __m128i b) {
  const __m128i both = Narrow<kShift>(a, b);
  x86::Store64(u, both);
  x86::Store64(v, _mm_unpackhi_epi64(both, both));
}

// 8 packed pairs (32 samples in row order in a[0..3]) sorted by their place
// in the pair: at[c] holds sample c of pairs 0-7. Three rounds of unpacks,
// each moving one bit of the sample's place from the lane index to the
// vector index.
inline void SortByPlace(const __m128i a[4], __m128i at[4]) {
  __m128i x[4] = {a[0], a[1], a[2], a[3]};
  for (int round = 0; round < 2; ++round) {
    const __m128i y[4] = {_mm_unpacklo_epi16(x[0], x[2]), _mm_unpacklo_epi16(x[1], x[3]),
                          _mm_unpackhi_epi16(x[0], x[2]), _mm_unpackhi_epi16(x[1], x[3])};
    for (int i = 0; i < 4; ++i) x[i] = y[i];
  }
  at[0] = _mm_unpacklo_epi32(x[0], x[1]);
  at[1] = _mm_unpackhi_epi32(x[0], x[1]);
  at[2] = _mm_unpacklo_epi32(x[2], x[3]);
  at[3] = _mm_unpackhi_epi32(x[2], x[3]);
}

// 8 pairs from planar rows as 32 samples of packed pairs in 16-bit lanes,
// out[0..3], shifted left by kPre. 16-bit rows are interleaved as they are;
// byte rows are interleaved as bytes, then widened (a shift by 8 comes free
// with the widening: the byte goes to the high half of its lane).
template <bool kChromaFirst, int kPre>
inline void LoadPairs(const uint16_t *y, const uint16_t *u, const uint16_t *v, int64_t p,
                      __m128i out[4]) {
  static_assert(kPre == 0);
  const __m128i luma[2] = {x86::Load(y + 2 * p), x86::Load(y + 2 * p + 8)};
  x86::InterleavePairs<kChromaFirst>(luma, x86::Load(u + p), x86::Load(v + p), out);
}

template <bool kChromaFirst, int kPre>
inline void LoadPairs(const uint8_t *y, const uint8_t *u, const uint8_t *v, int64_t p,
                      __m128i out[4]) {
  static_assert(kPre == 0 || kPre == 8);
  const __m128i zero = _mm_setzero_si128(), luma = x86::Load(y + 2 * p);
  const __m128i uv = _mm_unpacklo_epi8(x86::Load64(u + p), x86::Load64(v + p));
  const __m128i first = kChromaFirst ? uv : luma, second = kChromaFirst ? luma : uv;
  const __m128i bytes[2] = {_mm_unpacklo_epi8(first, second), _mm_unpackhi_epi8(first, second)};
  for (int k = 0; k < 2; ++k) {
    out[2 * k] = kPre ? _mm_unpacklo_epi8(zero, bytes[k]) : _mm_unpacklo_epi8(bytes[k], zero);
    out[2 * k + 1] = kPre ? _mm_unpackhi_epi8(zero, bytes[k]) : _mm_unpackhi_epi8(bytes[k], zero);
  }
}

// Hands the rest of a pair row to the portable routine from pair `done` on
// (nothing when no whole pair is left: an odd last pixel is not written).
template <class Tail>
inline void PairTail(int32_t count, int64_t done, Tail tail) {
  const int64_t rest = count - 2 * done;
  if (rest >= 2) tail(done, static_cast<int32_t>(rest));
}

// Planar 4:2:2 rows of S samples to packed pairs of D samples, each sample
// shifted by kShift; chroma first in each half pair when kChromaFirst (UYVY).
template <bool kChromaFirst, int kShift, auto kTail, class D, class S>
void PlanarToPacked(D *dst, const S *srcY, const S *srcU, const S *srcV, int32_t count) {
  constexpr int kPre = sizeof(S) == 1 && kShift >= 8 ? 8 : 0;
  const int64_t pairs = count / 2;
  int64_t p = 0;
  for (; p + kPairs <= pairs; p += kPairs) {
    __m128i out[4];
    LoadPairs<kChromaFirst, kPre>(srcY, srcU, srcV, p, out);
    Store16<kShift - kPre>(dst + 4 * p, out[0], out[1]);
    Store16<kShift - kPre>(dst + 4 * p + 16, out[2], out[3]);
  }
  PairTail(count, p, [&](int64_t at, int32_t rest) {
    kTail(dst + 4 * at, srcY + 2 * at, srcU + at, srcV + at, rest);
  });
}

// Packed 16-bit pairs to planar 4:2:2 rows of D samples, each sample shifted
// by kShift.
template <bool kChromaFirst, int kShift, auto kTail, class D>
void PackedToPlanar(D *dstY, D *dstU, D *dstV, const uint16_t *src, int32_t count) {
  // Places of Y0, U, Y1, V in a pair.
  constexpr int kY0 = kChromaFirst ? 1 : 0, kU = kChromaFirst ? 0 : 1, kY1 = kY0 + 2, kV = kU + 2;
  const int64_t pairs = count / 2;
  int64_t p = 0;
  for (; p + kPairs <= pairs; p += kPairs) {
    const uint16_t *s = src + 4 * p;
    const __m128i a[4] = {x86::Load(s), x86::Load(s + 8), x86::Load(s + 16), x86::Load(s + 24)};
    __m128i at[4];
    SortByPlace(a, at);
    Store16<kShift>(dstY + 2 * p, _mm_unpacklo_epi16(at[kY0], at[kY1]),
                    _mm_unpackhi_epi16(at[kY0], at[kY1]));
    StoreHalves<kShift>(dstU + p, dstV + p, at[kU], at[kV]);
  }
  PairTail(count, p, [&](int64_t at, int32_t rest) {
    kTail(dstY + 2 * at, dstU + at, dstV + at, src + 4 * at, rest);
  });
}

// Packed 16-bit pairs to packed bytes (the top byte of each sample), the
// samples of each half pair exchanged when kSwap (YUYV to UYVY).
template <bool kSwap, auto kTail>
void PackedToBytes(uint8_t *dst, const uint16_t *src, int32_t count) {
  constexpr int kBlockPairs = 4;
  const int64_t pairs = count / 2;
  int64_t p = 0;
  for (; p + kBlockPairs <= pairs; p += kBlockPairs) {
    const __m128i bytes = Narrow<-8>(x86::Load(src + 4 * p), x86::Load(src + 4 * p + 8));
    x86::Store(dst + 4 * p, kSwap ? x86::SwapBytes(bytes) : bytes);
  }
  PairTail(count, p, [&](int64_t at, int32_t rest) { kTail(dst + 4 * at, src + 4 * at, rest); });
}

// `samples` samples of one plane, each shifted by kShift, in blocks of 16;
// returns the number of samples done.
template <int kShift, class D, class S>
int64_t ShiftSamples(D *dst, const S *src, int64_t samples) {
  int64_t i = 0;
  for (; i + kSamples <= samples; i += kSamples) {
    __m128i s[2];
    Samples16(src + i, s);
    Store16<kShift>(dst + i, s[0], s[1]);
  }
  return i;
}

// A single plane of `perPixel` samples a pixel; the portable routine takes
// the pixels the blocks leave.
template <int kShift, int kPerPixel, auto kTail, class D, class S>
void ShiftPlane(D *dst, const S *src, int32_t count) {
  const int64_t samples = int64_t{count} * kPerPixel;
  const int64_t done = ShiftSamples<kShift>(dst, src, samples);
  if (done < samples) kTail(dst + done, src + done, static_cast<int32_t>(count - done / kPerPixel));
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

// 10-bit planes to 8-bit packed (see the compatibility note above).
void sse2::YUV422_10Bit_2_YUYV_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                   const uint16_t *srcV, int32_t count) {
  PlanarToPacked<false, -2, portable::YUV422_10Bit_2_YUYV_Row>(dst, srcY, srcU, srcV, count);
}

void sse2::YUV422_10Bit_2_UYVY_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                   const uint16_t *srcV, int32_t count) {
  PlanarToPacked<true, -2, portable::YUV422_10Bit_2_UYVY_Row>(dst, srcY, srcU, srcV, count);
}

// 16-bit planes to 8-bit packed, top byte of each sample.
void sse2::YUV422_16_2_YUYV_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                const uint16_t *srcV, int32_t count) {
  PlanarToPacked<false, -8, portable::YUV422_16_2_YUYV_Row>(dst, srcY, srcU, srcV, count);
}

void sse2::YUV422_16_2_UYVY_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                const uint16_t *srcV, int32_t count) {
  PlanarToPacked<true, -8, portable::YUV422_16_2_UYVY_Row>(dst, srcY, srcU, srcV, count);
}

// 16-bit planes to 16-bit packed, samples unchanged.
void sse2::YUV422_16_2_YUYV16_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                  const uint16_t *srcV, int32_t count) {
  PlanarToPacked<false, 0, portable::YUV422_16_2_YUYV16_Row>(dst, srcY, srcU, srcV, count);
}

void sse2::YUV422_16_2_UYVY16_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                  const uint16_t *srcV, int32_t count) {
  PlanarToPacked<true, 0, portable::YUV422_16_2_UYVY16_Row>(dst, srcY, srcU, srcV, count);
}

// 8-bit planes to 16-bit packed.
void sse2::YUV422_2_YUYV16_Row(uint16_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                               const uint8_t *srcV, int32_t count) {
  PlanarToPacked<false, 8, portable::YUV422_2_YUYV16_Row>(dst, srcY, srcU, srcV, count);
}

void sse2::YUV422_2_UYVY16_Row(uint16_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                               const uint8_t *srcV, int32_t count) {
  PlanarToPacked<true, 8, portable::YUV422_2_UYVY16_Row>(dst, srcY, srcU, srcV, count);
}

// 16-bit packed to 8-bit planes.
void sse2::YUYV16_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint16_t *src,
                               int32_t count) {
  PackedToPlanar<false, -8, portable::YUYV16_2_YUV422_Row>(dstY, dstU, dstV, src, count);
}

void sse2::UYVY16_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint16_t *src,
                               int32_t count) {
  PackedToPlanar<true, -8, portable::UYVY16_2_YUV422_Row>(dstY, dstU, dstV, src, count);
}

// 16-bit packed to 16-bit planes.
void sse2::UYVY16_2_YUV422_16_Row(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV,
                                  const uint16_t *src, int32_t count) {
  PackedToPlanar<true, 0, portable::UYVY16_2_YUV422_16_Row>(dstY, dstU, dstV, src, count);
}

void sse2::YUYV16_2_YUV422_16_Row(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV,
                                  const uint16_t *src, int32_t count) {
  PackedToPlanar<false, 0, portable::YUYV16_2_YUV422_16_Row>(dstY, dstU, dstV, src, count);
}

// 16-bit packed to 8-bit packed, same order or the other one.
void sse2::YUYV16_2_YUYV_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  PackedToBytes<false, portable::YUYV16_2_YUYV_Row>(dst, src, count);
}

void sse2::YUYV16_2_UYVY_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  PackedToBytes<true, portable::YUYV16_2_UYVY_Row>(dst, src, count);
}

// Single planes.
void sse2::Y10Bit_2_Y8_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  ShiftPlane<-6, 1, portable::Y10Bit_2_Y8_Row>(dst, src, count);
}

void sse2::Y16_2_Y10_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  ShiftPlane<-6, 1, portable::Y16_2_Y10_Row>(dst, src, count);
}

void sse2::Y8_2_Y16_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  ShiftPlane<6, 1, portable::Y8_2_Y16_Row>(dst, src, count);
}

// Two samples (Y and one chroma sample) a pixel of a packed 16-bit 4:2:2 row.
void sse2::Y16_2_Y10_Pairs_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  ShiftPlane<-6, 2, portable::Y16_2_Y10_Pairs_Row>(dst, src, count);
}

}  // namespace tqcs
