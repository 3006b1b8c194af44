// Full/video range scaling (slots 14 and 15) through the general table: the
// values 0, 16, 128, 235, 240 and 255 at every byte position of every format
// class, against the mapped values worked out by hand from the ranges (luma,
// RGB and alpha 0..255 <-> 16..235, chroma 0..255 <-> 16..240, rounded to
// nearest and clamped); formats without scaling, silent refusals, and how
// RGB24 frames are cut into runs.
#include <utility>

#include "video/video_harness.hpp"

namespace {

using namespace tqcs::video_test;

constexpr uint8_t kInputs[6] = {0, 16, 128, 235, 240, 255};
// Mapped values of kInputs: [expand][chroma].
constexpr uint8_t kMapped[2][2][6] = {{{16, 30, 126, 218, 222, 235}, {16, 30, 128, 222, 226, 240}},
                                      {{0, 0, 130, 255, 255, 255}, {0, 0, 128, 250, 255, 255}}};

struct FormatClass {
  int32_t code;
  int32_t bytesPerPixel;
  const char *layout;  // per byte of a 4-byte group: 'C' chroma, anything else luma-like
};
void PrintTo(const FormatClass &c, std::ostream *os) { *os << "code" << c.code; }

const FormatClass kClasses[] = {{0, 4, "BGRA"}, {1, 4, "RGBA"}, {2, 4, "YCCA"}, {3, 3, "BGRB"},
                                {4, 3, "RGBR"}, {6, 2, "YCYC"}, {7, 2, "CYCY"}};

using Scale = decltype(TCS_GeneralTable::TCS_RangeCompressFrame);
Scale Way(bool expand) {
  return expand ? General().TCS_RangeExpandFrame : General().TCS_RangeCompressFrame;
}

// RGB24 rows go through TQMemProc's one-run routine, counted here: one run for
// the whole frame when both pitches are exactly 3 x width and there is no
// flip, else one a row.
int g_runs = 0;
void (*g_realRun)(uint8_t *, const uint8_t *, int16_t, int16_t, int32_t) = nullptr;
void CountingRun(uint8_t *d, const uint8_t *s, int16_t g, int16_t o, int32_t bytes) {
  ++g_runs;
  g_realRun(d, s, g, o, bytes);
}

class RangeValues : public ::testing::TestWithParam<FormatClass> {};

TEST_P(RangeValues, EveryValueAtEveryBytePositionBothWaysFlippedAndPadded) {
  const FormatClass c = GetParam();
  TMP_PixelTable pixel = *tqcs::g_pMemProcRoot->pPixel;
  TMP_APIStu root = *tqcs::g_pMemProcRoot;
  g_realRun = std::exchange(pixel.TMP_Scale_Run, &CountingRun);
  root.pPixel = &pixel;
  Scoped<TMP_APIStu *> counting(tqcs::g_pMemProcRoot, &root);
  const int32_t w = 6, h = 5, rowBytes = w * c.bytesPerPixel;
  auto input = [](int32_t y, int32_t b) { return (b / 4 + y + b) % 6; };
  for (bool expand : {false, true})
    for (uint8_t flip : {0, 1})
      for (auto [padD, padS] : {std::pair{0, 0}, {5, 5}, {1, 0}, {0, 3}}) {
        SCOPED_TRACE(::testing::Message() << "expand " << expand << " flip " << int{flip}
                                          << " pads " << padD << "/" << padS);
        Picture src(rowBytes + padS, h, 1), dst(rowBytes + padD, h, 3), expected = dst;
        for (int32_t y = 0; y < h; ++y)
          for (int32_t b = 0; b < rowBytes; ++b) {
            src.Row(y)[b] = kInputs[input(y, b)];
            expected.Row(flip ? h - 1 - y : y)[b] =
                kMapped[expand][c.layout[b % 4] == 'C'][input(y, b)];
          }
        g_runs = 0;
        Way(expand)(dst.mem.data(), dst.pitch, src.mem.data(), src.pitch, c.code, w, h, flip);
        EXPECT_EQ(Bytes(dst.mem), Bytes(expected.mem));
        EXPECT_EQ(g_runs, c.bytesPerPixel != 3 ? 0 : padD || padS || flip ? h : 1);
      }
}

INSTANTIATE_TEST_SUITE_P(Classes, RangeValues, ::testing::ValuesIn(kClasses));

// Nothing is done, and nothing logged, for formats without scaling and for
// refused arguments.
TEST(RangeRefusals, UnscaledFormatsAndRefusedArgumentsLeaveTheDestination) {
  struct Case {
    int32_t format = 0;
    int64_t dstPitch = 16, srcPitch = 16;  // the pitches are compared with the width
    int32_t width = 4, height = 3;
    bool nullDst = false, nullSrc = false;
  };
  const Case cases[] = {{.format = 5},    {.format = 8},  {.format = 9},         {.format = 10},
                        {.format = 11},   {.format = -1}, {.format = INT32_MAX}, {.dstPitch = 3},
                        {.srcPitch = 3},  {.width = 0},   {.height = 0},         {.nullDst = true},
                        {.nullSrc = true}};
  Picture src(16, 3, 1);
  LogCapture log;
  for (const Case &k : cases)
    for (bool expand : {false, true}) {
      Picture dst(16, 3, 2), before = dst;
      Way(expand)(k.nullDst ? nullptr : dst.mem.data(), k.dstPitch,
                  k.nullSrc ? nullptr : src.mem.data(), k.srcPitch, k.format, k.width, k.height, 0);
      EXPECT_EQ(Bytes(dst.mem), Bytes(before.mem))
          << "format " << k.format << " pitches " << k.dstPitch << "/" << k.srcPitch;
    }
  EXPECT_TRUE(log.records().empty());
}

}  // namespace
