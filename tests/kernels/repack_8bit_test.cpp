// 8-bit repacking kernels through the kernel table, every level, against
// models written from the row rules (pair layouts spelled as strings):
// 4:2:2 <-> Y,U,V,A, planar <-> packed, 24/32-bit RGB repacks, chroma planes,
// HSV, histograms and zero fills.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "kernels/kernel_slots.hpp"
#include "support/kernel_harness.hpp"

namespace {

using namespace tqcs::test;
using Table = TCS_KernelTable;

constexpr uint8_t kAlpha = 0xA7;

// The 4:2:2 side of a row as planes Y, U, V: packed in `layout` (count / 2
// pairs), or planar when layout is null.
Rows Read422(const Rows &in, const char *layout, int32_t n) {
  if (!layout) return {in[0], in[1], in[2]};
  const PairSlots at(layout);
  Rows pl(3);
  for (size_t p = 0; p < size_t(n / 2); ++p) {
    const uint8_t *s = &in[0][4 * p];
    pl[0].insert(pl[0].end(), {s[at.y0], s[at.y1]});
    pl[1].push_back(s[at.u]), pl[2].push_back(s[at.v]);
  }
  return pl;
}

// Stores planes as a 4:2:2 row: one packed pair per chroma sample, or the
// planes as they are.
void Write422(Rows &out, const char *layout, const Rows &pl) {
  for (size_t p = 0; p < pl[1].size(); ++p) {
    if (!layout) {
      out[1][p] = pl[1][p], out[2][p] = pl[2][p];
      continue;
    }
    const PairSlots at(layout);
    uint8_t *d = &out[0][4 * p];
    d[at.y0] = pl[0][2 * p], d[at.y1] = pl[0][2 * p + 1], d[at.u] = pl[1][p], d[at.v] = pl[2][p];
  }
  if (!layout) std::copy(pl[0].begin(), pl[0].end(), out[0].begin());
}

// Y,U,V,A -> 4:2:2 planes: every luma, the even pixel's chroma. A packed row
// ends with a whole pair for a lone last pixel (its own luma twice); planar
// chroma holds count / 2 samples.
Rows FromYUVA(const Bytes &src, const char *layout, int32_t n) {
  Rows pl(3);
  for (size_t i = 0; i < size_t(n); ++i) pl[0].push_back(src[4 * i]);
  if (layout && n % 2) pl[0].push_back(pl[0].back());
  for (size_t p = 0; p < size_t(layout ? (n + 1) / 2 : n / 2); ++p)
    pl[1].push_back(src[8 * p + 1]), pl[2].push_back(src[8 * p + 2]);
  return pl;
}

// 4:2:2 planes -> Y,U,V,A: an odd pixel takes (own + next pair + round) / 2,
// the last pair its own chroma; alpha from the key plane, else kAlpha.
void ToYUVA(Bytes &dst, const Rows &pl, int32_t n, int round, const Bytes *key) {
  const size_t pairs = size_t(n / 2);
  for (size_t i = 0; i < 2 * pairs; ++i) {
    const size_t p = i / 2, q = (i % 2 && p + 1 < pairs) ? p + 1 : p;
    const int r = i % 2 ? round : 0;
    dst[4 * i] = pl[0][i];
    dst[4 * i + 1] = static_cast<uint8_t>((pl[1][p] + pl[1][q] + r) / 2);
    dst[4 * i + 2] = static_cast<uint8_t>((pl[2][p] + pl[2][q] + r) / 2);
    dst[4 * i + 3] = key ? (*key)[i] : kAlpha;
  }
}

// HSV from the definition: the hue of the largest component's sector.
void HSV(int r, int g, int b, uint16_t &h, uint8_t &s, uint8_t &v) {
  const int mx = std::max({r, g, b}), d = mx - std::min({r, g, b});
  const int sector = mx == r ? 0 : mx == g ? 1 : 2, diff[3] = {g - b, b - r, r - g};
  const int hue = d ? 60 * diff[sector] / d + 120 * sector : 0;
  h = static_cast<uint16_t>(hue < 0 ? hue + 360 : hue);
  s = static_cast<uint8_t>(mx ? 255 * d / mx : 0);
  v = static_cast<uint8_t>(mx);
}

// 4:2:2 <-> Y,U,V,A and planar <-> packed. The packed layout of each kernel
// (none: planar); constant alpha rounds the odd pixel's chroma, the key forms
// truncate; the YUVA key forms also write every alpha to the key plane.
enum Kind { kToYuva, kKeyToYuva, kFromYuva, kFromYuvaKey, kPlanarToPacked, kPackedToPlanar };
struct PairSlot {
  const char *name, *layout;
  Kind kind;
  void (*call)(const Table &, Args, int32_t);
};
#define TQCS_PAIR(fn, layout, kind, ...)                                                  \
  PairSlot {                                                                              \
#fn, layout, kind, [](const Table &t, Args a, int32_t n) { t.fn##_Row(__VA_ARGS__); } \
  }
#define PLANES a.in[0], a.in[1], a.in[2]
#define OUT_PLANES a.out[0], a.out[1], a.out[2]
const PairSlot kPairs[] = {
    TQCS_PAIR(YUYV_2_YUVA, "YUYV", kToYuva, a.out[0], a.in[0], n, kAlpha),
    TQCS_PAIR(UYVY_2_YUVA, "UYVY", kToYuva, a.out[0], a.in[0], n, kAlpha),
    TQCS_PAIR(YUV422_2_YUVA, nullptr, kToYuva, a.out[0], PLANES, n, kAlpha),
    TQCS_PAIR(YUYV_Key_2_YUVA, "YUYV", kKeyToYuva, a.out[0], a.in[0], a.in[1], n),
    TQCS_PAIR(UYVY_Key_2_YUVA, "UYVY", kKeyToYuva, a.out[0], a.in[0], a.in[1], n),
    TQCS_PAIR(YUVA_2_YUYV, "YUYV", kFromYuva, a.out[0], a.in[0], n),
    TQCS_PAIR(YUVA_2_UYVY, "UYVY", kFromYuva, a.out[0], a.in[0], n),
    TQCS_PAIR(YUVA_2_YUV422, nullptr, kFromYuva, OUT_PLANES, a.in[0], n),
    TQCS_PAIR(YUVA_2_YUYV_Key, "YUYV", kFromYuvaKey, a.out[0], a.out[1], a.in[0], n),
    TQCS_PAIR(YUVA_2_UYVY_Key, "UYVY", kFromYuvaKey, a.out[0], a.out[1], a.in[0], n),
    TQCS_PAIR(YUV422_2_YUYV, "YUYV", kPlanarToPacked, a.out[0], PLANES, n),
    TQCS_PAIR(YUV422_2_UYVY, "UYVY", kPlanarToPacked, a.out[0], PLANES, n),
    TQCS_PAIR(YUYV_2_YUV422, "YUYV", kPackedToPlanar, OUT_PLANES, a.in[0], n),
    TQCS_PAIR(UYVY_2_YUV422, "UYVY", kPackedToPlanar, OUT_PLANES, a.in[0], n),
};

KernelCase MakePair(const Table &t, const PairSlot &s) {
  // A 4:2:2 row (planar without a layout), read (count / 2 pairs) or written
  // (a packed lone last pixel as a pair), with a key plane after it.
  const auto row422 = [](const char *layout, bool written, bool key) {
    return [=](int32_t n) {
      Sizes z = layout ? Sizes{4 * size_t(written ? (n + 1) / 2 : n / 2)}
                       : Sizes{size_t(n), size_t(n / 2), size_t(n / 2)};
      if (key) z.push_back(size_t(n));
      return z;
    };
  };
  const bool toYuva = s.kind == kToYuva || s.kind == kKeyToYuva;
  const bool fromYuva = s.kind == kFromYuva || s.kind == kFromYuvaKey;
  KernelCase c = {
      s.name,
      fromYuva
          ? PerCount({4})
          : row422(s.kind == kPlanarToPacked ? nullptr : s.layout, false, s.kind == kKeyToYuva),
      toYuva ? PerCount({4})
             : row422(s.kind == kPackedToPlanar ? nullptr : s.layout, true, s.kind == kFromYuvaKey),
      [&t, &s](Args a, int32_t n) { s.call(t, a, n); },
      [&s](Rows &out, const Rows &in, int32_t n) {
        switch (s.kind) {
          case kToYuva:
          case kKeyToYuva:
            return ToYUVA(out[0], Read422(in, s.layout, n), n, s.kind == kToYuva,
                          s.kind == kToYuva ? nullptr : &in[1]);
          case kFromYuvaKey:
            for (size_t i = 0; i < size_t(n); ++i) out[1][i] = in[0][4 * i + 3];
            [[fallthrough]];
          case kFromYuva:
            return Write422(out, s.layout, FromYUVA(in[0], s.layout, n));
          case kPlanarToPacked:
            return Write422(out, s.layout, Read422(in, nullptr, n));
          case kPackedToPlanar:
            return Write422(out, nullptr, Read422(in, s.layout, n));
        }
      }};
  // Levels 1 to 4 keep the empty stub in the UYVY key slots (53 and 55).
  c.portableOnly = (s.kind == kKeyToYuva || s.kind == kFromYuvaKey) && s.layout[0] == 'U';
  return c;
}

// 24/32-bit repacks: per destination byte, the source byte it takes ('a' the
// constant alpha, 'k' the key plane).
struct Repack {
  const char *name;
  size_t from;
  std::string pick;
  void (*call)(const Table &, Args, int32_t);
};
#define TQCS_REPACK(fn, from, pick, ...)                                                \
  Repack {                                                                              \
#fn, from, pick, [](const Table &t, Args a, int32_t n) { t.fn##_Row(__VA_ARGS__); } \
  }
const Repack kRepacks[] = {
    TQCS_REPACK(RGB24_2_RGB32, 3, "012a", a.out[0], a.in[0], n, kAlpha),
    TQCS_REPACK(RGB24_2_BGR32, 3, "210a", a.out[0], a.in[0], n, kAlpha),
    TQCS_REPACK(RGB24_Key_2_BGR32, 3, "210k", a.out[0], a.in[0], a.in[1], n),
    TQCS_REPACK(RGB24_Key_2_RGB32, 3, "012k", a.out[0], a.in[0], a.in[1], n),
    TQCS_REPACK(RGB32_2_RGB24, 4, "012", a.out[0], a.in[0], n),
    TQCS_REPACK(RGB32_2_BGR24, 4, "210", a.out[0], a.in[0], n),
    TQCS_REPACK(RGB32_SwapRB, 4, "2103", a.out[0], a.in[0], n),
    TQCS_REPACK(RGB24_SwapRB, 3, "210", a.out[0], a.in[0], n),
    // The table's slot 9 comes from TQMemProc; this is its portable twin.
    {"RGB32_2_RGB24_PortableTwin", 4, "012",
     [](const Table &, Args a, int32_t n) {
       tqcs::portable::RGB32_2_RGB24_Row(a.out[0], a.in[0], n);
     }},
};

KernelCase MakeRepack(const Table &t, const Repack &r) {
  const size_t to = r.pick.size();
  return {r.name, r.pick.back() == 'k' ? PerCount({r.from, 1}) : PerCount({r.from}), PerCount({to}),
          [&t, &r](Args a, int32_t n) { r.call(t, a, n); },
          [&r, to](Rows &out, const Rows &in, int32_t n) {
            for (size_t i = 0; i < size_t(n); ++i)
              for (size_t b = 0; b < to; ++b) {
                const char f = r.pick[b];
                out[0][to * i + b] = f == 'a'   ? kAlpha
                                     : f == 'k' ? in[1][i]
                                                : in[0][r.from * i + size_t(f - '0')];
              }
          }};
}

std::vector<KernelCase> PlaneCases(const Table &t) {
  std::vector<KernelCase> cases = {
      {"UV_Deinterleave", PerCount({2}), PerCount({1, 1}),
       [&t](Args a, int32_t n) { t.UV_Deinterleave_Row(a.out[0], a.out[1], a.in[0], n); },
       [](Rows &out, const Rows &in, int32_t n) {
         for (size_t i = 0; i < 2 * size_t(n); ++i) out[i % 2][i / 2] = in[0][i];
       }},
      {"UV_Interleave", PerCount({1, 1}), PerCount({2}),
       [&t](Args a, int32_t n) { t.UV_Interleave_Row(a.out[0], a.in[0], a.in[1], n); },
       [](Rows &out, const Rows &in, int32_t n) {
         for (size_t i = 0; i < 2 * size_t(n); ++i) out[0][i] = in[i % 2][i / 2];
       }},
      // count = output samples from (count + 1) / 2 source samples; odd
      // outputs truncate the mean with the next sample, the last repeats.
      {"UV_422_2_444", [](int32_t n) { return Sizes(2, size_t(n + 1) / 2); }, PerCount({1, 1}),
       [&t](Args a, int32_t n) { t.UV_422_2_444_Row(a.out[0], a.out[1], a.in[0], a.in[1], n); },
       [](Rows &out, const Rows &in, int32_t n) {
         for (size_t k = 0; k < 2; ++k)
           for (size_t j = 0; j < size_t(n); ++j)
             out[k][j] = static_cast<uint8_t>(
                 (in[k][j / 2] + in[k][std::min(j / 2 + j % 2, in[k].size() - 1)]) / 2);
       }},
      // Adds to the counts already there: the arrays are never cleared.
      {"RGB24_Histogram",
       PerCount({3}),
       [](int32_t) { return Sizes(3, 1024); },
       [&t](Args a, int32_t n) { t.RGB24_Histogram_Row(a.out[0], a.out[1], a.out[2], a.in[0], n); },
       [](Rows &out, const Rows &in, int32_t n) {
         for (size_t i = 0; i < 3 * size_t(n); ++i) {
           uint32_t bin;
           std::memcpy(&bin, &out[i % 3][4 * in[0][i]], 4);
           ++bin;
           std::memcpy(&out[i % 3][4 * in[0][i]], &bin, 4);
         }
       },
       {},
       1,
       {4, 8, 12}},
  };
  for (bool slot144 : {false, true})
    cases.push_back({slot144 ? "Int32_2_Int16_Deinterleave" : "Deinterleave_Pairs",
                     PerCount({2, 2}), PerCount({1, 1}),
                     [&t, slot144](Args a, int32_t n) {
                       (slot144 ? t.Int32_2_Int16_Deinterleave_Row : t.Deinterleave_Pairs_Row)(
                           a.out[0], a.out[1], a.in[0], a.in[1], n);
                     },
                     [](Rows &out, const Rows &in, int32_t n) {
                       for (size_t i = 0; i < size_t(n); ++i)
                         out[0][i] = in[0][2 * i], out[1][i] = in[1][2 * i + 1];
                     }});
  for (bool bgr : {false, true})
    cases.push_back({bgr ? "BGR24_2_HSV" : "RGB24_2_HSV",
                     PerCount({3}),
                     PerCount({2, 1, 1}),
                     [&t, bgr](Args a, int32_t n) {
                       (bgr ? t.BGR24_2_HSV_Row : t.RGB24_2_HSV_Row)(a.out[0], a.out[1], a.out[2],
                                                                     a.in[0], n);
                     },
                     [bgr](Rows &out, const Rows &in, int32_t n) {
                       for (size_t i = 0; i < size_t(n); ++i) {
                         const uint8_t *p = &in[0][3 * i];
                         uint16_t h;
                         HSV(p[bgr ? 2 : 0], p[1], p[bgr ? 0 : 2], h, out[1][i], out[2][i]);
                         PutSample(out[0], i, 2, h);
                       }
                     },
                     {},
                     1,
                     {2, 1, 3}});
  // Zero fills, count in units of 1, 2, 4, 3 and 8 bytes; the unused second
  // argument is null.
  using Clear = void (*Table::*)(uint8_t *, const uint8_t *, int32_t);
  const std::tuple<const char *, size_t, Clear> clears[] = {
      {"Clear_Row_A", 1, &Table::Clear_Row_A},
      {"Clear_Row_B", 2, &Table::Clear_Row_B},
      {"Clear_Row_C", 4, &Table::Clear_Row_C},
      {"Clear_Row_D", 3, &Table::Clear_Row_D},
      {"Clear_Row_E", 8, &Table::Clear_Row_E}};
  for (const auto &[name, unit, fn] : clears)
    cases.push_back(
        {name, [](int32_t) { return Sizes{}; }, PerCount({unit}),
         [&t, fn = fn](Args a, int32_t n) { (t.*fn)(a.out[0], nullptr, n); },
         [](Rows &out, const Rows &, int32_t) { std::fill(out[0].begin(), out[0].end(), 0); }});
  return cases;
}

// Odd and even counts, single pairs, lone tails, rows longer than any block.
TQCS_KERNEL_SUITE(Repack8Bit,
                  Joined({OnEveryLevel(kPairs, MakePair), OnEveryLevel(kRepacks, MakeRepack),
                          OnEveryLevel(PlaneCases)}),
                  1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 64, 65, 130, 1001);

// The swaps may run in place: each pixel is read before it is written.
TEST(Repack8BitInPlace, SwapsReadEachPixelBeforeWritingIt) {
  for (const KernelCase &c : Repack8BitCases())
    if (c.name.find("SwapRB") != std::string::npos) {
      EXPECT_TRUE(MatchesModelInPlace(c, 37, 5));
    }
}

// Primaries, greys, sector boundaries and truncation towards zero; the
// B-first kernel gets the same pixels with bytes 0 and 2 exchanged.
TEST(Repack8BitHSV, KnownColours) {
  const int px[][6] = {
      {0, 0, 0, 0, 0, 0},           {128, 128, 128, 0, 0, 128},    {255, 0, 0, 0, 255, 255},
      {0, 255, 0, 120, 255, 255},   {0, 0, 255, 240, 255, 255},    {255, 255, 0, 60, 255, 255},
      {0, 255, 255, 180, 255, 255}, {255, 0, 255, 300, 255, 255},  {255, 0, 1, 0, 255, 255},
      {255, 128, 0, 30, 255, 255},  {100, 50, 200, 260, 191, 200}, {10, 200, 100, 148, 242, 200},
      {200, 10, 100, 332, 242, 200}};
  for (uint32_t level : KernelTestLevels())
    for (bool bgr : {false, true})
      for (const auto &p : px) {
        const uint8_t src[3] = {uint8_t(p[bgr ? 2 : 0]), uint8_t(p[1]), uint8_t(p[bgr ? 0 : 2])};
        uint16_t h;
        uint8_t s, v;
        const Table &t = KernelTableForLevel(level);
        (bgr ? t.BGR24_2_HSV_Row : t.RGB24_2_HSV_Row)(&h, &s, &v, src, 1);
        EXPECT_EQ(std::vector<int>({h, s, v}), std::vector<int>({p[3], p[4], p[5]}))
            << p[0] << "," << p[1] << "," << p[2] << (bgr ? " BGR" : " RGB") << " level " << level;
      }
}

}  // namespace
