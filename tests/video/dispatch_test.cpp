// The format-code dispatcher (slots 0 to 2) and its descriptor forms (16 to
// 18). Every one of the 121 code pairs runs in all three forms, at several
// sizes, flips, pitches and matrices, three times on equal buffers: through the
// dispatcher, through the descriptor form with every plane in a buffer of its
// own, and by calling directly the driver or operation that the library's
// route table (video/routes.hpp) names for the pair, with the options it
// lists. Outputs, results and log records must agree. Then the refusals, the
// odd-height planar layout and the field round trip.
#include <functional>
#include <iterator>
#include <optional>

#include "video/routes.hpp"
#include "video/video_harness.hpp"

namespace {

using namespace tqcs::video_test;
using tqcs::video::Extra;
using tqcs::video::Kind;
using tqcs::video::Planar;
using tqcs::video::Route;

// Bytes a pixel, or a sample of a planar code's planes (4 for unknown codes).
int32_t BytesOf(int code) {
  return tqcs::video::Known(code) ? tqcs::video::kBytesPerPixel[code] : 4;
}

// One image of a format in its own buffer, planes placed for `rows` luma rows
// (the frame height, or half of it for a field): U after the luma rows with
// half the pitch, V after U's rows (rows for 4:2:2, rows / 2 for 4:2:0). Room
// is left after the nominal planes, since drivers may write a converted odd
// row into a field.
struct Image : Picture {
  Image(int code, int32_t w, int32_t rows, int32_t pad, uint32_t seed)
      : Picture(BytesOf(code) * w + pad, 2 * rows + 4, seed), code(code), rows(rows) {}
  std::vector<int64_t> Starts() const {
    if (!Planar(code)) return {0};
    const int64_t u = pitch * rows;
    return {0, u, u + pitch / 2 * (code == 8 ? rows : rows / 2)};
  }
  // Gives planes 1 and 2 buffers of their own: copies of the image's buffer,
  // each plane at its place in its copy.
  void SeparatePlanes() { apart.assign(Starts().size() - 1, mem); }
  std::vector<PlaneArg> Planes() {
    std::vector<PlaneArg> out;
    for (int64_t s : Starts()) {
      const size_t k = out.size();
      // Rows skipped: the luma plane's, and a 4:2:2 chroma plane's.
      const int64_t skip = k == 0 ? skipRows * pitch : code == 8 ? skipRows * (pitch / 2) : 0;
      out.push_back(
          {(k && !apart.empty() ? apart[k - 1] : mem).data() + s + skip, k ? pitch / 2 : pitch});
    }
    return out;
  }
  // Every buffer's bytes and canary state.
  std::vector<uint8_t> All() const {
    auto out = Bytes(mem);
    for (const auto &b : apart) std::ranges::copy(Bytes(b), std::back_inserter(out));
    return out;
  }
  TCS_FrameDesc Desc() {
    TCS_FrameDesc x{};
    const auto planes = Planes();
    for (size_t k = 0; k < planes.size(); ++k) x.plane[k] = {planes[k].p, planes[k].pitch};
    x.format = code;
    return x;
  }
  int code;
  int32_t rows;
  int64_t skipRows = 0;
  std::vector<GuardedBuffer> apart;
};

struct Shape {
  int32_t w, h, pad;
  uint8_t flip;
  int32_t matrix;
};

// The images of one call, each with a pitch of its own.
std::vector<Image> MakeSet(Form f, int s, int d, const Shape &z, uint32_t seed) {
  std::vector<Image> io;
  for (int i = 0; i < ImageCount(f); ++i)
    io.emplace_back(IsOutput(f, i) ? d : s, z.w, IsField(f, i) ? z.h / 2 : z.h, z.pad + 2 * i,
                    seed + i);
  return io;
}

// Planes first to last of every image, image by image: the drivers' order.
std::vector<PlaneArg> PlanesOf(std::vector<Image> &io, size_t first, size_t last) {
  std::vector<PlaneArg> out;
  for (Image &image : io) {
    const auto planes = image.Planes();
    for (size_t k = first; k <= last && k < planes.size(); ++k) out.push_back(planes[k]);
  }
  return out;
}

// The dispatcher, handed plane 0 of each image.
uint64_t Dispatch(Form f, int s, int d, const std::vector<PlaneArg> &p, const Shape &z) {
  const TCS_GeneralTable &g = General();
  if (f == kFrame)
    return g.TCS_ColorConvFrame(p[0].p, p[0].pitch, d, p[1].p, p[1].pitch, s, z.matrix, z.w, z.h,
                                z.flip);
  if (f == kSplit)
    return g.TCS_ColorConvSplit(p[0].p, p[0].pitch, p[1].p, p[1].pitch, d, p[2].p, p[2].pitch, s,
                                z.matrix, z.w, z.h, z.flip);
  return g.TCS_ColorConvCompose(p[0].p, p[0].pitch, d, p[1].p, p[1].pitch, p[2].p, p[2].pitch, s,
                                z.matrix, z.w, z.h, z.flip);
}

uint64_t DispatchEx(Form f, const std::vector<TCS_FrameDesc> &x, const Shape &z) {
  const TCS_GeneralTable &g = General();
  if (f == kFrame) return g.TCS_ColorConvFrameEx(&x[0], &x[1], z.matrix, z.w, z.h, z.flip);
  if (f == kSplit) return g.TCS_ColorConvSplitEx(&x[0], &x[1], &x[2], z.matrix, z.w, z.h, z.flip);
  return g.TCS_ColorConvComposeEx(&x[0], &x[1], &x[2], z.matrix, z.w, z.h, z.flip);
}

// ---- What each pair's route names, called directly ---------------------------------

using Ref = std::function<void(Form, std::vector<Image> &, const Shape &)>;

// The triple at `slot` of root sub-table `table` (slot, slot + 1 for the
// split, slot + 2 to compose), handed planes first to 2 of every image.
Ref Driver(int table, int slot, std::vector<int64_t> options = {}, size_t first = 0) {
  return [=](Form f, std::vector<Image> &io, const Shape &z) {
    std::vector<int64_t> withFlip = options;
    withFlip.push_back(z.flip);
    tqcs::test::SlotAt(table, slot + f).call(PlanesOf(io, first, 2), z.w, z.h, withFlip);
  };
}

// Plane k of every image: a plane copy, or the field split / compose.
void CopyPlane(Form f, std::vector<Image> &io, size_t k, int32_t w, int32_t h, int32_t bpp,
               uint8_t flip) {
  const auto pl = PlanesOf(io, k, k);
  if (f == kFrame) CallSlot(tqcs::g_pMemProcRoot->pMem->TMP_PlaneCopy, pl, w * bpp, h, {}, flip);
  if (f == kSplit) CallSlot(General().TCS_SplitFrame, pl, w, h, {bpp}, flip);
  if (f == kCompose) CallSlot(General().TCS_ComposeFields, pl, w, h, {bpp}, flip);
}

Ref Copy(int code) {
  return [code](Form f, std::vector<Image> &io, const Shape &z) {
    if (!Planar(code)) return CopyPlane(f, io, 0, z.w, z.h, BytesOf(code), z.flip);
    for (size_t k = 0; k < 3; ++k)
      CopyPlane(f, io, k, k ? z.w / 2 : z.w, k && code == 9 ? z.h / 2 : z.h, 1, z.flip);
  };
}

// Luma copied, chroma through a _UV triple.
Ref LumaChroma(int table, int slot) {
  return [=](Form f, std::vector<Image> &io, const Shape &z) {
    CopyPlane(f, io, 0, z.w, z.h, 1, z.flip);
    Driver(table, slot, {}, 1)(f, io, z);
  };
}

// Every output row set to 255, width bytes: the frame's rows, or half of them
// in each field.
void Fill(Form f, std::vector<Image> &io, const Shape &z) {
  for (int i = 0; i < ImageCount(f); ++i)
    for (int32_t y = 0; IsOutput(f, i) && y < (f == kSplit ? z.h / 2 : z.h); ++y)
      std::fill_n(io[i].Row(y), z.w, 255);
}

// The refused pairs write nothing.
void Nothing(Form, std::vector<Image> &, const Shape &) {}

Ref Reached(int s, int d, int32_t m) {
  const Route &r = tqcs::video::kRoutes[s][d];
  std::vector<int64_t> options;
  for (uint8_t i = 0; i < r.extraCount; ++i)
    options.push_back(tqcs::video::OptionValue(r.extras[i], s, d, m));
  switch (r.kind) {
    case Kind::kRefuse:
      return Nothing;
    case Kind::kCopy:
      return Copy(s);
    case Kind::kFill:
      return Fill;
    case Kind::kDriver:
      return Driver(r.table, r.slot, options);
    case Kind::kLumaChroma:
      return LumaChroma(r.table, r.slot);
  }
  ADD_FAILURE() << "unknown route";
  return Nothing;
}

// Field buffers of a planar code have room for height / 2 rows: with an odd
// height a conversion runs on the frame's first height - 1 rows, or under
// flip its last height - 1, and a height of 1 converts nothing.
Ref LeavingOutTheOddRow(Ref ref, int s, int d) {
  if (s == d || d == 10) return ref;  // copies and fills: whole rows of the fields only
  return [=](Form f, std::vector<Image> &io, const Shape &z) {
    const bool planarFields = Planar(f == kSplit ? d : s);
    if (f == kFrame || !(z.h & 1) || !planarFields) return ref(f, io, z);
    if (z.h == 1) return;
    Image &frame = io[f == kSplit ? 2 : 0];
    frame.skipRows = z.flip ? 1 : 0;
    Shape less = z;
    less.h = z.h - 1;
    ref(f, io, less);
    frame.skipRows = 0;
  };
}

class Pairs : public ::testing::TestWithParam<std::tuple<int, int>> {};

TEST_P(Pairs, EveryFormMatchesTheDirectCallOfWhatThePairMustReach) {
  const int s = std::get<0>(GetParam()), d = std::get<1>(GetParam());
  const Shape shapes[] = {{6, 4, 0, 0, 1}, {5, 5, 8, 1, 0}, {6, 10, 8, 0, 1},
                          {5, 9, 0, 1, 0}, {4, 3, 0, 0, 1}, {6, 4, 2, 1, 0}};
  uint32_t seed = 100;
  for (const Shape &z : shapes)
    for (Form f : kForms) {
      SCOPED_TRACE(::testing::Message() << "form " << f << " " << z.w << "x" << z.h << " pad "
                                        << z.pad << " flip " << int{z.flip} << " m " << z.matrix);
      // The descriptor forms get planar images with every plane in a buffer
      // of its own.
      auto got = MakeSet(f, s, d, z, seed), want = got, apart = got;
      seed += 3;
      std::vector<TCS_FrameDesc> desc;
      for (Image &image : apart) image.SeparatePlanes(), desc.push_back(image.Desc());
      auto wantApart = apart;
      const Ref ref = LeavingOutTheOddRow(Reached(s, d, z.matrix), s, d);
      uint64_t result = 9, resultEx = 9;
      EXPECT_EQ(Captured([&] { result = Dispatch(f, s, d, Args(got), z); }),
                Captured([&] { ref(f, want, z); }));
      EXPECT_EQ(Captured([&] { resultEx = DispatchEx(f, desc, z); }),
                Captured([&] { ref(f, wantApart, z); }));
      EXPECT_EQ(result, s == 10 && d != 10 ? 0u : 1u);  // Alpha converts to nothing else
      EXPECT_EQ(resultEx, result);
      for (size_t i = 0; i < got.size(); ++i) {
        ASSERT_EQ(got[i].All(), want[i].All()) << "image " << i;
        ASSERT_EQ(apart[i].All(), wantApart[i].All()) << "image " << i << ", planes apart";
      }
    }
}

INSTANTIATE_TEST_SUITE_P(Codes, Pairs,
                         ::testing::Combine(::testing::Range(0, 11), ::testing::Range(0, 11)));

// What a route's options mean, worked out by hand from the slot list: codes 0
// and 3 hold B, G, R (channel order 1), code 7 is UYVY (packing 1); a swap is
// asked between codes of different orders.
TEST(RouteOptions, MeanWhatTheSlotListSays) {
  using tqcs::video::OptionValue;
  struct Case {
    Extra e;
    int s, d;
    int32_t m, want;
  };
  const Case cases[] = {
      {Extra::kMatrix, 0, 2, -1, -1},      {Extra::kMatrix, 9, 3, 3, 3},
      {Extra::kOrderOfSrc, 0, 6, 0, 1},    {Extra::kOrderOfSrc, 1, 6, 0, 0},
      {Extra::kOrderOfSrc, 3, 2, 0, 1},    {Extra::kOrderOfSrc, 4, 2, 0, 0},
      {Extra::kOrderOfDst, 8, 0, 0, 1},    {Extra::kOrderOfDst, 8, 4, 0, 0},
      {Extra::kPackingOfSrc, 7, 0, 0, 1},  {Extra::kPackingOfSrc, 6, 0, 0, 0},
      {Extra::kPackingOfDst, 3, 7, 0, 1},  {Extra::kPackingOfDst, 3, 6, 0, 0},
      {Extra::kSwap, 0, 4, 0, 1},          {Extra::kSwap, 0, 3, 0, 0},
      {Extra::kSwap, 1, 4, 0, 0},          {Extra::kSwap, 4, 0, 0, 1},
      {Extra::kNoSwap, 2, 5, 0, 0},        {Extra::kAlpha, 5, 0, 0, 255},
      {Extra::kAlphaChannel, 0, 10, 0, 3},
  };
  for (const Case &c : cases)
    EXPECT_EQ(OptionValue(c.e, c.s, c.d, c.m), c.want)
        << "option " << int(c.e) << " for " << c.s << " to " << c.d;
}

// ---- Refusals ------------------------------------------------------------------------

// Each call is also made through the descriptor forms, which check the same
// list silently, plane by plane.
struct Call {
  int s = 3, d = 0;
  int32_t matrix = 0, w = 4, h = 4;
  int image = -1, plane = 0;  // given a null pointer or the pitch below (image 2: the
  bool null = false;          // field forms' third buffer; plane 1 or 2: descriptors only)
  std::optional<int64_t> pitch{};
  bool logged = false;  // by the frame form
};
void PrintTo(const Call &c, std::ostream *os) {
  *os << c.s << " to " << c.d << " m " << c.matrix << " " << c.w << "x" << c.h << " image "
      << c.image << "." << c.plane << (c.null ? " null" : "") << " pitch " << c.pitch.value_or(1);
}

class Refusals : public ::testing::TestWithParam<Call> {};

TEST_P(Refusals, ResultZeroNothingWrittenAndOnlyTheFrameFormLogsItsChecks) {
  const Call c = GetParam();
  for (Form f : kForms) {
    if (c.image >= ImageCount(f)) continue;
    auto io = MakeSet(f, c.s, c.d, {4, 4, 0, 0, 0}, 5), before = io;
    auto planes = Args(io);
    std::vector<TCS_FrameDesc> desc;
    for (Image &image : io) desc.push_back(image.Desc());
    if (c.null) planes[c.image].p = desc[c.image].plane[c.plane].data = nullptr;
    if (c.pitch) planes[c.image].pitch = desc[c.image].plane[c.plane].pitch = *c.pitch;
    const Shape z{c.w, c.h, 0, 0, c.matrix};
    const Records logged = {Invalid(u"TQVideoColorAPI", u"TCS_ColorConvFrame()")};
    uint64_t r = 0, rEx = 9;
    if (c.plane == 0) {
      EXPECT_EQ(Captured([&] { r = Dispatch(f, c.s, c.d, planes, z); }),
                f == kFrame && c.logged ? logged : Records{})
          << "form " << f;
    }
    EXPECT_EQ(Captured([&] { rEx = DispatchEx(f, desc, z); }), Records{}) << "form " << f;
    EXPECT_EQ(r + rEx, 0u) << "form " << f;
    for (size_t i = 0; i < io.size(); ++i) EXPECT_EQ(io[i].All(), before[i].All());
  }
}

std::vector<Call> RefusedCalls() {
  std::vector<Call> calls = {{.image = 0, .null = true},
                             {.image = 0, .pitch = -8},
                             {.image = 1, .null = true},
                             {.image = 1, .pitch = 0},
                             {.d = INT32_MAX},
                             {.s = INT32_MAX},
                             {.matrix = 4},
                             {.matrix = 1000},
                             {.w = 0},
                             {.w = INT32_MIN},
                             {.h = 0},
                             {.h = -3}};
  for (Call &c : calls) c.logged = true;
  calls.insert(calls.end(), {{.image = 2, .null = true},
                             {.image = 2, .pitch = -4},
                             {.s = 9, .d = 8, .image = 1, .plane = 2, .null = true},
                             {.s = 8, .d = 9, .image = 0, .plane = 1, .pitch = 0}});
  // Codes that name no layout, and pairs of the extended space without a
  // conversion (the descriptor forms convert the others).
  for (int code : {1014, 1024, 1037, -1, INT32_MIN}) {
    calls.push_back({.s = code});
    calls.push_back({.d = code});
  }
  calls.insert(calls.end(), {{.d = 1013}, {.s = 2, .d = 12}, {.s = 1013, .d = 8}});
  for (int d = 0; d < 10; ++d) calls.push_back({.s = 10, .d = d});
  return calls;
}

INSTANTIATE_TEST_SUITE_P(Calls, Refusals, ::testing::ValuesIn(RefusedCalls()));

TEST(Descriptors, MissingOnesAndFieldsOfTwoFormatsAreRefusedSilently) {
  auto io = MakeSet(kSplit, 3, 0, {4, 4, 0, 0, 0}, 3), before = io;
  std::vector<TCS_FrameDesc> x = {io[0].Desc(), io[1].Desc(), io[2].Desc()};
  LogCapture log;
  EXPECT_EQ(General().TCS_ColorConvFrameEx(nullptr, &x[2], 0, 4, 4, 0), 0u);
  EXPECT_EQ(General().TCS_ColorConvFrameEx(&x[0], nullptr, 0, 4, 4, 0), 0u);
  x[1].format = 4;  // the second field in another format than the first
  EXPECT_EQ(DispatchEx(kSplit, x, {4, 4, 0, 0, 0}), 0u);
  EXPECT_EQ(DispatchEx(kCompose, {x[2], x[0], x[1]}, {4, 4, 0, 0, 0}), 0u);
  EXPECT_TRUE(log.records().empty());
  for (int i = 0; i < 3; ++i) EXPECT_EQ(io[i].All(), before[i].All());
}

TEST(Accepted, NegativeMatrixSelectorsPassTheCheck) {
  const Shape z{4, 4, 0, 0, -1};
  for (Form f : kForms) {
    auto a = MakeSet(f, 5, 2, z, 7), b = a;
    EXPECT_EQ(Dispatch(f, 5, 2, Args(a), z), 1u);
    Reached(5, 2, -1)(f, b, z);
    for (size_t i = 0; i < a.size(); ++i) EXPECT_EQ(a[i].All(), b[i].All());
  }
}

// ---- Planar layout and round trips ---------------------------------------------------

// The layout every comparison above places planar images in, worked out by
// hand for odd heights (pitch 4): a 4:2:0 frame of 5 rows has U at 20 and V two
// chroma rows later; its 2-row fields U at 8 and V one chroma row later; 4:2:2
// keeps all 5 chroma rows.
TEST(PlanarLayout, OddHeightsPlaceTheChromaPlanesAsWorkedOutByHand) {
  auto starts = [](int code, int32_t rows) { return Image(code, 4, rows, 0, 1).Starts(); };
  EXPECT_EQ(starts(9, 5), (std::vector<int64_t>{0, 20, 24}));
  EXPECT_EQ(starts(9, 2), (std::vector<int64_t>{0, 8, 10}));
  EXPECT_EQ(starts(8, 5), (std::vector<int64_t>{0, 20, 30}));
}

// The composed frame is what a plain copy of the split frame gives.
class RoundTrip : public ::testing::TestWithParam<int> {};

TEST_P(RoundTrip, SplitThenComposeRestoresEvenHeightFrames) {
  const int code = GetParam();
  for (int32_t h : {4, 8})
    for (uint8_t flip : {0, 1}) {
      const Shape z{6, h, 3, flip, 0};
      auto split = MakeSet(kSplit, code, code, z, 11),
           compose = MakeSet(kCompose, code, code, z, 12);
      std::vector<Image> copy = {compose[0], split[2]};
      ASSERT_EQ(Dispatch(kSplit, code, code, Args(split), z), 1u);
      compose[1] = split[0];
      compose[2] = split[1];
      ASSERT_EQ(Dispatch(kCompose, code, code, Args(compose), z), 1u);
      Copy(code)(kFrame, copy, {6, h, 3, 0, 0});
      EXPECT_EQ(compose[0].All(), copy[0].All()) << h << " flip " << int{flip};
    }
}

INSTANTIATE_TEST_SUITE_P(Codes, RoundTrip, ::testing::Range(0, 11));

}  // namespace
