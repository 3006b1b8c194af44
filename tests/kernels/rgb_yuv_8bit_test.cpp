// 8-bit RGB <-> YUV matrix kernels against a model written from the published
// Q14 numbers: expected bytes come from R, G, B (or Y, U, V) and the
// per-standard integers, never from the rows' element layout; the kernels get
// the real exported rows, so a wrong element pattern shows.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <string>
#include <tuple>
#include <vector>

#include "core/coefficients.hpp"
#include "support/buffers.hpp"

namespace {

using tqcs::test::GuardedBuffer;
using tqcs::test::KernelTableForLevel;
using tqcs::test::RandomBytes;
using Bytes = std::vector<uint8_t>;
using Table = TCS_KernelTable;

uint8_t Clamp(int v) { return static_cast<uint8_t>(std::clamp(v, 0, 255)); }

struct Standard {
  const char *name;
  int yr, yg, yb, ur, ug, vg, vb, rv, gu, gv, bu;          // published Q14 values
  const int16_t *yGBR, *uRGB, *vRGB, *yGRB, *uBGR, *vBGR;  // common layout rows
  const int16_t *yRB, *yBR, *yuvG, *uvRB, *uvBR;           // pair layout rows
  const int16_t *t4[4];
};
// The exported rows of a standard, in the member order above.
#define TQCS_ROWS(s)                                                                               \
  g_sY_GBR_##s, g_sU_RGB_##s, g_sV_RGB_##s, g_sY_GRB_##s, g_sU_BGR_##s, g_sV_BGR_##s, g_sY_RB_##s, \
      g_sY_BR_##s, g_sYUV_G_##s, g_sUV_RB_##s, g_sUV_BR_##s, {                                     \
    g_sR_V_##s, g_sG_U_##s, g_sG_V_##s, g_sB_U_##s                                                 \
  }
const Standard kStandards[] = {
    {"SD", 4898, 9618, 1868, -2764, -5428, -6860, -1332, 22970, -5638, -11700, 29032,
     TQCS_ROWS(SD)},
    {"HD", 3484, 11717, 1183, -1877, -6315, -7441, -751, 25800, -3069, -7671, 30402, TQCS_ROWS(HD)},
    {"UHD", 4304, 11108, 972, -2288, -5904, -7533, -659, 24160, -2697, -9362, 30825,
     TQCS_ROWS(UHD)},
};

constexpr int32_t kCounts[] = {1, 2, 3, 4, 5, 7, 8, 31, 64};
constexpr int32_t kEmptyCounts[] = {0, -1, -2, -7, INT_MIN};

// Destinations with canaries and random contents, unaligned by `offset`.
struct Dsts {
  std::vector<GuardedBuffer> b;
  Dsts(const std::vector<size_t> &sizes, size_t offset) {
    for (size_t s : sizes) b.emplace_back(s, offset), b.back().Randomize(uint32_t(s + offset));
  }
  uint8_t *operator[](size_t i) { return i < b.size() ? b[i].data() : nullptr; }
  std::vector<Bytes> Contents() const {
    std::vector<Bytes> out;
    for (const auto &g : b) out.emplace_back(g.data(), g.data() + g.size());
    return out;
  }
  bool Intact() const {
    return std::all_of(b.begin(), b.end(), [](const auto &g) { return g.CanariesIntact(); });
  }
};

template <class Slot>
std::string SlotName(const ::testing::TestParamInfo<std::tuple<uint32_t, Slot>> &info) {
  return std::string(std::get<1>(info.param).name) + "_L" + std::to_string(std::get<0>(info.param));
}

// ------------------------------------------------------------- RGB -> YUV

struct Yuv {
  int y, u, v;
};
Yuv ModelYuv(const Standard &k, int r, int g, int b, bool round) {
  const int add = round ? 8192 : 0;
  return {Clamp((k.yr * r + k.yg * g + k.yb * b + add) >> 14),
          Clamp(((k.ur * r + k.ug * g + 8192 * b + add) >> 14) + 128),
          Clamp(((8192 * r + k.vg * g + k.vb * b + add) >> 14) + 128)};
}

