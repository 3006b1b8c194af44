// Format utilities (kernel slots 0 to 2) through the kernel table of every
// level. Expected pixel sizes and classes come from lists of codes; colour
// values from the RGB-to-YUV matrix rows evaluated in double precision, and a
// few colours worked out by hand.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <random>
#include <set>
#include <vector>

#include "support/buffers.hpp"

namespace {

class FormatUtils : public ::testing::TestWithParam<uint32_t> {
 protected:
  const TCS_KernelTable &table() const { return tqcs::test::KernelTableForLevel(GetParam()); }
};

int ExpectedBits(int32_t code) {
  const std::set<int32_t> b32 = {0, 1, 2, 12, 13, 1014, 1015}, b24 = {3, 4, 5}, b16 = {6, 7, 1033},
                          b8 = {8, 9, 10};
  if (b32.count(code)) return 32;
  if (b24.count(code)) return 24;
  if (b16.count(code)) return 16;
  if (b8.count(code)) return 8;
  if (code >= 1016 && code <= 1020) return 64;
  if (code >= 1021 && code <= 1023) return 48;
  return 0;
}

// Every code from -20 to 1100 and the extremes; 11 has no size. Classes: 0
// none, 1 RGB, 2 packed 4:4:4, 3 packed 4:2:2, 4 planar 4:2:2, 5 planar 4:2:0,
// 6 key plane, 7 a format of the descriptor conversions only; above 13 the
// class follows from whether the code has a pixel size.
TEST_P(FormatUtils, BitsPerPixelAndClass) {
  std::vector<int32_t> codes = {INT32_MIN, INT32_MIN + 1, -1024, INT32_MAX, INT32_MAX - 1};
  for (int32_t c = -20; c <= 1100; ++c) codes.push_back(c);
  const int32_t byCode[14] = {1, 1, 2, 1, 1, 2, 3, 3, 4, 5, 6, 0, 7, 7};
  for (int32_t code : codes) {
    EXPECT_EQ(table().GetFormatBitsPerPixel(code), ExpectedBits(code)) << code;
    const int32_t cls = code < 0 ? 0 : code < 14 ? byCode[code] : ExpectedBits(code) ? 7 : 0;
    EXPECT_EQ(table().GetFormatClass(code), cls) << code;
  }
}

TEST_P(FormatUtils, RGBCodesPassOrSwap) {
  std::mt19937 rng(11);
  for (int i = 0; i < 200; ++i) {
    const uint32_t c = rng(), swapped = (c & 0xFF00FF00u) | (c & 0xFFu) << 16 | (c >> 16 & 0xFFu);
    for (int32_t m : {0, 1, 3}) {
      for (int32_t code : {0, 3, 10}) EXPECT_EQ(table().ConvertColorValue(code, m, c), c);
      for (int32_t code : {1, 4}) EXPECT_EQ(table().ConvertColorValue(code, m, c), swapped);
    }
  }
}

// Y, U, V laid out for a code: 6 as U, Y, V and 7 as U, V, Y from bit 0, every
// other code Y, U, V.
uint32_t Layout(int32_t code, uint32_t y, uint32_t u, uint32_t v) {
  if (code == 6) return u | y << 8 | v << 16;
  if (code == 7) return u | v << 8 | y << 16;
  return y | u << 8 | v << 16;
}

// Hand-worked colours (Y | U << 8 | V << 16), clamped at 255 where pure red
// drives V past it and pure blue U; the alpha byte stays.
TEST_P(FormatUtils, KnownColours) {
  struct Colour {
    int32_t matrix;
    uint32_t rgb, yuv;
  };
  const Colour colours[] = {
      {1, 0x000000, 0x808000}, {1, 0xFFFFFF, 0x8080FF}, {1, 0x0000FF, 0xFF554C},
      {1, 0x00FF00, 0x152C96}, {1, 0xFF0000, 0x6BFF1D}, {1, 0x808080, 0x808080},
      {1, 0x5AC810, 0x2D6884}, {0, 0x000000, 0x808000}, {0, 0xFFFFFF, 0x8080FF},
      {0, 0x0000FF, 0xFF6336}, {0, 0x00FF00, 0x0C1EB6}, {0, 0xFF0000, 0x74FF12},
  };
  for (const Colour &c : colours)
    for (int32_t code : {2, 5, 6, 7, 8, 9})
      for (uint32_t top : {0x00000000u, 0xFF000000u, 0x5A000000u})
        EXPECT_EQ(table().ConvertColorValue(code, c.matrix, top | c.rgb),
                  top | Layout(code, c.yuv & 0xFF, c.yuv >> 8 & 0xFF, c.yuv >> 16))
            << std::hex << "rgb " << c.rgb << " code " << code << " matrix " << c.matrix;
}

struct Yuv {
  double y, u, v;
};

Yuv Model(uint32_t c, bool sd) {
  const double r = c & 0xFF, g = c >> 8 & 0xFF, b = c >> 16 & 0xFF;
  if (sd)
    return {0.29895 * r + 0.587036 * g + 0.114014 * b, -0.168701 * r - 0.331299 * g + 0.5 * b + 128,
            0.5 * r - 0.418701 * g - 0.081299 * b + 128};
  return {0.212639 * r + 0.715169 * g + 0.072192 * b, -0.114592 * r - 0.385409 * g + 0.5 * b + 128,
          0.5 * r - 0.454156 * g - 0.045844 * b + 128};
}

// Rounded and clamped; near a half the single-precision result may go either way.
void ExpectByte(uint32_t actual, double model) {
  const double clamped = std::min(255.0, std::max(0.0, model));
  if (std::fabs(clamped - std::floor(clamped) - 0.5) < 1e-3)
    EXPECT_NEAR(static_cast<double>(actual), clamped, 0.5 + 1e-3);
  else
    EXPECT_EQ(actual, static_cast<uint32_t>(std::lround(clamped))) << model;
}

// Random colours against the model for every YUV code and matrix selector:
// 1 picks SD, every other value HD.
TEST_P(FormatUtils, RandomColoursFollowMatrix) {
  std::mt19937 rng(12);
  for (int i = 0; i < 500; ++i) {
    const uint32_t c = rng();
    for (int32_t matrix : {1, 0, 2, 3, -1, 4}) {
      const Yuv m = Model(c, matrix == 1);
      for (int32_t code : {2, 5, 6, 7, 8, 9, 11, 12, -1, 1000}) {
        SCOPED_TRACE(::testing::Message() << std::hex << "colour " << c << std::dec << " code "
                                          << code << " matrix " << matrix);
        const uint32_t out = table().ConvertColorValue(code, matrix, c);
        EXPECT_EQ(out & 0xFF000000u, c & 0xFF000000u);
        // Where Y, U and V sit in this code's layout.
        const uint32_t ys = Layout(code, 1, 2, 3), at[3] = {ys & 0xFF, ys >> 8 & 0xFF, ys >> 16};
        const double want[4] = {0, m.y, m.u, m.v};
        for (int b = 0; b < 3; ++b) ExpectByte(out >> (8 * b) & 0xFF, want[at[b]]);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(AllLevels, FormatUtils,
                         ::testing::ValuesIn(tqcs::test::KernelTestLevels()));

}  // namespace
