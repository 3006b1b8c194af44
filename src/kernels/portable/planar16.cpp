// 16-bit sample kernels: packing and unpacking 4:2:2 between planes and packed
// pairs with a change of sample depth, byte-order repacks of packed 4:2:2, and
// single-plane depth changes.
//
// Depth changes are plain shifts: 8-bit to 16-bit << 8, 16-bit to 8-bit >> 8,
// 10-bit values live in bits 6-15. Kept for compatibility: the 10-bit-to-byte
// kernels 48, 49 (>> 2) and 51 (>> 6) shift by the amounts they always have and
// store the low 8 bits of the shifted sample (a plain truncating cast), so a
// shifted value above 255 wraps instead of saturating.
#include <cstring>

#include "kernels/kernel_slots.hpp"

namespace tqcs::portable {
namespace {

// Samples go through memcpy: rows may start at any address.
template <class T>
T Load(const T *row, int64_t i) {
  T v;
  std::memcpy(&v, reinterpret_cast<const char *>(row) + i * int64_t{sizeof(T)}, sizeof v);
  return v;
}

template <class T>
void Store(T *row, int64_t i, T v) {
  std::memcpy(reinterpret_cast<char *>(row) + i * int64_t{sizeof(T)}, &v, sizeof v);
}

// A sample depth change: Src in, Dst out.
template <class S, class D, int kLeft, int kRight>
struct Shift {
  using Src = S;
  using Dst = D;
  static D Cvt(S s) { return static_cast<D>((static_cast<uint32_t>(s) << kLeft) >> kRight); }
};
using Copy16 = Shift<uint16_t, uint16_t, 0, 0>;
using Up8 = Shift<uint8_t, uint16_t, 8, 0>;    // 8-bit to 16-bit
using Down8 = Shift<uint16_t, uint8_t, 0, 8>;  // 16-bit to 8-bit
using Down2 = Shift<uint16_t, uint8_t, 0, 2>;  // 48, 49: low 8 bits of s >> 2
using Down6 = Shift<uint16_t, uint8_t, 0, 6>;  // 51: low 8 bits of s >> 6
using To10 = Shift<uint16_t, uint16_t, 0, 6>;  // 16-bit to its 10-bit value
using Up6 = Shift<uint8_t, uint16_t, 6, 0>;    // 122: out = in << 6

// Sample positions in a packed 4:2:2 pair.
struct Yuyv {
  static constexpr int kY0 = 0, kU = 1, kY1 = 2, kV = 3;
};
struct Uyvy {
  static constexpr int kU = 0, kY0 = 1, kV = 2, kY1 = 3;
};

// Planar 4:2:2 to packed pairs. The chroma planes hold count / 2 samples, so
// count / 2 whole pairs are written and an odd last pixel is not.
template <class Order, class C>
void PlanarToPacked(typename C::Dst *dst, const typename C::Src *srcY, const typename C::Src *srcU,
                    const typename C::Src *srcV, int32_t count) {
  const int32_t pairs = count / 2;
  for (int32_t k = 0; k < pairs; ++k) {
    const int64_t q = 4 * int64_t{k};
    Store(dst, q + Order::kY0, C::Cvt(Load(srcY, 2 * int64_t{k})));
    Store(dst, q + Order::kU, C::Cvt(Load(srcU, k)));
    Store(dst, q + Order::kY1, C::Cvt(Load(srcY, 2 * int64_t{k} + 1)));
    Store(dst, q + Order::kV, C::Cvt(Load(srcV, k)));
  }
}

// Packed pairs to planar 4:2:2, count / 2 whole pairs.
template <class Order, class C>
void PackedToPlanar(typename C::Dst *dstY, typename C::Dst *dstU, typename C::Dst *dstV,
                    const typename C::Src *src, int32_t count) {
  const int32_t pairs = count / 2;
  for (int32_t k = 0; k < pairs; ++k) {
    const int64_t q = 4 * int64_t{k};
    Store(dstY, 2 * int64_t{k}, C::Cvt(Load(src, q + Order::kY0)));
    Store(dstY, 2 * int64_t{k} + 1, C::Cvt(Load(src, q + Order::kY1)));
    Store(dstU, k, C::Cvt(Load(src, q + Order::kU)));
    Store(dstV, k, C::Cvt(Load(src, q + Order::kV)));
  }
}

// Packed pairs to packed pairs of another order or depth, count / 2 pairs.
template <class From, class To, class C>
void Repack(typename C::Dst *dst, const typename C::Src *src, int32_t count) {
  const int32_t pairs = count / 2;
  for (int32_t k = 0; k < pairs; ++k) {
    const int64_t q = 4 * int64_t{k};
    Store(dst, q + To::kY0, C::Cvt(Load(src, q + From::kY0)));
    Store(dst, q + To::kU, C::Cvt(Load(src, q + From::kU)));
    Store(dst, q + To::kY1, C::Cvt(Load(src, q + From::kY1)));
    Store(dst, q + To::kV, C::Cvt(Load(src, q + From::kV)));
  }
}

// One sample at a time.
template <class C>
void MapSamples(typename C::Dst *dst, const typename C::Src *src, int64_t samples) {
  for (int64_t i = 0; i < samples; ++i) Store(dst, i, C::Cvt(Load(src, i)));
}

}  // namespace

// 10-bit planes to 8-bit packed (see the compatibility note above).
void YUV422_10Bit_2_YUYV_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                             const uint16_t *srcV, int32_t count) {
  PlanarToPacked<Yuyv, Down2>(dst, srcY, srcU, srcV, count);
}

