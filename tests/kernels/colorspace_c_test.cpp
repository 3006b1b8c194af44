// The 23 operations of the kernel objects, checked against references computed
// here from the formulas, for every kernel object (the SSE2 object is held to
// the same results as the portable one).
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "kernels/colorspace.hpp"
#include "support/buffers.hpp"
#include "support/kernel_samples.hpp"

namespace tqcs {
namespace {

using test::GuardedBuffer;
using test::kCanary;
using ::testing::AssertionFailure;
using ::testing::AssertionResult;
using ::testing::AssertionSuccess;

constexpr int kKeep = -1;   // expected sample that must keep its canary
constexpr size_t kGap = 8;  // canary bytes between neighbouring rows

// n rows of row_bytes in one guarded region, canary gaps between them. With
// `upward` the rows run bottom-up (negative pitch). Sources get guard 0, so
// the region ends the allocation and the sanitizer reports any over-read.
class Rows {
 public:
  Rows(int n, size_t row_bytes, bool upward, size_t offset, size_t guard)
      : n_(n),
        row_(row_bytes),
        upward_(upward),
        buf_(n * row_bytes + (n - 1) * kGap, offset, guard) {
    buf_.Fill(kCanary);
  }
  uint8_t *row(int k = 0) { return buf_.data() + (upward_ ? n_ - 1 - k : k) * (row_ + kGap); }
  template <class T>
  T *as(int k = 0) {
    return reinterpret_cast<T *>(row(k));
  }
  int64_t pitch() const { return (upward_ ? -1 : 1) * int64_t(row_ + kGap); }
  void Randomize(uint32_t seed) {
    for (int k = 0; k < n_; ++k) Set(k, test::RandomBytes(row_, seed + k));
  }
  void Set(int k, const std::vector<uint8_t> &bytes) {
    if (!bytes.empty()) std::memcpy(row(k), bytes.data(), bytes.size());
  }
  // Nothing outside the rows changed.
  bool Intact() const {
    for (int k = 0; k + 1 < n_; ++k)
      for (size_t i = 0; i < kGap; ++i)
        if (buf_.data()[(k + 1) * row_ + k * kGap + i] != kCanary) return false;
    return buf_.CanariesIntact();
  }
  // Nothing at all changed (the rows were left at the canary value).
  bool Untouched() const {
    for (size_t i = 0; i < buf_.size(); ++i)
      if (buf_.data()[i] != kCanary) return false;
    return buf_.CanariesIntact();
  }