enum class Out { kYuva, kYuyv, kUyvy, kPlanar, kGray };
struct ToYuvSlot {
  const char *name;
  int srcBytes;  // 3-byte sources take alpha from the argument
  Out out;
  bool pairRows;  // pair layout rows, truncating; else the common layout, rounding
  bool key;       // also writes byte 3 of each source pixel to a key plane
  void (*call)(const Table &, Dsts &, const uint8_t *, int32_t, uint8_t, const int16_t *const *);
};
#define R3 r[0], r[1], r[2]
#define TQCS_TO_YUV(name, bytes, out, pair, key, ...)                                       \
  {                                                                                         \
#name, bytes, Out::out, pair, key,                                                        \
   [](const Table &t, Dsts &o, const uint8_t *src, int32_t n, uint8_t a,                     \
      const int16_t *const *r) {                                                             \
     (void)a;                                                                                \
     t.name##_Row(__VA_ARGS__);                                                              \
   } \
  }
const ToYuvSlot kToYuv[] = {
    TQCS_TO_YUV(RGB32_2_YUYV, 4, kYuyv, true, false, o[0], src, n, R3),
    TQCS_TO_YUV(RGB32_2_UYVY, 4, kUyvy, true, false, o[0], src, n, R3),
    TQCS_TO_YUV(RGB32_2_YUYV_Key, 4, kYuyv, true, true, o[0], o[1], src, n, R3),
    TQCS_TO_YUV(RGB32_2_UYVY_Key, 4, kUyvy, true, true, o[0], o[1], src, n, R3),
    TQCS_TO_YUV(RGB32_2_YUVA, 4, kYuva, false, false, o[0], src, n, R3),
    TQCS_TO_YUV(RGB24_2_YUVA, 3, kYuva, false, false, o[0], src, n, a, R3),
    TQCS_TO_YUV(RGB32_2_YUV422, 4, kPlanar, false, false, o[0], o[1], o[2], src, n, R3),
    TQCS_TO_YUV(RGB24_2_YUV422, 3, kPlanar, false, false, o[0], o[1], o[2], src, n, R3),
    TQCS_TO_YUV(RGB24_2_YUYV, 3, kYuyv, false, false, o[0], src, n, R3),
    TQCS_TO_YUV(RGB24_2_UYVY, 3, kUyvy, false, false, o[0], src, n, R3),
    TQCS_TO_YUV(RGB24_2_Gray, 3, kGray, false, false, o[0], src, r[0], n),
};

// The bytes each destination must hold for per-pixel values `px`, from the
// layout rules: 4:2:2 chroma of the even pixel, an odd tail as a whole pair
// with its own Y twice (packed) or luma only (planar).
std::vector<Bytes> LayOut(const ToYuvSlot &s, const std::vector<Yuv> &px, const Bytes &src) {
  const size_t n = px.size();
  std::vector<Bytes> out(s.out == Out::kPlanar ? 3 : 1);
  if (s.key) out.emplace_back();
  for (size_t i = 0; i < n; ++i) {
    const Yuv &p = px[i], &e = px[i & ~size_t{1}];
    const uint8_t y = Clamp(p.y), y1 = Clamp(i + 1 < n ? px[i + 1].y : p.y);
    const uint8_t u = Clamp(e.u), v = Clamp(e.v), a = s.srcBytes == 4 ? src[4 * i + 3] : 0x5A;
    if (s.out == Out::kYuva) out[0].insert(out[0].end(), {y, Clamp(p.u), Clamp(p.v), a});
    if (s.out == Out::kGray || s.out == Out::kPlanar) out[0].push_back(y);
    if (s.out == Out::kPlanar && i % 2) out[1].push_back(u), out[2].push_back(v);
    if (s.out == Out::kYuyv && i % 2 == 0) out[0].insert(out[0].end(), {y, u, y1, v});
    if (s.out == Out::kUyvy && i % 2 == 0) out[0].insert(out[0].end(), {u, y, v, y1});
    if (s.key) out.back().push_back(src[4 * i + 3]);
  }
  return out;
}

