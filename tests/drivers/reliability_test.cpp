// What the drivers guarantee at the edges of what they are given: odd-width
// packed 4:2:2 rows of exactly 2 x width bytes, hue rows at odd addresses,
// selectors that name no coefficient set, and the rule that keeps a whole-image
// kernel call within the kernels' 32-bit count.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "drivers/driver_harness.hpp"
#include "drivers/driver_kit.hpp"

namespace tqcs::test {
namespace {

::testing::Environment *const kLoaded = ::testing::AddGlobalTestEnvironment(new LoadedLibrary);

std::vector<PlaneArg> Join(std::vector<PlaneArg> a, const std::vector<PlaneArg> &b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

// ---- Odd-width packed 4:2:2 destinations ----------------------------------------------

struct ToYUV16 {
  std::string base;
  int64_t srcBytes;
  std::vector<int64_t> options;  // before flip; the packing flag among them
};

void PrintTo(const ToYUV16 &c, std::ostream *os) { *os << c.base; }

class OddWidthYUV16 : public ::testing::TestWithParam<ToYUV16> {
 protected:
  const ToYUV16 &c = GetParam();
  std::vector<int64_t> Options(int64_t flip) const {
    auto o = c.options;
    o.push_back(flip);
    return o;
  }
  // The frame form's rows (pitch `pad` bytes past the 2 x width of a row).
  Image Frame(Image &src, int32_t w, int32_t h, int64_t pad, int64_t flip) {
    Image dst({{2 * int64_t{w}, h}}, pad);
    SlotNamed("TCS_" + c.base + "_Frame").call(Join(dst.Args(), src.Args()), w, h, Options(flip));
    EXPECT_TRUE(dst.PadsIntact());
    return dst;
  }
};

TEST_P(OddWidthYUV16, TheLastPixelKeepsTheTwoBytesOfItsPairThatLieInTheRow) {
  for (int32_t w : {1, 3, 7}) {
    const int32_t h = 4;
    Image src({{c.srcBytes * w, h}}, 5);
    src.Randomize(w);
    const Image rows = Frame(src, w, h, 6, 0);
    for (int32_t y = 0; y < h; ++y) {
      // The last pixel alone, as an image one pixel wide.
      Image one({{c.srcBytes, 1}}, 0), pair({{2, 1}}, 0);
      const auto last = src.Row(0, y);
      std::copy(last.end() - c.srcBytes, last.end(), one.Args()[0].p);
      SlotNamed("TCS_" + c.base + "_Frame").call(Join(pair.Args(), one.Args()), 1, 1, Options(0));
      const auto row = rows.Row(0, y);
      EXPECT_EQ(std::vector<uint8_t>(row.end() - 2, row.end()), pair.Row(0, 0))
          << c.base << " w " << w << " row " << y;
    }
  }
}

TEST_P(OddWidthYUV16, ContiguousRowsAreNotOverwrittenInAnyFormOrDirection) {
  const int32_t w = 5, h = 6;
  Image src({{c.srcBytes * w, h}}, 0);
  src.Randomize(3);
  for (int64_t flip : {0, 1}) {
    const Image padded = Frame(src, w, h, 8, flip), tight = Frame(src, w, h, 0, flip);
    EXPECT_EQ(tight.Pixels(0), padded.Pixels(0)) << "frame, flip " << flip;
    // The compose form writes the frame bottom-up under flip: a row spilling
    // past 2 x width would overwrite the start of the row below it.
    Image f1({{c.srcBytes * w, h / 2}}, 0), f2({{c.srcBytes * w, h / 2}}, 0);
    for (int32_t y = 0; y < h; ++y) {
      const auto row = src.Row(0, y);
      Image &field = (y & 1) ? f2 : f1;
      std::copy(row.begin(), row.end(), field.Args()[0].p + (y / 2) * field.pitch(0));
    }
    Image composed({{2 * int64_t{w}, h}}, 0);
    SlotNamed("TCS_" + c.base + "_Compose")
        .call(Join(composed.Args(), Join(f1.Args(), f2.Args())), w, h, Options(flip));
    EXPECT_EQ(composed.Pixels(0), padded.Pixels(0)) << "compose, flip " << flip;
  }
}

INSTANTIATE_TEST_SUITE_P(Triples, OddWidthYUV16,
                         ::testing::Values(ToYUV16{"RGB32_2_YUV16", 4, {0, 0, 1}},
                                           ToYUV16{"RGB32_2_YUV16", 4, {1, 1, 0}},
                                           ToYUV16{"RGB24_2_YUV16", 3, {0, 0, 1}},
                                           ToYUV16{"RGB24_2_YUV16", 3, {3, 1, 0}},
                                           ToYUV16{"YUVA_2_YUV16", 4, {0}},
                                           ToYUV16{"YUVA_2_YUV16", 4, {1}}),
                         [](const auto &info) {
                           return info.param.base + "_" + std::to_string(info.index);
                         });

// ---- Hue rows at odd addresses ------------------------------------------------------------

TEST(HueRows, AnOddPitchGivesTheSameHuesAsAnEvenOne) {
  for (int64_t order : {0, 1}) {
    const int32_t w = 300, h = 3;  // wider than one run of the aligned buffer
    Image src({{3 * w, h}}, 0);
    src.Randomize(9);
    auto convert = [&](int64_t huePad) {
      Image hsv({{2 * w, h}, {w, h}, {w, h}}, 0);
      Image hue({{2 * w, h}}, huePad);
      auto planes = hsv.Args();
      planes[0] = hue.Args()[0];
      SlotNamed("TCS_RGB24_2_HSV_Frame").call(Join(planes, src.Args()), w, h, {order, 0});
      EXPECT_TRUE(hue.PadsIntact());
      return hue.Pixels(0);
    };
    EXPECT_EQ(convert(1), convert(2)) << "order " << order;
  }
}

// ---- Selectors without coefficient rows --------------------------------------------------

struct Selector {
  std::string slot;
  std::vector<PlaneShape> dst, src;
  std::vector<int64_t> options;  // the matrix first
};

void PrintTo(const Selector &s, std::ostream *os) { *os << s.slot << " matrix " << s.options[0]; }

class NoCoefficientSet : public ::testing::TestWithParam<Selector> {};

TEST_P(NoCoefficientSet, ConvertsNothing) {
  const Selector &s = GetParam();
  for (int64_t flip : {0, 1}) {
    Image dst(s.dst, 4), src(s.src, 4);
    dst.Randomize(1);
    src.Randomize(2);
    const Image before = dst;
    auto options = s.options;
    options.push_back(flip);
    SlotNamed(s.slot).call(Join(dst.Args(), src.Args()), 8, 8, options);
    for (size_t p = 0; p < dst.planes(); ++p) EXPECT_EQ(dst.Pixels(p), before.Pixels(p));
    EXPECT_TRUE(dst.PadsIntact());
  }
}

std::vector<Selector> Selectors() {
  const std::vector<PlaneShape> p3{{24, 8}}, p4{{32, 8}}, yuv16{{16, 8}},
      p422{{8, 8}, {4, 8}, {4, 8}}, p420{{8, 8}, {4, 4}, {4, 4}};
  std::vector<Selector> out;
  // The frame forms: each builds the same row operation as its split and
  // compose forms.
  for (int64_t m : {int64_t{2}, int64_t{-1}, int64_t{INT32_MIN}}) {
    out.push_back({"TCS_RGB32_2_YUVA_Frame", p4, p4, {m, 0}});
    out.push_back({"TCS_RGB32_2_YUV16_Frame", yuv16, p4, {m, 0, 0}});
    out.push_back({"TCS_RGB32_2_YUV422_Frame", p422, p4, {m, 0}});
    out.push_back({"TCS_RGB32_2_YUV420_Frame", p420, p4, {m, 0}});
    out.push_back({"TCS_RGB24_2_YUVA_Frame", p4, p3, {m, 0, 255}});
    out.push_back({"TCS_RGB24_2_YUV16_Frame", yuv16, p3, {m, 1, 0}});
    out.push_back({"TCS_RGB24_2_YUV422_Frame", p422, p3, {m, 1}});
    out.push_back({"TCS_RGB24_2_YUV420_Frame", p420, p3, {m, 1}});
    out.push_back({"TCS_YUVA_2_RGB32_Frame", p4, p4, {m, 0}});
    out.push_back({"TCS_YUVA_2_RGB24_Frame", p3, p4, {m, 0}});
    out.push_back({"TCS_YUV16_2_RGB32_Frame", p4, yuv16, {m, 0, 0, 255}});
    out.push_back({"TCS_YUV16_2_RGB24_Frame", p3, yuv16, {m, 0, 1}});
    out.push_back({"TCS_YUV422_2_RGB32_Frame", p4, p422, {m, 0, 255}});
    out.push_back({"TCS_YUV422_2_RGB24_Frame", p3, p422, {m, 1}});
    out.push_back({"TCS_YUV420_2_RGB32_Frame", p4, p420, {m, 0, 255}});
    out.push_back({"TCS_YUV420_2_RGB24_Frame", p3, p420, {m, 1}});
  }
  // The planar 4:2:2 destinations know only the HD and SD sets.
  out.push_back({"TCS_RGB32_2_YUV422_Frame", p422, p4, {3, 0}});
  out.push_back({"TCS_RGB24_2_YUV422_Frame", p422, p3, {3, 1}});
  return out;
}

INSTANTIATE_TEST_SUITE_P(Drivers, NoCoefficientSet, ::testing::ValuesIn(Selectors()));

// ---- The whole-image path ----------------------------------------------------------------

TEST(WholeImagePath, IsTakenOnlyWhileTheCountFitsTheKernelsSigned32Bits) {
  constexpr int32_t kMax = std::numeric_limits<int32_t>::max();
  EXPECT_TRUE(drivers::FitsOneCall(kMax, 1));  // 2^31 - 1 pixels
  EXPECT_TRUE(drivers::FitsOneCall(1, kMax));
  EXPECT_FALSE(drivers::FitsOneCall(65536, 32768));  // 2^31 pixels
  EXPECT_FALSE(drivers::FitsOneCall(kMax, 2));
  EXPECT_FALSE(drivers::FitsOneCall(kMax, kMax));
  EXPECT_TRUE(drivers::FitsOneCall(46340, 46340));
  EXPECT_FALSE(drivers::FitsOneCall(46341, 46341));
  // Counts in bytes (3 a pixel): 715827882 x 3 = 2^31 - 2.
  EXPECT_TRUE(drivers::FitsOneCall(715827882, 1, 3));
  EXPECT_FALSE(drivers::FitsOneCall(715827883, 1, 3));
}

}  // namespace
}  // namespace tqcs::test
