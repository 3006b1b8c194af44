// Full-range / video-range scaling of 8-bit samples (slots 14 and 15), format
// kept. Both share one body: the pixel format code picks per-byte coefficient
// tables, TQMemProc does the arithmetic.
#include "base/state.hpp"
#include "frame/views.hpp"
#include "video/general.hpp"

namespace tqcs::video {
namespace {

// Per byte position of a 4-byte group (a 32-bit pixel or two packed 4:2:2
// pixels): entries 0-3 compress (full to video range), 4-7 expand. Gains are
// Q14, offsets 1/32 units. Luma, RGB and alpha: 219/255 and +16, inverse
// 255/219 and -16 x 255/219; chroma: 224/255 and 128 x 31/255, inverse 255/224
// and -128 x 31/224.
struct Coefficients {
  int16_t gain[8];
  int16_t offset[8];
};

constexpr int16_t kLumaGain = 14071, kChromaGain = 14392;
constexpr int16_t kLumaGainInv = 19077, kChromaGainInv = 18651;
constexpr int16_t kLumaOffset = 512, kChromaOffset = 498;
constexpr int16_t kLumaOffsetInv = -596, kChromaOffsetInv = -567;

// A table from the chroma positions of the group (bit i set: byte i is chroma).
constexpr Coefficients Table(unsigned chroma) {
  Coefficients c{};
  for (unsigned i = 0; i < 4; ++i) {
    const bool ch = (chroma >> i) & 1;
    c.gain[i] = ch ? kChromaGain : kLumaGain;
    c.gain[4 + i] = ch ? kChromaGainInv : kLumaGainInv;
    c.offset[i] = ch ? kChromaOffset : kLumaOffset;
    c.offset[4 + i] = ch ? kChromaOffsetInv : kLumaOffsetInv;
  }
  return c;
}

constexpr Coefficients kRGB = Table(0b0000);   // codes 0, 1, 3, 4
constexpr Coefficients kYUVA = Table(0b0110);  // code 2: Y U V A
constexpr Coefficients kYUYV = Table(0b1010);  // code 6: Y U Y V
constexpr Coefficients kUYVY = Table(0b0101);  // code 7: U Y V Y

enum class Way { kNone, kPixels32, kPacked422, kBytes24 };
struct Scaling {
  Way way;
  const Coefficients *table;
};

// By format code 0 to 7. YUV (5), the planar formats and Alpha have no range
// scaling, and neither has any other code.
constexpr Scaling kByFormat[] = {{Way::kPixels32, &kRGB},   {Way::kPixels32, &kRGB},
                                 {Way::kPixels32, &kYUVA},  {Way::kBytes24, &kRGB},
                                 {Way::kBytes24, &kRGB},    {Way::kNone, nullptr},
                                 {Way::kPacked422, &kYUYV}, {Way::kPacked422, &kUYVY}};

void Scale(bool expand, uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
           int32_t format, int32_t width, int32_t height, uint8_t flip) {
  // Silent checks. The pitches are compared with the width in pixels, not in
  // bytes: kept for compatibility. See docs/compatibility.md.
  if (!dst || dstPitch < width || !src || srcPitch < width || format == INT32_MAX || width < 1 ||
      height <= 0)
    return;
  if (format < 0 || format >= static_cast<int32_t>(std::size(kByFormat))) return;
  const Scaling s = kByFormat[format];
  if (s.way == Way::kNone) return;
  const int half = expand ? 4 : 0;
  const int16_t *gain = s.table->gain + half;
  const int16_t *offset = s.table->offset + half;
  TMP_PixelTable &pixel = *g_pMemProcRoot->pPixel;
  switch (s.way) {
    case Way::kPixels32:
      pixel.TMP_Scale_32(dst, dstPitch, src, srcPitch, gain, offset, width, height, flip);
      return;
    case Way::kPacked422:
      // Rows of two bytes a pixel; this routine takes its width in bytes.
      pixel.TMP_Scale_YUV16(dst, dstPitch, src, srcPitch, gain, offset, Mul32(2, width), height,
                            flip);
      return;
    case Way::kBytes24: {
      Plane out{dst, dstPitch};
      if (flip) out = frame::UpsideDown(out, height);
      const int32_t rowBytes = Mul32(3, width);
      const bool contiguous = out.pitch == srcPitch && srcPitch == rowBytes;
      frame::WalkFrame(Planes<1>{out}, Planes<1>{Plane{Bytes(src), srcPitch}}, rowBytes, height,
                       contiguous && frame::FitsOneCall(width, height, 3),
                       [&](uint8_t *const *d, uint8_t *const *s, int32_t n) {
                         pixel.TMP_Scale_Run(d[0], s[0], gain[0], offset[0], n);
                       });
      return;
    }
    case Way::kNone:
      return;
  }
}

}  // namespace

void TCS_RangeCompressFrame(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
                            int32_t format, int32_t width, int32_t height, uint8_t flip) {
  Scale(false, dst, dstPitch, src, srcPitch, format, width, height, flip);
}

void TCS_RangeExpandFrame(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
                          int32_t format, int32_t width, int32_t height, uint8_t flip) {
  Scale(true, dst, dstPitch, src, srcPitch, format, width, height, flip);
}

}  // namespace tqcs::video
