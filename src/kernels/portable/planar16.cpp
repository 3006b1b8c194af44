// 16-bit sample kernels: packing and unpacking 4:2:2 between planes and packed
// pairs with a change of sample depth, byte-order repacks of packed 4:2:2, and
// single-plane depth changes.
//
// Depth changes are plain shifts: 8-bit to 16-bit << 8, 16-bit to 8-bit >> 8,
// 10-bit values live in bits 6-15. Kept for compatibility: the 10-bit-to-byte
// kernels 48, 49 (>> 2) and 51 (>> 6) shift by the amounts they always have and
// store the low 8 bits of the shifted sample (a plain truncating cast), so a
// shifted value above 255 wraps instead of saturating. See docs/compatibility.md.
#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs::portable {
namespace {

// Depth changes as shifts (left when positive); the result is stored with a
// truncating cast.
constexpr int kCopy = 0;
constexpr int kUp8 = 8;     // 8-bit to 16-bit
constexpr int kDown8 = -8;  // 16-bit to 8-bit
constexpr int kDown2 = -2;  // 48, 49: low 8 bits of s >> 2
constexpr int kDown6 = -6;  // 51: low 8 bits of s >> 6
constexpr int kTo10 = -6;   // 16-bit to its 10-bit value
constexpr int kUp6 = 6;     // 122: out = in << 6

// One sample at a time.
template <int kShift, class D, class S>
void ShiftSamples(D *dst, const S *src, int64_t samples) {
  for (Index i = 0; i < samples; ++i) Store(dst, i, ShiftBy<kShift>(Load(src, i)));
}

}  // namespace

// 10-bit planes to 8-bit packed (see the compatibility note above). See docs/compatibility.md.
void YUV422_10Bit_2_YUYV_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                             const uint16_t *srcV, int32_t count) {
  MovePairs<kDown2>(PackedWriter<YUYV>{dst}, PlanarReader{srcY, srcU, srcV}, count);
}

void YUV422_10Bit_2_UYVY_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                             const uint16_t *srcV, int32_t count) {
  MovePairs<kDown2>(PackedWriter<UYVY>{dst}, PlanarReader{srcY, srcU, srcV}, count);
}

// 16-bit planes to 8-bit packed, top byte of each sample.
void YUV422_16_2_YUYV_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                          const uint16_t *srcV, int32_t count) {
  MovePairs<kDown8>(PackedWriter<YUYV>{dst}, PlanarReader{srcY, srcU, srcV}, count);
}

void YUV422_16_2_UYVY_Row(uint8_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                          const uint16_t *srcV, int32_t count) {
  MovePairs<kDown8>(PackedWriter<UYVY>{dst}, PlanarReader{srcY, srcU, srcV}, count);
}

// 16-bit planes to 16-bit packed, samples unchanged.
void YUV422_16_2_YUYV16_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                            const uint16_t *srcV, int32_t count) {
  MovePairs<kCopy>(PackedWriter<YUYV, uint16_t>{dst}, PlanarReader{srcY, srcU, srcV}, count);
}

void YUV422_16_2_UYVY16_Row(uint16_t *dst, const uint16_t *srcY, const uint16_t *srcU,
                            const uint16_t *srcV, int32_t count) {
  MovePairs<kCopy>(PackedWriter<UYVY, uint16_t>{dst}, PlanarReader{srcY, srcU, srcV}, count);
}

// 8-bit planes to 16-bit packed.
void YUV422_2_YUYV16_Row(uint16_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                         const uint8_t *srcV, int32_t count) {
  MovePairs<kUp8>(PackedWriter<YUYV, uint16_t>{dst}, PlanarReader{srcY, srcU, srcV}, count);
}

void YUV422_2_UYVY16_Row(uint16_t *dst, const uint8_t *srcY, const uint8_t *srcU,
                         const uint8_t *srcV, int32_t count) {
  MovePairs<kUp8>(PackedWriter<UYVY, uint16_t>{dst}, PlanarReader{srcY, srcU, srcV}, count);
}

// 16-bit packed to 8-bit planes.
void YUYV16_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint16_t *src,
                         int32_t count) {
  MovePairs<kDown8>(PlanarWriter{dstY, dstU, dstV}, PackedReader<YUYV, uint16_t>{src}, count);
}

void UYVY16_2_YUV422_Row(uint8_t *dstY, uint8_t *dstU, uint8_t *dstV, const uint16_t *src,
                         int32_t count) {
  MovePairs<kDown8>(PlanarWriter{dstY, dstU, dstV}, PackedReader<UYVY, uint16_t>{src}, count);
}

// 16-bit packed to 16-bit planes.
void UYVY16_2_YUV422_16_Row(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV, const uint16_t *src,
                            int32_t count) {
  MovePairs<kCopy>(PlanarWriter{dstY, dstU, dstV}, PackedReader<UYVY, uint16_t>{src}, count);
}

void YUYV16_2_YUV422_16_Row(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV, const uint16_t *src,
                            int32_t count) {
  MovePairs<kCopy>(PlanarWriter{dstY, dstU, dstV}, PackedReader<YUYV, uint16_t>{src}, count);
}

// 16-bit packed to 8-bit packed, same order or the other one.
void YUYV16_2_YUYV_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  MovePairs<kDown8>(PackedWriter<YUYV>{dst}, PackedReader<YUYV, uint16_t>{src}, count);
}

void YUYV16_2_UYVY_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  MovePairs<kDown8>(PackedWriter<UYVY>{dst}, PackedReader<YUYV, uint16_t>{src}, count);
}

// Single planes.
void Y10Bit_2_Y8_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  ShiftSamples<kDown6>(dst, src, count);
}

void Y16_2_Y10_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  ShiftSamples<kTo10>(dst, src, count);
}

void Y8_2_Y16_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  ShiftSamples<kUp6>(dst, src, count);
}

// count is a pixel count of a packed 16-bit 4:2:2 row, two samples (Y and one
// chroma sample) per pixel: 2 * count samples are shifted.
void Y16_2_Y10_Pairs_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  ShiftSamples<kTo10>(dst, src, 2 * int64_t{count});
}

}  // namespace tqcs::portable
