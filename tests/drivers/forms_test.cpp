// The three forms of every conversion against each other: split and compose
// agree with the frame form, flip mirrors, the whole-image path equals the row
// path, odd heights follow each family's rule, and nothing is written past a
// row or a plane.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "drivers/driver_harness.hpp"
#include "drivers/slot_calls.hpp"

namespace tqcs::test {
namespace {

::testing::Environment *const kLoaded = ::testing::AddGlobalTestEnvironment(new LoadedLibrary);

// Each conversion is called with the options the driver tests share
// (slot_calls.hpp) unless its case gives others; its layouts are the
// library's (drivers/slot_layouts.hpp).
struct Case {
  std::string base;  // the triple's name without TCS_ and the form
  std::string label = "";
  std::optional<std::vector<int64_t>> options{};  // before flip
  // The whole-image call joins rows: the last pixel of each row blends with
  // the next row's first pair.
  int joinedRowTail = 0;
};

const Case kCases[] = {
    {"RGB32_SwapRB"},
    {"RGB32_2_YUVA"},
    {"RGB32_2_YUV16"},
    {"RGB32_2_YUV16", "YUYV", std::vector<int64_t>{0, 0, 1}},
    {"RGB32_2_YUV422"},
    {"RGB32_2_YUV420"},
    {"RGB32_2_Gray"},
    {"RGB24_SwapRB"},
    {"RGB24_2_YUVA"},
    {"RGB24_2_YUV16"},
    {"RGB24_2_YUV422"},
    {"RGB24_2_YUV420"},
    {"RGB24_2_HSV"},
    {"RGB24_2_Gray"},
    {"YUVA_2_RGB32"},
    {"YUVA_2_RGB24"},
    {"YUVA_2_YUV16"},
    {"YUVA_2_YUV422"},
    {"YUV16_Swap"},
    {"YUV16_2_RGB32", "", {}, 4},
    {"YUV16_2_RGB24", "", {}, 3},
    {"YUV16_2_YUVA"},
    {"YUV16_2_YUV422"},
    {"YUV16_2_YUV420"},
    {"YUV422_2_RGB32"},
    {"YUV422_2_RGB24"},
    {"YUV422_2_YUVA"},
    {"YUV422_2_YUV16"},
    {"YUV422_10Bit_2_YUV16"},
    {"YUV422_2_YUV420_UV"},
    {"YUV420_2_RGB32"},
    {"YUV420_2_RGB24"},
    {"YUV420_2_YUV16"},
    {"YUV420_10Bit_2_YUV16"},
    {"YUV420_2_YUV422_UV"},
};

// The planes of an image of `rows` luma rows (4:2:0 chroma planes hold half
// as many).
std::vector<PlaneShape> ShapesOf(const drivers::ImageLayout &layout, int64_t w, int64_t rows) {
  return calls::Shapes({layout, rows, rows / 2}, static_cast<int32_t>(w));
}

bool Is420(const drivers::ImageLayout &layout) {
  return std::ranges::any_of(layout.plane, [](const auto &p) { return p.halfHeight; });
}

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
  const std::vector<int64_t> options = c.options.value_or(calls::OptionsOf(frame));
  const drivers::SlotLayout &layout = *calls::LayoutOf(split);
  const drivers::Odd odd = layout.odd;
  const bool dst420 = Is420(layout.dst), src420 = Is420(layout.src);
  std::vector<PlaneShape> Src(int64_t w, int64_t rows) const {
    return ShapesOf(layout.src, w, rows);
  }
  std::vector<PlaneShape> Dst(int64_t w, int64_t rows) const {
    return ShapesOf(layout.dst, w, rows);
  }

