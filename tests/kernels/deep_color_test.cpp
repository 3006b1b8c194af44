// Deep-colour row kernels (16-bit RGB, 10-bit and 4:1:1 YUV, 8/16-bit RGB
// repacks) against references computed here from the stated formulas, through
// the kernel table of every tested processor level.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "support/buffers.hpp"
#include "support/kernel_samples.hpp"

namespace {

using tqcs::test::GetSample;
using tqcs::test::GuardedBuffer;
using tqcs::test::PutSample;
using Table = TCS_KernelTable;
using Samples = std::vector<uint32_t>;

// Published Q14 values: Yr Yg Yb Ur Ug Vg Vb Rv Gu Gv Bu for SD, HD, UHD.
const int kStd[3][11] = {
    {4898, 9618, 1868, -2764, -5428, -6860, -1332, 22970, -5638, -11700, 29032},
    {3484, 11717, 1183, -1877, -6315, -7441, -751, 25800, -3069, -7671, 30402},
    {4304, 11108, 972, -2288, -5904, -7533, -659, 24160, -2697, -9362, 30825}};
const int32_t kCounts[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 16, 17, 31, 66};
const int32_t kNoCounts[] = {0, -1, -2, -5, INT32_MIN};
constexpr uint8_t kFill = 0x5A;

// floor((sum + 8192) / 16384), computed without a shift.
int RoundQ14(int64_t sum) { return static_cast<int>(std::floor((sum + 8192) / 16384.0)); }
int Clamp(int v, int hi) { return std::min(std::max(v, 0), hi); }

Samples Read(const GuardedBuffer &b, int bytes) {
  Samples out(b.size() / bytes);
  for (size_t i = 0; i < out.size(); ++i) out[i] = GetSample(b.data(), i, bytes);
  return out;
}

// A source region one byte off alignment that ends exactly where its heap block
// ends, so AddressSanitizer reports any read past the row.
struct Source {
  std::vector<uint8_t> block;
  explicit Source(size_t bytes, uint32_t seed = 0) : block(bytes + 1) {
    std::mt19937 rng(seed);
    for (auto &b : block) b = static_cast<uint8_t>(rng());
  }
  uint8_t *data() { return block.data() + 1; }
};

// Byte pointers handed to a kernel as its own sample types.
struct Bytes {
  uint8_t *p;
  template <class T>
  operator T *() const {
    return reinterpret_cast<T *>(p);
  }
};
struct CBytes {
  const uint8_t *p;
  template <class T>
  operator const T *() const {
    return reinterpret_cast<const T *>(p);
  }
};

int16_t Rand16(std::mt19937 &rng) { return static_cast<int16_t>(rng()); }

template <class Case>
class KernelTest : public ::testing::TestWithParam<std::tuple<uint32_t, Case>> {
 protected:
  const Table &table() const {
    return tqcs::test::KernelTableForLevel(std::get<0>(this->GetParam()));
  }
  const Case &k() const { return std::get<1>(this->GetParam()); }
};

template <class P>
std::string Name(const ::testing::TestParamInfo<P> &i) {
  return std::string(std::get<1>(i.param).name) + "_L" + std::to_string(std::get<0>(i.param));
}

// Every tested level with every case that `keep` accepts on it.
template <class Case, size_t N>
std::vector<std::tuple<uint32_t, Case>> Params(const Case (&cases)[N],
                                               bool (*keep)(uint32_t, const Case &) = nullptr) {
  std::vector<std::tuple<uint32_t, Case>> out;
  for (uint32_t level : tqcs::test::KernelTestLevels())
    for (const Case &c : cases)
      if (!keep || keep(level, c)) out.emplace_back(level, c);
  return out;
}

#define INSTANTIATE_FAMILY(Fixture, ...)                                              \
  INSTANTIATE_TEST_SUITE_P(Levels, Fixture, ::testing::ValuesIn(Params(__VA_ARGS__)), \
                           Name<Fixture::ParamType>)

// ------------------------------------------------------------ RGB to 16-bit YUV

enum class Out { kYUYV, kUYVY, kPlanar };
using ToYuvFn = void (*)(const Table &, uint8_t *, uint8_t *, uint8_t *, const uint8_t *, int32_t,
                         const int16_t *, const int16_t *);
struct ToYuv {
  const char *name;
  ToYuvFn run;
  int inBytes, inComps;
  Out out;
};
void PrintTo(const ToYuv &c, std::ostream *os) { *os << c.name; }

// clang-format off
#define TO_YUV(slot, ...)                                                          \
  #slot, [](const Table &t, uint8_t *d, [[maybe_unused]] uint8_t *u,               \
            [[maybe_unused]] uint8_t *v, const uint8_t *s, int32_t n,              \
            const int16_t *cy, const int16_t *cuv) {                               \
    t.slot(__VA_ARGS__, CBytes{s}, n, cy, cuv);                                    \
  }
