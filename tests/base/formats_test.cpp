// The format table against the kernel table's own answers (slots 0 and 1),
// the public names, the kernel names it cites, and the row sizes it gives.
#include "base/formats.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "support/buffers.hpp"

namespace {

using tqcs::FindFormat;
using tqcs::FormatInfo;
using tqcs::kFormats;
using tqcs::Packing;
using tqcs::Siting;

const std::vector<std::string> &KernelNames() {
#define TQCS_KERNEL_NAME(n, name, ret, params) #name,
  static const std::vector<std::string> names = {TCS_KERNEL_SLOTS(TQCS_KERNEL_NAME)};
#undef TQCS_KERNEL_NAME
  return names;
}

// Every code from -2 to 1040: the table's pixel size and class are what the
// kernel table answers, and a code outside the space has neither.
TEST(Formats, AgreeWithTheKernelTable) {
  const TCS_KernelTable &kernels = tqcs::test::KernelTableForLevel(0);
  for (int32_t code = -2; code <= 1040; ++code) {
    const FormatInfo *f = FindFormat(code);
    const bool inSpace = (code >= 0 && code <= 23) || (code >= 1013 && code <= 1036);
    EXPECT_EQ(f != nullptr, inSpace) << code;
    EXPECT_EQ(kernels.GetFormatBitsPerPixel(code), f ? f->bitsPerPixel : 0) << code;
    EXPECT_EQ(kernels.GetFormatClass(code), f ? f->formatClass : 0) << code;
  }
}

// One entry a code, in code order; reserved codes, and only they, are named
// RESERVED_<code>. (Each entry's code is its public name's value by
// construction.)
TEST(Formats, NamesAndOrder) {
  std::set<std::string> names;
  for (size_t i = 0; i < kFormats.size(); ++i) {
    const FormatInfo &f = kFormats[i];
    if (i > 0) {
      EXPECT_LT(kFormats[i - 1].code, f.code);
    }
    EXPECT_TRUE(names.insert(std::string(f.name)).second) << f.name;
    EXPECT_EQ(f.name == "RESERVED_" + std::to_string(f.code), f.packing == Packing::Reserved)
        << f.name;
  }
}

// Every kernel pattern names at least one slot.
TEST(Formats, KernelPatternsNameSlots) {
  for (const FormatInfo &f : kFormats)
    for (std::string_view pattern : f.kernels) {
      if (pattern.empty()) continue;
      bool found = false;
      for (const std::string &name : KernelNames()) found |= tqcs::MatchesKernel(pattern, name);
      EXPECT_TRUE(found) << f.name << ": " << pattern;
    }
  EXPECT_TRUE(tqcs::MatchesKernel("*_2_V210*", "YUV8_2_V210_B_Row"));
  EXPECT_FALSE(tqcs::MatchesKernel("YUV420_2_*", "YUV420_16_2_YUV422_16_UV_Row"));
}

// Row sizes agree with the pixel size where the kernel table knows one (a
// planar layout's is its luma sample), 4:2:0 and only 4:2:0 has a siting, and
// the group layouts hold their groups.
TEST(Formats, LayoutsAreConsistent) {
  for (const FormatInfo &f : kFormats) {
    SCOPED_TRACE(std::string(f.name));
    if (f.packing == Packing::Reserved) {
      EXPECT_EQ(f.planes, 0);
      continue;
    }
    EXPECT_EQ(f.siting != Siting::None, f.chromaShiftY == 1);
    const int64_t w = 12;
    if (f.bitsPerPixel != 0) {
      const int64_t bits =
          f.packing == Packing::Packed ? tqcs::PlaneRowBytes(f, 0, w) * 8 / w : f.sampleBytes * 8;
      EXPECT_EQ(bits, f.bitsPerPixel);
    }
  }
  const auto bytes = [](int32_t code, int plane, int64_t width) {
    return tqcs::PlaneRowBytes(*FindFormat(code), plane, width);
  };
  EXPECT_EQ(bytes(TCS_FORMAT_YUV411, 1, 12), 3);
  EXPECT_EQ(bytes(TCS_FORMAT_P010, 1, 12), 24);
  EXPECT_EQ(bytes(TCS_FORMAT_NV16, 1, 12), 12);
  EXPECT_EQ(bytes(TCS_FORMAT_YUV422_10BIT, 2, 12), 12);
  EXPECT_EQ(bytes(TCS_FORMAT_YUV16_10BIT, 0, 2), 8);
  EXPECT_EQ(tqcs::PlaneRows(*FindFormat(TCS_FORMAT_NV12_FRAME), 1, 6), 3);
  EXPECT_EQ(bytes(TCS_FORMAT_V210, 0, 48), 128);
  EXPECT_EQ(bytes(TCS_FORMAT_YUV16_8PLUS2, 0, 16), 40);
  EXPECT_EQ(bytes(TCS_FORMAT_YUV16_8PLUS2, 0, 3), 8);
}

}  // namespace
