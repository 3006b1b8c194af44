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
// masked to their low byte before any saturating pack. See docs/compatibility.md.
#include "kernels/kernel_slots.hpp"
#include "kernels/x86/in_blocks.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

// Pairs per block of the 4:2:2 kernels: 16 luma and 8 of each chroma sample.
constexpr int kPairs = 8;
// Samples per block of the single-plane kernels.
constexpr int kSamples = 16;

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
  x86::Store(p, x86::ShiftWords<kShift>(a));
  x86::Store(p + 8, x86::ShiftWords<kShift>(b));
}

// The low byte of every lane of a and b (a shift of 8 or more to the right
// leaves nothing above it to mask).
template <int kShift>
inline __m128i Narrow(__m128i a, __m128i b) {
  a = x86::ShiftWords<kShift>(a);
  b = x86::ShiftWords<kShift>(b);
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
  x86::Store(u, x86::ShiftWords<kShift>(a));
  x86::Store(v, x86::ShiftWords<kShift>(b));
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
inline void LoadPairs(const uint16_t *y, const uint16_t *u, const uint16_t *v, __m128i out[4]) {
  static_assert(kPre == 0);
  const __m128i luma[2] = {x86::Load(y), x86::Load(y + 8)};
  x86::InterleavePairs<kChromaFirst>(luma, x86::Load(u), x86::Load(v), out);
}

template <bool kChromaFirst, int kPre>
inline void LoadPairs(const uint8_t *y, const uint8_t *u, const uint8_t *v, __m128i out[4]) {
  static_assert(kPre == 0 || kPre == 8);
  const __m128i zero = _mm_setzero_si128(), luma = x86::Load(y);
  const __m128i uv = _mm_unpacklo_epi8(x86::Load64(u), x86::Load64(v));
  const __m128i first = kChromaFirst ? uv : luma, second = kChromaFirst ? luma : uv;
  const __m128i bytes[2] = {_mm_unpacklo_epi8(first, second), _mm_unpackhi_epi8(first, second)};
  for (int k = 0; k < 2; ++k) {
    out[2 * k] = kPre ? _mm_unpacklo_epi8(zero, bytes[k]) : _mm_unpacklo_epi8(bytes[k], zero);
    out[2 * k + 1] = kPre ? _mm_unpackhi_epi8(zero, bytes[k]) : _mm_unpackhi_epi8(bytes[k], zero);
  }
}

// Planar 4:2:2 rows of S samples to packed pairs of D samples, each sample
// shifted by kShift; chroma first in each half pair when kChromaFirst (UYVY).
template <K kSlot, bool kChromaFirst, int kShift, class D, class S>
void PlanarToPacked(D *dst, const S *srcY, const S *srcU, const S *srcV, int32_t count) {
  constexpr int kPre = sizeof(S) == 1 && kShift >= 8 ? 8 : 0;
  x86::InBlocks<kSlot, 2 * kPairs>(
      [](D *d, const S *y, const S *u, const S *v) {
        __m128i out[4];
        LoadPairs<kChromaFirst, kPre>(y, u, v, out);
        Store16<kShift - kPre>(d, out[0], out[1]);
        Store16<kShift - kPre>(d + 16, out[2], out[3]);
      },
      dst, srcY, srcU, srcV, count);
}

// Packed 16-bit pairs to planar 4:2:2 rows of D samples, each sample shifted
// by kShift.
template <K kSlot, bool kChromaFirst, int kShift, class D>
void PackedToPlanar(D *dstY, D *dstU, D *dstV, const uint16_t *src, int32_t count) {
  // Places of Y0, U, Y1, V in a pair.
  constexpr int kY0 = kChromaFirst ? 1 : 0, kU = kChromaFirst ? 0 : 1, kY1 = kY0 + 2, kV = kU + 2;
  x86::InBlocks<kSlot, 2 * kPairs>(
      [](D *y, D *u, D *v, const uint16_t *s) {
        const __m128i a[4] = {x86::Load(s), x86::Load(s + 8), x86::Load(s + 16), x86::Load(s + 24)};
        __m128i at[4];
        SortByPlace(a, at);
        Store16<kShift>(y, _mm_unpacklo_epi16(at[kY0], at[kY1]),
                        _mm_unpackhi_epi16(at[kY0], at[kY1]));
        StoreHalves<kShift>(u, v, at[kU], at[kV]);
      },
      dstY, dstU, dstV, src, count);
}

// Packed 16-bit pairs to packed bytes (the top byte of each sample), the
// samples of each half pair exchanged when kSwap (YUYV to UYVY). Blocks of
// four pairs.
template <K kSlot, bool kSwap>
void PackedToBytes(uint8_t *dst, const uint16_t *src, int32_t count) {
  x86::InBlocks<kSlot, 8>(
      [](uint8_t *d, const uint16_t *s) {
        const __m128i bytes = Narrow<-8>(x86::Load(s), x86::Load(s + 8));
        x86::Store(d, kSwap ? x86::SwapBytes(bytes) : bytes);
      },
      dst, src, count);
}

// A single plane of kPerPixel samples a pixel, each shifted by kShift, in
// blocks of 16 samples.
template <K kSlot, int kShift, int kPerPixel, class D, class S>
void ShiftPlane(D *dst, const S *src, int32_t count) {
  x86::InBlocks<kSlot, kSamples / kPerPixel>(
      [](D *d, const S *s) {
        __m128i v[2];
        Samples16(s, v);
        Store16<kShift>(d, v[0], v[1]);
      },
      dst, src, count);
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

// 10-bit planes to 8-bit packed (see the compatibility note above). See docs/compatibility.md.
void sse2::YUV422_10Bit_2_YUYV_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                   const uint16_t *srcV, int32_t count) {
  PlanarToPacked<K::YUV422_10Bit_2_YUYV_Row, false, -2>(dst, srcY, srcU, srcV, count);
}

void sse2::YUV422_10Bit_2_UYVY_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                   const uint16_t *srcV, int32_t count) {
  PlanarToPacked<K::YUV422_10Bit_2_UYVY_Row, true, -2>(dst, srcY, srcU, srcV, count);
}