const ToYuv kToYuv[] = {
    {TO_YUV(RGB48_2_YUYV16_Row, Bytes{d}), 2, 3, Out::kYUYV},
    {TO_YUV(RGB48_2_UYVY16_Row, Bytes{d}), 2, 3, Out::kUYVY},
    {TO_YUV(RGB24_2_YUYV16_Row, Bytes{d}), 1, 3, Out::kYUYV},
    {TO_YUV(RGB24_2_UYVY16_Row, Bytes{d}), 1, 3, Out::kUYVY},
    {TO_YUV(RGB32_2_YUYV16_Row, Bytes{d}), 1, 4, Out::kYUYV},
    {TO_YUV(RGB32_2_UYVY16_Row, Bytes{d}), 1, 4, Out::kUYVY},
    {TO_YUV(RGB48_2_YUV422_16_Row, Bytes{d}, Bytes{u}, Bytes{v}), 2, 3, Out::kPlanar},
};
// clang-format on

// Rows in the layout the coefficient tables use: luma like the GBR luma row,
// U weights in elements 0-2 and V weights in elements 4-6.
void StdRows(int s, int16_t cy[8], int16_t cuv[8]) {
  const int *q = kStd[s];
  const int y[8] = {q[1], q[2], q[0], q[1], q[2], q[0], q[1], q[2]};
  const int uv[8] = {q[3], q[4], 8192, 0, 8192, q[5], q[6], 0};
  for (int i = 0; i < 8; ++i)
    cy[i] = static_cast<int16_t>(y[i]), cuv[i] = static_cast<int16_t>(uv[i]);
}

class ToYuvTest : public KernelTest<ToYuv> {
 protected:
  int bits() const { return k().inBytes == 1 ? 8 : 10; }
  // Destination planes (one for packed output) from full-resolution samples.
  std::vector<Samples> Arrange(const Samples &y, const Samples &u, const Samples &v) const {
    const size_t n = y.size();
    if (k().out == Out::kPlanar) {
      std::vector<Samples> p = {y, {}, {}};
      for (size_t i = 0; i + 1 < n; i += 2) p[1].push_back(u[i]), p[2].push_back(v[i]);
      return p;
    }
    Samples row;
    for (size_t a = 0; a < n; a += 2) {
      const size_t b = std::min(a + 1, n - 1);
      const Samples pair =
          k().out == Out::kYUYV ? Samples{y[a], u[a], y[b], v[a]} : Samples{u[a], y[a], v[a], y[b]};
      row.insert(row.end(), pair.begin(), pair.end());
    }
    return {row, {}, {}};
  }
  std::vector<Samples> Reference(const uint8_t *src, int32_t n, const int16_t *cy,
                                 const int16_t *cuv) const {
    const int max = (1 << bits()) - 1, up = 16 - bits();
    Samples y(n), u(n), v(n);
    for (int32_t i = 0; i < n; ++i) {
      int c[3];
      for (int j = 0; j < 3; ++j)
        c[j] = GetSample(src, i * k().inComps + j, k().inBytes) >> (k().inBytes == 2 ? 6 : 0);
      const auto dot = [&](const int16_t *w) { return w[0] * c[0] + w[1] * c[1] + w[2] * c[2]; };
      y[i] = Clamp(RoundQ14(dot(cy + 2)), max) << up;
      u[i] = Clamp(RoundQ14(dot(cuv)) + (max + 1) / 2, max) << up;
      v[i] = Clamp(RoundQ14(dot(cuv + 4)) + (max + 1) / 2, max) << up;
    }
    return Arrange(y, u, v);
  }
  std::vector<Samples> Run(const uint8_t *src, int32_t n, const int16_t *cy, const int16_t *cuv) {
    const bool planar = k().out == Out::kPlanar;
    const size_t first = planar ? n : 4 * ((n + 1) / 2), chroma = planar ? n / 2 : 0;
    GuardedBuffer d[3] = {GuardedBuffer(2 * first, 1), GuardedBuffer(2 * chroma, 1),
                          GuardedBuffer(2 * chroma, 3)};
    k().run(table(), d[0].data(), d[1].data(), d[2].data(), src, n, cy, cuv);
    std::vector<Samples> got;
    for (auto &b : d) {
      got.push_back(Read(b, 2));
      EXPECT_TRUE(b.CanariesIntact()) << "count " << n;
    }
    return got;
  }
};

