// 8-bit RGB <-> YUV matrix kernels against a model written from the published
// Q14 numbers: expected bytes come from R, G, B (or Y, U, V) and the
// per-standard integers, never from the rows' element layout; the kernels get
// the real exported rows, so a wrong element pattern shows. One case per
// kernel, standard and (for RGB sources) byte order.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "base/coefficients.hpp"
#include "support/kernel_harness.hpp"

namespace {

using namespace tqcs::test;
using Table = TCS_KernelTable;
using CoefRows = std::array<const int16_t *, 4>;

uint8_t Clamp(int v) { return static_cast<uint8_t>(std::clamp(v, 0, 255)); }

struct Standard {
  const char *name;
  int yr, yg, yb, ur, ug, vg, vb, rv, gu, gv, bu;  // published Q14 values
  CoefRows common[2], pair[2];                     // R-first and B-first rows
  CoefRows t4;                                     // R from V, G from U, G from V, B from U
};
#define TQCS_ROWS(s)                                                                            \
  {{g_sY_GBR_##s, g_sU_RGB_##s, g_sV_RGB_##s}, {g_sY_GRB_##s, g_sU_BGR_##s, g_sV_BGR_##s}},     \
      {{g_sY_RB_##s, g_sYUV_G_##s, g_sUV_RB_##s}, {g_sY_BR_##s, g_sYUV_G_##s, g_sUV_BR_##s}}, { \
    g_sR_V_##s, g_sG_U_##s, g_sG_V_##s, g_sB_U_##s                                              \
  }
const Standard kStandards[] = {
    {"SD", 4898, 9618, 1868, -2764, -5428, -6860, -1332, 22970, -5638, -11700, 29032,
     TQCS_ROWS(SD)},
    {"HD", 3484, 11717, 1183, -1877, -6315, -7441, -751, 25800, -3069, -7671, 30402, TQCS_ROWS(HD)},
    {"UHD", 4304, 11108, 972, -2288, -5904, -7533, -659, 24160, -2697, -9362, 30825,
     TQCS_ROWS(UHD)},
};

constexpr uint8_t kAlpha = 0xA7;

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
  void (*call)(const Table &, Args, int32_t, const int16_t *const *);
};
#define R3 r[0], r[1], r[2]
#define TQCS_TO_YUV(fn, bytes, out, pair, key, ...)              \
  ToYuvSlot {                                                    \
#fn, bytes, Out::out, pair, key,                             \
        [](const Table &t, Args a, int32_t n,                    \
           const int16_t *const *r) { t.fn##_Row(__VA_ARGS__); } \
  }
const ToYuvSlot kToYuv[] = {
    TQCS_TO_YUV(RGB32_2_YUYV, 4, kYuyv, true, false, a.out[0], a.in[0], n, R3),
    TQCS_TO_YUV(RGB32_2_UYVY, 4, kUyvy, true, false, a.out[0], a.in[0], n, R3),
    TQCS_TO_YUV(RGB32_2_YUYV_Key, 4, kYuyv, true, true, a.out[0], a.out[1], a.in[0], n, R3),
    TQCS_TO_YUV(RGB32_2_UYVY_Key, 4, kUyvy, true, true, a.out[0], a.out[1], a.in[0], n, R3),
    TQCS_TO_YUV(RGB32_2_YUVA, 4, kYuva, false, false, a.out[0], a.in[0], n, R3),
    TQCS_TO_YUV(RGB24_2_YUVA, 3, kYuva, false, false, a.out[0], a.in[0], n, kAlpha, R3),
    TQCS_TO_YUV(RGB32_2_YUV422, 4, kPlanar, false, false, a.out[0], a.out[1], a.out[2], a.in[0], n,
                R3),
    TQCS_TO_YUV(RGB24_2_YUV422, 3, kPlanar, false, false, a.out[0], a.out[1], a.out[2], a.in[0], n,
                R3),
    TQCS_TO_YUV(RGB24_2_YUYV, 3, kYuyv, false, false, a.out[0], a.in[0], n, R3),
    TQCS_TO_YUV(RGB24_2_UYVY, 3, kUyvy, false, false, a.out[0], a.in[0], n, R3),
    TQCS_TO_YUV(RGB24_2_Gray, 3, kGray, false, false, a.out[0], a.in[0], r[0], n),
};

// The bytes each destination must hold for per-pixel values `px`, from the
// layout rules: 4:2:2 chroma of the even pixel, an odd tail as a whole pair
// with its own Y twice (packed) or luma only (planar).
Rows LayOut(const ToYuvSlot &s, const std::vector<Yuv> &px, const Bytes &src) {
  const size_t n = px.size();
  Rows out(s.out == Out::kPlanar ? 3 : 1);
  if (s.key) out.emplace_back();
  for (size_t i = 0; i < n; ++i) {
    const Yuv &p = px[i], &e = px[i & ~size_t{1}];
    const uint8_t y = Clamp(p.y), y1 = Clamp(i + 1 < n ? px[i + 1].y : p.y);
    const uint8_t u = Clamp(e.u), v = Clamp(e.v), a = s.srcBytes == 4 ? src[4 * i + 3] : kAlpha;
    if (s.out == Out::kYuva) out[0].insert(out[0].end(), {y, Clamp(p.u), Clamp(p.v), a});
    if (s.out == Out::kGray || s.out == Out::kPlanar) out[0].push_back(y);
    if (s.out == Out::kPlanar && i % 2) out[1].push_back(u), out[2].push_back(v);
    if (s.out == Out::kYuyv && i % 2 == 0) out[0].insert(out[0].end(), {y, u, y1, v});
    if (s.out == Out::kUyvy && i % 2 == 0) out[0].insert(out[0].end(), {u, y, v, y1});
    if (s.key) out.back().push_back(src[4 * i + 3]);
  }
  return out;
}

std::vector<Yuv> PixelsOf(const ToYuvSlot &s, const Standard &k, bool blueFirst, const Bytes &src) {
  std::vector<Yuv> px;
  for (size_t i = 0; i < src.size(); i += s.srcBytes) {
    const int r = src[i + (blueFirst ? 2 : 0)], b = src[i + (blueFirst ? 0 : 2)];
    px.push_back(ModelYuv(k, r, src[i + 1], b, !s.pairRows));
  }
  return px;
}

// The rows a driver passes for the byte order.
KernelCase MakeToYuv(const Table &t, const ToYuvSlot &s, const Standard &k, bool blueFirst) {
  const CoefRows rows = (s.pairRows ? k.pair : k.common)[blueFirst];
  return {std::string(s.name) + "_" + k.name + (blueFirst ? "_BFirst" : "_RFirst"),
          [&s](int32_t n) { return Sizes{size_t(n) * s.srcBytes}; },
          [&s](int32_t n) {  // the rows the layout fills
            Sizes z;
            for (const Bytes &r : LayOut(s, std::vector<Yuv>(n), Bytes(4 * size_t(n))))
              z.push_back(r.size());
            return z;
          },
          [&t, &s, rows](Args a, int32_t n) { s.call(t, a, n, rows.data()); },
          [&s, &k, blueFirst](Rows &out, const Rows &in, int32_t) {
            out = LayOut(s, PixelsOf(s, k, blueFirst, in[0]), in[0]);
          }};
}

TQCS_KERNEL_SUITE(RgbToYuv8, OnEveryLevel([](const Table &t) {
                    tqcs::DeriveCoefficientTables();
                    std::vector<KernelCase> c;
                    for (const ToYuvSlot &s : kToYuv)
                      for (const Standard &k : kStandards)
                        for (bool blueFirst : {false, true})
                          c.push_back(MakeToYuv(t, s, k, blueFirst));
                    return c;
                  }),
                  1, 2, 3, 4, 5, 7, 8, 31, 64);

// Pixel pairs of black, white, grey, red and blue, then an odd white tail.
// Greys give Y = grey, U = V = 128 (no luma offset); full red reaches V = 255
// and full blue U = 255 (clamped from 256 where the kernel rounds).
TEST(RgbToYuv8Rows, KnownColours) {
  tqcs::DeriveCoefficientTables();
  const int colours[][3] = {{0, 0, 0}, {255, 255, 255}, {77, 77, 77}, {255, 0, 0}, {0, 0, 255}};
  for (uint32_t level : KernelTestLevels())
    for (const ToYuvSlot &s : kToYuv)
      for (const Standard &k : kStandards)
        for (bool blueFirst : {false, true}) {
          const KernelCase c = MakeToYuv(KernelTableForLevel(level), s, k, blueFirst);
          Bytes src;
          for (int i = 0; i < 11; ++i) {
            const int *rgb = colours[i < 10 ? i / 2 : 1];
            src.insert(src.end(), {Clamp(rgb[blueFirst ? 2 : 0]), Clamp(rgb[1]),
                                   Clamp(rgb[blueFirst ? 0 : 2])});
            if (s.srcBytes == 4) src.push_back(Clamp(40 + i));
          }
          std::vector<Yuv> px = PixelsOf(s, k, blueFirst, src);  // for the other components
          for (int i = 0; i < 11; ++i) {
            const int *rgb = colours[i < 10 ? i / 2 : 1];
            if (rgb[0] == rgb[2]) px[i] = {rgb[0], 128, 128};
            if (rgb[0] > rgb[2]) px[i].v = 255;
            if (rgb[0] < rgb[2]) px[i].u = 255;
          }
          EXPECT_EQ(RunKernel(c, {src}, 11), LayOut(s, px, src)) << c.name;
        }
}

// --------------------------------------------------------------- YUV -> RGB

enum class In { kYuyv, kUyvy, kPlanar, kYuva };
enum class Alpha { kNone, kArg, kKey, kSource };
struct ToRgbSlot {
  const char *name;
  In in;
  int dstBytes;
  bool blueFirst;
  Alpha alpha;
  void (*call)(const Table &, Args, int32_t, const CoefRows &);
};
#define TQCS_TO_RGB(fn, in, bytes, blueFirst, alpha, ...)                                    \
  ToRgbSlot {                                                                                \
#fn, In::in, bytes, blueFirst, Alpha::alpha,                                             \
        [](const Table &t, Args a, int32_t n,                                                \
           const CoefRows &k) { t.fn##_Row(a.out[0], __VA_ARGS__, k[0], k[1], k[2], k[3]); } \
  }
#define PLANES a.in[0], a.in[1], a.in[2]
const ToRgbSlot kToRgb[] = {
    TQCS_TO_RGB(YUYV_2_RGB32, kYuyv, 4, false, kArg, a.in[0], n, kAlpha),
    TQCS_TO_RGB(YUYV_2_BGR32, kYuyv, 4, true, kArg, a.in[0], n, kAlpha),
    TQCS_TO_RGB(UYVY_2_RGB32, kUyvy, 4, false, kArg, a.in[0], n, kAlpha),
    TQCS_TO_RGB(UYVY_2_BGR32, kUyvy, 4, true, kArg, a.in[0], n, kAlpha),
    TQCS_TO_RGB(YUYV_2_RGB24, kYuyv, 3, false, kNone, a.in[0], n),
    TQCS_TO_RGB(YUYV_2_BGR24, kYuyv, 3, true, kNone, a.in[0], n),
    TQCS_TO_RGB(UYVY_2_RGB24, kUyvy, 3, false, kNone, a.in[0], n),
    TQCS_TO_RGB(UYVY_2_BGR24, kUyvy, 3, true, kNone, a.in[0], n),
    TQCS_TO_RGB(YUV422_2_RGB32, kPlanar, 4, false, kArg, PLANES, n, kAlpha),
    TQCS_TO_RGB(YUV422_2_BGR32, kPlanar, 4, true, kArg, PLANES, n, kAlpha),
    TQCS_TO_RGB(YUV422_2_RGB24, kPlanar, 3, false, kNone, PLANES, n),
    TQCS_TO_RGB(YUV422_2_BGR24, kPlanar, 3, true, kNone, PLANES, n),
    TQCS_TO_RGB(YUYV_Key_2_RGB32, kYuyv, 4, false, kKey, a.in[0], a.in[1], n),
    TQCS_TO_RGB(YUYV_Key_2_BGR32, kYuyv, 4, true, kKey, a.in[0], a.in[1], n),
    TQCS_TO_RGB(UYVY_Key_2_RGB32, kUyvy, 4, false, kKey, a.in[0], a.in[1], n),
    TQCS_TO_RGB(UYVY_Key_2_BGR32, kUyvy, 4, true, kKey, a.in[0], a.in[1], n),
    TQCS_TO_RGB(YUVA_2_RGB32, kYuva, 4, false, kSource, a.in[0], n),
    TQCS_TO_RGB(YUVA_2_BGR32, kYuva, 4, true, kSource, a.in[0], n),
    TQCS_TO_RGB(YUVA_2_RGB24, kYuva, 3, false, kNone, a.in[0], n),
    TQCS_TO_RGB(YUVA_2_BGR24, kYuva, 3, true, kNone, a.in[0], n),
};

// A 4:2:2 source holds count / 2 pairs (the odd last pixel has no chroma and
// is not written), its Y plane and key still count samples. 4:4:4 rounds;
// 4:2:2 even pixels truncate with their pair's chroma, odd pixels add the
// next pair's centred chroma (the last pair its own) and shift by 15.
KernelCase MakeToRgb(const Table &t, const ToRgbSlot &s, const Standard &k) {
  const bool full = s.in == In::kYuva;
  const auto written = [full](int32_t n) { return size_t(full ? n : n / 2 * 2); };
  return {std::string(s.name) + "_" + k.name,
          [=, &s](int32_t n) {
            Sizes z = s.in == In::kPlanar ? Sizes{size_t(n), size_t(n / 2), size_t(n / 2)}
                                          : Sizes{4 * size_t(full ? n : n / 2)};
            if (s.alpha == Alpha::kKey) z.push_back(size_t(n));
            return z;
          },
          [=, &s](int32_t n) { return Sizes{written(n) * s.dstBytes}; },
          [&t, &s, &k](Args a, int32_t n) { s.call(t, a, n, k.t4); },
          [=, &s, &k](Rows &out, const Rows &in, int32_t n) {
            const size_t pairs = size_t(n / 2);
            const auto at = [&](size_t i, char c) -> int {  // component c of pixel i
              if (s.in == In::kYuva) return in[0][4 * i + std::string("YUVA").find(c)];
              if (s.in == In::kPlanar) return c == 'Y' ? in[0][i] : in[c == 'U' ? 1 : 2][i / 2];
              const std::string order = s.in == In::kYuyv ? "YUYV" : "UYVY";
              const size_t pos = c == 'Y' ? order.find('Y') + (i % 2 ? 2 : 0) : order.find(c);
              return in[0][4 * (i / 2) + pos];
            };
            for (size_t i = 0; i < written(n); ++i) {
              const size_t next = std::min(i / 2 + 1, pairs - 1) * 2;  // a pixel of the next pair
              int u = at(i, 'U') - 128, v = at(i, 'V') - 128, shift = 14, add = full ? 8192 : 0;
              if (!full && i % 2) u += at(next, 'U') - 128, v += at(next, 'V') - 128, shift = 15;
              const int y = at(i, 'Y');
              const uint8_t r = Clamp(y + ((k.rv * v + add) >> shift)),
                            g = Clamp(y + ((k.gu * u + k.gv * v + add) >> shift)),
                            b = Clamp(y + ((k.bu * u + add) >> shift));
              const uint8_t alpha = s.alpha == Alpha::kKey      ? in[1][i]
                                    : s.alpha == Alpha::kSource ? uint8_t(at(i, 'A'))
                                                                : kAlpha;
              const Bytes px = {s.blueFirst ? b : r, g, s.blueFirst ? r : b, alpha};
              std::copy_n(px.begin(), s.dstBytes, out[0].begin() + i * s.dstBytes);
            }
          },
          {},
          full ? 1 : 2};
}

TQCS_KERNEL_SUITE(YuvToRgb8, OnEveryLevel([](const Table &t) {
                    tqcs::DeriveCoefficientTables();
                    std::vector<KernelCase> c;
                    for (const ToRgbSlot &s : kToRgb)
                      for (const Standard &k : kStandards) c.push_back(MakeToRgb(t, s, k));
                    return c;
                  }),
                  1, 2, 3, 4, 5, 7, 8, 31, 64);

// Rows of one byte value: 0x80 is neutral chroma and gives R = G = B = 128;
// Y = U = V = 255 drives R and B past 255, Y = U = V = 0 below 0, and both
// clamp. The odd pixel of the last pair sees only its own pair's chroma: it
// comes out as in a row holding that pair alone.
TEST(YuvToRgb8Rows, NeutralChromaClampingAndLastPair) {
  tqcs::DeriveCoefficientTables();
  for (const KernelCase &c : YuvToRgb8Cases()) {
    const size_t bytes = c.outSizes(4)[0] / 4;
    for (uint8_t v : {0x00, 0x80, 0xFF}) {
      Rows src = RandomSources(c, 6, 0);
      for (Bytes &row : src) std::fill(row.begin(), row.end(), v);
      const Bytes out = RunKernel(c, src, 6)[0];
      for (size_t i = 0; i < out.size(); ++i)
        if (i % bytes != 3 && (v == 0x80 || i % bytes != 1)) {
          EXPECT_EQ(out[i], v) << c.name << " byte " << i;
        }
    }
    if (c.minCount == 1) continue;  // 4:4:4
    const Rows two = RandomSources(c, 4, 99);
    Rows last = RandomSources(c, 2, 98);
    for (size_t r = 0; r < last.size(); ++r)
      std::copy(two[r].end() - last[r].size(), two[r].end(), last[r].begin());
    const Bytes a = RunKernel(c, two, 4)[0], b = RunKernel(c, last, 2)[0];
    EXPECT_EQ(Bytes(a.begin() + 2 * bytes, a.end()), b) << c.name;
  }
}

}  // namespace
