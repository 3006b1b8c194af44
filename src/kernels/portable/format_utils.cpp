// Format utilities of the kernel table (slots 0 to 2): the pixel size of a
// format code, its class, and one packed colour value converted for a
// destination format. Single implementations, stored at start-up beside the
// tiered kernels.
#include <TQColorSpace/TQColorTables.h>

#include "kernels/kernel_slots.hpp"

namespace tqcs::portable {
namespace {

// Values of GetFormatClass. Codes 0 to 13 are classified by one switch; codes
// above 13 belong to the descriptor conversions only and are told apart by
// whether they have a pixel size at all.
enum FormatClass : int32_t {
  kClassNone = 0,           // 11, negative and unknown codes
  kClassRgb = 1,            // 0, 1, 3, 4: packed RGB, 4 or 3 bytes a pixel
  kClassYuv444 = 2,         // 2, 5: packed 4:4:4, YUVA or YUV
  kClassYuv422Packed = 3,   // 6, 7: packed 4:2:2, YUYV or UYVY
  kClassYuv422Planar = 4,   // 8: three planes, 4:2:2
  kClassYuv420Planar = 5,   // 9: three planes, 4:2:0
  kClassAlpha = 6,          // 10: one 8-bit key plane
  kClassDescriptorOnly = 7  // 12, 13 and every code above 13 that has a pixel size
};

// Clamps to 0..255 and rounds half away from zero (the value is not negative
// after the clamp, so half up).
uint32_t ToByte(float x) {
  if (!(x > 0.0f)) return 0;
  if (x >= 255.0f) return 255;
  return static_cast<uint32_t>(x + 0.5f);
}

}  // namespace

int32_t GetFormatBitsPerPixel(int32_t format) {
  switch (format) {
    case 0:
    case 1:
    case 2:
    case 12:
    case 13:
    case 1014:
    case 1015:
      return 32;
    case 3:
    case 4:
    case 5:
      return 24;
    case 6:
    case 7:
    case 1033:
      return 16;
    case 8:
    case 9:
    case 10:
      return 8;
    case 1016:
    case 1017:
    case 1018:
    case 1019:
    case 1020:
      return 64;
    case 1021:
    case 1022:
    case 1023:
      return 48;
    default:
      // Code 11 has no pixel size either; kept as it stands.
      return 0;
  }
}

int32_t GetFormatClass(int32_t format) {
  if (format > 13) return GetFormatBitsPerPixel(format) != 0 ? kClassDescriptorOnly : kClassNone;
  switch (format) {
    case 0:
    case 1:
    case 3:
    case 4:
      return kClassRgb;
    case 2:
    case 5:
      return kClassYuv444;
    case 6:
    case 7:
      return kClassYuv422Packed;
    case 8:
      return kClassYuv422Planar;
    case 9:
      return kClassYuv420Planar;
    case 10:
      return kClassAlpha;
    case 12:
    case 13:
      return kClassDescriptorOnly;
    default:
      return kClassNone;
  }
}

// The colour arrives in the byte order of format 0: R in bits 0-7, G in 8-15,
// B in 16-23; bits 24-31 (alpha) are passed through untouched. YUV results
// are laid out per destination:
//   6 (YUYV): U | Y << 8 | V << 16, 7 (UYVY): U | V << 8 | Y << 16 - the
//   order of the components after a pair's first luma byte;
//   every other YUV code: Y | U << 8 | V << 16.
uint32_t ConvertColorValue(int32_t dstFormat, int32_t matrix, uint32_t colour) {
  switch (dstFormat) {
    case 0:
    case 3:
    case 10:
      return colour;
    case 1:
    case 4:
      return (colour & 0xFF00FF00u) | ((colour & 0xFFu) << 16) | ((colour >> 16) & 0xFFu);
    default:
      break;
  }
  const float(*m)[4] = matrix == 1 ? g_matRGBA2YUVA_SD : g_matRGBA2YUVA_HD;
  const float r = static_cast<float>(colour & 0xFFu);
  const float g = static_cast<float>((colour >> 8) & 0xFFu);
  const float b = static_cast<float>((colour >> 16) & 0xFFu);
  const uint32_t y = ToByte(m[0][0] * r + m[0][1] * g + m[0][2] * b);
  const uint32_t u = ToByte(m[1][0] * r + m[1][1] * g + m[1][2] * b + 128.0f);
  const uint32_t v = ToByte(m[2][0] * r + m[2][1] * g + m[2][2] * b + 128.0f);
  const uint32_t top = colour & 0xFF000000u;
  switch (dstFormat) {
    case 6:
      return top | u | (y << 8) | (v << 16);
    case 7:
      return top | u | (v << 8) | (y << 16);
    default:
      return top | y | (u << 8) | (v << 16);
  }
}

}  // namespace tqcs::portable