TEST_P(ToYuvTest, RandomRowsMatchReference) {
  std::mt19937 rng(11);
  int16_t cy[8], cuv[8];
  for (int set = 0; set < 6; ++set) {  // three standards, then random rows
    if (set < 3) StdRows(set, cy, cuv);
    for (int i = 0; set >= 3 && i < 8; ++i) cy[i] = Rand16(rng), cuv[i] = Rand16(rng);
    for (int32_t n : kCounts) {
      Source src(n * k().inComps * k().inBytes, rng());
      EXPECT_EQ(Run(src.data(), n, cy, cuv), Reference(src.data(), n, cy, cuv))
          << "set " << set << " count " << n;
    }
  }
}

TEST_P(ToYuvTest, BlackWhiteAndSaturation) {
  const int32_t n = 5;
  const uint32_t top = k().inBytes == 1 ? 0xFF00 : 0xFFC0;
  Source black(n * k().inComps * k().inBytes), white(n * k().inComps * k().inBytes);
  std::fill(black.block.begin(), black.block.end(), 0);
  std::fill(white.block.begin(), white.block.end(), 0xFF);
  int16_t cy[8], cuv[8];
  for (int s = 0; s < 3; ++s) {  // no luma offset; white is neutral in every standard
    StdRows(s, cy, cuv);
    EXPECT_EQ(Run(black.data(), n, cy, cuv),
              Arrange(Samples(n, 0), Samples(n, 0x8000), Samples(n, 0x8000)));
    EXPECT_EQ(Run(white.data(), n, cy, cuv),
              Arrange(Samples(n, top), Samples(n, 0x8000), Samples(n, 0x8000)));
  }
  const int16_t big[8] = {32767, 32767, 32767, 32767, 32767, 0, 0, 0};
  const int16_t mixed[8] = {32767, 32767, 32767, 0, -32768, -32768, -32768, 0};
  EXPECT_EQ(Run(white.data(), n, big, mixed),
            Arrange(Samples(n, top), Samples(n, top), Samples(n, 0)));
}

TEST_P(ToYuvTest, NothingWrittenForCountsBelowOne) {
  Source src(64);
  int16_t cy[8], cuv[8];
  StdRows(0, cy, cuv);
  for (int32_t n : kNoCounts) {
    GuardedBuffer d[3] = {GuardedBuffer(32, 1), GuardedBuffer(32), GuardedBuffer(32)};
    for (auto &b : d) b.Fill(kFill);
    k().run(table(), d[0].data(), d[1].data(), d[2].data(), src.data(), n, cy, cuv);
    for (auto &b : d) EXPECT_EQ(Read(b, 1), Samples(32, kFill)) << "count " << n;
  }
}

INSTANTIATE_FAMILY(ToYuvTest, kToYuv);

// ------------------------------------------------------------ YUV to RGB

enum class In { kYUYV16, kUYVY16, kPlanar10, kPlanar411 };
using ToRgbFn = void (*)(const Table &, uint8_t *, const uint8_t *, const uint8_t *,
                         const uint8_t *, int32_t, const int16_t *, const int16_t *);
struct ToRgb {
  const char *name;
  ToRgbFn run;
  In in;
  bool bgr;
  int outBytes;
  uint32_t alpha;
};
void PrintTo(const ToRgb &c, std::ostream *os) { *os << c.name; }

// clang-format off
#define TO_RGB(slot, ...)                                                          \
  #slot, [](const Table &t, uint8_t *d, const uint8_t *s,                          \
            [[maybe_unused]] const uint8_t *u, [[maybe_unused]] const uint8_t *v,  \
            int32_t n, const int16_t *a, const int16_t *b) {                       \
    t.slot(Bytes{d}, __VA_ARGS__, n, a, b);                                        \
  }
