// 16-bit pack, unpack, repack and depth-shift kernels against one model: each
// pixel pair's Y0, Y1, U, V is located through the layout tables below (planar
// 4:2:2, YUYV = Y0 U Y1 V, UYVY = U Y0 V Y1) and passed through the stated
// shift. Sources end exactly at their allocation (over-reads trip the address
// sanitizer), destinations are guarded by canaries; all rows start at odd
// addresses.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/buffers.hpp"
#include "support/kernel_samples.hpp"

namespace {

using tqcs::test::GuardedBuffer;
using tqcs::test::kCanary;
using tqcs::test::KernelTableForLevel;
using tqcs::test::KernelTestLevels;
using T = TCS_KernelTable;

enum Layout { kPlanar, kYuyv, kUyvy, kPlane };

// Plane and sample index of component c (Y0, Y1, U, V) of pair k.
std::pair<int, int64_t> Where(Layout l, int c, int64_t k) {
  static constexpr int kPacked[2][4] = {{0, 2, 1, 3}, {1, 3, 0, 2}};
  if (l == kPlanar) return c < 2 ? std::pair{0, 2 * k + c} : std::pair{c - 1, k};
  return {0, 4 * k + kPacked[l == kUyvy][c]};
}

// Samples of plane p for `count` pixels: what a source row holds, or what a
// destination row may receive (whole pairs only).
int64_t Extent(Layout l, int p, int64_t count, int perPixel, bool written) {
  count = std::max<int64_t>(count, 0);
  if (l == kPlane) return p == 0 ? perPixel * count : 0;
  if (l == kPlanar) return p == 0 ? (written ? count / 2 * 2 : count) : count / 2;
  return p == 0 ? 4 * (written ? count / 2 : (count + 1) / 2) : 0;
}

using Call = void (*)(const T &, void *const *, const void *const *, int32_t);
template <class D, class S, auto M>
void ToPacked(const T &t, void *const *d, const void *const *s, int32_t n) {
  (t.*M)(static_cast<D *>(d[0]), static_cast<const S *>(s[0]), static_cast<const S *>(s[1]),
         static_cast<const S *>(s[2]), n);
}
template <class D, class S, auto M>
void ToPlanar(const T &t, void *const *d, const void *const *s, int32_t n) {
  (t.*M)(static_cast<D *>(d[0]), static_cast<D *>(d[1]), static_cast<D *>(d[2]),
         static_cast<const S *>(s[0]), n);
}
template <class D, class S, auto M>
void OnePlane(const T &t, void *const *d, const void *const *s, int32_t n) {
  (t.*M)(static_cast<D *>(d[0]), static_cast<const S *>(s[0]), n);
}

struct Case {
  const char *name;
  Layout src;
  int srcBits;
  Layout dst;
  int dstBits;
  int perPixel;  // samples per pixel of a single-plane row
  uint32_t (*conv)(uint32_t);
  Call call;
};
uint32_t Same(uint32_t s) { return s; }
uint32_t Up8(uint32_t s) { return s << 8; }
uint32_t Down8(uint32_t s) { return s >> 8; }
uint32_t Down2Low(uint32_t s) { return (s >> 2) & 0xFF; }
uint32_t Down6(uint32_t s) { return s >> 6; }
uint32_t Down6Low(uint32_t s) { return (s >> 6) & 0xFF; }
uint32_t Up6(uint32_t s) { return s << 6; }
using u8 = uint8_t;
using u16 = uint16_t;

const Case kCases[] = {
    {"10BitToYUYV", kPlanar, 16, kYuyv, 8, 0, Down2Low,
     ToPacked<u8, u16, &T::YUV422_10Bit_2_YUYV_Row>},
    {"10BitToUYVY", kPlanar, 16, kUyvy, 8, 0, Down2Low,
     ToPacked<u8, u16, &T::YUV422_10Bit_2_UYVY_Row>},
    {"P16ToYUYV", kPlanar, 16, kYuyv, 8, 0, Down8, ToPacked<u8, u16, &T::YUV422_16_2_YUYV_Row>},
    {"P16ToUYVY", kPlanar, 16, kUyvy, 8, 0, Down8, ToPacked<u8, u16, &T::YUV422_16_2_UYVY_Row>},
    {"P16ToYUYV16", kPlanar, 16, kYuyv, 16, 0, Same,
     ToPacked<u16, u16, &T::YUV422_16_2_YUYV16_Row>},
    {"P16ToUYVY16", kPlanar, 16, kUyvy, 16, 0, Same,
     ToPacked<u16, u16, &T::YUV422_16_2_UYVY16_Row>},
    {"P8ToYUYV16", kPlanar, 8, kYuyv, 16, 0, Up8, ToPacked<u16, u8, &T::YUV422_2_YUYV16_Row>},
    {"P8ToUYVY16", kPlanar, 8, kUyvy, 16, 0, Up8, ToPacked<u16, u8, &T::YUV422_2_UYVY16_Row>},
    {"YUYV16ToP8", kYuyv, 16, kPlanar, 8, 0, Down8, ToPlanar<u8, u16, &T::YUYV16_2_YUV422_Row>},
    {"UYVY16ToP8", kUyvy, 16, kPlanar, 8, 0, Down8, ToPlanar<u8, u16, &T::UYVY16_2_YUV422_Row>},
    {"UYVY16ToP16", kUyvy, 16, kPlanar, 16, 0, Same,
     ToPlanar<u16, u16, &T::UYVY16_2_YUV422_16_Row>},
    {"YUYV16ToP16", kYuyv, 16, kPlanar, 16, 0, Same,
     ToPlanar<u16, u16, &T::YUYV16_2_YUV422_16_Row>},
    {"YUYV16ToYUYV", kYuyv, 16, kYuyv, 8, 0, Down8, OnePlane<u8, u16, &T::YUYV16_2_YUYV_Row>},
    {"YUYV16ToUYVY", kYuyv, 16, kUyvy, 8, 0, Down8, OnePlane<u8, u16, &T::YUYV16_2_UYVY_Row>},
    {"Y10ToY8", kPlane, 16, kPlane, 8, 1, Down6Low, OnePlane<u8, u16, &T::Y10Bit_2_Y8_Row>},
    {"Y16ToY10", kPlane, 16, kPlane, 16, 1, Down6, OnePlane<u16, u16, &T::Y16_2_Y10_Row>},
    {"Y8ToY16", kPlane, 8, kPlane, 16, 1, Up6, OnePlane<u16, u8, &T::Y8_2_Y16_Row>},
    {"Y16ToY10Pairs", kPlane, 16, kPlane, 16, 2, Down6,
     OnePlane<u16, u16, &T::Y16_2_Y10_Pairs_Row>},
};

uint32_t Get(const GuardedBuffer &b, int bits, int64_t i) {
  return tqcs::test::GetSample(b.data(), i, bits / 8);
}
void Put(std::vector<uint8_t> &b, int bits, int64_t i, uint32_t v) {
  tqcs::test::PutSample(b.data(), i, bits / 8, v);
}

// level, case, pixel count, source fill (-1 random)
class Planar16 : public ::testing::TestWithParam<std::tuple<uint32_t, Case, int, int>> {};

TEST_P(Planar16, MatchesLayoutModel) {
  const auto [level, c, count, fill] = GetParam();
  std::vector<GuardedBuffer> src, dst;
  std::vector<std::vector<uint8_t>> want;
  for (int p = 0; p < 3; ++p) {
    src.emplace_back(Extent(c.src, p, count, c.perPixel, false) * c.srcBits / 8, 1, 0);
    fill < 0 ? src[p].Randomize(11 + p) : src[p].Fill(static_cast<uint8_t>(fill));
    dst.emplace_back(Extent(c.dst, p, count, c.perPixel, true) * c.dstBits / 8, 1);
    dst[p].Fill(kCanary);
    want.emplace_back(dst[p].size(), kCanary);
  }
  void *const d[3] = {dst[0].data(), dst[1].data(), dst[2].data()};
  const void *const s[3] = {src[0].data(), src[1].data(), src[2].data()};
  c.call(KernelTableForLevel(level), d, s, count);

  if (c.src == kPlane) {
    for (int64_t i = 0; i < Extent(kPlane, 0, count, c.perPixel, true); ++i)
      Put(want[0], c.dstBits, i, c.conv(Get(src[0], c.srcBits, i)));
  } else {
    for (int64_t k = 0; k < std::max(count, 0) / 2; ++k) {
      for (int comp = 0; comp < 4; ++comp) {
        const auto [sp, si] = Where(c.src, comp, k);
        const auto [dp, di] = Where(c.dst, comp, k);
        Put(want[dp], c.dstBits, di, c.conv(Get(src[sp], c.srcBits, si)));
      }
    }
  }
  for (int p = 0; p < 3; ++p) {
    EXPECT_TRUE(std::equal(want[p].begin(), want[p].end(), dst[p].data())) << "plane " << p;
    EXPECT_TRUE(dst[p].CanariesIntact()) << "plane " << p;
  }
}

std::string CaseName(const ::testing::TestParamInfo<Planar16::ParamType> &info) {
  const auto &[level, c, count, fill] = info.param;
  return std::string(c.name) + "_L" + std::to_string(level) + "_N" + std::to_string(count + 3) +
         (fill < 0 ? "_Rand" : "_Max");
}

INSTANTIATE_TEST_SUITE_P(AllLevels, Planar16,
                         ::testing::Combine(::testing::ValuesIn(KernelTestLevels()),
                                            ::testing::ValuesIn(kCases),
                                            ::testing::Values(-3, -1, 0, 1, 2, 3, 8, 31),
                                            ::testing::Values(-1, 0xFF)),
                         CaseName);

// Kept for compatibility: the 10-bit-to-byte shifts store the low 8 bits.
class Planar16Compat : public ::testing::TestWithParam<uint32_t> {};

TEST_P(Planar16Compat, TenBitToByteShiftsTruncate) {
  const T &t = KernelTableForLevel(GetParam());
  const uint16_t y[2] = {0xFFC0, 0x8000}, u[1] = {0x0400}, v[1] = {0x03FC};
  uint8_t packed[4], plane[2];
  t.YUV422_10Bit_2_YUYV_Row(packed, y, u, v, 2);
  EXPECT_EQ(packed[0], 0xF0);  // 0xFFC0 >> 2 = 0x3FF0
  EXPECT_EQ(packed[1], 0x00);  // 0x0400 >> 2 = 0x100
  EXPECT_EQ(packed[2], 0x00);  // 0x8000 >> 2 = 0x2000
  EXPECT_EQ(packed[3], 0xFF);  // 0x03FC >> 2 = 0xFF
  t.Y10Bit_2_Y8_Row(plane, y, 2);
  EXPECT_EQ(plane[0], 0xFF);  // 1023
  EXPECT_EQ(plane[1], 0x00);  // 512
}

INSTANTIATE_TEST_SUITE_P(AllLevels, Planar16Compat, ::testing::ValuesIn(KernelTestLevels()));

}  // namespace
