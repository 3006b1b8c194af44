// The three forms of every conversion against each other: split and compose
// agree with the frame form, flip mirrors, the whole-image path equals the row
// path, odd heights follow each family's rule, and nothing is written past a
// row or a plane.
#include <gtest/gtest.h>

#include <functional>

#include "drivers/driver_harness.hpp"

namespace tqcs::test {
namespace {

::testing::Environment *const kLoaded = ::testing::AddGlobalTestEnvironment(new LoadedLibrary);

using Layout = std::function<std::vector<PlaneShape>(int64_t w, int64_t h)>;
const Layout kP1 = [](int64_t w, int64_t h) { return std::vector<PlaneShape>{{w, h}}; };
const Layout kP3 = [](int64_t w, int64_t h) { return std::vector<PlaneShape>{{3 * w, h}}; };
const Layout kP4 = [](int64_t w, int64_t h) { return std::vector<PlaneShape>{{4 * w, h}}; };
// Packed 4:2:2 rows are 2 x width bytes: an odd last pixel has half a pair.
const Layout kYUV16 = [](int64_t w, int64_t h) { return std::vector<PlaneShape>{{2 * w, h}}; };
const Layout kP422 = [](int64_t w, int64_t h) {
  return std::vector<PlaneShape>{{w, h}, {w / 2, h}, {w / 2, h}};
};
const Layout kP422x16 = [](int64_t w, int64_t h) {
  return std::vector<PlaneShape>{{2 * w, h}, {2 * (w / 2), h}, {2 * (w / 2), h}};
};
const Layout kP420 = [](int64_t w, int64_t h) {
  return std::vector<PlaneShape>{{w, h}, {w / 2, h / 2}, {w / 2, h / 2}};
};
const Layout kP420x16 = [](int64_t w, int64_t h) {
  return std::vector<PlaneShape>{{2 * w, h}, {2 * (w / 2), h / 2}, {2 * (w / 2), h / 2}};
};
const Layout kHSV = [](int64_t w, int64_t h) {
  return std::vector<PlaneShape>{{2 * w, h}, {w, h}, {w, h}};
};
const Layout kUV422 = [](int64_t w, int64_t h) {
  return std::vector<PlaneShape>{{w / 2, h}, {w / 2, h}};
};
const Layout kUV420 = [](int64_t w, int64_t h) {
  return std::vector<PlaneShape>{{w / 2, h / 2}, {w / 2, h / 2}};
};

enum class OddRow { kCopyToField2, kField1Only, kDrop };

struct Case {
  std::string base;  // the triple's name without TCS_ and the form
  Layout src, dst;
  std::vector<int64_t> options;  // before flip
  OddRow odd = OddRow::kCopyToField2;
  bool dst420 = false, src420 = false;
  std::string label = "";
  // The whole-image call joins rows: the last pixel of each row blends with
  // the next row's first pair.
  int joinedRowTail = 0;
};

const Case kCases[] = {
    {"RGB32_SwapRB", kP4, kP4, {}, OddRow::kDrop},
    {"RGB32_2_YUVA", kP4, kP4, {0, 1}},
    {"RGB32_2_YUV16", kP4, kYUV16, {0, 0, 1}},
    {"RGB32_2_YUV16", kP4, kYUV16, {1, 1, 0}, OddRow::kCopyToField2, false, false, "UYVY"},
    {"RGB32_2_YUV422", kP4, kP422, {1, 1}},
    {"RGB32_2_YUV420", kP4, kP420, {0, 1}, OddRow::kCopyToField2, true},
    {"RGB32_2_Gray", kP4, kP1, {3, 1}},
    {"RGB24_SwapRB", kP3, kP3, {}, OddRow::kDrop},
    {"RGB24_2_YUVA", kP3, kP4, {0, 1, 77}},
    {"RGB24_2_YUV16", kP3, kYUV16, {1, 1, 0}},
    {"RGB24_2_YUV422", kP3, kP422, {1, 0}},
    {"RGB24_2_YUV420", kP3, kP420, {3, 1}, OddRow::kCopyToField2, true},
    {"RGB24_2_HSV", kP3, kHSV, {1}},
    {"RGB24_2_Gray", kP3, kP1, {3, 0}},
    {"YUVA_2_RGB32", kP4, kP4, {0, 1}},
    {"YUVA_2_RGB24", kP4, kP3, {1, 0}},
    {"YUVA_2_YUV16", kP4, kYUV16, {1}},
    {"YUVA_2_YUV422", kP4, kP422, {}},
    {"YUV16_Swap", kYUV16, kYUV16, {}, OddRow::kField1Only},
    {"YUV16_2_RGB32", kYUV16, kP4, {0, 1, 0, 200}, OddRow::kCopyToField2, false, false, "", 4},
    {"YUV16_2_RGB24", kYUV16, kP3, {3, 0, 1}, OddRow::kCopyToField2, false, false, "", 3},
    {"YUV16_2_YUVA", kYUV16, kP4, {1, 9}},
    {"YUV16_2_YUV422", kYUV16, kP422, {0}},
    {"YUV16_2_YUV420", kYUV16, kP420, {1}, OddRow::kCopyToField2, true},
    {"YUV422_2_RGB32", kP422, kP4, {0, 1, 255}},
    {"YUV422_2_RGB24", kP422, kP3, {1, 0}},
    {"YUV422_2_YUVA", kP422, kP4, {55}},
    {"YUV422_2_YUV16", kP422, kYUV16, {1}},
    {"YUV422_10Bit_2_YUV16", kP422x16, kYUV16, {0}},
    {"YUV422_2_YUV420_UV", kUV422, kUV420, {}, OddRow::kCopyToField2, true},
    {"YUV420_2_RGB32", kP420, kP4, {0, 1, 128}, OddRow::kCopyToField2, false, true},
    {"YUV420_2_RGB24", kP420, kP3, {1, 0}, OddRow::kCopyToField2, false, true},
    {"YUV420_2_YUV16", kP420, kYUV16, {0}, OddRow::kCopyToField2, false, true},
    {"YUV420_10Bit_2_YUV16", kP420x16, kYUV16, {1}, OddRow::kCopyToField2, false, true},
    {"YUV420_2_YUV422_UV", kUV420, kUV422, {}, OddRow::kCopyToField2, false, true},
};

std::vector<int64_t> With(std::vector<int64_t> options, int64_t flip) {
  options.push_back(flip);
  return options;
}

std::vector<PlaneArg> Join(std::initializer_list<std::vector<PlaneArg>> parts) {
  std::vector<PlaneArg> out;
  for (const auto &p : parts) out.insert(out.end(), p.begin(), p.end());
  return out;
}

class Forms : public ::testing::TestWithParam<Case> {
 protected:
  const Case &c = GetParam();
  const SlotRef &frame = SlotNamed("TCS_" + c.base + "_Frame");
  const SlotRef &split = SlotNamed("TCS_" + c.base + "_Split");
  const SlotRef &compose = SlotNamed("TCS_" + c.base + "_Compose");