#define PLANES CBytes{s}, CBytes{u}, CBytes{v}
const ToRgb kToRgb[] = {
    {TO_RGB(YUYV16_2_RGB64_Row, CBytes{s}), In::kYUYV16, false, 2, 0xFFA0},
    {TO_RGB(UYVY16_2_RGB64_Row, CBytes{s}), In::kUYVY16, false, 2, 0xFFA0},
    {TO_RGB(YUYV16_2_BGR64_Row, CBytes{s}), In::kYUYV16, true, 2, 0xFFA0},
    {TO_RGB(UYVY16_2_BGR64_Row, CBytes{s}), In::kUYVY16, true, 2, 0xFFA0},
    {TO_RGB(YUYV16_2_RGB32_Row, CBytes{s}), In::kYUYV16, false, 1, 255},
    {TO_RGB(YUYV16_2_BGR32_Row, CBytes{s}), In::kYUYV16, true, 1, 255},
    {TO_RGB(UYVY16_2_RGB32_Row, CBytes{s}), In::kUYVY16, false, 1, 255},
    {TO_RGB(UYVY16_2_BGR32_Row, CBytes{s}), In::kUYVY16, true, 1, 255},
    {TO_RGB(YUV422_10Bit_2_RGB64_Row, PLANES), In::kPlanar10, false, 2, 0xFC00},
    {TO_RGB(YUV422_10Bit_2_BGR64_Row, PLANES), In::kPlanar10, true, 2, 0xFC00},
    {TO_RGB(YUV422_10Bit_2_RGB32_Row, PLANES), In::kPlanar10, false, 1, 255},
    {TO_RGB(YUV422_10Bit_2_BGR32_Row, PLANES), In::kPlanar10, true, 1, 255},
    {TO_RGB(YUV411_2_RGB32_Row, PLANES), In::kPlanar411, false, 1, 255},
    {TO_RGB(YUV411_2_BGR32_Row, PLANES), In::kPlanar411, true, 1, 255},
};
// clang-format on

// A source row as raw samples: count luma, one chroma sample per group.
struct YuvRow {
  Samples y, u, v;
};

class ToRgbTest : public KernelTest<ToRgb> {
 protected:
  bool is411() const { return k().in == In::kPlanar411; }
  int group() const { return is411() ? 4 : 2; }
  int bits() const { return is411() ? 8 : 10; }
  int inBytes() const { return is411() ? 1 : 2; }
  uint32_t Scale(int v) const { return k().outBytes == 2 ? v << 6 : (bits() == 10 ? v >> 2 : v); }
  YuvRow RandomRow(int32_t n, std::mt19937 &rng) const {
    YuvRow r;
    const uint32_t mask = is411() ? 0xFF : 0xFFFF;
    for (int32_t i = 0; i < n; ++i) r.y.push_back(rng() & mask);
    for (int32_t i = 0; i < n / group(); ++i)
      r.u.push_back(rng() & mask), r.v.push_back(rng() & mask);
    return r;
  }
  // Expected destination samples; pixels past the last whole group keep the fill.
  Samples Reference(const YuvRow &r, int32_t n, const int16_t *a, const int16_t *b) const {
    const int max = (1 << bits()) - 1, in = is411() ? 0 : 6, half = (max + 1) / 2;
    const uint32_t fill = k().outBytes == 1 ? kFill : kFill * 0x101u;
    Samples out(4 * n, fill);
    const int32_t groups = n / group();
    for (int32_t i = 0; i < groups * group(); ++i) {
      const int32_t g = i / group(), j = i % group(), next = std::min(g + 1, groups - 1);
      const auto chroma = [&](const Samples &c) {
        const int c0 = c[g] >> in, c1 = c[next] >> in;
        if (is411()) return static_cast<int>(std::floor(((4 - j) * c0 + j * c1 + 2) / 4.0));
        return j == 0 ? c0 : static_cast<int>(std::floor((c0 + c1 + 1) / 2.0));
      };
      const int y = r.y[i] >> in, u = chroma(r.u) - half, v = chroma(r.v) - half;
      const int red = Clamp(y + RoundQ14(int64_t{a[0]} * v), max);
      const int green = Clamp(y + RoundQ14(int64_t{b[0]} * u + int64_t{a[1]} * v), max);
      const int blue = Clamp(y + RoundQ14(int64_t{b[1]} * u), max);
      out[4 * i + (k().bgr ? 2 : 0)] = Scale(red);
      out[4 * i + 1] = Scale(green);
      out[4 * i + (k().bgr ? 0 : 2)] = Scale(blue);
      out[4 * i + 3] = k().alpha;
    }
    return out;
  }
  Samples Run(const YuvRow &r, int32_t n, const int16_t *a, const int16_t *b) {
    const int ib = inBytes();
    Source y(r.y.size() * ib), u(r.u.size() * ib), v(r.v.size() * ib);
    Source packed(4 * r.u.size() * 2);
    const bool yuyv = k().in == In::kYUYV16;
    for (size_t i = 0; i < r.y.size(); ++i) PutSample(y.data(), i, ib, r.y[i]);
    for (size_t p = 0; p < r.u.size(); ++p) {
      PutSample(u.data(), p, ib, r.u[p]), PutSample(v.data(), p, ib, r.v[p]);
      const uint32_t q[4] = {r.y[2 * p], r.u[p], r.y[2 * p + 1], r.v[p]};
      for (int j = 0; j < 4 && !is411(); ++j)
        PutSample(packed.data(), 4 * p + j, 2, q[yuyv ? j : j ^ 1]);
    }
    GuardedBuffer dst(4 * n * k().outBytes, 1);
    dst.Fill(kFill);
    const bool planar = k().in == In::kPlanar10 || is411();
    k().run(table(), dst.data(), planar ? y.data() : packed.data(), u.data(), v.data(), n, a, b);
    EXPECT_TRUE(dst.CanariesIntact()) << "count " << n;
    return Read(dst, k().outBytes);
  }
};

