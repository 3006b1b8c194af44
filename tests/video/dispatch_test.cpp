// The format-code dispatcher (slots 0 to 2) and its descriptor forms (16 to
// 18). Every one of the 121 code pairs, in all three forms, at several sizes,
// flips and pitches, is run twice on equal buffers: once through the
// dispatcher and once by calling, by name, the driver or operation the pair
// must reach, with the options it must receive. Outputs, log records and
// results must agree; the descriptor forms must agree with the contiguous
// ones. Then the refusals, the empty-stub pairs, the planar layout of odd
// heights and the field round trip.
#include <TQColorSpace/TQColorSpace.h>
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <tuple>
#include <vector>

#include "core/startup.hpp"
#include "support/buffers.hpp"
#include "support/log_capture.hpp"

namespace {

using tqcs::test::GuardedBuffer;
using tqcs::test::LogCapture;
using tqcs::test::LogRecord;
using Records = std::vector<LogRecord>;

class Library : public ::testing::Environment {
 public:
  void SetUp() override { ASSERT_EQ(TCS_DllMain(nullptr, TCS_REASON_PROCESS_ATTACH, nullptr), 1); }
};
[[maybe_unused]] const auto *const kLibrary = ::testing::AddGlobalTestEnvironment(new Library);

const TCS_GeneralTable &General() { return *g_pColorSpaceAPI->pGeneral; }

enum Form { kFrame, kSplit, kCompose };
constexpr int32_t kBytes[11] = {4, 4, 4, 3, 3, 3, 2, 2, 1, 1, 1};
bool Planar(int code) { return code == 8 || code == 9; }
// Bytes a pixel of packed codes (4 for codes the dispatcher does not know).
int32_t BytesOf(int code) { return code >= 0 && code <= 10 ? kBytes[code] : 4; }

struct P {
  uint8_t *p;
  int64_t pitch;
};

// One image of a format in its own buffer, planes placed for `rows` luma rows
// (the frame height, or half of it for a field): U after the luma rows with
// half the pitch, V after U's rows (rows for 4:2:2, rows / 2 for 4:2:0). Room
// is left after the nominal planes, since drivers may write a converted odd
// row into a field.
struct Buffer {
  Buffer(int code, int32_t w, int32_t rows, int32_t pad, uint32_t seed)
      : code(code),
        rows(rows),
        pitch((Planar(code) ? w : BytesOf(code) * w) + pad),
        mem(static_cast<size_t>(pitch * (2 * rows + 4)), 1) {
    mem.Randomize(seed);
  }
  std::vector<P> Planes() const {
    uint8_t *y = const_cast<uint8_t *>(mem.data());
    if (!Planar(code)) return {{y, pitch}};
    uint8_t *u = y + pitch * rows;
    uint8_t *v = u + (pitch / 2) * (code == 8 ? rows : rows / 2);
    return {{y, pitch}, {u, pitch / 2}, {v, pitch / 2}};
  }
  std::vector<uint8_t> Bytes() const { return {mem.data(), mem.data() + mem.size()}; }
  TCS_FrameDesc Desc() const {
    TCS_FrameDesc d{};
    const auto planes = Planes();
    for (size_t k = 0; k < planes.size(); ++k) d.plane[k] = {planes[k].p, planes[k].pitch};
    d.format = code;
    return d;
  }
  int code;
  int32_t rows;
  int64_t pitch;
  GuardedBuffer mem;
};

struct Shape {
  int32_t w, h, pad;
  uint8_t flip;
};

// The buffers of one call in argument order: frame (dst, src), split
// (field 1, field 2, src), compose (dst, field 1, field 2).
std::vector<Buffer> MakeSet(Form f, int s, int d, const Shape &z, uint32_t seed) {
  std::vector<Buffer> io;
  const int32_t half = z.h / 2;
  if (f == kFrame) {
    io.emplace_back(d, z.w, z.h, z.pad, seed);
    io.emplace_back(s, z.w, z.h, z.pad + 2, seed + 1);
  } else if (f == kSplit) {
    io.emplace_back(d, z.w, half, z.pad, seed);
    io.emplace_back(d, z.w, half, z.pad + 4, seed + 1);
    io.emplace_back(s, z.w, z.h, z.pad + 2, seed + 2);
  } else {
    io.emplace_back(d, z.w, z.h, z.pad + 2, seed);
    io.emplace_back(s, z.w, half, z.pad, seed + 1);
    io.emplace_back(s, z.w, half, z.pad + 4, seed + 2);
  }
  return io;
}

// The visible bytes of an image: each plane's rows, row bytes only.
std::vector<uint8_t> ImageBytes(int code, const std::vector<P> &planes, int32_t w, int32_t rows) {
  std::vector<uint8_t> out;
  for (size_t k = 0; k < planes.size(); ++k) {
    const int32_t n = k ? w / 2 : Planar(code) ? w : kBytes[code] * w;
    const int32_t r = k && code == 9 ? rows / 2 : rows;
    for (int32_t y = 0; y < r; ++y)
      out.insert(out.end(), planes[k].p + y * planes[k].pitch,
                 planes[k].p + y * planes[k].pitch + n);
  }
  return out;
}

uint64_t Dispatch(Form f, int s, int d, std::vector<Buffer> &io, int32_t m, const Shape &z) {
  const auto pl = [&](int i) { return io[i].Planes()[0]; };
  switch (f) {
    case kFrame:
      return General().TCS_ColorConvFrame(pl(0).p, pl(0).pitch, d, pl(1).p, pl(1).pitch, s, m, z.w,
                                          z.h, z.flip);
    case kSplit:
      return General().TCS_ColorConvSplit(pl(0).p, pl(0).pitch, pl(1).p, pl(1).pitch, d, pl(2).p,
                                          pl(2).pitch, s, m, z.w, z.h, z.flip);
    default:
      return General().TCS_ColorConvCompose(pl(0).p, pl(0).pitch, d, pl(1).p, pl(1).pitch, pl(2).p,
                                            pl(2).pitch, s, m, z.w, z.h, z.flip);
  }
}

uint64_t CallEx(Form f, const TCS_FrameDesc &a, const TCS_FrameDesc &b, const TCS_FrameDesc &c,
                int32_t m, const Shape &z) {
  if (f == kFrame) return General().TCS_ColorConvFrameEx(&a, &b, m, z.w, z.h, z.flip);
  if (f == kSplit) return General().TCS_ColorConvSplitEx(&a, &b, &c, m, z.w, z.h, z.flip);
  return General().TCS_ColorConvComposeEx(&a, &b, &c, m, z.w, z.h, z.flip);
}

uint64_t DispatchEx(Form f, std::vector<Buffer> &io, int32_t m, const Shape &z) {
  return CallEx(f, io[0].Desc(), io[1].Desc(), io[f == kFrame ? 1 : 2].Desc(), m, z);
}

// ---- What each pair must reach, called directly ------------------------------------

using Ref = std::function<void(Form, std::vector<Buffer> &, const Shape &)>;

// Calls fn with N (pointer, pitch) pairs, width, height, the options and flip.
template <size_t N, class F, class... X>
void Expand(F fn, const std::vector<P> &pl, const Shape &z, X... x) {
  ASSERT_EQ(pl.size(), N);
  [&]<size_t... I>(std::index_sequence<I...>) {
    std::apply(fn, std::tuple_cat(std::make_tuple(pl[I].p, pl[I].pitch)...,
                                  std::make_tuple(z.w, z.h, x..., z.flip)));
  }
  (std::make_index_sequence<N>{});
}

// Planes first..last of every buffer, buffer by buffer.
std::vector<P> PlanesOf(const std::vector<Buffer> &io, size_t first, size_t last) {
  std::vector<P> out;
  for (const Buffer &b : io) {
    const auto planes = b.Planes();
    for (size_t k = first; k <= last && k < planes.size(); ++k) out.push_back(planes[k]);
  }
  return out;
}

// A driver triple taking D destination and S source planes per image.
template <size_t D, size_t S, class Fr, class Sp, class Co, class... X>
Ref Driver(Fr fr, Sp sp, Co co, X... x) {
  return [=](Form f, std::vector<Buffer> &io, const Shape &z) {
    const auto pl = PlanesOf(io, 0, 2);
    if (f == kFrame) Expand<D + S>(fr, pl, z, x...);
    if (f == kSplit) Expand<2 * D + S>(sp, pl, z, x...);
    if (f == kCompose) Expand<D + 2 * S>(co, pl, z, x...);
  };
}

// Plane k of every buffer: a plane copy, or the field split / compose.
void CopyPlane(Form f, std::vector<Buffer> &io, size_t k, int32_t w, int32_t h, int32_t bpp,
               uint8_t flip) {
  const P a = io[0].Planes()[k], b = io[1].Planes()[k];
  if (f == kFrame)
    return tqcs::g_pMemProcRoot->pMem->TMP_PlaneCopy(a.p, a.pitch, b.p, b.pitch, w * bpp, h, flip);
  const P c = io[2].Planes()[k];
  if (f == kSplit)
    General().TCS_SplitFrame(a.p, a.pitch, b.p, b.pitch, c.p, c.pitch, w, h, bpp, flip);
  else
    General().TCS_ComposeFields(a.p, a.pitch, b.p, b.pitch, c.p, c.pitch, w, h, bpp, flip);
}

Ref Copy(int code) {
  return [code](Form f, std::vector<Buffer> &io, const Shape &z) {
    if (!Planar(code)) return CopyPlane(f, io, 0, z.w, z.h, kBytes[code], z.flip);
    for (size_t k = 0; k < 3; ++k)
      CopyPlane(f, io, k, k ? z.w / 2 : z.w, k && code == 9 ? z.h / 2 : z.h, 1, z.flip);
  };
}

// Luma copied, chroma through a _UV triple.
template <class Fr, class Sp, class Co>
Ref LumaChroma(Fr fr, Sp sp, Co co) {
  return [=](Form f, std::vector<Buffer> &io, const Shape &z) {
    CopyPlane(f, io, 0, z.w, z.h, 1, z.flip);
    const auto pl = PlanesOf(io, 1, 2);
    if (f == kFrame) Expand<4>(fr, pl, z);
    if (f == kSplit) Expand<6>(sp, pl, z);
    if (f == kCompose) Expand<6>(co, pl, z);
  };
}

// Every output row set to 255, width bytes: the frame's rows, or half of them
// in each field.
Ref Fill() {
  return [](Form f, std::vector<Buffer> &io, const Shape &z) {
    for (int i = 0; i < (f == kSplit ? 2 : 1); ++i)
      for (int32_t y = 0; y < (f == kSplit ? z.h / 2 : z.h); ++y)
        std::fill_n(io[i].Planes()[0].p + y * io[i].pitch, z.w, 255);
  };
}

// The empty-stub pairs: the call reports success and writes nothing.
Ref Nothing() {
  return [](Form, std::vector<Buffer> &, const Shape &) {};
}

#define TRIPLE(table, base) \
  api.table->TCS_##base##_Frame, api.table->TCS_##base##_Split, api.table->TCS_##base##_Compose

// Null for a pair that must be refused.
Ref Reached(int s, int d, int32_t m) {
  const TCS_APIStu &api = *g_pColorSpaceAPI;
  const int orderS = s == 0 || s == 3, orderD = d == 0 || d == 3;
  const int packS = s == 7, packD = d == 7, swap = orderS != orderD;
  const bool toRGB32 = d <= 1, toRGB24 = d == 3 || d == 4, toYUV16 = d == 6 || d == 7;
  if (s == d) return Copy(s);
  if (s == 10) return nullptr;
  if (d == 10) return s <= 2 ? Driver<1, 1>(TRIPLE(pGeneral, Cr32_Split_Channel), 3) : Fill();
  switch (s) {
    case 0:
    case 1:
      if (toRGB32) return Driver<1, 1>(TRIPLE(pRGB32, RGB32_SwapRB));
      if (d == 2) return Driver<1, 1>(TRIPLE(pRGB32, RGB32_2_YUVA), m, orderS);
      if (toRGB24) return Driver<1, 1>(TRIPLE(pGeneral, Cr32_2_Cr24), swap);
      if (d == 5) return Nothing();
      if (toYUV16) return Driver<1, 1>(TRIPLE(pRGB32, RGB32_2_YUV16), m, packD, orderS);
      if (d == 8) return Driver<3, 1>(TRIPLE(pRGB32, RGB32_2_YUV422), m, orderS);
      return Driver<3, 1>(TRIPLE(pRGB32, RGB32_2_YUV420), m, orderS);
    case 2:
      if (toRGB32) return Driver<1, 1>(TRIPLE(pYUVA, YUVA_2_RGB32), m, orderD);
      if (toRGB24) return Driver<1, 1>(TRIPLE(pYUVA, YUVA_2_RGB24), m, orderD);
      if (d == 5) return Driver<1, 1>(TRIPLE(pGeneral, Cr32_2_Cr24), 0);
      if (toYUV16) return Driver<1, 1>(TRIPLE(pYUVA, YUVA_2_YUV16), packD);
      if (d == 8) return Driver<3, 1>(TRIPLE(pYUVA, YUVA_2_YUV422));
      return Nothing();
    case 3:
    case 4:
      if (toRGB32) return Driver<1, 1>(TRIPLE(pGeneral, Cr24_2_Cr32), swap, 255);
      if (d == 2) return Driver<1, 1>(TRIPLE(pRGB24, RGB24_2_YUVA), m, orderS, 255);
      if (toRGB24) return Driver<1, 1>(TRIPLE(pRGB24, RGB24_SwapRB));
      if (d == 5) return Driver<1, 1>(TRIPLE(pRGB24, RGB24_2_YUV), m, orderS);
      if (toYUV16) return Driver<1, 1>(TRIPLE(pRGB24, RGB24_2_YUV16), m, packD, orderS);
      if (d == 8) return Driver<3, 1>(TRIPLE(pRGB24, RGB24_2_YUV422), m, orderS);
      return Driver<3, 1>(TRIPLE(pRGB24, RGB24_2_YUV420), m, orderS);
    case 5:
      if (toRGB32) return Driver<1, 1>(TRIPLE(pYUV, YUV_2_RGB32), m, orderD, 255);
      if (d == 2) return Driver<1, 1>(TRIPLE(pGeneral, Cr24_2_Cr32), 0, 255);
      if (toRGB24) return Driver<1, 1>(TRIPLE(pYUV, YUV_2_RGB24), m, orderD);
      if (toYUV16) return Driver<1, 1>(TRIPLE(pYUV, YUV_2_YUV16), packD);
      if (d == 8) return Driver<3, 1>(TRIPLE(pYUV, YUV_2_YUV422));
      return Driver<3, 1>(TRIPLE(pYUV, YUV_2_YUV420));
    case 6:
    case 7:
      if (toRGB32) return Driver<1, 1>(TRIPLE(pYUV16, YUV16_2_RGB32), m, orderD, packS, 255);
      if (d == 2) return Driver<1, 1>(TRIPLE(pYUV16, YUV16_2_YUVA), packS, 255);
      if (toRGB24) return Driver<1, 1>(TRIPLE(pYUV16, YUV16_2_RGB24), m, orderD, packS);
      if (d == 5) return Driver<1, 1>(TRIPLE(pYUV16, YUV16_2_YUV), packS);
      if (toYUV16) return Driver<1, 1>(TRIPLE(pYUV16, YUV16_Swap));
      if (d == 8) return Driver<3, 1>(TRIPLE(pYUV16, YUV16_2_YUV422), packS);
      return Driver<3, 1>(TRIPLE(pYUV16, YUV16_2_YUV420), packS);
    case 8:
      if (toRGB32) return Driver<1, 3>(TRIPLE(pYUV422, YUV422_2_RGB32), m, orderD, 255);
      if (d == 2) return Driver<1, 3>(TRIPLE(pYUV422, YUV422_2_YUVA), 255);
      if (toRGB24) return Driver<1, 3>(TRIPLE(pYUV422, YUV422_2_RGB24), m, orderD);
      if (d == 5) return Nothing();
      if (toYUV16) return Driver<1, 3>(TRIPLE(pYUV422, YUV422_2_YUV16), packD);
      return LumaChroma(TRIPLE(pYUV422, YUV422_2_YUV420_UV));
    default:
      if (toRGB32) return Driver<1, 3>(TRIPLE(pYUV420, YUV420_2_RGB32), m, orderD, 255);
      if (d == 2) return Driver<1, 3>(TRIPLE(pYUV420, YUV420_2_YUVA), 255);
      if (toRGB24) return Driver<1, 3>(TRIPLE(pYUV420, YUV420_2_RGB24), m, orderD);
      if (d == 5) return Driver<1, 3>(TRIPLE(pYUV420, YUV420_2_YUV));
      if (toYUV16) return Driver<1, 3>(TRIPLE(pYUV420, YUV420_2_YUV16), packD);
      return LumaChroma(TRIPLE(pYUV420, YUV420_2_YUV422_UV));
  }
}

template <class F>
Records Captured(F fn) {
  LogCapture log;
  fn();
  return log.records();
}

constexpr Form kForms[] = {kFrame, kSplit, kCompose};

class Pairs : public ::testing::TestWithParam<std::tuple<int, int>> {};

TEST_P(Pairs, EveryFormMatchesTheDirectCallOfWhatThePairMustReach) {
  const auto [s, d] = GetParam();
  const int32_t m = TCS_MATRIX_SD;
  const Ref ref = Reached(s, d, m);
  const Shape shapes[] = {{6, 4, 0, 0}, {5, 5, 8, 1}, {6, 10, 8, 0},
                          {5, 9, 0, 1}, {4, 3, 0, 0}, {6, 4, 2, 1}};
  uint32_t seed = 100;
  for (const Shape &z : shapes)
    for (Form f : kForms) {
      SCOPED_TRACE(::testing::Message() << "form " << f << " " << z.w << "x" << z.h << " pad "
                                        << z.pad << " flip " << int{z.flip});
      auto viaDispatcher = MakeSet(f, s, d, z, seed), viaDriver = MakeSet(f, s, d, z, seed),
           viaDescriptor = MakeSet(f, s, d, z, seed);
      seed += 3;
      uint64_t result = 9, resultEx = 9;
      const Records got = Captured([&] { result = Dispatch(f, s, d, viaDispatcher, m, z); });
      const Records want = Captured([&] {
        if (ref) ref(f, viaDriver, z);
      });
      const Records gotEx = Captured([&] { resultEx = DispatchEx(f, viaDescriptor, m, z); });
      EXPECT_EQ(result, ref ? 1u : 0u);
      EXPECT_EQ(resultEx, result);
      EXPECT_EQ(got, want);
      EXPECT_EQ(gotEx, want);
      for (size_t i = 0; i < viaDriver.size(); ++i) {
        ASSERT_EQ(viaDispatcher[i].Bytes(), viaDriver[i].Bytes()) << "buffer " << i;
        ASSERT_EQ(viaDescriptor[i].Bytes(), viaDriver[i].Bytes()) << "buffer " << i;
        EXPECT_TRUE(viaDispatcher[i].mem.CanariesIntact() && viaDriver[i].mem.CanariesIntact());
      }
    }
}

INSTANTIATE_TEST_SUITE_P(Codes, Pairs,
                         ::testing::Combine(::testing::Range(0, 11), ::testing::Range(0, 11)),
                         [](const auto &info) {
                           return std::to_string(std::get<0>(info.param)) + "_to_" +
                                  std::to_string(std::get<1>(info.param));
                         });

// ---- Refusals ---------------------------------------------------------------------

struct Call {
  int s = 3, d = 0;
  int32_t matrix = 0, w = 4, h = 4;
  bool nullA = false, nullB = false, nullC = false;  // C: the field forms' third buffer
  int64_t pitchA = 0, pitchB = 0, pitchC = 0;        // replaces the pitch when not 0
  bool logged = false;                               // by the frame form
};
void PrintTo(const Call &c, std::ostream *os) {
  *os << c.s << " to " << c.d << " m " << c.matrix << " " << c.w << "x" << c.h << " null "
      << c.nullA << c.nullB << c.nullC << " pitch " << c.pitchA << "/" << c.pitchB << "/"
      << c.pitchC;
}

class Refusals : public ::testing::TestWithParam<Call> {};

TEST_P(Refusals, ResultZeroNothingWrittenAndOnlyTheFrameFormLogsItsChecks) {
  const Call c = GetParam();
  const LogRecord record{1, u"TQVideoColorAPI", u"TCS_ColorConvFrame()", u"%s",
                         u"Invalid Input Parameters"};
  for (Form f : kForms) {
    if (f == kFrame && (c.nullC || c.pitchC)) continue;  // no third buffer
    auto io = MakeSet(f, c.s, c.d, {4, 4, 0, 0}, 5);
    std::vector<std::vector<uint8_t>> before;
    for (const Buffer &b : io) before.push_back(b.Bytes());
    auto plane = [&](int i, bool null, int64_t pitch) {
      return P{null ? nullptr : io[i].mem.data(), pitch ? pitch : io[i].pitch};
    };
    const P a = plane(0, c.nullA, c.pitchA), b = plane(1, c.nullB, c.pitchB),
            x = plane(f == kFrame ? 1 : 2, c.nullC, c.pitchC);
    uint64_t r = 9;
    const Records records = Captured([&] {
      if (f == kFrame)
        r = General().TCS_ColorConvFrame(a.p, a.pitch, c.d, b.p, b.pitch, c.s, c.matrix, c.w, c.h,
                                         0);
      else if (f == kSplit)
        r = General().TCS_ColorConvSplit(a.p, a.pitch, b.p, b.pitch, c.d, x.p, x.pitch, c.s,
                                         c.matrix, c.w, c.h, 0);
      else
        r = General().TCS_ColorConvCompose(a.p, a.pitch, c.d, b.p, b.pitch, x.p, x.pitch, c.s,
                                           c.matrix, c.w, c.h, 0);
    });
    EXPECT_EQ(r, 0u) << "form " << f;
    EXPECT_EQ(records, f == kFrame && c.logged ? Records{record} : Records{}) << "form " << f;
    for (size_t i = 0; i < io.size(); ++i) EXPECT_EQ(io[i].Bytes(), before[i]) << "form " << f;
  }
}

std::vector<Call> RefusedCalls() {
  std::vector<Call> calls = {{.nullA = true, .logged = true},
                             {.pitchA = -8, .logged = true},
                             {.d = INT32_MAX, .logged = true},
                             {.nullB = true, .logged = true},
                             {.pitchB = -1, .logged = true},
                             {.s = INT32_MAX, .logged = true},
                             {.matrix = 4, .logged = true},
                             {.matrix = 1000, .logged = true},
                             {.w = 0, .logged = true},
                             {.h = 0, .logged = true},
                             {.h = -3, .logged = true},
                             {.w = INT32_MIN, .logged = true},
                             {.nullC = true},
                             {.pitchC = -4},
                             {.s = 11},
                             {.s = -1},
                             {.d = 11},
                             {.d = -1},
                             {.s = INT32_MIN}};
  for (int d = 0; d < 10; ++d) calls.push_back({.s = 10, .d = d});
  return calls;
}

INSTANTIATE_TEST_SUITE_P(Calls, Refusals, ::testing::ValuesIn(RefusedCalls()));

TEST(Accepted, NegativeMatrixSelectorsPassTheCheck) {
  for (Form f : kForms) {
    auto a = MakeSet(f, 5, 2, {4, 4, 0, 0}, 7), b = MakeSet(f, 5, 2, {4, 4, 0, 0}, 7);
    EXPECT_EQ(Dispatch(f, 5, 2, a, -1, {4, 4, 0, 0}), 1u);
    Reached(5, 2, -1)(f, b, {4, 4, 0, 0});
    for (size_t i = 0; i < a.size(); ++i) EXPECT_EQ(a[i].Bytes(), b[i].Bytes());
  }
}

TEST(Descriptors, CheckTheUsedPlanesSilently) {
  const Shape z{4, 4, 0, 0};
  auto io = MakeSet(kFrame, 9, 3, z, 3);
  std::vector<std::vector<uint8_t>> before = {io[0].Bytes(), io[1].Bytes()};
  const TCS_FrameDesc dst = io[0].Desc(), src = io[1].Desc();
  auto spoiled = [&](auto change) {
    TCS_FrameDesc d = dst, s = src;
    change(d, s);
    return General().TCS_ColorConvFrameEx(&d, &s, 0, z.w, z.h, 0);
  };
  LogCapture log;
  for (int32_t code : {11, 23, 1013, 1036, -1, INT32_MAX}) {
    EXPECT_EQ(spoiled([&](auto &d, auto &) { d.format = code; }), 0u) << code;
    EXPECT_EQ(spoiled([&](auto &, auto &s) { s.format = code; }), 0u) << code;
  }
  EXPECT_EQ(spoiled([](auto &, auto &s) { s.plane[2].data = nullptr; }), 0u);
  EXPECT_EQ(spoiled([](auto &, auto &s) { s.plane[1].pitch = 0; }), 0u);
  EXPECT_EQ(spoiled([](auto &d, auto &) { d.plane[0].pitch = -12; }), 0u);
  EXPECT_EQ(General().TCS_ColorConvFrameEx(nullptr, &src, 0, z.w, z.h, 0), 0u);
  EXPECT_EQ(General().TCS_ColorConvFrameEx(&dst, &src, 4, z.w, z.h, 0), 0u);
  EXPECT_EQ(General().TCS_ColorConvFrameEx(&dst, &src, 0, z.w, 0, 0), 0u);
  // The two fields of one call are in one format.
  TCS_FrameDesc other = dst;
  other.format = 4;
  EXPECT_EQ(General().TCS_ColorConvSplitEx(&dst, &other, &src, 0, z.w, z.h, 0), 0u);
  EXPECT_EQ(General().TCS_ColorConvComposeEx(&src, &dst, &other, 0, z.w, z.h, 0), 0u);
  EXPECT_TRUE(log.records().empty());
  EXPECT_EQ(io[0].Bytes(), before[0]);
  EXPECT_EQ(io[1].Bytes(), before[1]);
  // A plane the format does not use may be anything.
  EXPECT_EQ(spoiled([](auto &d, auto &) { d.plane[1] = {nullptr, 0}; }), 1u);
}

// ---- Planar layout, round trips, descriptors --------------------------------------------

// A 4:2:0 frame of height 5 in one buffer: chroma planes of 2 rows, V two
// chroma rows after U. Source pitch 4, destination pitch 6.
TEST(PlanarLayout, OddHeightFourTwoZeroFrameAndFields) {
  std::vector<uint8_t> src(4 * 5 + 2 * 2 * 2), dst(6 * 5 + 3 * 2 * 2, 0);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i + 1);
  ASSERT_EQ(General().TCS_ColorConvFrame(dst.data(), 6, 9, src.data(), 4, 9, 0, 4, 5, 0), 1u);
  std::vector<uint8_t> want(dst.size(), 0);
  for (int y = 0; y < 5; ++y)
    for (int x = 0; x < 4; ++x) want[6 * y + x] = src[4 * y + x];
  const int uSrc = 20, vSrc = 24, uDst = 30, vDst = 36;  // V = U + 2 x (pitch / 2)
  for (int y = 0; y < 2; ++y)
    for (int x = 0; x < 2; ++x) {
      want[uDst + 3 * y + x] = src[uSrc + 2 * y + x];
      want[vDst + 3 * y + x] = src[vSrc + 2 * y + x];
    }
  EXPECT_EQ(dst, want);

