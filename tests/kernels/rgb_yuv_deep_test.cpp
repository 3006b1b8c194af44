// Deep-colour row kernels (16-bit RGB, 10-bit and 4:1:1 YUV, 8/16-bit RGB
// repacks) against references computed here from the stated formulas, through
// the kernel table of every tested level. Coefficient rows are sources like
// the pixel rows: random ones at every count, the published ones by name.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "support/kernel_harness.hpp"

namespace {

using namespace tqcs::test;
using Table = TCS_KernelTable;
using Samples = std::vector<uint32_t>;

// Published Q14 values: Yr Yg Yb Ur Ug Vg Vb Rv Gu Gv Bu for SD, HD, UHD.
const int kStd[3][11] = {
    {4898, 9618, 1868, -2764, -5428, -6860, -1332, 22970, -5638, -11700, 29032},
    {3484, 11717, 1183, -1877, -6315, -7441, -751, 25800, -3069, -7671, 30402},
    {4304, 11108, 972, -2288, -5904, -7533, -659, 24160, -2697, -9362, 30825}};
// Coefficient rows (sources 0 and 1) are read in place as int16_t.
const Sizes kCoefOffsets = {2, 2};

// floor((sum + 8192) / 16384), computed without a shift.
int RoundQ14(int64_t sum) { return static_cast<int>(std::floor((sum + 8192) / 16384.0)); }
int Clamp(int v, int hi) { return std::min(std::max(v, 0), hi); }
Bytes ToBytes(const Samples &s, int bytes) {
  Bytes b(s.size() * bytes);
  for (size_t i = 0; i < s.size(); ++i) PutSample(b, i, bytes, s[i]);
  return b;
}
Bytes Coefs(std::initializer_list<int> v) {
  Samples s(8);
  std::transform(v.begin(), v.end(), s.begin(), [](int x) { return uint32_t(x) & 0xFFFF; });
  return ToBytes(s, 2);
}

// ------------------------------------------------------------ RGB to 16-bit YUV

enum class Out { kYUYV, kUYVY, kPlanar };
struct ToYuv {
  const char *name;
  int inBytes, inComps;
  Out out;
  void (*call)(const Table &, Args, int32_t);
};
// Sources: luma row, chroma row, pixels.
#define TQCS_TO_YUV(fn, inBytes, inComps, out, ...)                                                \
  ToYuv {                                                                                          \
#fn, inBytes, inComps, Out::out,                                                               \
        [](const Table &t, Args a, int32_t n) { t.fn(__VA_ARGS__, a.in[2], n, a.in[0], a.in[1]); } \
  }
const ToYuv kToYuv[] = {
    TQCS_TO_YUV(RGB48_2_YUYV16_Row, 2, 3, kYUYV, a.out[0]),
    TQCS_TO_YUV(RGB48_2_UYVY16_Row, 2, 3, kUYVY, a.out[0]),
    TQCS_TO_YUV(RGB24_2_YUYV16_Row, 1, 3, kYUYV, a.out[0]),
    TQCS_TO_YUV(RGB24_2_UYVY16_Row, 1, 3, kUYVY, a.out[0]),
    TQCS_TO_YUV(RGB32_2_YUYV16_Row, 1, 4, kYUYV, a.out[0]),
    TQCS_TO_YUV(RGB32_2_UYVY16_Row, 1, 4, kUYVY, a.out[0]),
    TQCS_TO_YUV(RGB48_2_YUV422_16_Row, 2, 3, kPlanar, a.out[0], a.out[1], a.out[2]),
};

// Destination rows from full-resolution samples: chroma of each pair's even
// pixel; a packed row ends with a whole pair for a lone last pixel (its own Y
// twice), planar chroma rows hold count / 2 samples.
Rows Arrange(Out out, const Samples &y, const Samples &u, const Samples &v) {
  const size_t n = y.size();
  if (out == Out::kPlanar) {
    Samples cu, cv;
    for (size_t i = 0; i + 1 < n; i += 2) cu.push_back(u[i]), cv.push_back(v[i]);
    return {ToBytes(y, 2), ToBytes(cu, 2), ToBytes(cv, 2)};
  }
  Samples row;
  for (size_t a = 0; a < n; a += 2) {
    const size_t b = std::min(a + 1, n - 1);
    const Samples pair =
        out == Out::kYUYV ? Samples{y[a], u[a], y[b], v[a]} : Samples{u[a], y[a], v[a], y[b]};
    row.insert(row.end(), pair.begin(), pair.end());
  }
  return {ToBytes(row, 2)};
}

// Luma weights like the GBR luma row (elements 2-4), U weights in elements
// 0-2, V weights in 4-6; every output rounds, chroma centred, each clamped to
// its depth and moved to the top of a 16-bit sample.
KernelCase MakeToYuv(const Table &t, const ToYuv &s) {
  return {
      s.name,
      PerCount({size_t(s.inComps * s.inBytes)}, {16, 16}),
      [&s](int32_t n) {
        const size_t c = 2 * size_t(n / 2);
        return s.out == Out::kPlanar ? Sizes{2 * size_t(n), c, c} : Sizes{8 * size_t((n + 1) / 2)};
      },
      [&t, &s](Args a, int32_t n) { s.call(t, a, n); },
      [&s](Rows &out, const Rows &in, int32_t n) {
        const int bits = s.inBytes == 1 ? 8 : 10, max = (1 << bits) - 1, up = 16 - bits;
        Samples y, u, v;
        for (int32_t i = 0; i < n; ++i) {
          int c[3];
          for (int j = 0; j < 3; ++j)
            c[j] = GetSample(in[2], i * s.inComps + j, s.inBytes) >> (s.inBytes == 2 ? 6 : 0);
          const auto dot = [&](const Bytes &w, int at) {
            return RoundQ14(Coef(w, at) * c[0] + Coef(w, at + 1) * c[1] + Coef(w, at + 2) * c[2]);
          };
          y.push_back(Clamp(dot(in[0], 2), max) << up);
          u.push_back(Clamp(dot(in[1], 0) + (max + 1) / 2, max) << up);
          v.push_back(Clamp(dot(in[1], 4) + (max + 1) / 2, max) << up);
        }
        out = Arrange(s.out, y, u, v);
      },
      kCoefOffsets};
}

TQCS_KERNEL_SUITE(DeepToYuv, OnEveryLevel(kToYuv, MakeToYuv), 1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 16, 17,
                  31, 66);

// The published rows: random pixels against the model; no luma offset, so
// black gives Y 0 and white the top luma, chroma centred in every standard;
// weights far past 1.0 saturate both ways.
TEST(DeepToYuvRows, PublishedStandardsBlackWhiteAndSaturation) {
  for (uint32_t level : KernelTestLevels())
    for (const ToYuv &s : kToYuv) {
      const KernelCase c = MakeToYuv(KernelTableForLevel(level), s);
      const uint32_t top = s.inBytes == 1 ? 0xFF00 : 0xFFC0;
      const Bytes black(5 * s.inComps * s.inBytes, 0), white(black.size(), 0xFF);
      for (const int *q : kStd) {
        const Bytes cy = Coefs({q[1], q[2], q[0], q[1], q[2], q[0], q[1], q[2]}),
                    cuv = Coefs({q[3], q[4], 8192, 0, 8192, q[5], q[6], 0});
        EXPECT_TRUE(MatchesModel(c, {cy, cuv, RandomBytes(black.size() * 7, 9)}, 35));
        const Rows b = RunKernel(c, {cy, cuv, black}, 5), w = RunKernel(c, {cy, cuv, white}, 5);
        EXPECT_EQ(b, Arrange(s.out, Samples(5, 0), Samples(5, 0x8000), Samples(5, 0x8000)))
            << c.name;
        EXPECT_EQ(w, Arrange(s.out, Samples(5, top), Samples(5, 0x8000), Samples(5, 0x8000)))
            << c.name;
      }
      const Bytes big = Coefs({32767, 32767, 32767, 32767, 32767}),
                  mixed = Coefs({32767, 32767, 32767, 0, -32768, -32768, -32768});
      EXPECT_EQ(RunKernel(c, {big, mixed, white}, 5),
                Arrange(s.out, Samples(5, top), Samples(5, top), Samples(5, 0)))
          << c.name;
    }
}

// ------------------------------------------------------------ YUV to RGB

enum class In { kYUYV16, kUYVY16, kPlanar10, kPlanar411 };
struct ToRgb {
  const char *name;
  In in;
  bool bgr;
  int outBytes;
  uint32_t alpha;
  void (*call)(const Table &, Args, int32_t);
};
// Sources: coefficient rows A (Rv, Gv) and B (Gu, Bu), then the packed row or
// the Y, U and V planes.
template <class D, class S>
void CallRgb(void (*fn)(D *, const S *, int32_t, const int16_t *, const int16_t *), Args a,
             int32_t n) {
  fn(a.out[0], a.in[2], n, a.in[0], a.in[1]);
}
template <class D, class S>
void CallRgb(void (*fn)(D *, const S *, const S *, const S *, int32_t, const int16_t *,
                        const int16_t *),
             Args a, int32_t n) {
  fn(a.out[0], a.in[2], a.in[3], a.in[4], n, a.in[0], a.in[1]);
}
#define TQCS_TO_RGB(fn, in, bgr, outBytes, alpha)                      \
  ToRgb {                                                              \
#fn, In::in, bgr, outBytes, alpha,                                 \
        [](const Table &t, Args a, int32_t n) { CallRgb(t.fn, a, n); } \
  }
const ToRgb kToRgb[] = {
    TQCS_TO_RGB(YUYV16_2_RGB64_Row, kYUYV16, false, 2, 0xFFA0),
    TQCS_TO_RGB(UYVY16_2_RGB64_Row, kUYVY16, false, 2, 0xFFA0),
    TQCS_TO_RGB(YUYV16_2_BGR64_Row, kYUYV16, true, 2, 0xFFA0),
    TQCS_TO_RGB(UYVY16_2_BGR64_Row, kUYVY16, true, 2, 0xFFA0),
    TQCS_TO_RGB(YUYV16_2_RGB32_Row, kYUYV16, false, 1, 255),
    TQCS_TO_RGB(YUYV16_2_BGR32_Row, kYUYV16, true, 1, 255),
    TQCS_TO_RGB(UYVY16_2_RGB32_Row, kUYVY16, false, 1, 255),
    TQCS_TO_RGB(UYVY16_2_BGR32_Row, kUYVY16, true, 1, 255),
    TQCS_TO_RGB(YUV422_10Bit_2_RGB64_Row, kPlanar10, false, 2, 0xFC00),
    TQCS_TO_RGB(YUV422_10Bit_2_BGR64_Row, kPlanar10, true, 2, 0xFC00),
    TQCS_TO_RGB(YUV422_10Bit_2_RGB32_Row, kPlanar10, false, 1, 255),
    TQCS_TO_RGB(YUV422_10Bit_2_BGR32_Row, kPlanar10, true, 1, 255),
    TQCS_TO_RGB(YUV411_2_RGB32_Row, kPlanar411, false, 1, 255),
    TQCS_TO_RGB(YUV411_2_BGR32_Row, kPlanar411, true, 1, 255),
};

// R = Y + Rv v, G = Y + Gu u + Gv v, B = Y + Bu u, rounded, on 10-bit values
// (8-bit for 4:1:1), clamped, then moved to the destination depth. The odd
// pixel of a pair takes the rounded mean of its pair's and the next pair's
// chroma; pixel k of a 4:1:1 group interpolates at k quarters towards the next
// group's. The last pair or group repeats its own; pixels past it keep what
// the destination held.
KernelCase MakeToRgb(const Table &t, const ToRgb &s) {
  const bool q = s.in == In::kPlanar411, packed = s.in == In::kYUYV16 || s.in == In::kUYVY16;
  const int group = q ? 4 : 2, ib = q ? 1 : 2;
  return {
      s.name,
      [=](int32_t n) {
        const size_t c = size_t(n / group) * ib;
        return packed ? Sizes{16, 16, 4 * c} : Sizes{16, 16, size_t(n) * ib, c, c};
      },
      PerCount({4 * size_t(s.outBytes)}),
      [&t, &s](Args a, int32_t n) { s.call(t, a, n); },
      [=, &s](Rows &out, const Rows &in, int32_t n) {
        const bool yuyv = s.in == In::kYUYV16;
        const int bits = q ? 8 : 10, max = (1 << bits) - 1, half = (max + 1) / 2, down = q ? 0 : 6;
        const auto Y = [&](int32_t i) {
          return int(packed ? GetSample(in[2], 4 * (i / 2) + !yuyv + 2 * (i % 2), 2) >> 6
                            : GetSample(in[2], i, ib) >> down);
        };
        const auto C = [&](int which, int32_t g) {  // 0: U, 1: V
          return int(packed ? GetSample(in[2], 4 * g + 2 * which + yuyv, 2) >> 6
                            : GetSample(in[3 + which], g, ib) >> down);
        };
        const auto scale = [&](int v) {
          return uint32_t(s.outBytes == 2 ? v << 6 : (bits == 10 ? v >> 2 : v));
        };
        const int32_t groups = n / group;
        for (int32_t i = 0; i < groups * group; ++i) {
          const int32_t g = i / group, j = i % group, next = std::min(g + 1, groups - 1);
          const auto chroma = [&](int which) {
            const int c0 = C(which, g), c1 = C(which, next);
            if (q) return static_cast<int>(std::floor(((4 - j) * c0 + j * c1 + 2) / 4.0)) - half;
            return (j == 0 ? c0 : static_cast<int>(std::floor((c0 + c1 + 1) / 2.0))) - half;
          };
          const int u = chroma(0), v = chroma(1);
          const int rgb[3] = {Y(i) + RoundQ14(int64_t{Coef(in[0], 0)} * v),
                              Y(i) + RoundQ14(int64_t{Coef(in[1], 0)} * u + Coef(in[0], 1) * v),
                              Y(i) + RoundQ14(int64_t{Coef(in[1], 1)} * u)};
          for (int k = 0; k < 3; ++k)
            PutSample(out[0], 4 * i + (s.bgr ? 2 - k : k), s.outBytes, scale(Clamp(rgb[k], max)));
          PutSample(out[0], 4 * i + 3, s.outBytes, s.alpha);
        }
      },
      kCoefOffsets,
      group};
}

TQCS_KERNEL_SUITE(DeepToRgb, OnEveryLevel(kToRgb, MakeToRgb), 1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 16, 17,
                  31, 66);

// Unit weights show the chroma each pixel uses: R = V and B = U when Y sits at
// the centre. Values worked by hand from the interpolation rules. Then the SD
// matrix at the extremes: R and B clamp at the top and at 0.
TEST(DeepToRgbRows, ChromaInterpolationAndClampingByHand) {
  for (uint32_t level : KernelTestLevels())
    for (const ToRgb &s : kToRgb) {
      const KernelCase c = MakeToRgb(KernelTableForLevel(level), s);
      const bool q = s.in == In::kPlanar411;
      const int ib = q ? 1 : 2, up = q ? 0 : 6, max = q ? 255 : 1023, half = (max + 1) / 2;
      const auto scale = [&](uint32_t v) { return s.outBytes == 2 ? v << 6 : (q ? v : v >> 2); };
      // The source rows of luma y and chroma c, in the slot's layout.
      const auto rows = [&](const Bytes &a, const Bytes &b, const Samples &y, const Samples &c) {
        if (q || s.in == In::kPlanar10)
          return Rows{a, b, ToBytes(y, ib), ToBytes(c, ib), ToBytes(c, ib)};
        Samples packed;
        for (size_t p = 0; p < c.size(); ++p)
          for (uint32_t x : {y[2 * p], c[p], y[2 * p + 1], c[p]}) packed.push_back(x);
        if (s.in == In::kUYVY16)
          for (size_t i = 0; i < packed.size(); i += 2) std::swap(packed[i], packed[i + 1]);
        return Rows{a, b, ToBytes(packed, 2)};
      };
      const Samples chroma = q ? Samples{0, 255, 17} : Samples{100, 201, 40};
      const Samples want = q ? Samples{0, 64, 128, 191, 255, 196, 136, 77, 17, 17, 17, 17}
                             : Samples{100, 151, 201, 121, 40, 40};
      Samples c0, expect;
      for (uint32_t x : chroma) c0.push_back(x << up);
      for (uint32_t w : want)
        expect.insert(expect.end(), {scale(w), scale(half), scale(w), s.alpha});
      const int32_t n = int32_t(want.size());
      EXPECT_EQ(
          RunKernel(c, rows(Coefs({16384}), Coefs({0, 16384}), Samples(n, half << up), c0), n)[0],
          ToBytes(expect, s.outBytes))
          << c.name;
      for (uint8_t v : {0x00, 0xFF}) {  // Y, U and V at the bottom or the top
        Rows src = RandomSources(c, 4, 0);
        for (size_t r = 2; r < src.size(); ++r) std::fill(src[r].begin(), src[r].end(), v);
        src[0] = Coefs({22970, -11700}), src[1] = Coefs({-5638, 29032});
        const Bytes out = RunKernel(c, src, 4)[0];
        for (int i = 0; i < 8; ++i)
          EXPECT_EQ(GetSample(out, 4 * (i / 2) + 2 * (i % 2), s.outBytes), scale(v ? max : 0))
              << c.name << " pixel " << i / 2;
      }
    }
}

// ------------------------------------------------------------ repacks

struct Repack {
  const char *name;
  int inBytes, inComps, outBytes, outComps, shift;  // shift: left when positive
  bool swap;
  int alpha;  // constant, or -1: the source's fourth sample or the key (shifted)
  void (*call)(const Table &, Args, int32_t);
};
#define TQCS_REPACK(fn, ...)                                                                \
  Repack {                                                                                  \
#fn, __VA_ARGS__, [](const Table &t, Args a, int32_t n) { t.fn(a.out[0], a.in[0], n); } \
  }
#define TQCS_REPACK_KEY(fn, ...)                                                       \
  Repack {                                                                             \
#fn, __VA_ARGS__,                                                                  \
        [](const Table &t, Args a, int32_t n) { t.fn(a.out[0], a.in[0], a.in[1], n); } \
  }
const Repack kRepacks[] = {
    TQCS_REPACK(RGB64_2_BGR32_Row, 2, 4, 1, 4, -8, true, -1),
    TQCS_REPACK(BGR32_2_RGB64_Row, 1, 4, 2, 4, 8, true, -1),
    TQCS_REPACK(RGB64_SwapRB_Row, 2, 4, 2, 4, 0, true, -1),
    TQCS_REPACK(RGB48_2_RGB64_Row, 2, 3, 2, 4, 0, false, 0xFFFF),
    TQCS_REPACK(RGB48_2_BGR64_Row, 2, 3, 2, 4, 0, true, 0xFFFF),
    TQCS_REPACK(RGB24_2_RGB48_Row, 1, 3, 2, 3, 8, false, 0),
    TQCS_REPACK(RGB24_2_BGR48_Row, 1, 3, 2, 3, 8, true, 0),
    TQCS_REPACK(RGB24_2_RGB64_Row, 1, 3, 2, 4, 8, false, 0xFFA0),
    TQCS_REPACK(RGB24_2_BGR64_Row, 1, 3, 2, 4, 8, true, 0xFFA0),
    TQCS_REPACK_KEY(RGB24_Key_2_RGB64_Row, 1, 3, 2, 4, 8, false, -1),
    TQCS_REPACK_KEY(RGB24_Key_2_BGR64_Row, 1, 3, 2, 4, 8, true, -1),
    TQCS_REPACK(RGB24_2_RGB48_Expand_Row, 1, 3, 2, 3, 8, false, 0),
    TQCS_REPACK(RGB48_2_RGB30_Row, 2, 3, 2, 3, -6, false, 0),
    TQCS_REPACK(RGB48_2_BGR24_Row, 2, 3, 1, 3, -8, true, 0),
    TQCS_REPACK(RGB48_2_RGB32_Row, 2, 3, 1, 4, -8, false, 255),
    TQCS_REPACK(RGB48_2_BGR32_Row, 2, 3, 1, 4, -8, true, 255),
    TQCS_REPACK(RGB48_2_RGB64_Opaque_Row, 2, 3, 2, 4, 0, false, 0xFFA0),
    TQCS_REPACK(RGB48_2_BGR64_Opaque_Row, 2, 3, 2, 4, 0, true, 0xFFA0),
};

// Levels 1 to 4 keep the empty stub in the expanding slot.
KernelCase MakeRepack(const Table &t, const Repack &r) {
  KernelCase c = {
      r.name, PerCount({size_t(r.inComps * r.inBytes), 1}),
      PerCount({size_t(r.outComps * r.outBytes)}), [&t, &r](Args a, int32_t n) { r.call(t, a, n); },
      [&r](Rows &out, const Rows &in, int32_t n) {
        const auto shift = [&](uint32_t v) { return r.shift >= 0 ? v << r.shift : v >> -r.shift; };
        for (int32_t i = 0; i < n; ++i) {
          const auto c = [&](int k) {
            return shift(GetSample(in[0], i * r.inComps + k, r.inBytes));
          };
          const uint32_t a = r.alpha >= 0 ? r.alpha : r.inComps == 4 ? c(3) : shift(in[1][i]);
          const uint32_t px[4] = {c(r.swap ? 2 : 0), c(1), c(r.swap ? 0 : 2), a};
          for (int k = 0; k < r.outComps; ++k)
            PutSample(out[0], i * r.outComps + k, r.outBytes, px[k]);
        }
      }};
  c.portableOnly = std::string(r.name) == "RGB24_2_RGB48_Expand_Row";
  return c;
}

TQCS_KERNEL_SUITE(DeepRepack, OnEveryLevel(kRepacks, MakeRepack), 1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 16,
                  17, 31, 66);

// Same-size repacks work in place.
TEST(DeepRepackInPlace, SameSizeRepacksReadEachPixelFirst) {
  for (const KernelCase &c : DeepRepackCases())
    if (c.inSizes(1)[0] == c.outSizes(1)[0]) {
      EXPECT_TRUE(MatchesModelInPlace(c, 17, 9));
    }
}

}  // namespace