TEST_P(ToRgbTest, RandomRowsMatchReference) {
  std::mt19937 rng(5);
  int16_t a[8] = {}, b[8] = {};
  for (int set = 0; set < 6; ++set) {  // three standards, then random rows
    const int *q = kStd[std::min(set, 2)];
    a[0] = q[7], a[1] = q[9], b[0] = q[8], b[1] = q[10];
    for (int i = 0; set >= 3 && i < 8; ++i) a[i] = Rand16(rng), b[i] = Rand16(rng);
    for (int32_t n : kCounts) {
      const YuvRow r = RandomRow(n, rng);
      EXPECT_EQ(Run(r, n, a, b), Reference(r, n, a, b)) << "set " << set << " count " << n;
    }
  }
}

// Unit weights show the chroma each pixel uses: R = V and B = U when Y sits at
// the centre. Values worked by hand from the interpolation rules.
TEST_P(ToRgbTest, ChromaInterpolationAndClamping) {
  const int16_t a[8] = {16384, 0}, b[8] = {0, 16384};
  const int half = 1 << (bits() - 1), up = is411() ? 0 : 6;
  const Samples c = is411() ? Samples{0, 255, 17} : Samples{100, 201, 40};
  const Samples want = is411() ? Samples{0, 64, 128, 191, 255, 196, 136, 77, 17, 17, 17, 17}
                               : Samples{100, 151, 201, 121, 40, 40};
  const int32_t n = static_cast<int32_t>(want.size());
  YuvRow r{Samples(n, half << up), {}, {}};
  for (uint32_t s : c) r.u.push_back(s << up), r.v.push_back(s << up);
  Samples expect;
  for (uint32_t w : want) expect.insert(expect.end(), {Scale(w), Scale(half), Scale(w), k().alpha});
  EXPECT_EQ(Run(r, n, a, b), expect);
  // SD matrix at the extremes: R and B clamp at the top and at 0.
  const int16_t sdA[8] = {22970, -11700}, sdB[8] = {-5638, 29032};
  const int max = (1 << bits()) - 1;
  for (uint32_t level : {uint32_t(max) << up, 0u}) {
    const YuvRow e{Samples(4, level), Samples(4 / group(), level), Samples(4 / group(), level)};
    const Samples out = Run(e, 4, sdA, sdB);
    for (int i = 0; i < 4; ++i)
      EXPECT_TRUE(out[4 * i] == Scale(level ? max : 0) && out[4 * i + 2] == out[4 * i])
          << "pixel " << i << " level " << level;
  }
}

