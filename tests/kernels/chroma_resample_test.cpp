// Chroma resampling: 4:2:0 <-> 4:2:2 row kernels, packed 4:2:2 rows to 4:2:0,
// and the whole-plane routines, against models written from the stated
// weights. Destinations are rows with gaps between them, filled with canaries
// and guarded past the end; sources end exactly at their allocation, so an
// over-read is caught by the address sanitizer. Rows start at odd addresses.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "core/api.hpp"
#include "support/buffers.hpp"
#include "support/kernel_samples.hpp"

namespace {

using ::testing::Combine;
using ::testing::Values;
using ::testing::ValuesIn;
using tqcs::test::GuardedBuffer;
using tqcs::test::kCanary;
using tqcs::test::KernelTableForLevel;
using tqcs::test::KernelTestLevels;

// `rows` rows of `samples` little-endian 8- or 16-bit samples, 3 bytes apart.
class Plane {
 public:
  Plane(int64_t rows, int64_t samples, int bits, bool source, uint32_t seed, int fill = -1)
      : bytes_(bits / 8),
        stride_(std::max<int64_t>(samples, 0) * bytes_ + 3),
        buf_(rows > 0 ? stride_ * (rows - 1) + std::max<int64_t>(samples, 0) * bytes_ : 0, 1,
             source ? 0 : 64),
        want_(buf_.size(), kCanary) {
    if (!source)
      buf_.Fill(kCanary);
    else if (fill < 0)
      buf_.Randomize(seed);
    else
      buf_.Fill(static_cast<uint8_t>(fill));
  }
  uint8_t *Row(int64_t r) { return buf_.data() + r * stride_; }
  int64_t stride() const { return stride_; }
  uint32_t Get(int64_t r, int64_t i) const {
    return tqcs::test::GetSample(buf_.data() + r * stride_, i, bytes_);
  }
  void Expect(int64_t r, int64_t i, uint32_t v) {
    tqcs::test::PutSample(want_.data() + r * stride_, i, bytes_, v);
  }
  // Every byte as expected, canaries where nothing was to be written.
  bool Matches() const {
    return buf_.CanariesIntact() && std::equal(want_.begin(), want_.end(), buf_.data());
  }