void YUV422_10Bit_2_UYVY_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                             const uint16_t *srcV, int32_t count) {
  PlanarToPacked<Uyvy, Down2>(dst, srcY, srcU, srcV, count);
}

// 16-bit planes to 8-bit packed, top byte of each sample.
void YUV422_16_2_YUYV_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                          const uint16_t *srcV, int32_t count) {
  PlanarToPacked<Yuyv, Down8>(dst, srcY, srcU, srcV, count);
}

void YUV422_16_2_UYVY_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                          const uint16_t *srcV, int32_t count) {
  PlanarToPacked<Uyvy, Down8>(dst, srcY, srcU, srcV, count);
}

// 16-bit planes to 16-bit packed, samples unchanged.
void YUV422_16_2_YUYV16_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                            const uint16_t *srcV, int32_t count) {
  PlanarToPacked<Yuyv, Copy16>(dst, srcY, srcU, srcV, count);
}

void YUV422_16_2_UYVY16_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                            const uint16_t *srcV, int32_t count) {
  PlanarToPacked<Uyvy, Copy16>(dst, srcY, srcU, srcV, count);
}

// 8-bit planes to 16-bit packed.
void YUV422_2_YUYV16_Row(uint16_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                         const uint8_t *srcV, int32_t count) {
  PlanarToPacked<Yuyv, Up8>(dst, srcY, srcU, srcV, count);
}

void YUV422_2_UYVY16_Row(uint16_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                         const uint8_t *srcV, int32_t count) {
  PlanarToPacked<Uyvy, Up8>(dst, srcY, srcU, srcV, count);
}

// 16-bit packed to 8-bit planes.
void YUYV16_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint16_t *src,
                         int32_t count) {
  PackedToPlanar<Yuyv, Down8>(dstY, dstU, dstV, src, count);
}

void UYVY16_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint16_t *src,
                         int32_t count) {
  PackedToPlanar<Uyvy, Down8>(dstY, dstU, dstV, src, count);
}

// 16-bit packed to 16-bit planes.
void UYVY16_2_YUV422_16_Row(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV, const uint16_t *src,
                            int32_t count) {
  PackedToPlanar<Uyvy, Copy16>(dstY, dstU, dstV, src, count);
}

void YUYV16_2_YUV422_16_Row(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV, const uint16_t *src,
                            int32_t count) {
  PackedToPlanar<Yuyv, Copy16>(dstY, dstU, dstV, src, count);
}

// 16-bit packed to 8-bit packed, same order or the other one.
void YUYV16_2_YUYV_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  Repack<Yuyv, Yuyv, Down8>(dst, src, count);
}

void YUYV16_2_UYVY_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  Repack<Yuyv, Uyvy, Down8>(dst, src, count);
}

// Single planes.
void Y10Bit_2_Y8_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  MapSamples<Down6>(dst, src, count);
}

void Y16_2_Y10_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  MapSamples<To10>(dst, src, count);
}

void Y8_2_Y16_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  MapSamples<Up6>(dst, src, count);
}

// count is a pixel count of a packed 16-bit 4:2:2 row, two samples (Y and one
// chroma sample) per pixel: 2 * count samples are shifted.
void Y16_2_Y10_Pairs_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  MapSamples<To10>(dst, src, 2 * int64_t{count});
}

}  // namespace tqcs::portable