TEST_P(ToRgbTest, NothingWrittenWithoutAWholeGroup) {
  Source src(64);
  const int16_t a[8] = {22970, -11700}, b[8] = {-5638, 29032};
  std::vector<int32_t> counts(std::begin(kNoCounts), std::end(kNoCounts));
  for (int32_t n = 1; n < group(); ++n) counts.push_back(n);
  for (int32_t n : counts) {
    GuardedBuffer dst(64, 1);
    dst.Fill(kFill);
    k().run(table(), dst.data(), src.data(), src.data(), src.data(), n, a, b);
    EXPECT_EQ(Read(dst, 1), Samples(64, kFill)) << "count " << n;
    EXPECT_TRUE(dst.CanariesIntact());
  }
}

INSTANTIATE_FAMILY(ToRgbTest, kToRgb);

// ------------------------------------------------------------ repacks

using RepackFn = void (*)(const Table &, uint8_t *, const uint8_t *, const uint8_t *, int32_t);
struct Repack {
  const char *name;
  RepackFn run;
  int inBytes, inComps, outBytes, outComps, shift;  // shift: left when positive
  bool swap;
  int alpha;          // constant, or -1: the source's fourth sample or the key (shifted)
  uint32_t known[4];  // result for the pixel 1234 5678 9ABC DEF0 (bytes 12 56 9A DE), key 7F
};
void PrintTo(const Repack &c, std::ostream *os) { *os << c.name; }

// clang-format off
#define REPACK_WITH(slot, ...)                                                     \
  #slot, [](const Table &t, uint8_t *d, const uint8_t *s,                          \
            [[maybe_unused]] const uint8_t *key, int32_t n) {                      \
    t.slot(Bytes{d}, __VA_ARGS__, n);                                              \
  }
#define REPACK(slot) REPACK_WITH(slot, CBytes{s})
#define REPACK_KEY(slot) REPACK_WITH(slot, s, key)
const Repack kRepacks[] = {
  {REPACK(RGB64_2_BGR32_Row), 2, 4, 1, 4, -8, true, -1, {0x9A, 0x56, 0x12, 0xDE}},
  {REPACK(BGR32_2_RGB64_Row), 1, 4, 2, 4, 8, true, -1, {0x9A00, 0x5600, 0x1200, 0xDE00}},
  {REPACK(RGB64_SwapRB_Row), 2, 4, 2, 4, 0, true, -1, {0x9ABC, 0x5678, 0x1234, 0xDEF0}},
  {REPACK(RGB48_2_RGB64_Row), 2, 3, 2, 4, 0, false, 0xFFFF, {0x1234, 0x5678, 0x9ABC, 0xFFFF}},
  {REPACK(RGB48_2_BGR64_Row), 2, 3, 2, 4, 0, true, 0xFFFF, {0x9ABC, 0x5678, 0x1234, 0xFFFF}},
  {REPACK(RGB24_2_RGB48_Row), 1, 3, 2, 3, 8, false, 0, {0x1200, 0x5600, 0x9A00}},
  {REPACK(RGB24_2_BGR48_Row), 1, 3, 2, 3, 8, true, 0, {0x9A00, 0x5600, 0x1200}},
  {REPACK(RGB24_2_RGB64_Row), 1, 3, 2, 4, 8, false, 0xFFA0, {0x1200, 0x5600, 0x9A00, 0xFFA0}},
  {REPACK(RGB24_2_BGR64_Row), 1, 3, 2, 4, 8, true, 0xFFA0, {0x9A00, 0x5600, 0x1200, 0xFFA0}},
  {REPACK_KEY(RGB24_Key_2_RGB64_Row), 1, 3, 2, 4, 8, false, -1, {0x1200, 0x5600, 0x9A00, 0x7F00}},
  {REPACK_KEY(RGB24_Key_2_BGR64_Row), 1, 3, 2, 4, 8, true, -1, {0x9A00, 0x5600, 0x1200, 0x7F00}},
  {REPACK(RGB24_2_RGB48_Expand_Row), 1, 3, 2, 3, 8, false, 0, {0x1200, 0x5600, 0x9A00}},
  {REPACK(RGB48_2_RGB30_Row), 2, 3, 2, 3, -6, false, 0, {0x48, 0x159, 0x26A}},
  {REPACK(RGB48_2_BGR24_Row), 2, 3, 1, 3, -8, true, 0, {0x9A, 0x56, 0x12}},
  {REPACK(RGB48_2_RGB32_Row), 2, 3, 1, 4, -8, false, 255, {0x12, 0x56, 0x9A, 0xFF}},
  {REPACK(RGB48_2_BGR32_Row), 2, 3, 1, 4, -8, true, 255, {0x9A, 0x56, 0x12, 0xFF}},
  {REPACK(RGB48_2_RGB64_Opaque_Row), 2, 3, 2, 4, 0, false, 0xFFA0,
   {0x1234, 0x5678, 0x9ABC, 0xFFA0}},
  {REPACK(RGB48_2_BGR64_Opaque_Row), 2, 3, 2, 4, 0, true, 0xFFA0, {0x9ABC, 0x5678, 0x1234, 0xFFA0}},
};
// clang-format on

