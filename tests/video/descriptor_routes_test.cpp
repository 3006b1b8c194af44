// The descriptor forms over the extended format space: layouts anchored on
// known samples, lossless round trips between every pair of 10-bit (and
// 8-bit) layouts in all three forms, 4:2:0 chroma that stays in its field or
// is centred on the frame, matrix conversions against a float reference, and
// the refusals, which write nothing.
#include "video/descriptor_routes.hpp"

#include <cmath>
#include <cstring>
#include <memory>
#include <random>

#include "base/formats.hpp"
#include "base/scratch.hpp"
#include "video/video_harness.hpp"

namespace {

using namespace tqcs::video_test;
using tqcs::FindFormat;
using tqcs::FormatInfo;
using tqcs::PlaneRowBytes;
using tqcs::PlaneRows;

// One image of a format, each plane in a guarded buffer of its own with a
// few bytes of pitch padding; `rows` luma rows.
struct Img {
  Img(int32_t code, int32_t width, int32_t rows, uint32_t seed = 1) : code(code), rows(rows) {
    const FormatInfo &f = *FindFormat(code);
    for (int k = 0; k < f.planes; ++k) {
      const int64_t pitch = PlaneRowBytes(f, k, width) + 8;
      planes.push_back(std::make_unique<GuardedBuffer>(pitch * PlaneRows(f, k, rows), k));
      planes.back()->Randomize(seed + k);
      pitches.push_back(pitch);
      bytes.push_back(PlaneRowBytes(f, k, width));
      planeRows.push_back(PlaneRows(f, k, rows));
    }
  }
  TCS_FrameDesc Desc() const {
    TCS_FrameDesc d{};
    for (size_t k = 0; k < planes.size(); ++k) d.plane[k] = {planes[k]->data(), pitches[k]};
    d.format = code;
    return d;
  }
  // The bytes of every row, without the padding, then the canaries' state.
  std::vector<uint8_t> Content() const {
    std::vector<uint8_t> out;
    for (size_t k = 0; k < planes.size(); ++k) {
      for (int64_t y = 0; y < planeRows[k]; ++y) {
        const uint8_t *r = planes[k]->data() + y * pitches[k];
        out.insert(out.end(), r, r + bytes[k]);
      }
      out.push_back(planes[k]->CanariesIntact());
    }
    return out;
  }
  uint16_t &At16(int k, int64_t y, int64_t i) {
    return reinterpret_cast<uint16_t *>(planes[k]->data() + y * pitches[k])[i];
  }
  uint8_t &At8(int k, int64_t y, int64_t i) { return planes[k]->data()[y * pitches[k] + i]; }

