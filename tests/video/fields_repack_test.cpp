// Field split and compose (slots 12, 13), the 24/32-bit repackers and the
// channel split (slots 3 to 11), all through the general table. Each operation
// is described by the bytes of one pixel on either side and a per-pixel model
// written from the stated rules; one row model then predicts every form, flip
// and odd height. The repackers run over the kernel tables of every test level.
#include <TQColorSpace/TQColorSpace.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "core/api.hpp"
#include "core/startup.hpp"
#include "support/buffers.hpp"
#include "support/log_capture.hpp"

namespace {

using tqcs::test::GuardedBuffer;
using tqcs::test::LogCapture;
using tqcs::test::LogRecord;

// Loads the library state once, before any test captures log records.
class Library : public ::testing::Environment {
 public:
  void SetUp() override { ASSERT_EQ(TCS_DllMain(nullptr, TCS_REASON_PROCESS_ATTACH, nullptr), 1); }
};
[[maybe_unused]] const auto *const kLibrary = ::testing::AddGlobalTestEnvironment(new Library);

const TCS_GeneralTable &General() { return *g_pColorSpaceAPI->pGeneral; }

// Points the root at another kernel table while alive.
class KernelTableSwap {
 public:
  explicit KernelTableSwap(const TCS_KernelTable &table) : saved_(g_pColorSpaceAPI->pKernel) {
    g_pColorSpaceAPI->pKernel = const_cast<TCS_KernelTable *>(&table);
  }
  ~KernelTableSwap() { g_pColorSpaceAPI->pKernel = saved_; }

