// 8-bit repacking kernels through the kernel table, every level. Each kernel
// is described once: the bytes its rows hold for a count, how to call it, and
// a model written from the row rules (pair layouts spelled as strings). One
// set of checks runs them all: seeded random rows at many counts against the
// model (bytes the model leaves alone must keep their old random contents),
// canaries after every destination, nothing written for counts 0 and below.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "kernels/kernel_slots.hpp"
#include "support/buffers.hpp"

namespace {

using tqcs::test::GuardedBuffer;
using tqcs::test::KernelTableForLevel;
using tqcs::test::KernelTestLevels;
using Bytes = std::vector<uint8_t>;
using Rows = std::vector<Bytes>;
using Sizes = std::vector<size_t>;

struct Ctx {
  std::vector<const uint8_t *> in;
  std::vector<uint8_t *> out;
  uint8_t alpha;
};
using Call = std::function<void(const TCS_KernelTable &, const Ctx &, int32_t)>;
// Overwrites, in the destinations' old contents, what the kernel must write.
using Model = std::function<void(Rows &out, const Rows &in, size_t n, uint8_t alpha)>;

struct Case {
  std::string name;
  int slot;
  std::function<Sizes(size_t)> inSizes, outSizes;
  Call call;
  Model model;
  Sizes outOffsets = {};  // wider samples stay aligned; bytes default to odd offsets
};

// Names the kernel in test output instead of dumping the parameter's bytes.
void PrintTo(const Case &c, std::ostream *os) { *os << c.name; }

// ---- Models --------------------------------------------------------------------

// Byte of component `comp` (the `which`-th of its kind) in a pair like "UYVY".
size_t Pos(const char *layout, char comp, int which = 0) {
  for (size_t i = 0; i < 4; ++i)
    if (layout[i] == comp && which-- == 0) return i;
  return 99;
}

// A packed 4:2:2 row as planes Y (2 per pair), U, V.
Rows Unpack(const Bytes &src, const char *layout, size_t pairs) {
  Rows pl(3);
  for (size_t p = 0; p < pairs; ++p) {
    const uint8_t *s = &src[4 * p];
    pl[0].insert(pl[0].end(), {s[Pos(layout, 'Y')], s[Pos(layout, 'Y', 1)]});
    pl[1].push_back(s[Pos(layout, 'U')]);
    pl[2].push_back(s[Pos(layout, 'V')]);
  }
  return pl;
}

void PutPair(Bytes &dst, size_t p, const char *layout, uint8_t y0, uint8_t u, uint8_t y1,
             uint8_t v) {
  dst[4 * p + Pos(layout, 'Y')] = y0, dst[4 * p + Pos(layout, 'Y', 1)] = y1;
  dst[4 * p + Pos(layout, 'U')] = u, dst[4 * p + Pos(layout, 'V')] = v;
}

// 4:2:2 planes -> Y,U,V,A: an odd pixel takes (own + next pair + round) / 2,
// the last pair its own chroma.
void ToYUVA(Bytes &dst, const Rows &pl, size_t pairs, int round,
            const std::function<uint8_t(size_t)> &alpha) {
  for (size_t i = 0; i < 2 * pairs; ++i) {
    const size_t p = i / 2, q = (i % 2 && p + 1 < pairs) ? p + 1 : p;
    const int r = i % 2 ? round : 0;
    dst[4 * i] = pl[0][i];
    dst[4 * i + 1] = static_cast<uint8_t>((pl[1][p] + pl[1][q] + r) / 2);
    dst[4 * i + 2] = static_cast<uint8_t>((pl[2][p] + pl[2][q] + r) / 2);
    dst[4 * i + 3] = alpha(i);
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

// ---- Kernel descriptions ------------------------------------------------------

template <class T>
T *As(uint8_t *p) {
  return reinterpret_cast<T *>(p);
}
Sizes Packed422(size_t n) { return {4 * (n / 2)}; }
Sizes Planar422(size_t n) { return {n, n / 2, n / 2}; }

std::vector<Case> PairCases() {
  std::vector<Case> cases;
  for (const char *lay : {"YUYV", "UYVY"}) {
    const bool yuyv = lay[0] == 'Y';
    const std::string L = lay;
    // Packed -> YUVA: constant alpha rounds the odd chroma, the key form truncates.
    cases.push_back(
        {L + "_2_YUVA", yuyv ? 3 : 5, Packed422, [](size_t n) { return Sizes{4 * n}; },
         [yuyv](auto &t, auto &x, int32_t n) {
           (yuyv ? t.YUYV_2_YUVA_Row : t.UYVY_2_YUVA_Row)(x.out[0], x.in[0], n, x.alpha);
         },
         [lay](Rows &out, const Rows &in, size_t n, uint8_t a) {
           ToYUVA(out[0], Unpack(in[0], lay, n / 2), n / 2, 1, [a](size_t) { return a; });
         }});
    cases.push_back(
        {L + "_Key_2_YUVA", yuyv ? 52 : 53,
         [](size_t n) {
           return Sizes{4 * (n / 2), n};
         },
         [](size_t n) { return Sizes{4 * n}; },
         [yuyv](auto &t, auto &x, int32_t n) {
           (yuyv ? t.YUYV_Key_2_YUVA_Row : t.UYVY_Key_2_YUVA_Row)(x.out[0], x.in[0], x.in[1], n);
         },
         [lay](Rows &out, const Rows &in, size_t n, uint8_t) {
           ToYUVA(out[0], Unpack(in[0], lay, n / 2), n / 2, 0, [&](size_t i) { return in[1][i]; });
         }});
    // YUVA -> packed: even pixel's chroma; a lone last pixel is a pair with
    // its own luma twice. The key forms also write every alpha to the plane.
    for (bool key : {false, true}) {
      cases.push_back({"YUVA_2_" + L + (key ? "_Key" : ""), key ? (yuyv ? 54 : 55) : (yuyv ? 4 : 6),
                       [](size_t n) { return Sizes{4 * n}; },
                       [key](size_t n) {
                         return key ? Sizes{4 * ((n + 1) / 2), n} : Sizes{4 * ((n + 1) / 2)};
                       },
                       [yuyv, key](auto &t, auto &x, int32_t n) {
                         if (key)
                           (yuyv ? t.YUVA_2_YUYV_Key_Row : t.YUVA_2_UYVY_Key_Row)(
                               x.out[0], x.out[1], x.in[0], n);
                         else
                           (yuyv ? t.YUVA_2_YUYV_Row : t.YUVA_2_UYVY_Row)(x.out[0], x.in[0], n);
                       },
                       [lay, key](Rows &out, const Rows &in, size_t n, uint8_t) {
                         const Bytes &s = in[0];
                         for (size_t p = 0; 2 * p < n; ++p) {
                           const size_t e = 8 * p, o = 2 * p + 1 < n ? e + 4 : e;
                           PutPair(out[0], p, lay, s[e], s[e + 1], s[o], s[e + 2]);
                         }
                         for (size_t i = 0; key && i < n; ++i) out[1][i] = s[4 * i + 3];
                       }});
    }
    // Planar <-> packed: whole pairs only.
    cases.push_back({"YUV422_2_" + L, yuyv ? 21 : 23, Planar422,
                     [](size_t n) { return Sizes{4 * ((n + 1) / 2)}; },
                     [yuyv](auto &t, auto &x, int32_t n) {
                       (yuyv ? t.YUV422_2_YUYV_Row : t.YUV422_2_UYVY_Row)(x.out[0], x.in[0],
                                                                          x.in[1], x.in[2], n);
                     },
                     [lay](Rows &out, const Rows &in, size_t n, uint8_t) {
                       for (size_t p = 0; p < n / 2; ++p)
                         PutPair(out[0], p, lay, in[0][2 * p], in[1][p], in[0][2 * p + 1],
                                 in[2][p]);
                     }});
    cases.push_back({L + "_2_YUV422", yuyv ? 22 : 24, Packed422, Planar422,
                     [yuyv](auto &t, auto &x, int32_t n) {
                       (yuyv ? t.YUYV_2_YUV422_Row : t.UYVY_2_YUV422_Row)(x.out[0], x.out[1],
                                                                          x.out[2], x.in[0], n);
                     },
                     [lay](Rows &out, const Rows &in, size_t n, uint8_t) {
                       const Rows pl = Unpack(in[0], lay, n / 2);
                       for (int k = 0; k < 3; ++k)
                         std::copy(pl[k].begin(), pl[k].end(), out[k].begin());
                     }});
  }
  cases.push_back({"YUV422_2_YUVA", 43, Planar422, [](size_t n) { return Sizes{4 * n}; },
                   [](auto &t, auto &x, int32_t n) {
                     t.YUV422_2_YUVA_Row(x.out[0], x.in[0], x.in[1], x.in[2], n, x.alpha);
                   },
                   [](Rows &out, const Rows &in, size_t n, uint8_t a) {
                     ToYUVA(out[0], in, n / 2, 1, [a](size_t) { return a; });
                   }});
  // Every luma; chroma of the even pixels, count / 2 of them.
  cases.push_back({"YUVA_2_YUV422", 44, [](size_t n) { return Sizes{4 * n}; }, Planar422,
                   [](auto &t, auto &x, int32_t n) {
                     t.YUVA_2_YUV422_Row(x.out[0], x.out[1], x.out[2], x.in[0], n);
                   },
                   [](Rows &out, const Rows &in, size_t n, uint8_t) {
                     for (size_t i = 0; i < n; ++i) {
                       out[0][i] = in[0][4 * i];
                       if (i % 2 == 0 && i / 2 < n / 2)
                         out[1][i / 2] = in[0][4 * i + 1], out[2][i / 2] = in[0][4 * i + 2];
                     }
                   }});
  return cases;
}

// 24/32-bit repacks: per destination byte, the source byte it takes
// (-1 the constant alpha, -2 the key plane).
std::vector<Case> RGBCases() {
  struct Repack {
    const char *name;
    int slot;
    size_t from, to;
    std::vector<int> pick;
    Call call;
  };
  const Repack repacks[] = {
      {"RGB24_2_RGB32",
       7,
       3,
       4,
       {0, 1, 2, -1},
       [](auto &t, auto &x, int32_t n) { t.RGB24_2_RGB32_Row(x.out[0], x.in[0], n, x.alpha); }},
      {"RGB24_2_BGR32",
       8,
       3,
       4,
       {2, 1, 0, -1},
       [](auto &t, auto &x, int32_t n) { t.RGB24_2_BGR32_Row(x.out[0], x.in[0], n, x.alpha); }},
      {"RGB24_Key_2_BGR32",
       56,
       3,
       4,
       {2, 1, 0, -2},
       [](auto &t, auto &x, int32_t n) { t.RGB24_Key_2_BGR32_Row(x.out[0], x.in[0], x.in[1], n); }},
      {"RGB24_Key_2_RGB32",
       57,
       3,
       4,
       {0, 1, 2, -2},
       [](auto &t, auto &x, int32_t n) { t.RGB24_Key_2_RGB32_Row(x.out[0], x.in[0], x.in[1], n); }},
      {"RGB32_2_RGB24",
       9,
       4,
       3,
       {0, 1, 2},
       [](auto &t, auto &x, int32_t n) { t.RGB32_2_RGB24_Row(x.out[0], x.in[0], n); }},
      // The table's slot 9 comes from TQMemProc; this is its portable twin.
      {"RGB32_2_RGB24_PortableTwin",
       9,
       4,
       3,
       {0, 1, 2},
       [](auto &, auto &x, int32_t n) { tqcs::portable::RGB32_2_RGB24_Row(x.out[0], x.in[0], n); }},
      {"RGB32_2_BGR24",
       10,
       4,
       3,
       {2, 1, 0},
       [](auto &t, auto &x, int32_t n) { t.RGB32_2_BGR24_Row(x.out[0], x.in[0], n); }},
      {"RGB32_SwapRB",
       20,
       4,
       4,
       {2, 1, 0, 3},
       [](auto &t, auto &x, int32_t n) { t.RGB32_SwapRB_Row(x.out[0], x.in[0], n); }},
      {"RGB24_SwapRB",
       154,
       3,
       3,
       {2, 1, 0},
       [](auto &t, auto &x, int32_t n) { t.RGB24_SwapRB_Row(x.out[0], x.in[0], n); }},
  };
  std::vector<Case> cases;
  for (const Repack &r : repacks) {
    const bool key = r.pick.back() == -2;
    cases.push_back(
        {r.name, r.slot,
         [r, key](size_t n) {
           return key ? Sizes{r.from * n, n} : Sizes{r.from * n};
         },
         [r](size_t n) { return Sizes{r.to * n}; }, r.call,
         [r](Rows &out, const Rows &in, size_t n, uint8_t a) {
           for (size_t i = 0; i < n; ++i)
             for (size_t b = 0; b < r.to; ++b) {
               const int f = r.pick[b];
               out[0][r.to * i + b] = f == -1 ? a : f == -2 ? in[1][i] : in[0][r.from * i + f];
             }
         }});
  }
  return cases;
}

std::vector<Case> PlaneCases() {
  auto twoOf = [](size_t k) { return [k](size_t n) { return Sizes{k * n, k * n}; }; };
  std::vector<Case> cases = {
      {"UV_Deinterleave", 143, [](size_t n) { return Sizes{2 * n}; }, twoOf(1),
       [](auto &t, auto &x, int32_t n) { t.UV_Deinterleave_Row(x.out[0], x.out[1], x.in[0], n); },
       [](Rows &out, const Rows &in, size_t n, uint8_t) {
         for (size_t i = 0; i < 2 * n; ++i) out[i % 2][i / 2] = in[0][i];
       }},
      {"UV_Interleave", 151, twoOf(1), [](size_t n) { return Sizes{2 * n}; },
       [](auto &t, auto &x, int32_t n) { t.UV_Interleave_Row(x.out[0], x.in[0], x.in[1], n); },
       [](Rows &out, const Rows &in, size_t n, uint8_t) {
         for (size_t i = 0; i < 2 * n; ++i) out[0][i] = in[i % 2][i / 2];
       }},
      // count = output samples from (count + 1) / 2 source samples; odd
      // outputs truncate the mean with the next sample, the last repeats.
      {"UV_422_2_444", 149,
       [](size_t n) {
         return Sizes{(n + 1) / 2, (n + 1) / 2};
       },
       twoOf(1),
       [](auto &t, auto &x, int32_t n) {
         t.UV_422_2_444_Row(x.out[0], x.out[1], x.in[0], x.in[1], n);
       },
       [](Rows &out, const Rows &in, size_t n, uint8_t) {
         for (size_t k = 0; k < 2; ++k)
           for (size_t j = 0; j < n; ++j)
             out[k][j] = static_cast<uint8_t>(
                 (in[k][j / 2] + in[k][std::min(j / 2 + j % 2, in[k].size() - 1)]) / 2);
       }},
  };
  for (int slot : {124, 144})
    cases.push_back({slot == 124 ? "Deinterleave_Pairs" : "Int32_2_Int16_Deinterleave", slot,
                     twoOf(2), twoOf(1),
                     [slot](auto &t, auto &x, int32_t n) {
                       (slot == 124 ? t.Deinterleave_Pairs_Row : t.Int32_2_Int16_Deinterleave_Row)(
                           x.out[0], x.out[1], x.in[0], x.in[1], n);
                     },
                     [](Rows &out, const Rows &in, size_t n, uint8_t) {
                       for (size_t i = 0; i < n; ++i)
                         out[0][i] = in[0][2 * i], out[1][i] = in[1][2 * i + 1];
                     }});
  for (bool bgr : {false, true})
    cases.push_back({bgr ? "BGR24_2_HSV" : "RGB24_2_HSV",
                     bgr ? 153 : 152,
                     [](size_t n) { return Sizes{3 * n}; },
                     [](size_t n) {
                       return Sizes{2 * n, n, n};
                     },
                     [bgr](auto &t, auto &x, int32_t n) {
                       (bgr ? t.BGR24_2_HSV_Row : t.RGB24_2_HSV_Row)(
                           As<uint16_t>(x.out[0]), x.out[1], x.out[2], x.in[0], n);
                     },
                     [bgr](Rows &out, const Rows &in, size_t n, uint8_t) {
                       for (size_t i = 0; i < n; ++i) {
                         const uint8_t *p = &in[0][3 * i];
                         uint16_t h;
                         HSV(p[bgr ? 2 : 0], p[1], p[bgr ? 0 : 2], h, out[1][i], out[2][i]);
                         std::memcpy(&out[0][2 * i], &h, 2);
                       }
                     },
                     {2, 1, 3}});
  // Adds to the counts already there: the arrays are never cleared.
  cases.push_back({"RGB24_Histogram",
                   158,
                   [](size_t n) { return Sizes{3 * n}; },
                   [](size_t) {
                     return Sizes{1024, 1024, 1024};
                   },
                   [](auto &t, auto &x, int32_t n) {
                     t.RGB24_Histogram_Row(As<uint32_t>(x.out[0]), As<uint32_t>(x.out[1]),
                                           As<uint32_t>(x.out[2]), x.in[0], n);
                   },
                   [](Rows &out, const Rows &in, size_t n, uint8_t) {
                     for (size_t i = 0; i < 3 * n; ++i) {
                       uint32_t bin;
                       std::memcpy(&bin, &out[i % 3][4 * in[0][i]], 4);
                       ++bin;
                       std::memcpy(&out[i % 3][4 * in[0][i]], &bin, 4);
                     }
                   },
                   {4, 8, 12}});
  // Zero fills, count in units of 1, 2, 4, 3 and 8 bytes; the unused
  // second argument is null.
  const std::tuple<const char *, int, size_t,
                   void (*TCS_KernelTable::*)(uint8_t *, const uint8_t *, int32_t)>
      clears[] = {{"Clear_Row_A", 86, 1, &TCS_KernelTable::Clear_Row_A},
                  {"Clear_Row_B", 92, 2, &TCS_KernelTable::Clear_Row_B},
                  {"Clear_Row_C", 112, 4, &TCS_KernelTable::Clear_Row_C},
                  {"Clear_Row_D", 155, 3, &TCS_KernelTable::Clear_Row_D},
                  {"Clear_Row_E", 156, 8, &TCS_KernelTable::Clear_Row_E}};
  for (const auto &[name, slot, unit, fn] : clears)
    cases.push_back({name, slot, [](size_t) { return Sizes{}; },
                     [unit](size_t n) { return Sizes{unit * n}; },
                     [fn](auto &t, auto &x, int32_t n) { (t.*fn)(x.out[0], nullptr, n); },
                     [](Rows &out, const Rows &, size_t, uint8_t) {
                       std::fill(out[0].begin(), out[0].end(), 0);
                     }});
  return cases;
}

std::vector<Case> AllCases() {
  std::vector<Case> all;
  for (auto family : {PairCases, RGBCases, PlaneCases})
    for (Case &c : family()) all.push_back(std::move(c));
  return all;
}

// ---- Harness -------------------------------------------------------------------

// Sources end exactly at their heap block (the address sanitizer catches any
// read past them) and start one byte in, so they are never aligned.
struct Sources {
  Sources(const Sizes &sizes, uint32_t seed) {
    for (size_t k = 0; k < sizes.size(); ++k) {
      store.push_back(tqcs::test::RandomBytes(sizes[k] + 1, seed + 17 * static_cast<uint32_t>(k)));
      rows.emplace_back(store.back().begin() + 1, store.back().end());
    }
    for (auto &s : store) ptrs.push_back(s.data() + 1);
  }
  Rows store, rows;
  std::vector<const uint8_t *> ptrs;
};

struct Destinations {
  Destinations(const Case &c, const Sizes &sizes, uint32_t seed) {
    for (size_t k = 0; k < sizes.size(); ++k) {
      bufs.emplace_back(sizes[k], k < c.outOffsets.size() ? c.outOffsets[k] : 1 + 2 * k);
      bufs.back().Randomize(seed + 101 * static_cast<uint32_t>(k));
    }
    for (auto &b : bufs) ptrs.push_back(b.data());
  }
  Rows Contents() const {
    Rows out;
    for (const auto &b : bufs) out.emplace_back(b.data(), b.data() + b.size());
    return out;
  }
  bool CanariesIntact() const {
    return std::all_of(bufs.begin(), bufs.end(), [](auto &b) { return b.CanariesIntact(); });
  }
  std::vector<GuardedBuffer> bufs;
  std::vector<uint8_t *> ptrs;
};

class Repack8Bit : public ::testing::TestWithParam<std::tuple<uint32_t, Case>> {
 protected:
  void SetUp() override {
    if (level() != 0 && (kernel().slot == 53 || kernel().slot == 55))
      GTEST_SKIP() << "the empty stub stands in this slot on levels 1 to 4";
  }
  uint32_t level() const { return std::get<0>(GetParam()); }
  const Case &kernel() const { return std::get<1>(GetParam()); }
  const TCS_KernelTable &table() const { return KernelTableForLevel(level()); }
};

// Odd and even counts, single pairs, lone tails, rows longer than any block.
TEST_P(Repack8Bit, RandomRowsMatchModel) {
  const Case &c = kernel();
  for (int32_t count : {1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 64, 65, 130, 1001}) {
    SCOPED_TRACE("count " + std::to_string(count));
    const size_t n = static_cast<size_t>(count);
    const uint32_t seed = 7919u * static_cast<uint32_t>(count) + static_cast<uint32_t>(c.slot);
    const Sources src(c.inSizes(n), seed);
    Destinations dst(c, c.outSizes(n), seed ^ 0x5555u);
    Rows expected = dst.Contents();
    const uint8_t alpha = static_cast<uint8_t>(seed * 13u + 1u);
    c.model(expected, src.rows, n, alpha);
    c.call(table(), Ctx{src.ptrs, dst.ptrs, alpha}, count);
    const Rows actual = dst.Contents();
    for (size_t k = 0; k < expected.size(); ++k) ASSERT_EQ(actual[k], expected[k]) << "dest " << k;
    EXPECT_TRUE(dst.CanariesIntact());
  }
}

TEST_P(Repack8Bit, CountsBelowOneWriteNothing) {
  const Case &c = kernel();
  for (int32_t count : {0, -1, -2, -7, INT32_MIN}) {
    SCOPED_TRACE("count " + std::to_string(count));
    const Sources src(c.inSizes(16), 3);
    Destinations dst(c, c.outSizes(16), 4);
    const Rows before = dst.Contents();
    c.call(table(), Ctx{src.ptrs, dst.ptrs, 0x42}, count);
    EXPECT_EQ(dst.Contents(), before);
    EXPECT_TRUE(dst.CanariesIntact());
  }
}

INSTANTIATE_TEST_SUITE_P(AllLevels, Repack8Bit,
                         ::testing::Combine(::testing::ValuesIn(KernelTestLevels()),
                                            ::testing::ValuesIn(AllCases())),
                         [](const auto &info) {
                           return std::get<1>(info.param).name + "_L" +
                                  std::to_string(std::get<0>(info.param));
                         });

// ---- Worked examples, computed by hand -------------------------------------------

class Repack8BitExamples : public ::testing::TestWithParam<uint32_t> {
 protected:
  const TCS_KernelTable &table() const { return KernelTableForLevel(GetParam()); }
};

// The first odd pixel averages with the second pair, the last repeats its own
// pair; the constant-alpha form rounds, the key form does not.
TEST_P(Repack8BitExamples, PackedToYUVA) {
  const uint8_t yuyv[8] = {10, 20, 30, 40, 50, 61, 70, 81}, key[4] = {1, 2, 3, 4};
  uint8_t out[16];
  table().YUYV_2_YUVA_Row(out, yuyv, 4, 200);
  EXPECT_EQ(Bytes(out, out + 16),
            Bytes({10, 20, 40, 200, 30, 41, 61, 200, 50, 61, 81, 200, 70, 61, 81, 200}));
  table().YUYV_Key_2_YUVA_Row(out, yuyv, key, 4);
  EXPECT_EQ(Bytes(out, out + 16),
            Bytes({10, 20, 40, 1, 30, 40, 60, 2, 50, 61, 81, 3, 70, 61, 81, 4}));
}

// Count 3: one pair, then the lone pixel with its own luma twice.
TEST_P(Repack8BitExamples, OddCountTail) {
  const uint8_t yuva[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  uint8_t out[8], key[3];
  table().YUVA_2_YUYV_Key_Row(out, key, yuva, 3);
  EXPECT_EQ(Bytes(out, out + 8), Bytes({1, 2, 5, 3, 9, 10, 9, 11}));
  EXPECT_EQ(Bytes(key, key + 3), Bytes({4, 8, 12}));
  const uint8_t a[3] = {10, 21, 40}, b[3] = {255, 0, 7};
  uint8_t outA[6], outB[6];
  table().UV_422_2_444_Row(outA, outB, a, b, 6);
  EXPECT_EQ(Bytes(outA, outA + 6), Bytes({10, 15, 21, 30, 40, 40}));
  EXPECT_EQ(Bytes(outB, outB + 6), Bytes({255, 127, 0, 3, 7, 7}));
}

// Primaries, greys, sector boundaries and truncation towards zero; the
// B-first kernel gets the same pixels with bytes 0 and 2 exchanged.
TEST_P(Repack8BitExamples, HSVOfKnownColours) {
  const int px[][6] = {
      {0, 0, 0, 0, 0, 0},           {128, 128, 128, 0, 0, 128},    {255, 0, 0, 0, 255, 255},
      {0, 255, 0, 120, 255, 255},   {0, 0, 255, 240, 255, 255},    {255, 255, 0, 60, 255, 255},
      {0, 255, 255, 180, 255, 255}, {255, 0, 255, 300, 255, 255},  {255, 0, 1, 0, 255, 255},
      {255, 128, 0, 30, 255, 255},  {100, 50, 200, 260, 191, 200}, {10, 200, 100, 148, 242, 200},
      {200, 10, 100, 332, 242, 200}};
  for (bool bgr : {false, true})
    for (const auto &p : px) {
      const uint8_t src[3] = {static_cast<uint8_t>(p[bgr ? 2 : 0]), static_cast<uint8_t>(p[1]),
                              static_cast<uint8_t>(p[bgr ? 0 : 2])};
      uint16_t h;
      uint8_t s, v;
      (bgr ? table().BGR24_2_HSV_Row : table().RGB24_2_HSV_Row)(&h, &s, &v, src, 1);
      EXPECT_EQ(std::vector<int>({h, s, v}), std::vector<int>({p[3], p[4], p[5]}))
          << p[0] << "," << p[1] << "," << p[2] << (bgr ? " BGR" : " RGB");
    }
}

// The swaps may run in place: each pixel is read before it is written.
TEST_P(Repack8BitExamples, SwapsInPlace) {
  Bytes rgb32 = tqcs::test::RandomBytes(4 * 37, 5), rgb24 = tqcs::test::RandomBytes(3 * 37, 6);
  const Bytes old32 = rgb32, old24 = rgb24;
  table().RGB32_SwapRB_Row(rgb32.data(), rgb32.data(), 37);
  table().RGB24_SwapRB_Row(rgb24.data(), rgb24.data(), 37);
  for (size_t i = 0; i < 37; ++i) {
    EXPECT_EQ(Bytes(&rgb32[4 * i], &rgb32[4 * i + 4]),
              Bytes({old32[4 * i + 2], old32[4 * i + 1], old32[4 * i], old32[4 * i + 3]}));
    EXPECT_EQ(Bytes(&rgb24[3 * i], &rgb24[3 * i + 3]),
              Bytes({old24[3 * i + 2], old24[3 * i + 1], old24[3 * i]}));
  }
}

INSTANTIATE_TEST_SUITE_P(AllLevels, Repack8BitExamples, ::testing::ValuesIn(KernelTestLevels()));

}  // namespace