  int32_t code, rows;
  std::vector<std::unique_ptr<GuardedBuffer>> planes;
  std::vector<int64_t> pitches, bytes, planeRows;
};

uint64_t Frame(const Img &dst, const Img &src, int32_t width, int32_t height, uint8_t flip = 0,
               int32_t matrix = TCS_MATRIX_HD) {
  const TCS_FrameDesc d = dst.Desc(), s = src.Desc();
  return General().TCS_ColorConvFrameEx(&d, &s, matrix, width, height, flip);
}
uint64_t Split(const Img &f1, const Img &f2, const Img &src, int32_t width, int32_t height,
               uint8_t flip = 0) {
  const TCS_FrameDesc a = f1.Desc(), b = f2.Desc(), s = src.Desc();
  return General().TCS_ColorConvSplitEx(&a, &b, &s, TCS_MATRIX_HD, width, height, flip);
}
uint64_t Compose(const Img &dst, const Img &f1, const Img &f2, int32_t width, int32_t height,
                 uint8_t flip = 0) {
  const TCS_FrameDesc d = dst.Desc(), a = f1.Desc(), b = f2.Desc();
  return General().TCS_ColorConvComposeEx(&d, &a, &b, TCS_MATRIX_HD, width, height, flip);
}

// A planar 16-bit image of random 10-bit values in bits 6-15 (`bits` of them
// significant: 8 for values an 8-bit layout holds exactly).
Img Random16(int32_t code, int32_t width, int32_t rows, uint32_t seed, int bits = 10) {
  Img img(code, width, rows, seed);
  std::mt19937 rng(seed);
  for (size_t k = 0; k < img.planes.size(); ++k)
    for (int64_t y = 0; y < img.planeRows[k]; ++y)
      for (int64_t i = 0; i < img.bytes[k] / 2; ++i)
        img.At16(static_cast<int>(k), y, i) =
            static_cast<uint16_t>((rng() & ((1u << bits) - 1)) << (16 - bits));
  return img;
}

constexpr int32_t kW = 12, kH = 8;

// ---------------------------------------------------------------------------
// Layouts, anchored on samples whose memory is known.

TEST(DescriptorLayouts, V210WordsHoldUYVYInTheirOrder) {
  Img planar = Random16(TCS_FORMAT_YUV422_10BIT, 6, 1, 3);
  Img v210(TCS_FORMAT_V210, 6, 1);
  ASSERT_EQ(Frame(v210, planar, 6, 1), 1u);
  auto word = [&](int i) {
    uint32_t w;
    std::memcpy(&w, v210.planes[0]->data() + 4 * i, 4);
    return w;
  };
  auto v = [&](int k, int i) { return planar.At16(k, 0, i) >> 6; };
  // U0 Y0 V0 | Y1 U1 Y2 | V1 Y3 U2 | Y4 V2 Y5, ten bits each from bit 0.
  EXPECT_EQ(word(0), v(1, 0) | v(0, 0) << 10 | v(2, 0) << 20);
  EXPECT_EQ(word(1), v(0, 1) | v(1, 1) << 10 | v(0, 2) << 20);
  EXPECT_EQ(word(2), v(2, 1) | v(0, 3) << 10 | v(1, 2) << 20);
  EXPECT_EQ(word(3), v(0, 4) | v(2, 2) << 10 | v(0, 5) << 20);
}

TEST(DescriptorLayouts, SemiPlanarAndLowBitAndPackedOrders) {
  Img planar = Random16(TCS_FORMAT_YUV422_10BIT, 4, 2, 5);
  Img p210(TCS_FORMAT_P210, 4, 2), low(TCS_FORMAT_YUV422_10BIT_LOW, 4, 2),
      y210(TCS_FORMAT_YUV16_10BIT, 4, 2), uyvy(TCS_FORMAT_YUV16_10BIT_SWAP, 4, 2);
  for (Img *out : {&p210, &low, &y210, &uyvy}) ASSERT_EQ(Frame(*out, planar, 4, 2), 1u);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(p210.At16(1, 1, 2 * i), planar.At16(1, 1, i));
    EXPECT_EQ(p210.At16(1, 1, 2 * i + 1), planar.At16(2, 1, i));
    EXPECT_EQ(low.At16(2, 1, i), planar.At16(2, 1, i) >> 6);
    EXPECT_EQ(y210.At16(0, 1, 4 * i + 1), planar.At16(1, 1, i));
    EXPECT_EQ(y210.At16(0, 1, 4 * i + 2), planar.At16(0, 1, 2 * i + 1));
    EXPECT_EQ(uyvy.At16(0, 1, 4 * i + 3), planar.At16(0, 1, 2 * i + 1));
  }
}

TEST(DescriptorLayouts, TenBitToEightBitTruncates) {
  Img planar(TCS_FORMAT_YUV422_10BIT, 2, 1);
  const uint16_t values[] = {512, 1023, 3};  // Y, U, V
  for (int k = 0; k < 3; ++k)
    for (int i = 0; i < (k ? 1 : 2); ++i) planar.At16(k, 0, i) = values[k] << 6;
  for (int32_t code :
       std::vector<int32_t>{TCS_FORMAT_YUV422, TCS_FORMAT_YUV16_SWAP, TCS_FORMAT_NV16}) {
    Img out(code, 2, 1);
    ASSERT_EQ(Frame(out, planar, 2, 1), 1u);
    const uint8_t *b = out.planes[0]->data();
    if (code == TCS_FORMAT_YUV16_SWAP) {
      EXPECT_EQ(std::vector<int>(b, b + 4), (std::vector<int>{255, 128, 0, 128}));
    } else {
      EXPECT_EQ(b[0], 128);
      EXPECT_EQ(out.planes[1]->data()[0], 255);
    }
  }
}

TEST(DescriptorLayouts, DeepRgbKeepsItsComponentOrder) {
  Img rgba8(TCS_FORMAT_RGB32_SWAP, 1, 1);
  const uint8_t px[] = {10, 20, 30, 40};
  std::memcpy(rgba8.planes[0]->data(), px, 4);
  Img bgra16(TCS_FORMAT_RGB64, 1, 1), rgb48(TCS_FORMAT_RGB48_SWAP, 1, 1);
  ASSERT_EQ(Frame(bgra16, rgba8, 1, 1), 1u);
  ASSERT_EQ(Frame(rgb48, rgba8, 1, 1), 1u);
  EXPECT_EQ(bgra16.At16(0, 0, 0), 30 << 8);
  EXPECT_EQ(bgra16.At16(0, 0, 2), 10 << 8);
  EXPECT_EQ(rgb48.At16(0, 0, 0), 10 << 8);
  EXPECT_EQ(rgb48.At16(0, 0, 2), 30 << 8);
}