// 16-bit planes to 8-bit packed, top byte of each sample.
void sse2::YUV422_16_2_YUYV_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                const uint16_t *srcV, int32_t count) {
  PlanarToPacked<K::YUV422_16_2_YUYV_Row, false, -8>(dst, srcY, srcU, srcV, count);
}

void sse2::YUV422_16_2_UYVY_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                const uint16_t *srcV, int32_t count) {
  PlanarToPacked<K::YUV422_16_2_UYVY_Row, true, -8>(dst, srcY, srcU, srcV, count);
}

// 16-bit planes to 16-bit packed, samples unchanged.
void sse2::YUV422_16_2_YUYV16_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                  const uint16_t *srcV, int32_t count) {
  PlanarToPacked<K::YUV422_16_2_YUYV16_Row, false, 0>(dst, srcY, srcU, srcV, count);
}

void sse2::YUV422_16_2_UYVY16_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                                  const uint16_t *srcV, int32_t count) {
  PlanarToPacked<K::YUV422_16_2_UYVY16_Row, true, 0>(dst, srcY, srcU, srcV, count);
}

// 8-bit planes to 16-bit packed.
void sse2::YUV422_2_YUYV16_Row(uint16_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                               const uint8_t *srcV, int32_t count) {
  PlanarToPacked<K::YUV422_2_YUYV16_Row, false, 8>(dst, srcY, srcU, srcV, count);
}

void sse2::YUV422_2_UYVY16_Row(uint16_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                               const uint8_t *srcV, int32_t count) {
  PlanarToPacked<K::YUV422_2_UYVY16_Row, true, 8>(dst, srcY, srcU, srcV, count);
}

// 16-bit packed to 8-bit planes.
void sse2::YUYV16_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint16_t *src,
                               int32_t count) {
  PackedToPlanar<K::YUYV16_2_YUV422_Row, false, -8>(dstY, dstU, dstV, src, count);
}

void sse2::UYVY16_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint16_t *src,
                               int32_t count) {
  PackedToPlanar<K::UYVY16_2_YUV422_Row, true, -8>(dstY, dstU, dstV, src, count);
}

// 16-bit packed to 16-bit planes.
void sse2::UYVY16_2_YUV422_16_Row(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV,
                                  const uint16_t *src, int32_t count) {
  PackedToPlanar<K::UYVY16_2_YUV422_16_Row, true, 0>(dstY, dstU, dstV, src, count);
}

void sse2::YUYV16_2_YUV422_16_Row(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV,
                                  const uint16_t *src, int32_t count) {
  PackedToPlanar<K::YUYV16_2_YUV422_16_Row, false, 0>(dstY, dstU, dstV, src, count);
}

// 16-bit packed to 8-bit packed, same order or the other one.
void sse2::YUYV16_2_YUYV_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  PackedToBytes<K::YUYV16_2_YUYV_Row, false>(dst, src, count);
}

void sse2::YUYV16_2_UYVY_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  PackedToBytes<K::YUYV16_2_UYVY_Row, true>(dst, src, count);
}

// Single planes.
void sse2::Y10Bit_2_Y8_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  ShiftPlane<K::Y10Bit_2_Y8_Row, -6, 1>(dst, src, count);
}

void sse2::Y16_2_Y10_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  ShiftPlane<K::Y16_2_Y10_Row, -6, 1>(dst, src, count);
}

void sse2::Y8_2_Y16_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  ShiftPlane<K::Y8_2_Y16_Row, 6, 1>(dst, src, count);
}

// Two samples (Y and one chroma sample) a pixel of a packed 16-bit 4:2:2 row.
void sse2::Y16_2_Y10_Pairs_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  ShiftPlane<K::Y16_2_Y10_Pairs_Row, -6, 2>(dst, src, count);
}

}  // namespace tqcs