class RepackTest : public KernelTest<Repack> {
 protected:
  uint32_t Shift(uint32_t v) const { return k().shift >= 0 ? v << k().shift : v >> -k().shift; }
  Samples Reference(const uint8_t *src, const uint8_t *key, int32_t n) const {
    Samples out;
    for (int32_t i = 0; i < n; ++i) {
      const auto in = [&](int c) {
        return Shift(GetSample(src, i * k().inComps + c, k().inBytes));
      };
      const uint32_t a = k().alpha >= 0 ? k().alpha : (k().inComps == 4 ? in(3) : Shift(key[i]));
      const Samples px = {in(k().swap ? 2 : 0), in(1), in(k().swap ? 0 : 2), a};
      out.insert(out.end(), px.begin(), px.begin() + k().outComps);
    }
    return out;
  }
  Samples Run(const uint8_t *src, const uint8_t *key, int32_t n) {
    GuardedBuffer dst(n * k().outComps * k().outBytes, 1);
    k().run(table(), dst.data(), src, key, n);
    EXPECT_TRUE(dst.CanariesIntact()) << "count " << n;
    return Read(dst, k().outBytes);
  }
};

TEST_P(RepackTest, RandomRowsMatchReference) {
  for (int32_t n : kCounts) {
    Source src(n * k().inComps * k().inBytes, n), key(n, n + 100);
    EXPECT_EQ(Run(src.data(), key.data(), n), Reference(src.data(), key.data(), n)) << n;
  }
}

TEST_P(RepackTest, KnownPixel) {
  const uint32_t in[4] = {0x1234, 0x5678, 0x9ABC, 0xDEF0};
  Source src(4 * k().inBytes), key(1);
  for (int c = 0; c < 4; ++c)
    PutSample(src.data(), c, k().inBytes, k().inBytes == 1 ? in[c] >> 8 : in[c]);
  key.data()[0] = 0x7F;
  EXPECT_EQ(Run(src.data(), key.data(), 1), Samples(k().known, k().known + k().outComps));
}

TEST_P(RepackTest, NothingWrittenForCountsBelowOne) {
  Source src(64), key(16);
  for (int32_t n : kNoCounts) {
    GuardedBuffer dst(64, 1);
    dst.Fill(kFill);
    k().run(table(), dst.data(), src.data(), key.data(), n);
    EXPECT_EQ(Read(dst, 1), Samples(64, kFill)) << "count " << n;
    EXPECT_TRUE(dst.CanariesIntact());
  }
}

// Same-size repacks work in place.
class RepackInPlaceTest : public RepackTest {};
TEST_P(RepackInPlaceTest, MatchesReference) {
  const int32_t n = 17;
  Source src(n * k().inComps * k().inBytes, 9), key(n);
  const Samples want = Reference(src.data(), key.data(), n);
  k().run(table(), src.data(), src.data(), key.data(), n);
  Samples got(n * k().outComps);
  for (size_t i = 0; i < got.size(); ++i) got[i] = GetSample(src.data(), i, k().outBytes);
  EXPECT_EQ(got, want);
}

// Levels 1 to 4 keep the empty stub in the expanding slot: level 0 only.
bool Installed(uint32_t level, const Repack &c) {
  return level == 0 || std::string(c.name) != "RGB24_2_RGB48_Expand_Row";
}
bool SameSize(uint32_t level, const Repack &c) {
  return Installed(level, c) && c.inBytes * c.inComps == c.outBytes * c.outComps;
}
INSTANTIATE_FAMILY(RepackTest, kRepacks, Installed);
INSTANTIATE_FAMILY(RepackInPlaceTest, kRepacks, SameSize);

}  // namespace