// ---------------------------------------------------------------------------
// Lossless pairs: every layout of one family converts to every other and back
// to the same samples, frame by frame and through a split and a compose.

struct Family {
  const char *name;
  int32_t reference;  // planar, filled with random samples
  int bits;           // significant bits every layout of the family keeps
  std::vector<int32_t> codes;
  // Frame-sited 4:2:0 is resampled into each field's own chroma: a split and
  // compose is not lossless.
  bool fieldsLossless = true;
};

const Family kFamilies[] = {
    {"Yuv422_10",
     TCS_FORMAT_YUV422_10BIT,
     10,
     {TCS_FORMAT_YUV16_10BIT, TCS_FORMAT_YUV16_10BIT_SWAP, TCS_FORMAT_V210, TCS_FORMAT_P210,
      TCS_FORMAT_YUV16_8PLUS2, TCS_FORMAT_YUV422_10BIT_LOW}},
    {"Yuv422_8",
     TCS_FORMAT_YUV422_10BIT,
     8,
     {TCS_FORMAT_YUV16, TCS_FORMAT_YUV16_SWAP, TCS_FORMAT_YUV422, TCS_FORMAT_NV16,
      TCS_FORMAT_V210}},
    {"Yuv420Field", TCS_FORMAT_YUV420_10BIT, 10, {TCS_FORMAT_P010, TCS_FORMAT_YUV420_10BIT_LOW}},
    {"Yuv420Frame",
     TCS_FORMAT_YUV420_10BIT_FRAME,
     10,
     {TCS_FORMAT_P010_FRAME, TCS_FORMAT_YUV420_10BIT_LOW_FRAME},
     false},
    {"Yuv420_8", TCS_FORMAT_YUV420_10BIT, 8, {TCS_FORMAT_YUV420, TCS_FORMAT_NV12, TCS_FORMAT_P010}},
    {"Rgb16", TCS_FORMAT_RGB48, 10, {TCS_FORMAT_RGB48_SWAP}},
};

class LosslessPairs : public ::testing::TestWithParam<Family> {};

TEST_P(LosslessPairs, EveryLayoutAndBack) {
  const Family &fam = GetParam();
  const int32_t w = 24, h = 8;
  const Img ref = Random16(fam.reference, w, h, 7, fam.bits);
  for (int32_t code : fam.codes) {
    SCOPED_TRACE(FindFormat(code)->name.data());
    for (uint8_t flip : {0, 1}) {
      Img mid(code, w, h), back(fam.reference, w, h, 99);
      ASSERT_EQ(Frame(mid, ref, w, h, flip), 1u);
      ASSERT_EQ(Frame(back, mid, w, h, flip), 1u);
      EXPECT_EQ(back.Content(), ref.Content());
    }
    if (!fam.fieldsLossless) continue;
    // Split into fields of the layout, compose back into the reference's.
    Img f1(code, w, h / 2, 3), f2(code, w, h / 2, 4), back(fam.reference, w, h, 5);
    ASSERT_EQ(Split(f1, f2, ref, w, h, 1), 1u);
    ASSERT_EQ(Compose(back, f1, f2, w, h, 1), 1u);
    EXPECT_EQ(back.Content(), ref.Content());
  }
}

INSTANTIATE_TEST_SUITE_P(Families, LosslessPairs, ::testing::ValuesIn(kFamilies),
                         [](const auto &info) { return std::string(info.param.name); });

// A split writes into each field what the frame form writes for the frame of
// that field's rows (packed and 4:2:2 layouts, where a field is its rows).
TEST(DescriptorFields, SplitEqualsTheFrameFormOnEachField) {
  const int32_t w = 12, h = 6;
  const Img src = Random16(TCS_FORMAT_YUV422_10BIT, w, h, 11);
  for (int32_t code :
       std::vector<int32_t>{TCS_FORMAT_V210, TCS_FORMAT_RGB64, TCS_FORMAT_YUV16_SWAP}) {
    Img f1(code, w, h / 2, 1), f2(code, w, h / 2, 2);
    ASSERT_EQ(Split(f1, f2, src, w, h), 1u);
    for (int f = 0; f < 2; ++f) {
      TCS_FrameDesc field = src.Desc(), out = (f ? f2 : f1).Desc();
      for (int k = 0; k < 3; ++k) {
        field.plane[k].data += f * field.plane[k].pitch;
        field.plane[k].pitch *= 2;
      }
      Img again(code, w, h / 2, 9);
      const TCS_FrameDesc a = again.Desc();
      ASSERT_EQ(General().TCS_ColorConvFrameEx(&a, &field, TCS_MATRIX_HD, w, h / 2, 0), 1u);
      EXPECT_EQ(again.Content(), (f ? f2 : f1).Content()) << code << " field " << f;
      (void)out;
    }
  }
}