 private:
  int n_;
  size_t row_;
  bool upward_;
  GuardedBuffer buf_;
};

std::vector<uint8_t> Bytes(const uint8_t *p, size_t n) { return {p, p + n}; }
int Sample(const uint8_t *p, size_t i, int bytes) { return int(test::GetSample(p, i, bytes)); }

// Compares `want.size()` samples of `bytes` each; kKeep means "still canary".
AssertionResult SamplesAre(const uint8_t *row, int bytes, const std::vector<int> &want) {
  const int canary = bytes == 1 ? kCanary : kCanary * 0x101;
  for (size_t i = 0; i < want.size(); ++i) {
    const int exp = want[i] == kKeep ? canary : want[i];
    const int got = Sample(row, i, bytes);
    if (got != exp)
      return AssertionFailure() << "sample " << i << ": got " << got << " want " << exp;
  }
  return AssertionSuccess();
}

int Clamp(long v, int hi) { return int(std::clamp<long>(v, 0, hi)); }

// Where Y0, U, Y1 and V sit in a pair, read from the order's name.
struct PairSlots {
  int y0 = -1, u = -1, y1 = -1, v = -1;
  explicit PairSlots(const std::string &name) {
    for (int q = 0; q < 4; ++q) {
      if (name[q] == 'U') u = q;
      if (name[q] == 'V') v = q;
      if (name[q] == 'Y') (y0 < 0 ? y0 : y1) = q;
    }
  }
};

const int32_t kCounts[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 17, 18, 31, 64, 101};

// Varies alignment, row direction and contents with the count.
struct RowSetup {
  size_t offset;
  bool upward;
  uint32_t seed;
};
RowSetup For(int32_t count) { return {size_t(count % 7), count % 3 == 1, uint32_t(count) * 7919u}; }

struct Object {
  const char *name;
  ColorSpace *(*get)();
};
const Object kObjects[] = {{"C", ColorSpaceCInstance}, {"SSE2", ColorSpaceSSE2Instance}};

class ColorSpaceOps : public ::testing::TestWithParam<Object> {
 protected:
  ColorSpace &cs() { return *GetParam().get(); }
};

// ---- 4:1:1 to packed 4:2:2 -----------------------------------------------

TEST_P(ColorSpaceOps, Yuv411ToPackedSharesEachChromaSampleOverTwoPairs) {
  using Fn =
      void (ColorSpace::*)(uint8_t *, const uint8_t *, const uint8_t *, const uint8_t *, int32_t);
  const std::pair<std::string, Fn> kOps[] = {{"YUYV", &ColorSpace::YUV411_2_YUYV},
                                             {"UYVY", &ColorSpace::YUV411_2_UYVY}};
  for (const auto &[order, fn] : kOps) {
    const PairSlots at(order);
    for (int32_t n : kCounts) {
      SCOPED_TRACE(order + " count " + std::to_string(n));
      const RowSetup s = For(n);
      Rows y(1, n, s.upward, s.offset, 0), u(1, n / 4, false, 1, 0), v(1, n / 4, false, 2, 0);
      y.Randomize(s.seed), u.Randomize(s.seed + 10), v.Randomize(s.seed + 20);
      Rows dst(1, 4 * ((n + 1) / 2), false, s.offset, 64);
      (cs().*fn)(dst.row(), y.row(), u.row(), v.row(), n);
      // Pixels past the last whole group of four have no chroma: left alone.
      std::vector<int> want(4 * ((n + 1) / 2), kKeep);
      for (int32_t k = 0; k + 1 < n && k < n / 4 * 4; k += 2) {
        want[2 * k + at.y0] = y.row()[k];
        want[2 * k + at.y1] = y.row()[k + 1];
        want[2 * k + at.u] = u.row()[k / 4];
        want[2 * k + at.v] = v.row()[k / 4];
      }
      EXPECT_TRUE(SamplesAre(dst.row(), 1, want));
      EXPECT_TRUE(dst.Intact());
    }
  }
}

// ---- V210 ----------------------------------------------------------------

// 10-bit components of a V210 row: luma per pixel, Cb and Cr per pair.
struct V210Row {
  std::vector<int> y, cb, cr;
};

// Words that carry the n / 2 pairs of a row: four per whole group of three
// pairs, then two words for one more pair, three for two.
size_t V210Words(int32_t n) {
  static const size_t kPart[3] = {0, 2, 3};
  return 4 * size_t(n / 6) + kPart[n / 2 % 3];
}

// Packs the first `words` words; absent components are zero; `top` is put in
// bits 30-31 of every word (readers must ignore them).
std::vector<uint8_t> PackV210(const V210Row &r, size_t words, uint32_t top = 0) {
  std::vector<uint8_t> out(4 * words);
  for (size_t w = 0; w < words; ++w) {
    const size_t g = w / 4;
    auto Y = [&](size_t k) { return 6 * g + k < r.y.size() ? r.y[6 * g + k] : 0; };
    auto B = [&](size_t j) { return 3 * g + j < r.cb.size() ? r.cb[3 * g + j] : 0; };
    auto R = [&](size_t j) { return 3 * g + j < r.cr.size() ? r.cr[3 * g + j] : 0; };
    const int fields[4][3] = {
        {B(0), Y(0), R(0)}, {Y(1), B(1), Y(2)}, {R(1), Y(3), B(2)}, {Y(4), R(2), Y(5)}};
    const int *f = fields[w % 4];
    const uint32_t word = uint32_t(f[0]) | uint32_t(f[1]) << 10 | uint32_t(f[2]) << 20 | top << 30;
    for (int b = 0; b < 4; ++b) out[4 * w + b] = uint8_t(word >> (8 * b));
  }
  return out;
}

V210Row RandomV210(int32_t n, std::mt19937 &rng) {
  const size_t groups = (n + 5) / 6;
  V210Row r{std::vector<int>(6 * groups), std::vector<int>(3 * groups),
            std::vector<int>(3 * groups)};
  for (auto *c : {&r.y, &r.cb, &r.cr})
    for (int &x : *c) x = int(rng() & 0x3FF);
  return r;
}

TEST_P(ColorSpaceOps, V210HandPackedWords) {
  // Cb0 0x200, Y0 0x040, Cr0 0x3FC | Y1 0x3FF, Cb1 0, Y2 0x155.
  std::vector<uint8_t> src = {0x00, 0x02, 0xC1, 0x3F, 0xFF, 0x03, 0x50, 0x15};
  uint8_t y[2], u[1], v[1];
  cs().V210_2_YUV422(y, u, v, src.data(), 2);
  EXPECT_EQ(y[0], 0x10);
  EXPECT_EQ(y[1], 0xFF);
  EXPECT_EQ(u[0], 0x80);
  EXPECT_EQ(v[0], 0xFF);
  // Back again: the two words, Y2 and Cb1 empty.
  uint8_t out[8];
  cs().YUV422_2_V210(out, y, u, v, 2);
  const uint8_t want[8] = {0x00, 0x02, 0xC1, 0x3F, 0xFC, 0x03, 0x00, 0x00};
  EXPECT_EQ(Bytes(out, 8), Bytes(want, 8));
}

TEST_P(ColorSpaceOps, V210ToPlanarTakesTheHighEightBits) {
  std::mt19937 rng(11);
  for (int32_t n : kCounts) {
    SCOPED_TRACE("count " + std::to_string(n));
    const RowSetup s = For(n);
    const V210Row r = RandomV210(n, rng);
    const auto packed = PackV210(r, V210Words(n), rng() & 3);
    Rows src(1, packed.size(), false, s.offset, 0);
    src.Set(0, packed);
    Rows y(1, n, false, s.offset, 64), u(1, n / 2, false, 3, 64), v(1, n / 2, false, 5, 64);
    cs().V210_2_YUV422(y.row(), u.row(), v.row(), src.row(), n);
    std::vector<int> wy, wu, wv;
    for (int32_t k = 0; k < n; ++k) wy.push_back(k < n / 2 * 2 ? r.y[k] >> 2 : kKeep);
    for (int32_t j = 0; j < n / 2; ++j) wu.push_back(r.cb[j] >> 2), wv.push_back(r.cr[j] >> 2);
    EXPECT_TRUE(SamplesAre(y.row(), 1, wy));
    EXPECT_TRUE(SamplesAre(u.row(), 1, wu));
    EXPECT_TRUE(SamplesAre(v.row(), 1, wv));
    EXPECT_TRUE(y.Intact() && u.Intact() && v.Intact());
  }
}

TEST_P(ColorSpaceOps, PlanarToV210WritesOnlyTheWordsOfTheRow) {
  for (int32_t n : kCounts) {
    SCOPED_TRACE("count " + std::to_string(n));
    const RowSetup s = For(n);
    Rows y(1, n, false, s.offset, 0), u(1, n / 2, false, 1, 0), v(1, n / 2, false, 2, 0);
    y.Randomize(s.seed), u.Randomize(s.seed + 10), v.Randomize(s.seed + 20);
    Rows dst(1, V210Words(n) * 4, false, s.offset, 64);
    cs().YUV422_2_V210(dst.row(), y.row(), u.row(), v.row(), n);
    V210Row r;
    for (int32_t k = 0; k < n / 2 * 2; ++k) r.y.push_back(y.row()[k] << 2);
    for (int32_t j = 0; j < n / 2; ++j)
      r.cb.push_back(u.row()[j] << 2), r.cr.push_back(v.row()[j] << 2);
    const auto want = PackV210(r, V210Words(n));
    EXPECT_EQ(Bytes(dst.row(), want.size()), want);
    EXPECT_TRUE(dst.Intact());
    // And back: every sample of the row's pairs survives the round trip.
    Rows y2(1, n, false, 0, 64), u2(1, n / 2, false, 0, 64), v2(1, n / 2, false, 0, 64);
    cs().V210_2_YUV422(y2.row(), u2.row(), v2.row(), dst.row(), n);
    EXPECT_EQ(Bytes(y2.row(), n / 2 * 2), Bytes(y.row(), n / 2 * 2));
    EXPECT_EQ(Bytes(u2.row(), n / 2), Bytes(u.row(), n / 2));
    EXPECT_EQ(Bytes(v2.row(), n / 2), Bytes(v.row(), n / 2));
  }
}

TEST_P(ColorSpaceOps, V210ToYuv420WeighsTheFirstRowThreeToOne) {
  std::mt19937 rng(12);
  for (int32_t n : kCounts) {
    SCOPED_TRACE("count " + std::to_string(n));
    const RowSetup s = For(n);
    const V210Row a = RandomV210(n, rng), b = RandomV210(n, rng);
    const auto pa = PackV210(a, V210Words(n), 3), pb = PackV210(b, V210Words(n), 1);
    Rows src(2, pa.size(), s.upward, s.offset, 0);
    src.Set(0, pa);
    src.Set(1, pb);
    Rows y(2, n, !s.upward, s.offset, 64), u(1, n / 2, false, 1, 64), v(1, n / 2, false, 2, 64);
    cs().V210_2_YUV420(y.row(0), y.pitch(), u.row(), v.row(), src.row(0), src.pitch(), n);
    std::vector<int> wy0, wy1, wu, wv;
    for (int32_t k = 0; k < n; ++k) {  // an odd last pixel is not converted
      wy0.push_back(k < n / 2 * 2 ? a.y[k] >> 2 : kKeep);
      wy1.push_back(k < n / 2 * 2 ? b.y[k] >> 2 : kKeep);
    }
    for (int32_t j = 0; j < n / 2; ++j) {
      wu.push_back((3 * (a.cb[j] >> 2) + (b.cb[j] >> 2) + 2) >> 2);
      wv.push_back((3 * (a.cr[j] >> 2) + (b.cr[j] >> 2) + 2) >> 2);
    }
    EXPECT_TRUE(SamplesAre(y.row(0), 1, wy0));
    EXPECT_TRUE(SamplesAre(y.row(1), 1, wy1));
    EXPECT_TRUE(SamplesAre(u.row(), 1, wu));
    EXPECT_TRUE(SamplesAre(v.row(), 1, wv));
    EXPECT_TRUE(y.Intact() && u.Intact() && v.Intact());
  }
}

// ---- Q14 matrix row and gains --------------------------------------------

TEST_P(ColorSpaceOps, MatrixRowOverFourBytePixelsRounds) {
  // SD luma laid out like the G,B,R row: elements 2, 3, 4 are Yr, Yg, Yb. The
  // other elements and the fourth byte must not matter.
  const int16_t kSD[8] = {9618, 1868, 4898, 9618, 1868, -7777, 31000, -31000};
  const int16_t kHot[8] = {0, 0, 30000, 20000, 16000, 0, 0, 0};   // clamps high
  const int16_t kCold[8] = {0, 0, -9000, 4000, -12000, 0, 0, 0};  // clamps low
  std::mt19937 rng(5);
  for (int32_t n : kCounts) {
    SCOPED_TRACE("count " + std::to_string(n));
    const RowSetup s = For(n);
    int16_t random[8];
    for (auto &c : random) c = int16_t(rng());
    for (const int16_t *coef : {kSD, kHot, kCold, static_cast<const int16_t *>(random)}) {
      Rows src(1, 4 * n, false, s.offset, 0);
      src.Randomize(s.seed);
      src.row()[0] = src.row()[1] = src.row()[2] = 0;  // black gives 0 whatever the row
      Rows dst(1, n, false, s.offset + 1, 64);
      cs().RGB_2_YUV_Matrix(dst.row(), src.row(), coef, n);
      std::vector<int> want;
      for (int32_t i = 0; i < n; ++i) {
        const uint8_t *p = src.row() + 4 * i;
        want.push_back(Clamp((coef[2] * p[0] + coef[3] * p[1] + coef[4] * p[2] + 8192) >> 14, 255));
      }
      EXPECT_EQ(dst.row()[0], 0);
      EXPECT_TRUE(SamplesAre(dst.row(), 1, want));
      EXPECT_TRUE(dst.Intact());
    }
  }
  // White through the SD row: the weights sum to 1.0.
  const uint8_t white[4] = {255, 255, 255, 0};
  uint8_t out = 0;
  cs().RGB_2_YUV_Matrix(&out, white, kSD, 1);
  EXPECT_EQ(out, 255);
}

TEST_P(ColorSpaceOps, ScaleQ14RepeatsTheEightGainsAlongTheRow) {
  std::mt19937 rng(6);
  for (int32_t n : kCounts) {
    SCOPED_TRACE("count " + std::to_string(n));
    const RowSetup s = For(n);
    int16_t coef[8] = {16384, 0, -16384, 32767, 14071, 19077, int16_t(rng()), int16_t(rng())};
    Rows src(1, n, false, s.offset, 0);
    src.Randomize(s.seed);
    Rows dst(1, n, false, s.offset + 2, 64);
    cs().Scale_Q14(dst.row(), src.row(), coef, n);
    std::vector<int> want;
    for (int32_t i = 0; i < n; ++i)
      want.push_back(Clamp((src.row()[i] * coef[i % 8] + 8192) >> 14, 255));
    EXPECT_TRUE(SamplesAre(dst.row(), 1, want));
    EXPECT_TRUE(dst.Intact());
  }
}

TEST_P(ColorSpaceOps, Rgb48ToPacked16KeepsTenBitsAndTheEvenPixelsChroma) {
  using Fn =
      void (ColorSpace::*)(uint16_t *, const uint16_t *, const int16_t *, const int16_t *, int32_t);
  const std::pair<std::string, Fn> kOps[] = {{"YUYV", &ColorSpace::RGB48_2_YUYV16_Matrix},
                                             {"UYVY", &ColorSpace::RGB48_2_UYVY16_Matrix}};
  // HD rows, R-first: luma like G,B,R (elements 2-4 Yr, Yg, Yb); U then V.
  const int16_t kY[8] = {11717, 1183, 3484, 11717, 1183, 3484, 11717, 1183};
  const int16_t kUV[8] = {-1877, -6315, 8192, 0, 8192, -7441, -751, 0};
  std::mt19937 rng(7);
  for (const auto &[order, fn] : kOps) {
    const PairSlots at(order);
    for (int32_t n : kCounts) {
      SCOPED_TRACE(order + " count " + std::to_string(n));
      const RowSetup s = For(n);
      int16_t ry[8], ruv[8];
      for (int i = 0; i < 8; ++i) ry[i] = int16_t(rng()), ruv[i] = int16_t(rng());
      const int16_t *rows[2][2] = {{kY, kUV}, {ry, ruv}};
      for (auto &[cy, cuv] : rows) {
        Rows src(1, 6 * n, false, s.offset, 0);
        src.Randomize(s.seed);
        for (int c = 0; c < 3; ++c)
          test::PutSample(src.row(), c, 2, rng() & 63);  // black: only low bits
        Rows dst(1, 8 * ((n + 1) / 2), false, s.offset, 64);
        (cs().*fn)(dst.as<uint16_t>(), src.as<uint16_t>(), cy, cuv, n);
        auto comp = [&](int32_t i, int c) { return Sample(src.row(), 3 * i + c, 2) >> 6; };
        auto dot = [&](const int16_t *w, int32_t i) {
          return (w[0] * comp(i, 0) + w[1] * comp(i, 1) + w[2] * comp(i, 2) + 8192) >> 14;
        };
        std::vector<int> want(4 * ((n + 1) / 2));
        for (int32_t i = 0; i < n; i += 2) {
          const int32_t odd = i + 1 < n ? i + 1 : i;  // lone last pixel: its own Y twice
          want[2 * i + at.y0] = Clamp(dot(cy + 2, i), 1023) << 6;
          want[2 * i + at.y1] = Clamp(dot(cy + 2, odd), 1023) << 6;
          want[2 * i + at.u] = Clamp(dot(cuv, i) + 512, 1023) << 6;
          want[2 * i + at.v] = Clamp(dot(cuv + 4, i) + 512, 1023) << 6;
        }
        EXPECT_EQ(Sample(dst.row(), at.y0, 2), 0);
        EXPECT_EQ(Sample(dst.row(), at.u, 2), cy == kY ? 0x8000 : want[at.u]);
        EXPECT_TRUE(SamplesAre(dst.row(), 2, want));
        EXPECT_TRUE(dst.Intact());
      }
    }
  }
}

// ---- Chroma rows ---------------------------------------------------------

TEST_P(ColorSpaceOps, ChromaRowAverageRoundsUp) {
  for (int bytes : {1, 2}) {
    for (int32_t n : kCounts) {
      SCOPED_TRACE("bytes " + std::to_string(bytes) + " count " + std::to_string(n));
      const RowSetup s = For(n);
      Rows src(2, bytes * n, s.upward, s.offset, 0);
      src.Randomize(s.seed);
      const int top = bytes == 1 ? 255 : 65535;
      for (int k = 0; k < 2; ++k)  // the largest values must not overflow
        test::PutSample(src.row(k), 0, bytes, top);
      Rows dst(1, bytes * n, false, s.offset + 1, 64);
      if (bytes == 1)
        cs().YUV422_2_YUV420_UV_Avg(dst.row(), src.row(), src.pitch(), n);
      else
        cs().YUV422_16_2_YUV420_16_UV_Avg(dst.as<uint16_t>(), src.as<uint16_t>(), src.pitch(), n);
      std::vector<int> want;
      for (int32_t i = 0; i < n; ++i)
        want.push_back((Sample(src.row(0), i, bytes) + Sample(src.row(1), i, bytes) + 1) >> 1);
      EXPECT_EQ(want[0], top);
      EXPECT_TRUE(SamplesAre(dst.row(), bytes, want));
      EXPECT_TRUE(dst.Intact());
    }
  }
}

TEST_P(ColorSpaceOps, FourTapInterpolationClampsBothWays) {
  for (int bytes : {1, 2}) {
    const int top = bytes == 1 ? 255 : 65535;
    for (int32_t n : kCounts) {
      SCOPED_TRACE("bytes " + std::to_string(bytes) + " count " + std::to_string(n));
      const RowSetup s = For(n);
      Rows src(4, bytes * n, s.upward, s.offset, 0);
      src.Randomize(s.seed);
      auto put = [&](int k, int i, int v) { test::PutSample(src.row(k), i, bytes, v); };
      // Sample 0 overshoots, sample 1 undershoots.
      put(0, 0, 0), put(1, 0, top), put(2, 0, top), put(3, 0, 0);
      if (n > 1) put(0, 1, top), put(1, 1, 0), put(2, 1, 0), put(3, 1, top);
      Rows dst(1, bytes * n, false, s.offset + 3, 64);
      if (bytes == 1)
        cs().UV_Interpolate_4Tap(dst.row(), src.row(), src.pitch(), n);
      else
        cs().UV_Interpolate_4Tap_16(dst.as<uint16_t>(), src.as<uint16_t>(), src.pitch(), n);
      std::vector<int> want;
      for (int32_t i = 0; i < n; ++i) {
        const long a = Sample(src.row(0), i, bytes), b = Sample(src.row(1), i, bytes),
                   c = Sample(src.row(2), i, bytes), d = Sample(src.row(3), i, bytes);
        want.push_back(Clamp((9 * (b + c) - a - d + 8) >> 4, top));
      }
      EXPECT_EQ(want[0], top);
      if (n > 1) {
        EXPECT_EQ(want[1], 0);
      }
      EXPECT_TRUE(SamplesAre(dst.row(), bytes, want));
      EXPECT_TRUE(dst.Intact());
    }
  }
}

// ---- Packed 4:2:2 to planar ----------------------------------------------

TEST_P(ColorSpaceOps, PackedToPlanar16MovesEverySampleUpEightBits) {
  using Fn = void (ColorSpace::*)(uint16_t *, uint16_t *, uint16_t *, const uint8_t *, int32_t);
  const std::pair<std::string, Fn> kOps[] = {{"YUYV", &ColorSpace::YUYV_2_YUV422_16},
                                             {"UYVY", &ColorSpace::UYVY_2_YUV422_16}};
  for (const auto &[order, fn] : kOps) {
    const PairSlots at(order);
    for (int32_t n : kCounts) {
      SCOPED_TRACE(order + " count " + std::to_string(n));
      const RowSetup s = For(n);
      Rows src(1, 4 * (n / 2), false, s.offset, 0);
      src.Randomize(s.seed);
      Rows y(1, 2 * n, false, s.offset, 64), u(1, n, false, 1, 64), v(1, n, false, 2, 64);
      (cs().*fn)(y.as<uint16_t>(), u.as<uint16_t>(), v.as<uint16_t>(), src.row(), n);
      std::vector<int> wy(n, kKeep), wu, wv;  // an odd last pixel is not written
      for (int32_t p = 0; p < n / 2; ++p) {
        const uint8_t *q = src.row() + 4 * p;
        wy[2 * p] = q[at.y0] << 8, wy[2 * p + 1] = q[at.y1] << 8;
        wu.push_back(q[at.u] << 8), wv.push_back(q[at.v] << 8);
      }
      EXPECT_TRUE(SamplesAre(y.row(), 2, wy));
      EXPECT_TRUE(SamplesAre(u.row(), 2, wu));
      EXPECT_TRUE(SamplesAre(v.row(), 2, wv));
      EXPECT_TRUE(y.Intact() && u.Intact() && v.Intact());
    }
  }
}

// Ops 15 to 22, one description each: order, sample sizes, the call.
struct To420Case {
  const char *order;
  int srcBytes, dstBytes;
  void (*call)(ColorSpace &, uint8_t *, int64_t, uint8_t *, uint8_t *, const uint8_t *, int64_t,
               int32_t);
};

template <class D, class S, auto Fn>
void Call420(ColorSpace &cs, uint8_t *y, int64_t yp, uint8_t *u, uint8_t *v, const uint8_t *src,
             int64_t sp, int32_t n) {
  (cs.*Fn)(reinterpret_cast<D *>(y), yp, reinterpret_cast<D *>(u), reinterpret_cast<D *>(v),
           reinterpret_cast<const S *>(src), sp, n);
}

using C = ColorSpace;
const To420Case k420Cases[] = {
    {"YUYV", 1, 1, Call420<uint8_t, uint8_t, &C::YUYV_2_YUV420_Avg>},
    {"UYVY", 1, 1, Call420<uint8_t, uint8_t, &C::UYVY_2_YUV420_Avg>},
    {"YUYV", 2, 2, Call420<uint16_t, uint16_t, &C::YUYV16_2_YUV420_16_Avg>},
    {"UYVY", 2, 2, Call420<uint16_t, uint16_t, &C::UYVY16_2_YUV420_16_Avg>},
    {"YUYV", 1, 2, Call420<uint16_t, uint8_t, &C::YUYV_2_YUV420_16>},
    {"UYVY", 1, 2, Call420<uint16_t, uint8_t, &C::UYVY_2_YUV420_16>},
    {"YUYV", 2, 1, Call420<uint8_t, uint16_t, &C::YUYV16_2_YUV420>},
    {"UYVY", 2, 1, Call420<uint8_t, uint16_t, &C::UYVY16_2_YUV420>},
};

TEST_P(ColorSpaceOps, PackedRowsTo420AverageChromaWithRounding) {
  for (const To420Case &t : k420Cases) {
    const PairSlots at(t.order);
    // Luma changes depth by a shift; chroma is the rounded mean, then shifted.
    auto luma = [&](int x) {
      return t.srcBytes < t.dstBytes ? x << 8 : t.srcBytes > t.dstBytes ? x >> 8 : x;
    };
    auto chroma = [&](int a, int b) {
      if (t.srcBytes > t.dstBytes) return (a + b + 1) >> 9;
      return ((a + b + 1) >> 1) << (t.srcBytes < t.dstBytes ? 8 : 0);
    };
    for (int32_t n : kCounts) {
      SCOPED_TRACE(std::string(t.order) + " " + std::to_string(t.srcBytes) + "->" +
                   std::to_string(t.dstBytes) + " count " + std::to_string(n));
      const RowSetup s = For(n);
      Rows src(2, t.srcBytes * 4 * (n / 2), s.upward, s.offset, 0);
      src.Randomize(s.seed);
      Rows y(2, t.dstBytes * n, !s.upward, s.offset, 64);
      Rows u(1, t.dstBytes * (n / 2), false, 1, 64), v(1, t.dstBytes * (n / 2), false, 2, 64);
      t.call(cs(), y.row(0), y.pitch(), u.row(), v.row(), src.row(0), src.pitch(), n);
      std::vector<int> wy[2] = {std::vector<int>(n, kKeep), std::vector<int>(n, kKeep)}, wu, wv;
      auto in = [&](int k, int32_t p, int slot) {
        return Sample(src.row(k), 4 * p + slot, t.srcBytes);
      };
      for (int32_t p = 0; p < n / 2; ++p) {
        for (int k = 0; k < 2; ++k)
          wy[k][2 * p] = luma(in(k, p, at.y0)), wy[k][2 * p + 1] = luma(in(k, p, at.y1));
        wu.push_back(chroma(in(0, p, at.u), in(1, p, at.u)));
        wv.push_back(chroma(in(0, p, at.v), in(1, p, at.v)));
      }
      EXPECT_TRUE(SamplesAre(y.row(0), t.dstBytes, wy[0]));
      EXPECT_TRUE(SamplesAre(y.row(1), t.dstBytes, wy[1]));
      EXPECT_TRUE(SamplesAre(u.row(), t.dstBytes, wu));
      EXPECT_TRUE(SamplesAre(v.row(), t.dstBytes, wv));
      EXPECT_TRUE(y.Intact() && u.Intact() && v.Intact());
    }
  }
}

// ---- Counts that describe no row -----------------------------------------

// Every operation, pointed at roomy rows, with a count that writes nothing.
struct Scratch {
  Rows d{2, 1024, false, 1, 64}, u{1, 1024, false, 2, 64}, v{1, 1024, false, 3, 64};
  Rows s{4, 1024, true, 5, 64};
  int16_t coef[8] = {100, 200, 9000, 9000, 9000, 300, 400, 500};
  Scratch() { s.Randomize(99); }
  uint8_t *D() { return d.row(0); }
  uint16_t *D16() { return d.as<uint16_t>(0); }
  uint16_t *U16() { return u.as<uint16_t>(); }
  uint16_t *V16() { return v.as<uint16_t>(); }
  const uint8_t *S() { return s.row(0); }
  const uint16_t *S16() { return s.as<uint16_t>(0); }
};

using ScratchCall = void (*)(ColorSpace &, Scratch &, int32_t);
const ScratchCall kAllOps[] = {
    [](C &c, Scratch &x, int32_t n) { c.YUV411_2_YUYV(x.D(), x.S(), x.S(), x.S(), n); },
    [](C &c, Scratch &x, int32_t n) { c.YUV411_2_UYVY(x.D(), x.S(), x.S(), x.S(), n); },
    [](C &c, Scratch &x, int32_t n) { c.V210_2_YUV422(x.D(), x.u.row(), x.v.row(), x.S(), n); },
    [](C &c, Scratch &x, int32_t n) { c.YUV422_2_V210(x.D(), x.S(), x.S(), x.S(), n); },
    [](C &c, Scratch &x, int32_t n) {
      c.V210_2_YUV420(x.D(), x.d.pitch(), x.u.row(), x.v.row(), x.S(), x.s.pitch(), n);
    },
    [](C &c, Scratch &x, int32_t n) { c.RGB_2_YUV_Matrix(x.D(), x.S(), x.coef, n); },
    [](C &c, Scratch &x, int32_t n) { c.YUYV_2_YUV422_16(x.D16(), x.U16(), x.V16(), x.S(), n); },
    [](C &c, Scratch &x, int32_t n) { c.UYVY_2_YUV422_16(x.D16(), x.U16(), x.V16(), x.S(), n); },
    [](C &c, Scratch &x, int32_t n) { c.Scale_Q14(x.D(), x.S(), x.coef, n); },
    [](C &c, Scratch &x, int32_t n) {
      c.RGB48_2_YUYV16_Matrix(x.D16(), x.S16(), x.coef, x.coef, n);
    },
    [](C &c, Scratch &x, int32_t n) {
      c.RGB48_2_UYVY16_Matrix(x.D16(), x.S16(), x.coef, x.coef, n);
    },
    [](C &c, Scratch &x, int32_t n) { c.YUV422_2_YUV420_UV_Avg(x.D(), x.S(), x.s.pitch(), n); },
    [](C &c, Scratch &x, int32_t n) {
      c.YUV422_16_2_YUV420_16_UV_Avg(x.D16(), x.S16(), x.s.pitch(), n);
    },
    [](C &c, Scratch &x, int32_t n) { c.UV_Interpolate_4Tap(x.D(), x.S(), x.s.pitch(), n); },
    [](C &c, Scratch &x, int32_t n) { c.UV_Interpolate_4Tap_16(x.D16(), x.S16(), x.s.pitch(), n); },
};

TEST_P(ColorSpaceOps, NoCountNoWrite) {
  for (int32_t n : {0, -1, -2, -7, INT_MIN}) {
    size_t op = 0;
    for (ScratchCall call : kAllOps) {
      SCOPED_TRACE("op " + std::to_string(op++) + " count " + std::to_string(n));
      Scratch x;
      call(cs(), x, n);
      EXPECT_TRUE(x.d.Untouched() && x.u.Untouched() && x.v.Untouched());
    }
    for (const To420Case &t : k420Cases) {
      SCOPED_TRACE(std::string(t.order) + " to 4:2:0, count " + std::to_string(n));
      Scratch x;
      t.call(cs(), x.D(), x.d.pitch(), x.u.row(), x.v.row(), x.S(), x.s.pitch(), n);
      EXPECT_TRUE(x.d.Untouched() && x.u.Untouched() && x.v.Untouched());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(ColorSpaceObjects, ColorSpaceOps, ::testing::ValuesIn(kObjects),
                         [](const auto &info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tqcs
