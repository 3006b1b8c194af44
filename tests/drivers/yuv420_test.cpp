// Planar 4:2:0: which rows each chroma row comes from and with which weights,
// for the heights where the grouping changes; the working buffer's failure.
#include <gtest/gtest.h>

#include "drivers/driver_harness.hpp"
#include "drivers/driver_kit.hpp"
#include "support/log_capture.hpp"

namespace tqcs::test {
namespace {

::testing::Environment *const kLoaded = ::testing::AddGlobalTestEnvironment(new LoadedLibrary);

using Plane8 = std::vector<std::vector<uint8_t>>;  // rows

// The 4:2:0 chroma rows a frame of `height` rows must get from its per-row
// 4:2:2 chroma: pairs of one field, three to one towards the outer row.
Plane8 Downsampled(const Plane8 &rows, int32_t height) {
  auto mix = [&](size_t a, size_t b) {
    std::vector<uint8_t> out(rows[a].size());
    for (size_t x = 0; x < out.size(); ++x)
      out[x] = static_cast<uint8_t>((3 * rows[a][x] + rows[b][x] + 2) >> 2);
    return out;
  };
  Plane8 out;
  const int32_t groups = height / 4;
  for (int32_t g = 0; g < groups; ++g) {
    out.push_back(mix(4 * g, 4 * g + 2));
    out.push_back(mix(4 * g + 3, 4 * g + 1));
  }
  if (height & 2) out.push_back(mix(4 * groups, 4 * groups + 1));
  return out;
}

// The 4:2:2 chroma rows a frame gets from its 4:2:0 chroma rows: each field's
// rows are sited a quarter of the way towards the field's outer edge, so its
// luma rows take 7/8 and 5/8 of their nearest chroma row, the edge rows a copy.
Plane8 Upsampled(const Plane8 &chroma, int32_t height) {
  const int32_t groups = height / 4;
  Plane8 out(static_cast<size_t>(height));
  auto w = [](uint8_t a, uint8_t b, int ka, int kb) {
    return static_cast<uint8_t>((ka * a + kb * b + 4) >> 3);
  };
  for (int parity = 0; parity < 2; ++parity) {
    for (int32_t k = 0; k < groups; ++k) {
      const auto &a = chroma[2 * k + parity];
      std::vector<uint8_t> upper(a.size()), lower(a.size());
      for (size_t x = 0; x < a.size(); ++x) {
        const uint8_t prev = k > 0 ? chroma[2 * (k - 1) + parity][x] : a[x];
        const uint8_t next = k + 1 < groups ? chroma[2 * (k + 1) + parity][x] : a[x];
        if (parity == 0) {  // top field: chroma near its upper row
          upper[x] = k == 0 ? a[x] : w(a[x], prev, 7, 1);
          lower[x] = k + 1 == groups ? a[x] : w(a[x], next, 5, 3);
        } else {  // bottom field: chroma near its lower row
          upper[x] = k == 0 ? a[x] : w(a[x], prev, 5, 3);
          lower[x] = k + 1 == groups ? a[x] : w(a[x], next, 7, 1);
        }
      }
      out[4 * k + parity] = upper;
      out[4 * k + 2 + parity] = lower;
    }
  }
  // Two rows after the last group reuse the working rows the last call left:
  // the bottom field's last row and the one above it.
  if (height & 2) {
    out[4 * groups] = out[4 * groups - 1];
    out[4 * groups + 1] = out[4 * groups - 3];
  }
  return out;
}

Plane8 RowsOf(const Image &img, size_t plane) {
  Plane8 out;
  for (int64_t y = 0; y < img.shape(plane).rows; ++y) out.push_back(img.Row(plane, y));
  return out;
}

constexpr int32_t kWidth = 10;

class Downsampling : public ::testing::TestWithParam<int32_t> {};

TEST_P(Downsampling, RGB24ChromaPairsRowsOfOneField) {
  const int32_t h = GetParam();
  Image src({{3 * kWidth, h}}, 8);
  src.Randomize(h);
  Image dst({{kWidth, h}, {kWidth / 2, h / 2}, {kWidth / 2, h / 2}}, 8);
  const Image blank = dst;
  SlotNamed("TCS_RGB24_2_YUV420_Frame")
      .call({dst.Args()[0], dst.Args()[1], dst.Args()[2], src.Args()[0]}, kWidth, h, {0, 1, 0});
  // Per-row luma and 4:2:2 chroma straight from the row kernel.
  Plane8 y422, u422, v422;
  for (int64_t y = 0; y < h; ++y) {
    std::vector<uint8_t> ly(kWidth), lu(kWidth / 2), lv(kWidth / 2);
    const auto row = src.Row(0, y);
    const auto r = drivers::RgbToYuv(0, 1);
    Kernels().RGB24_2_YUV422_Row(ly.data(), lu.data(), lv.data(), row.data(), kWidth, r.y, r.u,
                                 r.v);
    y422.push_back(ly), u422.push_back(lu), v422.push_back(lv);
  }
  EXPECT_EQ(RowsOf(dst, 1), Downsampled(u422, h));
  EXPECT_EQ(RowsOf(dst, 2), Downsampled(v422, h));
  for (int64_t y = 0; y < h; ++y)
    EXPECT_EQ(dst.Row(0, y), (h & 1) && y == h - 1 ? blank.Row(0, y) : y422[y]) << "row " << y;
  EXPECT_TRUE(dst.PadsIntact());
}

TEST_P(Downsampling, PackedChromaPairsRowsOfOneField) {
  const int32_t h = GetParam();
  Image src({{2 * kWidth, h}}, 8);
  src.Randomize(50 + h);
  Image dst({{kWidth, h}, {kWidth / 2, h / 2}, {kWidth / 2, h / 2}}, 8);
  SlotNamed("TCS_YUV16_2_YUV420_Frame")
      .call({dst.Args()[0], dst.Args()[1], dst.Args()[2], src.Args()[0]}, kWidth, h, {0, 0});
  Plane8 u422, v422;
  for (int64_t y = 0; y < h; ++y) {
    const auto row = src.Row(0, y);
    std::vector<uint8_t> u, v;
    for (int x = 0; x < kWidth / 2; ++x) u.push_back(row[4 * x + 1]), v.push_back(row[4 * x + 3]);
    u422.push_back(u), v422.push_back(v);
  }
  EXPECT_EQ(RowsOf(dst, 1), Downsampled(u422, h));
  EXPECT_EQ(RowsOf(dst, 2), Downsampled(v422, h));
}

TEST_P(Downsampling, ChromaPlanesOnly) {
  const int32_t h = GetParam();
  Image src({{kWidth / 2, h}, {kWidth / 2, h}}, 8);
  src.Randomize(90 + h);
  Image dst({{kWidth / 2, h / 2}, {kWidth / 2, h / 2}}, 8);
  SlotNamed("TCS_YUV422_2_YUV420_UV_Frame")
      .call({dst.Args()[0], dst.Args()[1], src.Args()[0], src.Args()[1]}, kWidth, h, {0});
  if (h < 2) return;
  EXPECT_EQ(RowsOf(dst, 0), Downsampled(RowsOf(src, 0), h));
  EXPECT_EQ(RowsOf(dst, 1), Downsampled(RowsOf(src, 1), h));
}

INSTANTIATE_TEST_SUITE_P(Heights, Downsampling, ::testing::Values(2, 4, 5, 8, 9, 10, 14));

class Upsampling : public ::testing::TestWithParam<int32_t> {};

TEST_P(Upsampling, ChromaPlanesFollowEachFieldsSiting) {
  const int32_t h = GetParam();
  Image src({{kWidth / 2, h / 2}, {kWidth / 2, h / 2}}, 8);
  src.Randomize(7 * h);
  Image dst({{kWidth / 2, h}, {kWidth / 2, h}}, 8);
  const Image blank = dst;
  SlotNamed("TCS_YUV420_2_YUV422_UV_Frame")
      .call({dst.Args()[0], dst.Args()[1], src.Args()[0], src.Args()[1]}, kWidth, h, {0});
  for (size_t p = 0; p < 2; ++p) {
    Plane8 expected = Upsampled(RowsOf(src, p), h);
    if (h & 1) expected.back() = blank.Row(p, h - 1);
    EXPECT_EQ(RowsOf(dst, p), expected) << "plane " << p;
  }
}

TEST_P(Upsampling, RGBRowsUseTheUpsampledChroma) {
  const int32_t h = GetParam();
  Image src({{kWidth, h}, {kWidth / 2, h / 2}, {kWidth / 2, h / 2}}, 8);
  src.Randomize(11 * h);
  Image dst({{3 * kWidth, h}}, 8);
  const Image blank = dst;
  SlotNamed("TCS_YUV420_2_RGB24_Frame")
      .call({dst.Args()[0], src.Args()[0], src.Args()[1], src.Args()[2]}, kWidth, h, {1, 0, 0});
  const Plane8 u = Upsampled(RowsOf(src, 1), h), v = Upsampled(RowsOf(src, 2), h);
  const auto t = drivers::YuvToRgb(1);
  for (int64_t y = 0; y < h; ++y) {
    std::vector<uint8_t> expected(3 * kWidth);
    if ((h & 1) && y == h - 1) {
      expected = blank.Row(0, y);
    } else {
      Kernels().YUV422_2_RGB24_Row(expected.data(), src.Row(0, y).data(), u[y].data(), v[y].data(),
                                   kWidth, t.rv, t.gu, t.gv, t.bu);
    }
    EXPECT_EQ(dst.Row(0, y), expected) << "row " << y;
  }
}

INSTANTIATE_TEST_SUITE_P(Heights, Upsampling, ::testing::Values(8, 9, 10, 12, 16));

TEST(YUV420Limits, HeightsBelowTheMinimumAreRefused) {
  Image yuv({{kWidth, 8}, {kWidth / 2, 4}, {kWidth / 2, 4}}, 0);
  Image rgb({{3 * kWidth, 8}}, 0);
  const Image before = rgb;
  LogCapture log;
  SlotNamed("TCS_YUV420_2_RGB24_Frame")
      .call({rgb.Args()[0], yuv.Args()[0], yuv.Args()[1], yuv.Args()[2]}, kWidth, 7, {0, 0, 0});
  EXPECT_EQ(rgb.Pixels(0), before.Pixels(0));
  SlotNamed("TCS_RGB24_2_YUV420_Frame")
      .call({yuv.Args()[0], yuv.Args()[1], yuv.Args()[2], rgb.Args()[0]}, kWidth, 1, {0, 0, 0});
  ASSERT_EQ(log.records().size(), 2u);
  EXPECT_EQ(log.records()[0].function, u"TCS_YUV420_2_RGB24_Frame()");
  EXPECT_EQ(log.records()[1].function, u"TCS_RGB24_2_YUV420_Frame()");
  EXPECT_EQ(log.records()[1].message, u"Invalid Input Parameters");
}

// A failed working buffer: one level-3 record naming the driver, nothing
// written, nothing left allocated.
struct ScratchCase {
  std::string name;
  std::u16string unit, message;
};

class FailedScratch : public ::testing::TestWithParam<ScratchCase> {
 protected:
  void SetUp() override {
    previous_ = SetScratchAllocatorForTesting([](size_t) -> void * { return nullptr; });
  }
  void TearDown() override { SetScratchAllocatorForTesting(previous_); }
  ScratchAllocator previous_ = nullptr;
};

TEST_P(FailedScratch, IsRecordedAndConvertsNothing) {
  const SlotRef &slot = SlotNamed(GetParam().name);
  std::vector<std::vector<uint8_t>> buffers(slot.pointerCount, std::vector<uint8_t>(4096, 0x5A));
  std::vector<PlaneArg> planes;
  for (auto &b : buffers) planes.push_back({b.data(), 64});
  LogCapture log;
  slot.call(planes, 8, 8, std::vector<int64_t>(slot.optionCount, 0));
  for (const auto &b : buffers) EXPECT_EQ(b, std::vector<uint8_t>(4096, 0x5A));
  const std::vector<LogRecord> expected{
      {3, GetParam().unit, std::u16string(GetParam().name.begin(), GetParam().name.end()) + u"()",
       u"%s", GetParam().message}};
  EXPECT_EQ(log.records(), expected);
}

const std::u16string kColor = u"TQVideoColorAPI", kOom = u"Out of Memory",
                     kInvalid = u"Invalid Input Parameters";
INSTANTIATE_TEST_SUITE_P(
    AllocatingDrivers, FailedScratch,
    ::testing::Values(ScratchCase{"TCS_RGB24_2_YUV420_Frame", kColor, kOom},
                      ScratchCase{"TCS_RGB24_2_YUV420_Split", kColor, kOom},
                      ScratchCase{"TCS_RGB32_2_YUV420_Compose", kColor, kOom},
                      ScratchCase{"TCS_YUV420_2_RGB32_Frame", kColor, kOom},
                      ScratchCase{"TCS_YUV420_2_RGB24_Compose", kColor, kOom},
                      ScratchCase{"TCS_YUV420_2_YUV16_Frame", kColor, kInvalid},
                      ScratchCase{"TCS_YUV420_2_YUV16_Split", kColor, kInvalid},
                      ScratchCase{"TCS_YUV420_10Bit_2_YUV16_Compose", u"TQYUV420toOthers",
                                  kInvalid}),
    [](const auto &info) { return info.param.name; });

}  // namespace
}  // namespace tqcs::test