// ---------------------------------------------------------------------------
// 4:2:0 chroma: per field for the field-sited codes, centred on the frame for
// the frame-sited ones.

// A 4:2:0 frame whose top field has chroma (a, b) and bottom field (c, d).
Img TwoFieldChroma(int32_t code, int32_t w, int32_t h) {
  Img img(code, w, h, 1);
  for (int64_t y = 0; y < h; ++y)
    for (int64_t i = 0; i < w; ++i) img.At16(0, y, i) = 512 << 6;
  for (int64_t c = 0; c < h / 2; ++c)
    for (int64_t i = 0; i < w / 2; ++i) {
      img.At16(1, c, i) = (c & 1 ? 100 : 900) << 6;
      img.At16(2, c, i) = (c & 1 ? 800 : 200) << 6;
    }
  return img;
}

TEST(Descriptor420, FieldSitedChromaNeverCrossesFields) {
  const int32_t w = 8, h = 12;
  const Img src = TwoFieldChroma(TCS_FORMAT_YUV420_10BIT, w, h);
  Img planar(TCS_FORMAT_YUV422_10BIT, w, h), rgb(TCS_FORMAT_RGB64_SWAP, w, h);
  ASSERT_EQ(Frame(planar, src, w, h), 1u);
  ASSERT_EQ(Frame(rgb, src, w, h), 1u);
  for (int64_t y = 0; y < h; ++y) {
    EXPECT_EQ(planar.At16(1, y, 1) >> 6, y & 1 ? 100 : 900) << y;
    EXPECT_EQ(planar.At16(2, y, 1) >> 6, y & 1 ? 800 : 200) << y;
    EXPECT_EQ(rgb.At16(0, y, 4), rgb.At16(0, y & 1, 4)) << y;  // one red per field
  }
  EXPECT_NE(rgb.At16(0, 0, 4), rgb.At16(0, 1, 4));
}

TEST(Descriptor420, FrameSitedChromaIsCentredBetweenItsRows) {
  const int32_t w = 4, h = 6;
  Img src(TCS_FORMAT_YUV420_10BIT_FRAME, w, h, 1);
  const int chroma[] = {100, 500, 900};
  for (int64_t c = 0; c < 3; ++c)
    for (int k = 1; k < 3; ++k)
      for (int64_t i = 0; i < 2; ++i) src.At16(k, c, i) = chroma[c] << 6;
  Img planar(TCS_FORMAT_YUV422_10BIT, w, h);
  ASSERT_EQ(Frame(planar, src, w, h), 1u);
  // Row 2c + 1 lies a quarter row from chroma row c, towards row c + 1.
  const int expected[] = {100, 200, 400, 600, 800, 900};
  for (int64_t y = 0; y < h; ++y) EXPECT_EQ(planar.At16(1, y, 0) >> 6, expected[y]) << y;
  // And back: the mean of each pair of rows.
  Img back(TCS_FORMAT_YUV420_10BIT_FRAME, w, h, 4);
  ASSERT_EQ(Frame(back, planar, w, h), 1u);
  EXPECT_EQ(back.At16(2, 1, 1) >> 6, 500);
  EXPECT_EQ(back.At16(2, 0, 1) >> 6, 150);
}

// ---------------------------------------------------------------------------
// Matrix conversions, against the float matrices of the public header.