  // Fields of 2 rows: U after 2 luma rows, V one chroma row later; frame row 4
  // and the odd chroma rows are in neither field.
  std::vector<uint8_t> top(12, 0), bottom(12, 0);
  ASSERT_EQ(General().TCS_ColorConvSplit(top.data(), 4, bottom.data(), 4, 9, src.data(), 4, 9, 0, 4,
                                         5, 0),
            1u);
  for (int f = 0; f < 2; ++f) {
    const auto &field = f ? bottom : top;
    std::vector<uint8_t> expect(12, 0);
    for (int x = 0; x < 4; ++x) expect[x] = src[4 * f + x], expect[4 + x] = src[8 + 4 * f + x];
    for (int x = 0; x < 2; ++x)
      expect[8 + x] = src[uSrc + 2 * f + x], expect[10 + x] = src[vSrc + 2 * f + x];
    EXPECT_EQ(field, expect) << "field " << f;
  }
}

class RoundTrip : public ::testing::TestWithParam<int> {};

TEST_P(RoundTrip, SplitThenComposeRestoresEvenHeightFrames) {
  const int code = GetParam();
  for (int32_t h : {4, 8})
    for (uint8_t flip : {0, 1}) {
      const Shape z{6, h, 3, flip};
      auto split = MakeSet(kSplit, code, code, z, 11);
      auto compose = MakeSet(kCompose, code, code, z, 12);
      ASSERT_EQ(Dispatch(kSplit, code, code, split, 0, z), 1u);
      compose[1].mem = split[0].mem;  // fields of equal pitches
      compose[2].mem = split[1].mem;
      ASSERT_EQ(Dispatch(kCompose, code, code, compose, 0, z), 1u);
      EXPECT_EQ(ImageBytes(code, compose[0].Planes(), z.w, h),
                ImageBytes(code, split[2].Planes(), z.w, h))
          << "height " << h << " flip " << int{flip};
    }
}

