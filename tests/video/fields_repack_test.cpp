// Field split and compose (slots 12, 13), the 24/32-bit repackers and the
// channel split (slots 3 to 11), through the general table. Each operation is
// described by the bytes of a pixel on either side and a per-pixel model
// written from the stated rules; one row model then predicts every form, flip,
// pitch and odd height. The repackers run over the kernel tables of every test
// level.
#include <array>
#include <functional>
#include <numeric>

#include "video/video_harness.hpp"

namespace {

using namespace tqcs::video_test;
using G = TCS_GeneralTable;
using Caller = std::function<void(const std::vector<PlaneArg> &, int32_t, int32_t, uint8_t)>;

// One form of an operation, read from the live table at each call.
template <class M>
Caller Bind(M G::*slot, std::vector<int64_t> options) {
  return [=](const std::vector<PlaneArg> &planes, int32_t w, int32_t h, uint8_t flip) {
    CallSlot(General().*slot, planes, w, h, options, flip);
  };
}

// Each output byte of a pixel is input byte picks[k], or the constant
// picks[k] - 256.
struct Op {
  std::string name{};
  int inBytes = 0;
  std::vector<int> picks{};
  // An odd last frame row goes with row h / 2 of field 1 (of both in a split).
  bool keepsOdd = true;
  // Frame (none for the plain field operations), split and compose, and their
  // log names (none: the form checks nothing itself).
  Caller forms[3]{};
  std::u16string unit = u"TQVideoColorAPI", names[3]{};
};
void PrintTo(const Op &op, std::ostream *os) { *os << op.name; }

// The forms of a repacker with their options, and their log names.
#define REPACKER(op, base, frameChecks, ...)                   \
  op.forms[0] = Bind(&G::TCS_##base##_Frame, {__VA_ARGS__});   \
  op.forms[1] = Bind(&G::TCS_##base##_Split, {__VA_ARGS__});   \
  op.forms[2] = Bind(&G::TCS_##base##_Compose, {__VA_ARGS__}); \
  op.names[0] = frameChecks ? u"TCS_" #base "_Frame()" : u"";  \
  op.names[1] = u"TCS_" #base "_Split()";                      \
  op.names[2] = u"TCS_" #base "_Compose()"

// Images of at least one byte a pixel, also for the refused sizes.
Op Fields(int bpp) {
  Op op{"Fields" + std::to_string(bpp), std::max(bpp, 1), std::vector<int>(std::max(bpp, 1)),
        false};
  std::iota(op.picks.begin(), op.picks.end(), 0);
  op.forms[1] = Bind(&G::TCS_SplitFrame, {bpp}), op.names[1] = u"TCS_SplitFrame()";
  op.forms[2] = Bind(&G::TCS_ComposeFields, {bpp}), op.names[2] = u"TCS_ComposeFields()";
  op.unit = u"TQVideoConvAPI";
  return op;
}
Op Channel(int ch) {
  Op op{"Channel" + std::to_string(ch), 4, {ch}};
  REPACKER(op, Cr32_Split_Channel, false, ch);
  return op;
}
Op Widen(int swap, int alpha) {
  Op op{"Widen" + std::to_string(swap), 3, {2 * swap, 1, 2 - 2 * swap, 256 + alpha}};
  REPACKER(op, Cr24_2_Cr32, true, swap, alpha);
  return op;
}
Op Narrow(int swap) {
  Op op{"Narrow" + std::to_string(swap), 4, {2 * swap, 1, 2 - 2 * swap}};
  REPACKER(op, Cr32_2_Cr24, true, swap);
  return op;
}

std::vector<Op> AllOps() {
  return {Fields(1),  Fields(2),      Fields(3),      Fields(4), Channel(0),
          Channel(3), Widen(0, 0x5A), Widen(1, 0xFF), Narrow(0), Narrow(1)};
}

struct Sizes {
  int32_t w, h, padOut, padIn;
  uint8_t flip;
};

// The images of one form: fields of (h + 1) / 2 rows, the two with pitches of
// their own.
std::vector<Picture> MakeImages(const Op &op, Form f, const Sizes &s, uint32_t seed) {
  std::vector<Picture> io;
  for (int i = 0; i < ImageCount(f); ++i) {
    const bool out = IsOutput(f, i), field = IsField(f, i);
    io.emplace_back((out ? int(op.picks.size()) : op.inBytes) * s.w + (out ? s.padOut : s.padIn) +
                        (field ? 2 * i : 0),
                    field ? (s.h + 1) / 2 : s.h, seed + i);
  }
  return io;
}

// The expected images: the old contents with every modelled row.
void Model(const Op &op, Form f, const Sizes &s, std::vector<Picture> &io) {
  auto convert = [&](uint8_t *out, const uint8_t *in) {
    for (int32_t x = 0; x < s.w; ++x)
      for (size_t k = 0; k < op.picks.size(); ++k)
        out[x * op.picks.size() + k] =
            op.picks[k] >= 256 ? op.picks[k] - 256 : in[x * op.inBytes + op.picks[k]];
  };
  auto frameRow = [&](int32_t r) { return s.flip ? s.h - 1 - r : r; };
  if (f == kFrame) {
    for (int32_t y = 0; y < s.h; ++y) convert(io[0].Row(frameRow(y)), io[1].Row(y));
    return;
  }
  std::vector<std::array<int32_t, 3>> links;  // frame row, field 1 or 2, field row
  for (int32_t i = 0; i < s.h / 2; ++i)
    links.push_back({2 * i, 1, i}), links.push_back({2 * i + 1, 2, i});
  if (s.h % 2 && op.keepsOdd) links.push_back({s.h - 1, 1, s.h / 2});
  if (s.h % 2 && op.keepsOdd && f == kSplit) links.push_back({s.h - 1, 2, s.h / 2});
  for (const auto &[r, field, y] : links) {
    if (f == kSplit) convert(io[field - 1].Row(y), io[2].Row(frameRow(r)));
    if (f == kCompose) convert(io[0].Row(frameRow(r)), io[field].Row(y));
  }
}

class RowModel : public ::testing::TestWithParam<std::tuple<Op, uint32_t>> {};

TEST_P(RowModel, EveryFormFlipPitchAndOddHeightMatchesTheRowModel) {
  // Named references, not bindings: lambdas below use them.
  const auto &op = std::get<0>(GetParam());
  const auto &level = std::get<1>(GetParam());
  Scoped<TCS_KernelTable *> table(
      g_pColorSpaceAPI->pKernel,
      const_cast<TCS_KernelTable *>(&tqcs::test::KernelTableForLevel(level)));
  // Packed and padded on either side: a frame goes through one kernel call
  // only when both are packed.
  const Sizes sizes[] = {{5, 5, 0, 0, 0}, {5, 5, 3, 0, 1}, {6, 4, 0, 5, 0}, {6, 4, 7, 2, 1},
                         {1, 1, 0, 0, 0}, {3, 3, 1, 1, 1}, {7, 2, 0, 0, 1}, {4, 9, 0, 3, 0}};
  uint32_t seed = 1;
  for (const Sizes &s : sizes)
    for (Form f : kForms) {
      if (!op.forms[f]) continue;
      SCOPED_TRACE(::testing::Message() << "form " << f << " " << s.w << "x" << s.h << " pads "
                                        << s.padOut << "/" << s.padIn << " flip " << int{s.flip});
      auto io = MakeImages(op, f, s, seed), expected = io;
      seed += 3;
      Model(op, f, s, expected);
      EXPECT_EQ(Captured([&] { op.forms[f](Args(io), s.w, s.h, s.flip); }), Records{});
      for (size_t i = 0; i < io.size(); ++i)
        EXPECT_EQ(Bytes(io[i].mem), Bytes(expected[i].mem)) << "image " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Ops, RowModel,
                         ::testing::Combine(::testing::ValuesIn(AllOps()),
                                            ::testing::ValuesIn(tqcs::test::KernelTestLevels())));

// ---- Refusals -------------------------------------------------------------------------

// Image `image` given a null pointer or its pitch times `pitch`, or a size.
struct Bad {
  const char *name;
  int image = -1;
  bool null = false;
  int64_t pitch = 1;
  int32_t w = 4, h = 4;
};
void PrintTo(const Bad &b, std::ostream *os) { *os << b.name; }

const Bad kBad[] = {{"NullA", 0, true},
                    {"NullB", 1, true},
                    {"NullC", 2, true},
                    {"ZeroPitchA", 0, false, 0},
                    {"NegativePitchB", 1, false, -1},
                    {"ZeroPitchC", 2, false, 0},
                    {"ZeroWidth", -1, false, 1, 0},
                    {"NegativeHeight", -1, false, 1, 4, -2}};

class Refusal : public ::testing::TestWithParam<std::tuple<Op, Bad>> {};

TEST_P(Refusal, CheckedFormsLogOnceUnderTheirOwnNamesAndWriteNothing) {
  const auto &op = std::get<0>(GetParam());
  const auto &bad = std::get<1>(GetParam());
  for (Form f : kForms) {
    // The channel split's frame form checks nothing itself: TQMemProc's
    // whole-plane extraction refuses silently, but does not look at pitches.
    const bool checks = !op.names[f].empty();
    if (!op.forms[f] || bad.image >= ImageCount(f) || (!checks && bad.pitch != 1)) continue;
    auto io = MakeImages(op, f, {4, 4, 0, 0, 0}, 9), before = io;
    auto planes = Args(io);
    if (bad.image >= 0 && bad.null) planes[bad.image].p = nullptr;
    if (bad.image >= 0) planes[bad.image].pitch *= bad.pitch;
    EXPECT_EQ(Captured([&] { op.forms[f](planes, bad.w, bad.h, 0); }),
              checks ? Records{Invalid(op.unit, op.names[f])} : Records{})
        << "form " << f;
    for (size_t i = 0; i < io.size(); ++i) EXPECT_EQ(Bytes(io[i].mem), Bytes(before[i].mem));
  }
}

INSTANTIATE_TEST_SUITE_P(Ops, Refusal,
                         ::testing::Combine(::testing::ValuesIn(AllOps()),
                                            ::testing::ValuesIn(kBad)));
// Bytes per pixel below 1 and channels outside 0 to 3.
INSTANTIATE_TEST_SUITE_P(Options, Refusal,
                         ::testing::Combine(::testing::Values(Fields(0), Fields(-1), Channel(4),
                                                              Channel(-1)),
                                            ::testing::Values(Bad{"None"})));

// ---- Kernel calls ---------------------------------------------------------------------

int g_calls = 0;
void CountingWiden(uint8_t *d, const uint8_t *s, int32_t n, uint8_t a) {
  ++g_calls;
  tqcs::test::KernelTableForLevel(0).RGB24_2_RGB32_Row(d, s, n, a);
}

TEST(KernelCalls, WholeFrameInOneCallOnlyWithPackedPitchesAndNoFlip) {
  TCS_KernelTable counting = tqcs::test::KernelTableForLevel(0);
  counting.RGB24_2_RGB32_Row = &CountingWiden;
  Scoped<TCS_KernelTable *> table(g_pColorSpaceAPI->pKernel, &counting);
  for (const Sizes &s : {Sizes{5, 6, 0, 0, 0}, {5, 6, 0, 0, 1}, {5, 6, 4, 0, 0}, {5, 6, 0, 1, 0}}) {
    auto io = MakeImages(Widen(0, 0), kFrame, s, 1);
    g_calls = 0;
    Widen(0, 0).forms[kFrame](Args(io), s.w, s.h, s.flip);
    EXPECT_EQ(g_calls, s.padOut || s.padIn || s.flip ? s.h : 1);
  }
}

}  // namespace