 private:
  TCS_KernelTable *saved_;
};

enum Form { kFrame, kSplit, kCompose };

// The images of a call in argument order: frame (dst, src), split (field 1,
// field 2, src), compose (dst, field 1, field 2).
struct Img {
  uint8_t *p;
  int64_t pitch;
};
using Call = std::function<void(Form, Img, Img, Img, int32_t w, int32_t h, uint8_t flip)>;

struct Op {
  std::string name;
  int inBytes, outBytes;
  bool hasFrame;  // the plain field operations have no frame form
  bool keepsOdd;  // an odd last row goes into (or comes from) field 1
  std::function<void(uint8_t *out, const uint8_t *in)> pixel;
  Call call;
  std::u16string frame, split, compose, unit;  // log names; no frame name: no frame check
};
void PrintTo(const Op &op, std::ostream *os) { *os << op.name; }

Op Copy(int bpp) {
  return {"Fields" + std::to_string(bpp),
          bpp,
          bpp,
          false,
          false,
          [bpp](uint8_t *o, const uint8_t *i) { std::copy(i, i + bpp, o); },
          [bpp](Form f, Img a, Img b, Img c, int32_t w, int32_t h, uint8_t flip) {
            if (f == kSplit)
              General().TCS_SplitFrame(a.p, a.pitch, b.p, b.pitch, c.p, c.pitch, w, h, bpp, flip);
            else
              General().TCS_ComposeFields(a.p, a.pitch, b.p, b.pitch, c.p, c.pitch, w, h, bpp,
                                          flip);
          },
          u"",
          u"TCS_SplitFrame()",
          u"TCS_ComposeFields()",
          u"TQVideoConvAPI"};
}

#define TQCS_FORMS(base, ...)                                                                    \
  [=](Form f, Img a, Img b, Img c, int32_t w, int32_t h, uint8_t flip) {                         \
    const TCS_GeneralTable &g = General();                                                       \
    if (f == kFrame) g.TCS_##base##_Frame(a.p, a.pitch, b.p, b.pitch, w, h, __VA_ARGS__, flip);  \
    if (f == kSplit)                                                                             \
      g.TCS_##base##_Split(a.p, a.pitch, b.p, b.pitch, c.p, c.pitch, w, h, __VA_ARGS__, flip);   \
    if (f == kCompose)                                                                           \
      g.TCS_##base##_Compose(a.p, a.pitch, b.p, b.pitch, c.p, c.pitch, w, h, __VA_ARGS__, flip); \
  }
#define TQCS_NAMES(base) \
  u"TCS_" #base "_Frame()", u"TCS_" #base "_Split()", u"TCS_" #base "_Compose()", u"TQVideoColorAPI"

Op Channel(int32_t ch) {
  return {"Channel" + std::to_string(ch),
          4,
          1,
          true,
          true,
          [ch](uint8_t *o, const uint8_t *i) { o[0] = i[ch]; },
          TQCS_FORMS(Cr32_Split_Channel, ch),
          u"",
          u"TCS_Cr32_Split_Channel_Split()",
          u"TCS_Cr32_Split_Channel_Compose()",
          u"TQVideoColorAPI"};
}
Op Widen(uint8_t swap, uint8_t alpha) {
  return {"Widen" + std::to_string(swap),
          3,
          4,
          true,
          true,
          [=](uint8_t *o, const uint8_t *i) {
            o[0] = swap ? i[2] : i[0], o[1] = i[1], o[2] = swap ? i[0] : i[2], o[3] = alpha;
          },
          TQCS_FORMS(Cr24_2_Cr32, swap, alpha),
          TQCS_NAMES(Cr24_2_Cr32)};
}
Op Narrow(uint8_t swap) {
  return {"Narrow" + std::to_string(swap),
          4,
          3,
          true,
          true,
          [=](uint8_t *o, const uint8_t *i) {
            o[0] = swap ? i[2] : i[0], o[1] = i[1], o[2] = swap ? i[0] : i[2];
          },
          TQCS_FORMS(Cr32_2_Cr24, swap),
          TQCS_NAMES(Cr32_2_Cr24)};
}

// A buffer of `rows` rows of `bytes` each, `pad` bytes between rows, random.
struct Image {
  Image(int32_t rows, int32_t bytes, int32_t pad, uint32_t seed)
      : pitch(bytes + pad), buf(static_cast<size_t>(pitch * std::max(rows, 1)), 3) {
    buf.Randomize(seed);
  }
  int64_t pitch;
  GuardedBuffer buf;
  Img img() { return {buf.data(), pitch}; }
  uint8_t *Row(int32_t y) { return buf.data() + y * pitch; }
};

struct Sizes {
  int32_t w, h, pad;
  uint8_t flip;
};

// The expected output images: the old contents with every modelled row.
void Model(const Op &op, Form f, const Sizes &s, std::vector<Image> &io) {
  auto frameRow = [&](int32_t r) { return s.flip ? s.h - 1 - r : r; };
  auto convert = [&](uint8_t *out, const uint8_t *in) {
    for (int32_t x = 0; x < s.w; ++x) op.pixel(out + x * op.outBytes, in + x * op.inBytes);
  };
  const int32_t pairs = s.h / 2;
  if (f == kFrame)
    for (int32_t y = 0; y < s.h; ++y) convert(io[0].Row(frameRow(y)), io[1].Row(y));
  for (int32_t i = 0; f == kSplit && i < pairs; ++i) {
    convert(io[0].Row(i), io[2].Row(frameRow(2 * i)));
    convert(io[1].Row(i), io[2].Row(frameRow(2 * i + 1)));
  }
  for (int32_t i = 0; f == kCompose && i < pairs; ++i) {
    convert(io[0].Row(frameRow(2 * i)), io[1].Row(i));
    convert(io[0].Row(frameRow(2 * i + 1)), io[2].Row(i));
  }
  if (s.h % 2 && op.keepsOdd && f == kSplit) {
    convert(io[0].Row(pairs), io[2].Row(frameRow(s.h - 1)));
    convert(io[1].Row(pairs), io[2].Row(frameRow(s.h - 1)));
  }
  if (s.h % 2 && op.keepsOdd && f == kCompose)
    convert(io[0].Row(frameRow(s.h - 1)), io[1].Row(pairs));
}

// The images of one form: outputs get their own bytes per pixel, fields hold
// (h + 1) / 2 rows.
std::vector<Image> MakeImages(const Op &op, Form f, const Sizes &s, uint32_t seed) {
  const int32_t fieldRows = (s.h + 1) / 2;
  std::vector<Image> io;
  if (f == kFrame) {
    io.emplace_back(s.h, s.w * op.outBytes, s.pad, seed);
    io.emplace_back(s.h, s.w * op.inBytes, s.pad, seed + 1);
  } else if (f == kSplit) {
    io.emplace_back(fieldRows, s.w * op.outBytes, s.pad, seed);
    io.emplace_back(fieldRows, s.w * op.outBytes, s.pad + 2, seed + 1);
    io.emplace_back(s.h, s.w * op.inBytes, s.pad, seed + 2);
  } else {
    io.emplace_back(s.h, s.w * op.outBytes, s.pad, seed);
    io.emplace_back(fieldRows, s.w * op.inBytes, s.pad + 2, seed + 1);
    io.emplace_back(fieldRows, s.w * op.inBytes, s.pad, seed + 2);
  }
  return io;
}

std::vector<uint8_t> Bytes(const Image &im) {
  return {im.buf.data(), im.buf.data() + im.buf.size()};
}

std::vector<Op> AllOps() {
  return {Copy(1),    Copy(2),        Copy(3),        Copy(4),   Channel(0),
          Channel(3), Widen(0, 0x5A), Widen(1, 0xFF), Narrow(0), Narrow(1)};
}

class RowModel : public ::testing::TestWithParam<std::tuple<Op, uint32_t>> {};

TEST_P(RowModel, EveryFormFlipAndOddHeightMatchesTheRowModel) {
  const auto &[op, level] = GetParam();
  KernelTableSwap swap(tqcs::test::KernelTableForLevel(level));
  const Sizes sizes[] = {{5, 5, 0, 0}, {5, 5, 3, 1}, {6, 4, 0, 1}, {6, 4, 7, 0},
                         {1, 1, 0, 0}, {3, 3, 1, 1}, {7, 2, 0, 0}, {4, 9, 0, 1}};
  uint32_t seed = 1;
  for (const Sizes &s : sizes)
    for (Form f : {kFrame, kSplit, kCompose}) {
      if (f == kFrame && !op.hasFrame) continue;
      SCOPED_TRACE(::testing::Message() << "form " << f << " " << s.w << "x" << s.h << " pad "
                                        << s.pad << " flip " << int{s.flip});
      auto io = MakeImages(op, f, s, seed), expected = MakeImages(op, f, s, seed);
      seed += 3;
      Model(op, f, s, expected);
      LogCapture log;
      op.call(f, io[0].img(), io[1].img(), f == kFrame ? Img{} : io[2].img(), s.w, s.h, s.flip);
      EXPECT_TRUE(log.records().empty());
      for (size_t i = 0; i < io.size(); ++i) {
        EXPECT_EQ(Bytes(io[i]), Bytes(expected[i])) << "image " << i;
        EXPECT_TRUE(io[i].buf.CanariesIntact()) << "image " << i;
      }
    }
}

INSTANTIATE_TEST_SUITE_P(Ops, RowModel,
                         ::testing::Combine(::testing::ValuesIn(AllOps()),
                                            ::testing::ValuesIn(tqcs::test::KernelTestLevels())));

// ---- Refusals -------------------------------------------------------------------

struct Bad {
  const char *name;
  std::function<void(Img &, Img &, Img &, int32_t &w, int32_t &h)> spoil;
};
void PrintTo(const Bad &b, std::ostream *os) { *os << b.name; }

std::vector<Bad> Spoilers() {
  using I = Img &;
  return {{"NullA", [](I a, I, I, int32_t &, int32_t &) { a.p = nullptr; }},
          {"NullB", [](I, I b, I, int32_t &, int32_t &) { b.p = nullptr; }},
          {"NullC", [](I, I, I c, int32_t &, int32_t &) { c.p = nullptr; }},
          {"ZeroPitchA", [](I a, I, I, int32_t &, int32_t &) { a.pitch = 0; }},
          {"NegativePitchB", [](I, I b, I, int32_t &, int32_t &) { b.pitch = -b.pitch; }},
          {"ZeroPitchC", [](I, I, I c, int32_t &, int32_t &) { c.pitch = 0; }},
          {"ZeroWidth", [](I, I, I, int32_t &w, int32_t &) { w = 0; }},
          {"NegativeHeight", [](I, I, I, int32_t &, int32_t &h) { h = -2; }}};
}

class Refusal : public ::testing::TestWithParam<std::tuple<Op, Bad>> {};

TEST_P(Refusal, CheckedFormsLogOnceUnderTheirOwnNamesAndWriteNothing) {
  const auto &[op, bad] = GetParam();
  for (Form f : {kFrame, kSplit, kCompose}) {
    // Frame forms: the repackers check, the others have none or check nothing.
    if (f == kFrame && (op.frame.empty() || std::string(bad.name).back() == 'C')) continue;
    const Sizes s{4, 4, 0, 0};
    auto io = MakeImages(op, f, s, 9), before = io;
    Img a = io[0].img(), b = io[1].img(), c = f == kFrame ? Img{} : io[2].img();
    int32_t w = s.w, h = s.h;
    bad.spoil(a, b, c, w, h);
    LogCapture log;
    op.call(f, a, b, c, w, h, 0);
    const std::u16string &name = f == kFrame ? op.frame : f == kSplit ? op.split : op.compose;
    const LogRecord record{1, op.unit, name, u"%s", u"Invalid Input Parameters"};
    EXPECT_EQ(log.records(), std::vector<LogRecord>{record}) << "form " << f;
    for (size_t i = 0; i < io.size(); ++i) EXPECT_EQ(Bytes(io[i]), Bytes(before[i]));
  }
}

INSTANTIATE_TEST_SUITE_P(Ops, Refusal,
                         ::testing::Combine(::testing::ValuesIn(AllOps()),
                                            ::testing::ValuesIn(Spoilers())));

TEST(Refusal, BytesPerPixelBelowOneAndChannelsOutsideZeroToThree) {
  for (const Op &op : {Copy(0), Copy(-1), Channel(4), Channel(-1)})
    for (Form f : {kSplit, kCompose}) {
      auto io = MakeImages(Copy(4), f, {4, 4, 0, 0}, 5), before = io;
      LogCapture log;
      op.call(f, io[0].img(), io[1].img(), io[2].img(), 4, 4, 0);
      ASSERT_EQ(log.records().size(), 1u) << op.name;
      EXPECT_EQ(log.records()[0].function, f == kSplit ? op.split : op.compose);
      for (size_t i = 0; i < io.size(); ++i) EXPECT_EQ(Bytes(io[i]), Bytes(before[i]));
    }
}

TEST(Refusal, ChannelFrameFormChecksNothingItselfAndLogsNothing) {
  auto io = MakeImages(Channel(0), kFrame, {4, 4, 0, 0}, 5), before = io;
  LogCapture log;
  for (int32_t ch : {4, -1}) Channel(ch).call(kFrame, io[0].img(), io[1].img(), {}, 4, 4, 0);
  Channel(0).call(kFrame, io[0].img(), io[1].img(), {}, 0, 4, 0);
  EXPECT_TRUE(log.records().empty());
  EXPECT_EQ(Bytes(io[0]), Bytes(before[0]));
}

// ---- Literal cases ----------------------------------------------------------------

TEST(Literal, ExchangeFlagAndTheTwoOddHeightRules) {
  // Five rows of one pixel each; the pixel of row r is (r, 10 + r, 20 + r).
  uint8_t frame[15];
  for (int r = 0; r < 5; ++r)
    frame[3 * r] = r, frame[3 * r + 1] = 10 + r, frame[3 * r + 2] = 20 + r;
  uint8_t top[12] = {}, bottom[12] = {};
  General().TCS_Cr24_2_Cr32_Split(top, 4, bottom, 4, frame, 3, 1, 5, 1, 0xA0, 0);
  const uint8_t expectTop[12] = {20, 10, 0, 0xA0, 22, 12, 2, 0xA0, 24, 14, 4, 0xA0};
  const uint8_t expectBottom[12] = {21, 11, 1, 0xA0, 23, 13, 3, 0xA0, 24, 14, 4, 0xA0};
  EXPECT_EQ(0, std::memcmp(top, expectTop, 12));
  EXPECT_EQ(0, std::memcmp(bottom, expectBottom, 12));

  // The plain field split drops the fifth row.
  uint8_t top3[9] = {}, bottom3[9] = {};
  EXPECT_EQ(General().TCS_SplitFrame(top3, 3, bottom3, 3, frame, 3, 1, 5, 3, 0), 1u);
  const uint8_t expectTop3[9] = {0, 10, 20, 2, 12, 22, 0, 0, 0};
  const uint8_t expectBottom3[9] = {1, 11, 21, 3, 13, 23, 0, 0, 0};
  EXPECT_EQ(0, std::memcmp(top3, expectTop3, 9));
  EXPECT_EQ(0, std::memcmp(bottom3, expectBottom3, 9));
}

TEST(Literal, SplitThenComposeRestoresAnEvenHeightFrame) {
  for (uint8_t flip : {0, 1}) {
    const auto frame = tqcs::test::RandomBytes(6 * 8, 77);
    std::vector<uint8_t> top(6 * 4), bottom(6 * 4), back(6 * 8);
    General().TCS_SplitFrame(top.data(), 6, bottom.data(), 6, frame.data(), 6, 3, 8, 2, flip);
    General().TCS_ComposeFields(back.data(), 6, top.data(), 6, bottom.data(), 6, 3, 8, 2, flip);
    EXPECT_EQ(back, frame) << int{flip};
  }
}

// ---- Kernel calls ---------------------------------------------------------------

int g_calls = 0;
void CountingWiden(uint8_t *d, const uint8_t *s, int32_t n, uint8_t a) {
  ++g_calls;
  tqcs::test::KernelTableForLevel(0).RGB24_2_RGB32_Row(d, s, n, a);
}

TEST(KernelCalls, WholeFrameInOneCallOnlyWithPackedPitchesAndNoFlip) {
  TCS_KernelTable counting = tqcs::test::KernelTableForLevel(0);
  counting.RGB24_2_RGB32_Row = &CountingWiden;
  KernelTableSwap swap(counting);
  std::vector<uint8_t> src(3 * 5 * 6), dst(4 * 5 * 6);
  const struct {
    int64_t dstPitch;
    uint8_t flip;
    int calls;
  } cases[] = {{20, 0, 1}, {20, 1, 6}, {24, 0, 6}};
  for (const auto &c : cases) {
    g_calls = 0;
    dst.resize(c.dstPitch * 6);
    General().TCS_Cr24_2_Cr32_Frame(dst.data(), c.dstPitch, src.data(), 15, 5, 6, 0, 0, c.flip);
    EXPECT_EQ(g_calls, c.calls) << c.dstPitch << " " << int{c.flip};
  }
}

}  // namespace