INSTANTIATE_TEST_SUITE_P(Codes, RoundTrip, ::testing::Range(0, 11));

// Planar planes in separate buffers give what the contiguous layout gives.
TEST(Descriptors, PlanarPlanesNeedNotShareABuffer) {
  const Shape z{6, 8, 2, 1};
  for (auto [s, d] : {std::pair{3, 8}, {0, 9}, {8, 6}, {9, 1}, {8, 8}, {9, 9}, {8, 9}, {9, 8}})
    for (Form f : kForms) {
      auto contiguous = MakeSet(f, s, d, z, 21), apart = MakeSet(f, s, d, z, 21);
      ASSERT_EQ(Dispatch(f, s, d, contiguous, 1, z), 1u);
      // Plane k of each image lives in its own copy of the image's buffer.
      std::vector<std::vector<GuardedBuffer>> copies(apart.size());
      std::vector<std::vector<P>> planes(apart.size());
      std::vector<TCS_FrameDesc> desc;
      for (size_t i = 0; i < apart.size(); ++i) {
        TCS_FrameDesc dsc = apart[i].Desc();
        const auto shared = apart[i].Planes();
        copies[i].assign(shared.size(), apart[i].mem);
        for (size_t k = 0; k < shared.size(); ++k) {
          uint8_t *p = copies[i][k].data() + (shared[k].p - apart[i].mem.data());
          planes[i].push_back({p, shared[k].pitch});
          dsc.plane[k].data = p;
        }
        desc.push_back(dsc);
      }
      ASSERT_EQ(CallEx(f, desc[0], desc[1], desc[f == kFrame ? 1 : 2], 1, z), 1u);
      for (size_t i = 0; i < apart.size(); ++i)
        EXPECT_EQ(ImageBytes(apart[i].code, planes[i], z.w, apart[i].rows),
                  ImageBytes(contiguous[i].code, contiguous[i].Planes(), z.w, contiguous[i].rows))
            << s << " to " << d << " form " << f << " image " << i;
    }
}

}  // namespace