class RgbToYuvKernels : public ::testing::TestWithParam<std::tuple<uint32_t, ToYuvSlot>> {
 protected:
  static void SetUpTestSuite() { tqcs::DeriveCoefficientTables(); }
  const ToYuvSlot &slot() const { return std::get<1>(GetParam()); }

  // Runs the slot with the rows a driver passes for the byte order, on
  // destinations sized like `expected` (empty: nothing may be written).
  void Check(const Bytes &src, int32_t n, const Standard &k, bool blueFirst,
             const std::vector<Bytes> &expected, size_t offset) {
    std::vector<const int16_t *> r = {blueFirst ? k.yGRB : k.yGBR, blueFirst ? k.uBGR : k.uRGB,
                                      blueFirst ? k.vBGR : k.vRGB};
    if (slot().pairRows) r = {blueFirst ? k.yBR : k.yRB, k.yuvG, blueFirst ? k.uvBR : k.uvRB};
    std::vector<size_t> sizes;
    for (const Bytes &e : expected) sizes.push_back(e.size());
    Dsts o(sizes, offset);
    slot().call(KernelTableForLevel(std::get<0>(GetParam())), o, src.data(), n, 0x5A, r.data());
    EXPECT_TRUE(o.Intact()) << "written outside the row";
    EXPECT_EQ(o.Contents(), expected);
  }
  std::vector<Yuv> Model(const Bytes &src, const Standard &k, bool blueFirst) const {
    std::vector<Yuv> px;
    for (size_t i = 0; i < src.size(); i += slot().srcBytes) {
      const int r = src[i + (blueFirst ? 2 : 0)], b = src[i + (blueFirst ? 0 : 2)];
      px.push_back(ModelYuv(k, r, src[i + 1], b, !slot().pairRows));
    }
    return px;
  }
};

TEST_P(RgbToYuvKernels, MatchesModelOnRandomRows) {
  for (const Standard &k : kStandards)
    for (bool blueFirst : {false, true})
      for (int32_t n : kCounts) {
        SCOPED_TRACE(std::string(k.name) + (blueFirst ? " B-first " : " R-first ") +
                     std::to_string(n));
        const Bytes src = RandomBytes(size_t(n) * slot().srcBytes, 1000 + n);  // exact size
        Check(src, n, k, blueFirst, LayOut(slot(), Model(src, k, blueFirst), src), n % 4);
      }
}

// Pixel pairs of black, white, grey, red and blue, then an odd white tail.
// Greys give Y = grey, U = V = 128 (no luma offset); full red reaches V = 255
// and full blue U = 255 (clamped from 256 where the kernel rounds).
TEST_P(RgbToYuvKernels, KnownColours) {
  const int colours[][3] = {{0, 0, 0}, {255, 255, 255}, {77, 77, 77}, {255, 0, 0}, {0, 0, 255}};
  for (const Standard &k : kStandards)
    for (bool blueFirst : {false, true}) {
      SCOPED_TRACE(std::string(k.name) + (blueFirst ? " B-first" : " R-first"));
      Bytes src;
      for (int c = 0; c < 11; ++c) {
        const int *rgb = colours[c < 10 ? c / 2 : 1];
        src.insert(src.end(),
                   {Clamp(rgb[blueFirst ? 2 : 0]), Clamp(rgb[1]), Clamp(rgb[blueFirst ? 0 : 2])});
        if (slot().srcBytes == 4) src.push_back(Clamp(40 + c));
      }
      std::vector<Yuv> px = Model(src, k, blueFirst);  // for the non-literal components
      for (int c = 0; c < 11; ++c) {
        const int *rgb = colours[c < 10 ? c / 2 : 1];
        if (rgb[0] == rgb[2]) px[c] = {rgb[0], 128, 128};
        if (rgb[0] > rgb[2]) px[c].v = 255;
        if (rgb[0] < rgb[2]) px[c].u = 255;
      }
      Check(src, 11, k, blueFirst, LayOut(slot(), px, src), 1);
    }
}