TEST(DescriptorMatrix, Rgb48ToTenBitAndBackStaysNearTheReference) {
  const int32_t w = 16, h = 2;
  Img rgb = Random16(TCS_FORMAT_RGB48_SWAP, w, h, 21);
  Img yuv(TCS_FORMAT_YUV422_10BIT, w, h), back(TCS_FORMAT_RGB48_SWAP, w, h);
  ASSERT_EQ(Frame(yuv, rgb, w, h, 0, TCS_MATRIX_HD), 1u);
  ASSERT_EQ(Frame(back, yuv, w, h, 0, TCS_MATRIX_HD), 1u);
  for (int64_t y = 0; y < h; ++y)
    for (int64_t x = 0; x < w; x += 2) {  // chroma is taken from the even pixel
      double c[3];
      for (int k = 0; k < 3; ++k) c[k] = rgb.At16(0, y, 3 * x + k) >> 6;
      double luma = 0;
      for (int k = 0; k < 3; ++k) luma += g_matRGBA2YUVA_HD[0][k] * c[k];
      EXPECT_NEAR(yuv.At16(0, y, x) >> 6, std::clamp(luma, 0.0, 1023.0), 1.0);
      for (int k = 0; k < 3; ++k) EXPECT_NEAR(back.At16(0, y, 3 * x + k) >> 6, c[k], 3.0);
    }
}

TEST(DescriptorMatrix, SelectorsWithoutASetConvertNothing) {
  Img rgb(TCS_FORMAT_RGB48, 6, 2), v210(TCS_FORMAT_V210, 6, 2, 3);
  const auto before = v210.Content();
  for (int32_t matrix : {2, -1, 4}) EXPECT_EQ(Frame(v210, rgb, 6, 2, 0, matrix), 0u);
  EXPECT_EQ(v210.Content(), before);
  // A repack takes any selector the checks pass.
  Img y210(TCS_FORMAT_YUV16_10BIT, 6, 2);
  EXPECT_EQ(Frame(y210, v210, 6, 2, 0, 2), 1u);
}

// ---------------------------------------------------------------------------
// Refusals: result 0 and nothing written.

TEST(DescriptorRefusals, BadCallsWriteNothing) {
  Img src = Random16(TCS_FORMAT_YUV420_10BIT, 12, 8, 1);
  Img dst(TCS_FORMAT_V210, 12, 8, 2);
  const auto before = dst.Content();
  auto refused = [&](auto &&call) {
    EXPECT_EQ(call(), 0u);
    EXPECT_EQ(dst.Content(), before);
  };
  refused([&] { return Frame(dst, src, 10, 8); });  // not whole V210 groups
  refused([&] { return Frame(dst, src, 12, 7); });  // odd 4:2:0 height
  refused([&] { return Frame(dst, src, 0, 8); });
  refused([&] { return Frame(dst, src, 12, 8, 0, 4); });
  for (int32_t code : std::vector<int32_t>{TCS_FORMAT_RESERVED_1014, 1037, -1, TCS_FORMAT_YUVA}) {
    Img other(code == 1037 || code == -1 ? TCS_FORMAT_RGB32 : code, 12, 8);
    other.code = code;
    refused([&] { return Frame(dst, other, 12, 8); });
  }
  Img yuv411(TCS_FORMAT_YUV411, 12, 8);
  refused([&] { return Frame(dst, yuv411, 12, 8); });  // 4:1:1 converts to RGB only
  {
    TCS_FrameDesc d = dst.Desc(), s = src.Desc();
    s.plane[2].data = nullptr;
    refused([&] { return General().TCS_ColorConvFrameEx(&d, &s, 0, 12, 8, 0); });
    s = src.Desc();
    s.plane[1].pitch = 11;  // below six 16-bit chroma samples
    refused([&] { return General().TCS_ColorConvFrameEx(&d, &s, 0, 12, 8, 0); });
    refused([&] { return General().TCS_ColorConvFrameEx(&d, nullptr, 0, 12, 8, 0); });
  }
  // Fields of a 4:2:0 frame need a height of a multiple of four.
  Img f1(TCS_FORMAT_V210, 12, 3), f2(TCS_FORMAT_V210, 12, 3);
  EXPECT_EQ(Split(f1, f2, src, 12, 6), 0u);
  // The two fields in one format.
  Img g2(TCS_FORMAT_YUV16_10BIT, 12, 4);
  EXPECT_EQ(Split(f1, g2, src, 12, 8), 0u);
}

TEST(DescriptorRefusals, FailedScratchWritesNothing) {
  Img src = Random16(TCS_FORMAT_YUV420_10BIT, 12, 8, 1);
  Img dst(TCS_FORMAT_RGB64, 12, 8, 2);
  const auto before = dst.Content();
  const auto previous =
      tqcs::SetScratchAllocatorForTesting([](size_t) -> void * { return nullptr; });
  EXPECT_EQ(Frame(dst, src, 12, 8), 0u);
  tqcs::SetScratchAllocatorForTesting(previous);
  EXPECT_EQ(dst.Content(), before);
  EXPECT_EQ(Frame(dst, src, 12, 8), 1u);
}

}  // namespace