  Image Source(int32_t w, int32_t h, uint32_t seed) {
    Image img(Src(w, h), 16);
    img.Randomize(seed);
    return img;
  }
  Image Frame(const Image &srcIn, int32_t w, int32_t h, int64_t flip, int64_t pad = 16) {
    Image src = srcIn;
    Image dst(Dst(w, h), pad);
    frame.call(Join({dst.Args(), src.Args()}), w, h, With(options, flip));
    EXPECT_TRUE(dst.PadsIntact()) << c.base;
    return dst;
  }
  // The smallest frame height each family accepts.
  int32_t MinHeight() const { return src420 || c.base == "YUV422_2_YUV420_UV" ? 8 : 2; }
};

// Rows per plane of a layout, for comparing planes of different images.
int64_t Rows(const Image &img, size_t plane) { return img.shape(plane).rows; }

TEST_P(Forms, SplitGivesTheFrameFormsRowsInTwoFields) {
  // A 4:2:0 destination's fields are images of their own; with whole groups
  // of four rows in each field their luma rows are the frame's.
  const std::vector<int32_t> heights =
      dst420 ? std::vector<int32_t>{8, 16} : std::vector<int32_t>{MinHeight(), 10, 11};
  for (int32_t h : heights) {
    const int32_t w = 6;
    Image src = Source(w, h, 7 + h);
    const Image whole = Frame(src, w, h, 0);
    Image f1(Dst(w, (h + 1) / 2), 8), f2(Dst(w, (h + 1) / 2), 8);
    const Image untouched = f2;
    split.call(Join({f1.Args(), f2.Args(), src.Args()}), w, h, With(options, 0));
    ASSERT_TRUE(f1.PadsIntact() && f2.PadsIntact()) << c.base;
    // 4:2:0 destinations convert each field as an image of its own: only their
    // luma rows are the frame's.
    const size_t planes = dst420 ? (Dst(w, h).size() == 3 ? 1 : 0) : whole.planes();
    for (size_t p = 0; p < planes; ++p) {
      const int64_t rows = Rows(whole, p);
      for (int64_t y = 0; y + 1 < rows; y += 2) {
        EXPECT_EQ(f1.Row(p, y / 2), whole.Row(p, y)) << c.base << " h " << h << " row " << y;
        EXPECT_EQ(f2.Row(p, y / 2), whole.Row(p, y + 1))
            << c.base << " h " << h << " row " << y + 1;
      }
      if (!(rows & 1) || dst420 || src420) continue;
      const int64_t last = rows / 2;
      if (odd == drivers::Odd::kDrop) {
        EXPECT_NE(f1.Row(p, last), whole.Row(p, rows - 1)) << c.base << ": the odd row is dropped";
      } else {
        EXPECT_EQ(f1.Row(p, last), whole.Row(p, rows - 1)) << c.base;
      }
      EXPECT_EQ(f2.Row(p, last), odd == drivers::Odd::kCopyToField2 ? whole.Row(p, rows - 1)
                                                                    : untouched.Row(p, last))
          << c.base;
    }
  }
}

TEST_P(Forms, ComposeOfTheSourceFieldsGivesTheFrameForm) {
  if (src420) GTEST_SKIP() << "the fields of a 4:2:0 frame are not 4:2:0 images";
  for (int32_t h : {MinHeight(), 8, 10, 11}) {
    const int32_t w = 6;
    Image src = Source(w, h, 100 + h);
    const Image whole = Frame(src, w, h, 0);
    Image f1(Src(w, (h + 1) / 2), 8), f2(Src(w, (h + 1) / 2), 8);
    std::vector<PlaneArg> a = f1.Args(), b = f2.Args(), s = src.Args();
    for (size_t p = 0; p < a.size(); ++p)
      for (int64_t y = 0; y < Rows(src, p); ++y) {
        const auto row = src.Row(p, y);
        std::copy(row.begin(), row.end(),
                  ((y & 1) ? b : a)[p].p + (y / 2) * ((y & 1) ? b : a)[p].pitch);
      }
    Image dst(Dst(w, h), 16);
    const Image blank = dst;
    compose.call(Join({dst.Args(), f1.Args(), f2.Args()}), w, h, With(options, 0));
    ASSERT_TRUE(dst.PadsIntact()) << c.base;
    for (size_t p = 0; p < dst.planes(); ++p) {
      const int64_t rows = Rows(dst, p);
      const bool oddLuma = (h & 1) && !dst420 && odd == drivers::Odd::kDrop;
      for (int64_t y = 0; y < rows; ++y) {
        const bool dropped = oddLuma && y == rows - 1;
        EXPECT_EQ(dst.Row(p, y), dropped ? blank.Row(p, y) : whole.Row(p, y))
            << c.base << " h " << h << " row " << y;
      }
    }
  }
}

// With flip, a _Split reads the frame bottom-up and a _Compose writes it
// bottom-up: for an even height the fields are those of the flipped frame, and
// composing the source's fields gives the flipped frame.
TEST_P(Forms, SplitAndComposeUnderFlipMatchTheFlippedFrame) {
  if (src420 || dst420) GTEST_SKIP() << "4:2:0 fields are images of their own";
  for (int32_t h : {MinHeight(), 10}) {
    for (int32_t w : {6, 7}) {
      Image src = Source(w, h, 51 + h + w);
      const Image flipped = Frame(src, w, h, 1);
      Image f1(Dst(w, h / 2), 8), f2(Dst(w, h / 2), 8);
      split.call(Join({f1.Args(), f2.Args(), src.Args()}), w, h, With(options, 1));
      ASSERT_TRUE(f1.PadsIntact() && f2.PadsIntact()) << c.base;
      for (size_t p = 0; p < flipped.planes(); ++p)
        for (int64_t y = 0; y + 1 < Rows(flipped, p); y += 2) {
          EXPECT_EQ(f1.Row(p, y / 2), flipped.Row(p, y)) << c.base << " split row " << y;
          EXPECT_EQ(f2.Row(p, y / 2), flipped.Row(p, y + 1)) << c.base << " split row " << y + 1;
        }
      Image s1(Src(w, h / 2), 8), s2(Src(w, h / 2), 8);
      std::vector<PlaneArg> a = s1.Args(), b = s2.Args();
      for (size_t p = 0; p < a.size(); ++p)
        for (int64_t y = 0; y < Rows(src, p); ++y) {
          const auto row = src.Row(p, y);
          PlaneArg &to = ((y & 1) ? b : a)[p];
          std::copy(row.begin(), row.end(), to.p + (y / 2) * to.pitch);
        }
      Image dst(Dst(w, h), 16);
      compose.call(Join({dst.Args(), s1.Args(), s2.Args()}), w, h, With(options, 1));
      ASSERT_TRUE(dst.PadsIntact()) << c.base;
      for (size_t p = 0; p < dst.planes(); ++p)
        for (int64_t y = 0; y < Rows(dst, p); ++y)
          EXPECT_EQ(dst.Row(p, y), flipped.Row(p, y)) << c.base << " compose row " << y;
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
    Image tight(Src(w, h), 0);
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