TEST_P(RgbToYuvKernels, NothingWrittenForEmptyCounts) {
  for (int32_t n : kEmptyCounts) {
    SCOPED_TRACE(n);
    Check(RandomBytes(8, 5), n, kStandards[1], false, LayOut(slot(), {}, {}), 3);
  }
}

// --------------------------------------------------------------- YUV -> RGB

enum class In { kYuyv, kUyvy, kPlanar, kYuva };
enum class Alpha { kNone, kArg, kKey, kSource };

// A source row as samples (Y and alpha per pixel, chroma per pair or per
// pixel) and its encoding into exactly sized buffers, so that reading past
// the row trips the address sanitizer.
struct YuvRow {
  Bytes y, u, v, a;
};
struct Encoded {
  Bytes row, y, u, v, key;
};
struct ToRgbSlot {
  const char *name;
  In in;
  int dstBytes;
  bool blueFirst;
  Alpha alpha;
  void (*call)(const Table &, uint8_t *, const Encoded &, int32_t, const Standard &);
};
#define TQCS_TO_RGB(name, in, bytes, blueFirst, alpha, ...)                                      \
  {                                                                                              \
#name, In::in, bytes, blueFirst, Alpha::alpha,                                               \
        [](const Table &t, uint8_t *d, const Encoded &s, int32_t n,                              \
           const Standard &k) { t.name##_Row(__VA_ARGS__, k.t4[0], k.t4[1], k.t4[2], k.t4[3]); } \
  }
#define PLANES s.y.data(), s.u.data(), s.v.data()
const ToRgbSlot kToRgb[] = {
    TQCS_TO_RGB(YUYV_2_RGB32, kYuyv, 4, false, kArg, d, s.row.data(), n, 0xA7),
    TQCS_TO_RGB(YUYV_2_BGR32, kYuyv, 4, true, kArg, d, s.row.data(), n, 0xA7),
    TQCS_TO_RGB(UYVY_2_RGB32, kUyvy, 4, false, kArg, d, s.row.data(), n, 0xA7),
    TQCS_TO_RGB(UYVY_2_BGR32, kUyvy, 4, true, kArg, d, s.row.data(), n, 0xA7),
    TQCS_TO_RGB(YUYV_2_RGB24, kYuyv, 3, false, kNone, d, s.row.data(), n),
    TQCS_TO_RGB(YUYV_2_BGR24, kYuyv, 3, true, kNone, d, s.row.data(), n),
    TQCS_TO_RGB(UYVY_2_RGB24, kUyvy, 3, false, kNone, d, s.row.data(), n),
    TQCS_TO_RGB(UYVY_2_BGR24, kUyvy, 3, true, kNone, d, s.row.data(), n),
    TQCS_TO_RGB(YUV422_2_RGB32, kPlanar, 4, false, kArg, d, PLANES, n, 0xA7),
    TQCS_TO_RGB(YUV422_2_BGR32, kPlanar, 4, true, kArg, d, PLANES, n, 0xA7),
    TQCS_TO_RGB(YUV422_2_RGB24, kPlanar, 3, false, kNone, d, PLANES, n),
    TQCS_TO_RGB(YUV422_2_BGR24, kPlanar, 3, true, kNone, d, PLANES, n),
    TQCS_TO_RGB(YUYV_Key_2_RGB32, kYuyv, 4, false, kKey, d, s.row.data(), s.key.data(), n),
    TQCS_TO_RGB(YUYV_Key_2_BGR32, kYuyv, 4, true, kKey, d, s.row.data(), s.key.data(), n),
    TQCS_TO_RGB(UYVY_Key_2_RGB32, kUyvy, 4, false, kKey, d, s.row.data(), s.key.data(), n),
    TQCS_TO_RGB(UYVY_Key_2_BGR32, kUyvy, 4, true, kKey, d, s.row.data(), s.key.data(), n),
    TQCS_TO_RGB(YUVA_2_RGB32, kYuva, 4, false, kSource, d, s.row.data(), n),
    TQCS_TO_RGB(YUVA_2_BGR32, kYuva, 4, true, kSource, d, s.row.data(), n),
    TQCS_TO_RGB(YUVA_2_RGB24, kYuva, 3, false, kNone, d, s.row.data(), n),
    TQCS_TO_RGB(YUVA_2_BGR24, kYuva, 3, true, kNone, d, s.row.data(), n),
};

Encoded Encode(const ToRgbSlot &s, const YuvRow &m) {
  Encoded e;
  for (size_t c = 0; c < m.u.size(); ++c) {
    if (s.in == In::kYuva) e.row.insert(e.row.end(), {m.y[c], m.u[c], m.v[c], m.a[c]});
    if (s.in == In::kYuyv) e.row.insert(e.row.end(), {m.y[2 * c], m.u[c], m.y[2 * c + 1], m.v[c]});
    if (s.in == In::kUyvy) e.row.insert(e.row.end(), {m.u[c], m.y[2 * c], m.v[c], m.y[2 * c + 1]});
  }
  if (s.in == In::kPlanar) e.y = m.y, e.u = m.u, e.v = m.v;
  if (s.alpha == Alpha::kKey) e.key = m.a;
  return e;
}

// u, v centred, or the sum of two centred samples with shift 15.
Bytes ModelRgb(const ToRgbSlot &s, const Standard &k, int y, int u, int v, int shift, bool round,
               uint8_t alpha) {
  const int add = round ? 1 << (shift - 1) : 0;
  const uint8_t r = Clamp(y + ((k.rv * v + add) >> shift)),
                g = Clamp(y + ((k.gu * u + k.gv * v + add) >> shift)),
                b = Clamp(y + ((k.bu * u + add) >> shift));
  Bytes px = s.blueFirst ? Bytes{b, g, r} : Bytes{r, g, b};
  if (s.dstBytes == 4) px.push_back(s.alpha == Alpha::kArg ? 0xA7 : alpha);
  return px;
}

class YuvToRgbKernels : public ::testing::TestWithParam<std::tuple<uint32_t, ToRgbSlot>> {
 protected:
  static void SetUpTestSuite() { tqcs::DeriveCoefficientTables(); }
  const ToRgbSlot &slot() const { return std::get<1>(GetParam()); }
  bool Full() const { return slot().in == In::kYuva; }
  int32_t Written(int32_t n) const { return std::max(0, Full() ? n : n / 2 * 2); }

  // n pixels of random samples; a 4:2:2 row holds count / 2 pairs (the odd
  // last pixel has no chroma), its Y plane and key still n samples.
  YuvRow Random(int32_t n, uint32_t seed) const {
    const size_t w = size_t(Written(n)), c = Full() ? w : w / 2;
    return {RandomBytes(slot().in == In::kPlanar ? size_t(n) : w, seed), RandomBytes(c, seed + 1),
            RandomBytes(c, seed + 2),
            RandomBytes(slot().alpha == Alpha::kKey ? size_t(n) : w, seed + 3)};
  }
  // The destination after a call, its canaries checked.
  Bytes Run(const YuvRow &m, int32_t n, const Standard &k, size_t offset) {
    GuardedBuffer dst(size_t(Written(n)) * slot().dstBytes, offset);
    dst.Randomize(uint32_t(n));
    slot().call(KernelTableForLevel(std::get<0>(GetParam())), dst.data(), Encode(slot(), m), n, k);
    EXPECT_TRUE(dst.CanariesIntact()) << "written outside the row";
    return Bytes(dst.data(), dst.data() + dst.size());
  }
  // 4:4:4 rounds; 4:2:2 even pixels truncate with their pair's chroma, odd
  // pixels add the next pair's (the last pair its own) and shift by 15.
  Bytes Model(const YuvRow &m, const Standard &k) const {
    Bytes out;
    for (size_t i = 0; i < size_t(Full() ? m.u.size() : 2 * m.u.size()); ++i) {
      const size_t p = Full() ? i : i / 2, q = std::min(p + 1, m.u.size() - 1);
      const int u = m.u[p] - 128, v = m.v[p] - 128;
      const Bytes px = Full() || i % 2 == 0 ? ModelRgb(slot(), k, m.y[i], u, v, 14, Full(), m.a[i])
                                            : ModelRgb(slot(), k, m.y[i], u + m.u[q] - 128,
                                                       v + m.v[q] - 128, 15, false, m.a[i]);
      out.insert(out.end(), px.begin(), px.end());
    }
    return out;
  }
};

TEST_P(YuvToRgbKernels, MatchesModelOnRandomRows) {
  for (const Standard &k : kStandards)
    for (int32_t n : kCounts) {
      SCOPED_TRACE(std::string(k.name) + " count " + std::to_string(n));
      const YuvRow m = Random(n, 2000 + n);
      EXPECT_EQ(Run(m, n, k, n % 4), Model(m, k));
    }
}

// Neutral chroma gives R = G = B = Y everywhere. Even pixels see only their
// own chroma and clamp at both ends: Y 255, U = V = 255 gives R = B = 255;
// Y 0, U = V = 0 gives R = B = 0; green the other way round.
TEST_P(YuvToRgbKernels, NeutralChromaAndClamping) {
  const int bytes = slot().dstBytes, rb = slot().blueFirst ? 2 : 0, step = Full() ? 1 : 2;
  for (const Standard &k : kStandards) {
    SCOPED_TRACE(k.name);
    YuvRow grey = Random(33, 77);
    std::fill(grey.u.begin(), grey.u.end(), 128), std::fill(grey.v.begin(), grey.v.end(), 128);
    const Bytes g = Run(grey, 33, k, 2);
    for (size_t i = 0; i < g.size(); ++i)
      if (int(i % bytes) < 3) {
        EXPECT_EQ(g[i], grey.y[i / bytes]) << "byte " << i;
      }

    const int ext[][4] = {{255, 255, 255, 0}, {0, 0, 0, 0}, {0, 255, 255, 1}, {255, 0, 0, 1}};
    YuvRow row;
    for (const int *e : ext) {
      row.u.push_back(Clamp(e[1])), row.v.push_back(Clamp(e[2]));
      for (int j = 0; j < step; ++j) row.y.push_back(Clamp(e[0])), row.a.push_back(0x11);
    }
    const Bytes d = Run(row, int32_t(row.y.size()), k, 1);
    for (int i = 0; i < 4; ++i) {
      const uint8_t *px = &d[size_t(i * step * bytes)];
      const int want = ext[i][0];
      EXPECT_TRUE(ext[i][3] ? px[1] == want : px[rb] == want && px[2 - rb] == want) << i;
    }
  }
}

// The odd pixel of the last pair sees only its own pair's chroma: it comes
// out as in a row holding that pair alone.
TEST_P(YuvToRgbKernels, LastPairRepeatsItsOwnChroma) {
  if (Full()) GTEST_SKIP() << "4:4:4 source";
  const YuvRow two = Random(4, 99);
  const YuvRow last{{two.y[2], two.y[3]}, {two.u[1]}, {two.v[1]}, {two.a[2], two.a[3]}};
  const Bytes a = Run(two, 4, kStandards[0], 0), b = Run(last, 2, kStandards[0], 3);
  EXPECT_EQ(Bytes(a.begin() + 2 * slot().dstBytes, a.end()), b);
}

TEST_P(YuvToRgbKernels, NothingWrittenForEmptyCounts) {
  std::vector<int32_t> counts(std::begin(kEmptyCounts), std::end(kEmptyCounts));
  if (!Full()) counts.push_back(1);  // no whole pair
  for (int32_t n : counts) EXPECT_TRUE(Run(Random(2, 5), n, kStandards[1], 0).empty()) << n;
}

INSTANTIATE_TEST_SUITE_P(Slots, RgbToYuvKernels,
                         ::testing::Combine(::testing::ValuesIn(tqcs::test::KernelTestLevels()),
                                            ::testing::ValuesIn(kToYuv)),
                         SlotName<ToYuvSlot>);
INSTANTIATE_TEST_SUITE_P(Slots, YuvToRgbKernels,
                         ::testing::Combine(::testing::ValuesIn(tqcs::test::KernelTestLevels()),
                                            ::testing::ValuesIn(kToRgb)),
                         SlotName<ToRgbSlot>);

}  // namespace
