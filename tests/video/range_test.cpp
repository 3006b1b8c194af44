// Full/video range scaling (slots 14 and 15) through the general table: the
// values 0, 16, 128, 235, 240 and 255 at every byte position of every format
// class, against the mapped values worked out by hand from the ranges (luma,
// RGB and alpha 0..255 <-> 16..235, chroma 0..255 <-> 16..240, rounded to
// nearest and clamped); formats without scaling, silent refusals, and how
// RGB24 frames are cut into runs.
#include <TQColorSpace/TQColorSpace.h>
#include <gtest/gtest.h>

#include <vector>

#include "core/startup.hpp"
#include "support/buffers.hpp"
#include "support/log_capture.hpp"

namespace {

using tqcs::test::GuardedBuffer;

class Library : public ::testing::Environment {
 public:
  void SetUp() override { ASSERT_EQ(TCS_DllMain(nullptr, TCS_REASON_PROCESS_ATTACH, nullptr), 1); }
};
[[maybe_unused]] const auto *const kLibrary = ::testing::AddGlobalTestEnvironment(new Library);

const TCS_GeneralTable &General() { return *g_pColorSpaceAPI->pGeneral; }

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

class RangeValues : public ::testing::TestWithParam<FormatClass> {};

TEST_P(RangeValues, EveryValueAtEveryBytePositionBothWaysFlippedAndPadded) {
  const FormatClass c = GetParam();
  const int32_t w = 6, h = 5;
  const int32_t rowBytes = w * c.bytesPerPixel;
  for (bool expand : {false, true})
    for (uint8_t flip : {0, 1})
      for (int32_t pad : {0, 5}) {
        SCOPED_TRACE(::testing::Message()
                     << "expand " << expand << " flip " << int{flip} << " pad " << pad);
        const int64_t pitch = rowBytes + pad;
        std::vector<uint8_t> src(pitch * h);
        for (int32_t y = 0; y < h; ++y)
          for (int32_t b = 0; b < rowBytes; ++b) src[y * pitch + b] = kInputs[(b / 4 + y + b) % 6];
        GuardedBuffer dst(pitch * h, 1);
        dst.Randomize(3);
        std::vector<uint8_t> expected(dst.data(), dst.data() + dst.size());
        for (int32_t y = 0; y < h; ++y)
          for (int32_t b = 0; b < rowBytes; ++b) {
            const int index = (b / 4 + y + b) % 6;
            const bool chroma = c.layout[b % 4] == 'C';
            expected[(flip ? h - 1 - y : y) * pitch + b] = kMapped[expand][chroma][index];
          }
        Scale scale = expand ? General().TCS_RangeExpandFrame : General().TCS_RangeCompressFrame;
        scale(dst.data(), pitch, src.data(), pitch, c.code, w, h, flip);
        EXPECT_EQ(std::vector<uint8_t>(dst.data(), dst.data() + dst.size()), expected);
        EXPECT_TRUE(dst.CanariesIntact());
      }
}

INSTANTIATE_TEST_SUITE_P(Classes, RangeValues, ::testing::ValuesIn(kClasses));

// Nothing is done, and nothing logged, for formats without scaling and for
// refused arguments.
TEST(RangeRefusals, UnscaledFormatsAndRefusedArgumentsLeaveTheDestination) {
  const int32_t w = 4, h = 3;
  const std::vector<uint8_t> src = tqcs::test::RandomBytes(16 * h, 1);
  struct Case {
    int32_t format;
    int64_t dstPitch, srcPitch;
    int32_t width, height;
    bool nullDst, nullSrc;
  };
  const Case cases[] = {{5, 16, 16, w, h, false, false},         {8, 16, 16, w, h, false, false},
                        {9, 16, 16, w, h, false, false},         {10, 16, 16, w, h, false, false},
                        {11, 16, 16, w, h, false, false},        {-1, 16, 16, w, h, false, false},
                        {INT32_MAX, 16, 16, w, h, false, false}, {0, w - 1, 16, w, h, false, false},
                        {0, 16, w - 1, w, h, false, false},      {0, 16, 16, 0, h, false, false},
                        {0, 16, 16, w, 0, false, false},         {0, 16, 16, w, h, true, false},
                        {0, 16, 16, w, h, false, true}};
  tqcs::test::LogCapture log;
  for (const Case &k : cases)
    for (Scale scale : {General().TCS_RangeCompressFrame, General().TCS_RangeExpandFrame}) {
      GuardedBuffer dst(16 * h);
      dst.Randomize(2);
      const std::vector<uint8_t> before(dst.data(), dst.data() + dst.size());
      scale(k.nullDst ? nullptr : dst.data(), k.dstPitch, k.nullSrc ? nullptr : src.data(),
            k.srcPitch, k.format, k.width, k.height, 0);
      EXPECT_EQ(std::vector<uint8_t>(dst.data(), dst.data() + dst.size()), before)
          << "format " << k.format << " pitches " << k.dstPitch << "/" << k.srcPitch;
    }
  EXPECT_TRUE(log.records().empty());
}

// RGB24 frames go through the one-run routine: once for the whole frame when
// both pitches are exactly 3 x width and there is no flip, else once a row.
int g_runs = 0;
void (*g_realRun)(uint8_t *, const uint8_t *, int16_t, int16_t, int32_t) = nullptr;
void CountingRun(uint8_t *d, const uint8_t *s, int16_t g, int16_t o, int32_t bytes) {
  ++g_runs;
  g_realRun(d, s, g, o, bytes);
}

TEST(RangeRuns, OneRunForPackedUnflippedRGB24ElseOneARow) {
  TMP_APIStu *real = tqcs::g_pMemProcRoot;
  TMP_PixelTable pixel = *real->pPixel;
  g_realRun = pixel.TMP_Scale_Run;
  pixel.TMP_Scale_Run = &CountingRun;
  TMP_APIStu counting = *real;
  counting.pPixel = &pixel;
  tqcs::g_pMemProcRoot = &counting;
  const int32_t w = 5, h = 4;
  const struct {
    int64_t dstPitch, srcPitch;
    uint8_t flip;
    int runs;
  } cases[] = {{15, 15, 0, 1}, {15, 15, 1, h}, {16, 15, 0, h}, {16, 16, 0, h}};
  for (const auto &c : cases) {
    std::vector<uint8_t> src(c.srcPitch * h, 235), dst(c.dstPitch * h, 0);
    g_runs = 0;
    General().TCS_RangeExpandFrame(dst.data(), c.dstPitch, src.data(), c.srcPitch, 4, w, h, c.flip);
    EXPECT_EQ(g_runs, c.runs);
    for (int32_t y = 0; y < h; ++y)
      for (int32_t b = 0; b < 3 * w; ++b) ASSERT_EQ(dst[y * c.dstPitch + b], 255);
  }
  tqcs::g_pMemProcRoot = real;
}

}  // namespace