  Image Source(int32_t w, int32_t h, uint32_t seed) {
    Image img(c.src(w, h), 16);
    img.Randomize(seed);
    return img;
  }
  Image Frame(const Image &srcIn, int32_t w, int32_t h, int64_t flip, int64_t pad = 16) {
    Image src = srcIn;
    Image dst(c.dst(w, h), pad);
    frame.call(Join({dst.Args(), src.Args()}), w, h, With(c.options, flip));
    EXPECT_TRUE(dst.PadsIntact()) << c.base;
    return dst;
  }
  // The smallest frame height each family accepts.
  int32_t MinHeight() const { return c.src420 || c.base == "YUV422_2_YUV420_UV" ? 8 : 2; }
};

// Rows per plane of a layout, for comparing planes of different images.
int64_t Rows(const Image &img, size_t plane) { return img.shape(plane).rows; }

TEST_P(Forms, SplitGivesTheFrameFormsRowsInTwoFields) {
  // A 4:2:0 destination's fields are images of their own; with whole groups
  // of four rows in each field their luma rows are the frame's.
  const std::vector<int32_t> heights =
      c.dst420 ? std::vector<int32_t>{8, 16} : std::vector<int32_t>{MinHeight(), 10, 11};
  for (int32_t h : heights) {
    const int32_t w = 6;
    Image src = Source(w, h, 7 + h);
    const Image whole = Frame(src, w, h, 0);
    Image f1(c.dst(w, (h + 1) / 2), 8), f2(c.dst(w, (h + 1) / 2), 8);
    const Image untouched = f2;
    split.call(Join({f1.Args(), f2.Args(), src.Args()}), w, h, With(c.options, 0));
    ASSERT_TRUE(f1.PadsIntact() && f2.PadsIntact()) << c.base;
    // 4:2:0 destinations convert each field as an image of its own: only their
    // luma rows are the frame's.
    const size_t planes = c.dst420 ? (c.dst(w, h).size() == 3 ? 1 : 0) : whole.planes();
    for (size_t p = 0; p < planes; ++p) {
      const int64_t rows = Rows(whole, p);
      for (int64_t y = 0; y + 1 < rows; y += 2) {
        EXPECT_EQ(f1.Row(p, y / 2), whole.Row(p, y)) << c.base << " h " << h << " row " << y;
        EXPECT_EQ(f2.Row(p, y / 2), whole.Row(p, y + 1))
            << c.base << " h " << h << " row " << y + 1;
      }
      if (!(rows & 1) || c.dst420 || c.src420) continue;
      const int64_t last = rows / 2;
      if (c.odd == OddRow::kDrop) {
        EXPECT_NE(f1.Row(p, last), whole.Row(p, rows - 1)) << c.base << ": the odd row is dropped";
      } else {
        EXPECT_EQ(f1.Row(p, last), whole.Row(p, rows - 1)) << c.base;
      }
      EXPECT_EQ(f2.Row(p, last),
                c.odd == OddRow::kCopyToField2 ? whole.Row(p, rows - 1) : untouched.Row(p, last))
          << c.base;
    }
  }
}

TEST_P(Forms, ComposeOfTheSourceFieldsGivesTheFrameForm) {
  if (c.src420) GTEST_SKIP() << "the fields of a 4:2:0 frame are not 4:2:0 images";
  for (int32_t h : {MinHeight(), 8, 10, 11}) {
    const int32_t w = 6;
    Image src = Source(w, h, 100 + h);
    const Image whole = Frame(src, w, h, 0);
    Image f1(c.src(w, (h + 1) / 2), 8), f2(c.src(w, (h + 1) / 2), 8);
    std::vector<PlaneArg> a = f1.Args(), b = f2.Args(), s = src.Args();
    for (size_t p = 0; p < a.size(); ++p)
      for (int64_t y = 0; y < Rows(src, p); ++y) {
        const auto row = src.Row(p, y);
        std::copy(row.begin(), row.end(),
                  ((y & 1) ? b : a)[p].p + (y / 2) * ((y & 1) ? b : a)[p].pitch);
      }
    Image dst(c.dst(w, h), 16);
    const Image blank = dst;
    compose.call(Join({dst.Args(), f1.Args(), f2.Args()}), w, h, With(c.options, 0));
    ASSERT_TRUE(dst.PadsIntact()) << c.base;
    for (size_t p = 0; p < dst.planes(); ++p) {
      const int64_t rows = Rows(dst, p);
      const bool oddLuma = (h & 1) && !c.dst420 && c.odd == OddRow::kDrop;
      for (int64_t y = 0; y < rows; ++y) {
        const bool dropped = oddLuma && y == rows - 1;
        EXPECT_EQ(dst.Row(p, y), dropped ? blank.Row(p, y) : whole.Row(p, y))
            << c.base << " h " << h << " row " << y;
      }
    }
  }
}

TEST_P(Forms, FlipMirrorsTheFrame) {
  for (int32_t h : {8, 12}) {
    for (int32_t w : {6, 7}) {
      Image src = Source(w, h, 3 * h + w);
      const Image up = Frame(src, w, h, 0), down = Frame(src, w, h, 1);
      for (size_t p = 0; p < up.planes(); ++p) {
        const int64_t rows = Rows(up, p);
        for (int64_t y = 0; y < rows; ++y)
          EXPECT_EQ(down.Row(p, y), up.Row(p, rows - 1 - y))
              << c.base << " w " << w << " row " << y;
      }
    }
  }
}

TEST_P(Forms, ContiguousRowsGiveTheSameResultAsPaddedRows) {
  for (int32_t w : {6, 7, 8}) {
    const int32_t h = 8;
    Image src = Source(w, h, 11 * w);
    Image tight(c.src(w, h), 0);
    for (size_t p = 0; p < src.planes(); ++p)
      for (int64_t y = 0; y < Rows(src, p); ++y) {
        const auto row = src.Row(p, y);
        std::copy(row.begin(), row.end(), tight.Args()[p].p + y * tight.pitch(p));
      }
    const Image padded = Frame(src, w, h, 0, 16), contiguous = Frame(tight, w, h, 0, 0);
    for (size_t p = 0; p < padded.planes(); ++p)
      for (int64_t y = 0; y < Rows(padded, p); ++y) {
        auto a = contiguous.Row(p, y), b = padded.Row(p, y);
        if (y + 1 < Rows(padded, p) && !(w & 1) && c.joinedRowTail) {
          a.resize(a.size() - c.joinedRowTail);
          b.resize(b.size() - c.joinedRowTail);
        }
        EXPECT_EQ(a, b) << c.base << " w " << w << " plane " << p << " row " << y;
      }
  }
}

INSTANTIATE_TEST_SUITE_P(EveryConversion, Forms, ::testing::ValuesIn(kCases),
                         [](const auto &info) { return info.param.base + info.param.label; });

}  // namespace
}  // namespace tqcs::test
