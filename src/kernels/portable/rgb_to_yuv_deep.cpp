// Deep-colour RGB to YUV, portable tier: RGB (8-bit, or 16-bit carrying 10
// significant bits) to 16-bit YUV 4:2:2, packed or planar.
//
// Working values: an 8-bit sample is used as it is; a 16-bit sample holds a
// 10-bit value in bits 6-15 (value = sample >> 6, stored back as value << 6).
// 16-bit samples are read and written through memcpy, so no pointer needs any
// alignment.
#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs::portable {
namespace {

// Coefficient rows: coefY is laid out like the GBR luma row, so elements 2, 3,
// 4 weigh source components 0, 1, 2; coefUV holds the U weights in elements
// 0, 1, 2 and the V weights in elements 4, 5, 6. Every output rounds (+8192
// before >> 14); chroma is centred at half the range; each result is clamped
// to the value range of its depth and then moved into the top of a 16-bit
// sample. Chroma comes from the even pixel of each pair; the odd pixel's is
// dropped.

// One RGB row as working values. kStride counts samples per pixel.
template <typename In, int kStride>
struct RgbSource {
  static constexpr int kBits = sizeof(In) == 1 ? 8 : 10;
  const In *p;
  int32_t C(Index pixel, int c) const {
    return static_cast<int32_t>(Load(p, pixel * kStride + c) >> (sizeof(In) == 1 ? 0 : 6));
  }
};

template <int kBits>
struct YuvMath {
  static constexpr int32_t kMax = (1 << kBits) - 1;
  static constexpr int32_t kHalf = 1 << (kBits - 1);
  static constexpr int kUp = 16 - kBits;

  static uint32_t Out(int32_t v) { return static_cast<uint32_t>(Clamp(v, kMax)) << kUp; }
};

// Three consecutive weights w[0..2] applied to components 0, 1, 2, rounded.
template <class Src>
inline int32_t Weigh(const Src &s, Index i, const int16_t *w) {
  return (w[0] * s.C(i, 0) + w[1] * s.C(i, 1) + w[2] * s.C(i, 2) + 8192) >> 14;
}

template <class Src>
inline uint32_t LumaOf(const Src &s, Index i, const int16_t *cy) {
  return YuvMath<Src::kBits>::Out(Weigh(s, i, cy + 2));
}

template <class Src>
inline Chroma ChromaOf(const Src &s, Index i, const int16_t *cuv) {
  using M = YuvMath<Src::kBits>;
  return {M::Out(Weigh(s, i, cuv) + M::kHalf), M::Out(Weigh(s, i, cuv + 4) + M::kHalf)};
}

// count luma samples; the chroma of each pair from its even pixel. Packed
// output has ceil(count / 2) pairs, an odd last pixel written as a full pair
// carrying its own Y twice; planar output has count / 2 chroma samples per
// plane, an odd last pixel its luma only.
template <class Writer, class Src>
void RgbTo422_16(Writer dst, Src src, int32_t count, const int16_t *cy, const int16_t *cuv) {
  PixelsTo422(
      dst, count, [&](Index i) { return LumaOf(src, i, cy); },
      [&](Index i) { return ChromaOf(src, i, cuv); });
}

}  // namespace

void RGB48_2_YUYV16_Row(uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbTo422_16(PackedWriter<YUYV, uint16_t>{dst}, RgbSource<uint16_t, 3>{src}, count, coefY, coefUV);
}

void RGB48_2_UYVY16_Row(uint16_t *dst, const uint16_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbTo422_16(PackedWriter<UYVY, uint16_t>{dst}, RgbSource<uint16_t, 3>{src}, count, coefY, coefUV);
}

void RGB24_2_YUYV16_Row(uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbTo422_16(PackedWriter<YUYV, uint16_t>{dst}, RgbSource<uint8_t, 3>{src}, count, coefY, coefUV);
}

void RGB24_2_UYVY16_Row(uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbTo422_16(PackedWriter<UYVY, uint16_t>{dst}, RgbSource<uint8_t, 3>{src}, count, coefY, coefUV);
}

void RGB32_2_YUYV16_Row(uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbTo422_16(PackedWriter<YUYV, uint16_t>{dst}, RgbSource<uint8_t, 4>{src}, count, coefY, coefUV);
}

void RGB32_2_UYVY16_Row(uint16_t *dst, const uint8_t *src, int32_t count, const int16_t *coefY,
                        const int16_t *coefUV) {
  RgbTo422_16(PackedWriter<UYVY, uint16_t>{dst}, RgbSource<uint8_t, 4>{src}, count, coefY, coefUV);
}

void RGB48_2_YUV422_16_Row(uint16_t *dstY, uint16_t *dstU, uint16_t *dstV, const uint16_t *src,
                           int32_t count, const int16_t *coefY, const int16_t *coefUV) {
  RgbTo422_16(PlanarWriter{dstY, dstU, dstV}, RgbSource<uint16_t, 3>{src}, count, coefY, coefUV);
}

}  // namespace tqcs::portable