 private:
  int bytes_;
  int64_t stride_;
  GuardedBuffer buf_;
  std::vector<uint8_t> want_;
};

// The stated weightings: 8-bit values, and 10-bit values in bits 6-15.
uint32_t W8(int wa, uint32_t a, int wb, uint32_t b) { return (wa * a + wb * b + 4) >> 3; }
uint32_t W10(int wa, uint32_t a, int wb, uint32_t b) { return W8(wa, a >> 6, wb, b >> 6) << 6; }
uint32_t M8(uint32_t a, uint32_t b) { return (3 * a + b + 2) >> 2; }
uint32_t M10(uint32_t a, uint32_t b) { return M8(a >> 6, b >> 6) << 6; }

// ---- 4:2:0 -> 4:2:2 rows: row a with p at -pitch and n at +pitch ----------
using UpFn = void (*)(const TCS_KernelTable &, void *, int64_t, void *, int64_t, const void *,
                      int64_t, const void *, int64_t, int32_t);
template <class D, class S, auto M>
void Up(const TCS_KernelTable &t, void *dU, int64_t dUP, void *dV, int64_t dVP, const void *sU,
        int64_t sUP, const void *sV, int64_t sVP, int32_t w) {
  (t.*M)(static_cast<D *>(dU), dUP, static_cast<D *>(dV), dVP, static_cast<const S *>(sU), sUP,
         static_cast<const S *>(sV), sVP, w);
}
using Pair = std::pair<uint32_t, uint32_t>;
struct UpCase {
  const char *name;
  int srcBits, dstBits;
  UpFn call;
  Pair (*model)(uint32_t a, uint32_t p, uint32_t n);
};
using T = TCS_KernelTable;
Pair First8(uint32_t a, uint32_t, uint32_t n) { return {a, W8(5, a, 3, n)}; }
Pair Last8(uint32_t a, uint32_t, uint32_t n) { return {a, W8(7, a, 1, n)}; }
Pair Inner8(uint32_t a, uint32_t p, uint32_t n) { return {W8(7, a, 1, p), W8(5, a, 3, n)}; }
Pair First10(uint32_t a, uint32_t, uint32_t n) { return {a >> 6 << 6, W10(5, a, 3, n)}; }
Pair Last10(uint32_t a, uint32_t, uint32_t n) { return {a >> 6 << 6, W10(7, a, 1, n)}; }
Pair Inner10(uint32_t a, uint32_t p, uint32_t n) { return {W10(7, a, 1, p), W10(5, a, 3, n)}; }
// Kept for compatibility: raw samples shifted by 5, low byte stored.
Pair Raw16To8(uint32_t a, uint32_t p, uint32_t n) {
  return {((7 * a + p + 16) >> 5) & 255, ((5 * a + 3 * n + 16) >> 5) & 255};
}
const UpCase kUp[] = {
    {"First", 8, 8, Up<uint8_t, uint8_t, &T::YUV420_2_YUV422_UV_FirstRow>, First8},
    {"Last", 8, 8, Up<uint8_t, uint8_t, &T::YUV420_2_YUV422_UV_LastRow>, Last8},
    {"Interior", 8, 8, Up<uint8_t, uint8_t, &T::YUV420_2_YUV422_UV_Row>, Inner8},
    {"First16", 16, 16, Up<uint16_t, uint16_t, &T::YUV420_16_2_YUV422_16_UV_FirstRow>, First10},
    {"Last16", 16, 16, Up<uint16_t, uint16_t, &T::YUV420_16_2_YUV422_16_UV_LastRow>, Last10},
    {"Interior16", 16, 16, Up<uint16_t, uint16_t, &T::YUV420_16_2_YUV422_16_UV_Row>, Inner10},
    {"Raw16To8", 16, 8, Up<uint8_t, uint16_t, &T::YUV420_10Bit_2_YUV422_UV_Row>, Raw16To8},
    {"Raw16", 16, 16, Up<uint16_t, uint16_t, &T::YUV420_10Bit_2_YUV422_10Bit_UV_Row>, Inner8},
};

// level, case, width, source pitch sign (0: one row for a, p and n), fill (-1 random)
class UpRows : public ::testing::TestWithParam<std::tuple<uint32_t, UpCase, int, int, int>> {};

TEST_P(UpRows, MatchModel) {
  const auto [level, c, width, sign, fill] = GetParam();
  const int dstSign = width % 2 ? -1 : 1;
  Plane src[2] = {{sign ? 3 : 1, width, c.srcBits, true, 1, fill},
                  {sign ? 3 : 1, width, c.srcBits, true, 2, fill}};
  Plane dst[2] = {{2, width, c.dstBits, false, 0}, {2, width, c.dstBits, false, 0}};
  const int mid = sign ? 1 : 0, first = dstSign > 0 ? 0 : 1;
  c.call(KernelTableForLevel(level), dst[0].Row(first), dstSign * dst[0].stride(),
         dst[1].Row(first), dstSign * dst[1].stride(), src[0].Row(mid), sign * src[0].stride(),
         src[1].Row(mid), sign * src[1].stride(), width);
  for (int k = 0; k < 2; ++k) {
    for (int i = 0; i < width; ++i) {
      const Pair r =
          c.model(src[k].Get(mid, i), src[k].Get(mid - sign, i), src[k].Get(mid + sign, i));
      dst[k].Expect(first, i, r.first);
      dst[k].Expect(1 - first, i, r.second);
    }
    EXPECT_TRUE(dst[k].Matches()) << (k ? "V" : "U");
  }
}

std::string UpName(const ::testing::TestParamInfo<UpRows::ParamType> &info) {
  const auto &[level, c, width, sign, fill] = info.param;
  return std::string(c.name) + "_L" + std::to_string(level) + "_W" + std::to_string(width + 3) +
         "_P" + std::to_string(sign + 1) + (fill < 0 ? "_Rand" : "_Max");
}

INSTANTIATE_TEST_SUITE_P(AllLevels, UpRows,
                         Combine(ValuesIn(KernelTestLevels()), ValuesIn(kUp),
                                 Values(-3, 0, 1, 2, 5, 16, 33), Values(1, -1, 0),
                                 Values(-1, 0xFF)),
                         UpName);

// ---- 4:2:2 -> 4:2:0 rows: (3a + b + 2) >> 2 -------------------------------
using DownFn = void (*)(const TCS_KernelTable &, void *, void *, const void *, int64_t,
                        const void *, int64_t, int32_t);
template <class D, auto M>
void Down(const TCS_KernelTable &t, void *dU, void *dV, const void *sU, int64_t sUP, const void *sV,
          int64_t sVP, int32_t w) {
  (t.*M)(static_cast<D *>(dU), static_cast<D *>(dV), static_cast<const D *>(sU), sUP,
         static_cast<const D *>(sV), sVP, w);
}
struct DownCase {
  const char *name;
  int bits;
  DownFn call;
  uint32_t (*model)(uint32_t a, uint32_t b);
};
const DownCase kDown[] = {{"Bytes", 8, Down<uint8_t, &T::YUV422_2_YUV420_UV_Row>, M8},
                          {"TenBit", 16, Down<uint16_t, &T::YUV422_16_2_YUV420_16_UV_Row>, M10}};

class DownRows : public ::testing::TestWithParam<std::tuple<uint32_t, DownCase, int, int>> {};

TEST_P(DownRows, MatchModel) {
  const auto [level, c, width, sign] = GetParam();
  Plane src[2] = {{sign ? 2 : 1, width, c.bits, true, 3}, {sign ? 2 : 1, width, c.bits, true, 4}};
  Plane dst[2] = {{1, width, c.bits, false, 0}, {1, width, c.bits, false, 0}};
  const int a = sign < 0 ? 1 : 0;
  c.call(KernelTableForLevel(level), dst[0].Row(0), dst[1].Row(0), src[0].Row(a),
         sign * src[0].stride(), src[1].Row(a), sign * src[1].stride(), width);
  for (int k = 0; k < 2; ++k) {
    for (int i = 0; i < width; ++i)
      dst[k].Expect(0, i, c.model(src[k].Get(a, i), src[k].Get(a + sign, i)));
    EXPECT_TRUE(dst[k].Matches()) << (k ? "V" : "U");
  }
}

INSTANTIATE_TEST_SUITE_P(AllLevels, DownRows,
                         Combine(ValuesIn(KernelTestLevels()), ValuesIn(kDown),
                                 Values(-1, 0, 1, 6, 31), Values(1, -1, 0)));

// ---- two packed 4:2:2 rows -> 4:2:0 ----------------------------------------
using PackFn = void (*)(const TCS_KernelTable &, void *, int64_t, void *, void *, const void *,
                        int64_t, int32_t);
template <class D, class S, auto M>
void Pack(const TCS_KernelTable &t, void *y, int64_t yp, void *u, void *v, const void *s,
          int64_t sp, int32_t n) {
  (t.*M)(static_cast<D *>(y), yp, static_cast<D *>(u), static_cast<D *>(v),
         static_cast<const S *>(s), sp, n);
}
struct PackCase {
  const char *name;
  int srcBits, dstBits;
  int pos[4];  // Y0, U, Y1, V within a pair
  int down, round;
  PackFn call;
};
const PackCase kPack[] = {
    {"YUYV", 8, 8, {0, 1, 2, 3}, 0, 2, Pack<uint8_t, uint8_t, &T::YUYV_2_YUV420_UV_Row>},
    {"UYVY", 8, 8, {1, 0, 3, 2}, 0, 2, Pack<uint8_t, uint8_t, &T::UYVY_2_YUV420_UV_Row>},
    {"YUYV16to8", 16, 8, {0, 1, 2, 3}, 8, 0, Pack<uint8_t, uint16_t, &T::YUYV16_2_YUV420_Row>},
    {"UYVY16to8", 16, 8, {1, 0, 3, 2}, 8, 0, Pack<uint8_t, uint16_t, &T::UYVY16_2_YUV420_Row>},
    {"UYVY16", 16, 16, {1, 0, 3, 2}, 0, 0, Pack<uint16_t, uint16_t, &T::UYVY16_2_YUV420_16_Row>},
    {"YUYV16", 16, 16, {0, 1, 2, 3}, 0, 0, Pack<uint16_t, uint16_t, &T::YUYV16_2_YUV420_16_Row>},
};

class PackedRows : public ::testing::TestWithParam<std::tuple<uint32_t, PackCase, int, int>> {};

TEST_P(PackedRows, MatchModel) {
  const auto [level, c, count, sign] = GetParam();
  const int pairs = std::max(count / 2, 0);
  Plane src(2, 4 * ((std::max(count, 0) + 1) / 2), c.srcBits, true, 5);
  Plane y(2, 2 * pairs, c.dstBits, false, 0), u(1, pairs, c.dstBits, false, 0),
      v(1, pairs, c.dstBits, false, 0);
  const int a = sign < 0 ? 1 : 0;
  c.call(KernelTableForLevel(level), y.Row(1 - a), -sign * y.stride(), u.Row(0), v.Row(0),
         src.Row(a), sign * src.stride(), count);
  auto at = [&](int row, int k, int which) { return src.Get(row, 4 * k + c.pos[which]) >> c.down; };
  for (int k = 0; k < pairs; ++k) {
    for (int r = 0; r < 2; ++r) {  // source row a + r * sign lands in luma row 1 - a - r * sign
      y.Expect(1 - a - r * sign, 2 * k, at(a + r * sign, k, 0));
      y.Expect(1 - a - r * sign, 2 * k + 1, at(a + r * sign, k, 2));
    }
    u.Expect(0, k, (3 * at(a, k, 1) + at(a + sign, k, 1) + c.round) >> 2);
    v.Expect(0, k, (3 * at(a, k, 3) + at(a + sign, k, 3) + c.round) >> 2);
  }
  EXPECT_TRUE(y.Matches());
  EXPECT_TRUE(u.Matches());
  EXPECT_TRUE(v.Matches());
}

std::string PackName(const ::testing::TestParamInfo<PackedRows::ParamType> &info) {
  const auto &[level, c, count, sign] = info.param;
  return std::string(c.name) + "_L" + std::to_string(level) + "_N" + std::to_string(count + 2) +
         (sign > 0 ? "_Down" : "_Up");
}

INSTANTIATE_TEST_SUITE_P(AllLevels, PackedRows,
                         Combine(ValuesIn(KernelTestLevels()), ValuesIn(kPack),
                                 Values(-2, 0, 1, 2, 3, 8, 33), Values(1, -1)),
                         PackName);

// ---- whole planes ----------------------------------------------------------
// The progressive up rule over chroma rows F(0..n-1): destination row j of 2n.
uint32_t UpRule(const std::function<uint32_t(int64_t)> &F, int64_t n, int64_t j, bool ten) {
  const int64_t c = j / 2;
  const bool even = j % 2 == 0;
  if (even ? c == 0 : c == n - 1) return ten ? F(c) >> 6 << 6 : F(c);
  auto w = ten ? W10 : W8;
  return even ? w(7, F(c), 1, F(c - 1)) : w(5, F(c), 3, F(c + 1));
}

template <class D, class Fn>
void RunFrame(Fn fn, Plane (&dst)[2], Plane (&src)[2], int width, int h, bool interlaced,
              bool flip) {
  fn(reinterpret_cast<D *>(dst[0].Row(0)), dst[0].stride(), reinterpret_cast<D *>(dst[1].Row(0)),
     dst[1].stride(), reinterpret_cast<const D *>(src[0].Row(0)), src[0].stride(),
     reinterpret_cast<const D *>(src[1].Row(0)), src[1].stride(), width, h, interlaced, flip);
}

// bits, upsampling, interlaced, flip, height, width
class Frames : public ::testing::TestWithParam<std::tuple<int, bool, bool, bool, int, int>> {
 protected:
  // The routines call their row kernels through the live table. Start-up's
  // own check is not asserted here: it covers slots outside this file.
  void SetUp() override {
    tqcs::BuildColorSpaceAPI();
    ASSERT_NE(g_pColorSpaceAPI, nullptr);
  }
};

TEST_P(Frames, MatchRowModel) {
  const auto [bits, up, interlaced, flip, h, width] = GetParam();
  const int cw = width / 2, srcRows = up ? h / 2 : h, dstRows = up ? h : h / 2;
  const bool ten = bits == 16;
  Plane src[2] = {{srcRows, cw, bits, true, 6}, {srcRows, cw, bits, true, 7}};
  Plane dst[2] = {{dstRows, cw, bits, false, 0}, {dstRows, cw, bits, false, 0}};
  const TCS_KernelTable &t = tqcs::Kernels();
  if (bits == 8)
    RunFrame<uint8_t>(up ? t.YUV420_2_YUV422_UV_Frame : t.YUV422_2_YUV420_UV_Frame, dst, src, width,
                      h, interlaced, flip);
  else
    RunFrame<uint16_t>(up ? t.YUV420_16_2_YUV422_16_UV_Frame : t.YUV422_16_2_YUV420_16_UV_Frame,
                       dst, src, width, h, interlaced, flip);
  for (int k = 0; k < 2; ++k) {
    auto put = [&](int64_t r, int64_t i, uint32_t v) {
      dst[k].Expect(flip ? dstRows - 1 - r : r, i, v);
    };
    for (int i = 0; i < cw; ++i) {
      auto S = [&](int64_t r) { return src[k].Get(r, i); };
      auto M = [&](int64_t a, int64_t b) { return ten ? M10(S(a), S(b)) : M8(S(a), S(b)); };
      const int64_t g = h >> 2;
      if (up && !interlaced) {
        for (int64_t r = 0; r < 2 * (h / 2); ++r) put(r, i, UpRule(S, h / 2, r, ten));
      } else if (up) {
        // Top field: rows 2i of the 4:2:0 plane; bottom field: rows 2i + 1,
        // upsampled as the top field turned upside down.
        for (int64_t r = 0; r < 4 * g; ++r)
          put(r, i,
              r % 2 ? UpRule([&](int64_t f) { return S(2 * (g - 1 - f) + 1); }, g,
                             2 * g - 1 - r / 2, ten)
                    : UpRule([&](int64_t f) { return S(2 * f); }, g, r / 2, ten));
        if (h & 2)
          for (int64_t r = 4 * g; r < 4 * g + 2; ++r)
            put(r, i, ten ? S(2 * g) >> 6 << 6 : S(2 * g));
      } else if (!interlaced) {
        for (int64_t c = 0; c < h / 2; ++c) put(c, i, M(2 * c, 2 * c + 1));
      } else {
        for (int64_t q = 0; q < g; ++q) {
          put(2 * q, i, M(4 * q, 4 * q + 2));
          put(2 * q + 1, i, M(4 * q + 3, 4 * q + 1));
        }
        if (h & 2) put(2 * g, i, M(4 * g, 4 * g + 1));
      }
    }
    EXPECT_TRUE(dst[k].Matches()) << (k ? "V" : "U");
  }
}

INSTANTIATE_TEST_SUITE_P(WalksAndEdges, Frames,
                         Combine(Values(8, 16), ::testing::Bool(), ::testing::Bool(),
                                 ::testing::Bool(),
                                 Values(-4, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 14, 18),
                                 Values(1, 2, 7, 12)));

}  // namespace
