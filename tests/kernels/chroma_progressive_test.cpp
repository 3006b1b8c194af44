// Frame-sited chroma resampling: the SSE2 routines against their portable
// twins, and the filters against a float reference of centred siting.
//
// Parity: every count 0 to 300, seeded random samples, all 0, all ones, and
// 16-bit samples at the 10-bit extremes with stray low bits; source rows
// read-only and against an unreadable page (ending at it with a positive
// pitch, starting right after it with a negative one), rows a few bytes apart
// so they start unaligned; destinations inside canaries that must survive.
#include "kernels/chroma_progressive.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "support/page_guard.hpp"

namespace tqcs::test {
namespace {

char g_current[160];
const bool g_faultHandler = [] {
  ReportFaultsWith("fault outside the caller's rows in ", g_current, sizeof g_current);
  return true;
}();

// A routine, either tier, on byte pointers: destination U and V rows and
// their pitch, source U and V rows (the row `a`) and their pitch, width.
using Call = std::function<void(bool simd, uint8_t *dU, uint8_t *dV, int64_t dp, const uint8_t *sU,
                                const uint8_t *sV, int64_t sp, int32_t w)>;

struct Routine {
  std::string name;
  int bytes;    // of a sample
  int dstRows;  // rows written: 2 up, 1 down
  int before;   // source rows read before `a`
  int after;    // and after it
  Call call;
};

template <class T>
Routine Make(const char *name, CentredDownFn<T> portable, CentredDownFn<T> simd, CentredEdge) {
  return {name,
          int{sizeof(T)},
          1,
          0,
          1,
          [=](bool s, uint8_t *dU, uint8_t *dV, int64_t, const uint8_t *sU, const uint8_t *sV,
              int64_t sp, int32_t w) {
            (s ? simd : portable)(reinterpret_cast<T *>(dU), reinterpret_cast<T *>(dV),
                                  reinterpret_cast<const T *>(sU), sp,
                                  reinterpret_cast<const T *>(sV), sp, w);
          }};
}
template <class T>
Routine Make(const char *name, CentredUpFn<T> portable, CentredUpFn<T> simd, CentredEdge edge) {
  const int before = edge == CentredEdge::First ? 0 : 1, after = edge == CentredEdge::Last ? 0 : 1;
  return {name,
          int{sizeof(T)},
          2,
          before,
          after,
          [=](bool s, uint8_t *dU, uint8_t *dV, int64_t dp, const uint8_t *sU, const uint8_t *sV,
              int64_t sp, int32_t w) {
            (s ? simd : portable)(reinterpret_cast<T *>(dU), dp, reinterpret_cast<T *>(dV), dp,
                                  reinterpret_cast<const T *>(sU), sp,
                                  reinterpret_cast<const T *>(sV), sp, w);
          }};
}

std::vector<Routine> Routines() {
#define TQCS_ROUTINE(name, shape, T, edge) \
  Make<T>(#name, &portable::name, &sse2::name, CentredEdge::edge),
  return {TQCS_CHROMA_PROGRESSIVE_ROUTINES(TQCS_ROUTINE)};
#undef TQCS_ROUTINE
}

void PrintTo(const Routine &r, std::ostream *os) { *os << r.name; }

class CentredParity : public ::testing::TestWithParam<Routine> {};

std::string RoutineName(const ::testing::TestParamInfo<Routine> &info) { return info.param.name; }

void Fill(uint8_t *p, size_t n, int pattern, int bytes, std::mt19937 &rng) {
  static constexpr uint16_t kTenBit[] = {0x0000, 0x003F, 0x0040, 0xFFC0, 0xFFFF, 0x8000, 0x7FFF};
  for (size_t i = 0; i < n; ++i) {
    uint8_t v = static_cast<uint8_t>(rng());
    if (pattern == 1) v = 0;
    if (pattern == 2) v = 255;
    if (pattern == 3 && bytes == 2)
      v = static_cast<uint8_t>(kTenBit[(i / 2 + rng() % 2) % 7] >> (8 * (i % 2)));
    p[i] = v;
  }
}

TEST_P(CentredParity, SimdGivesThePortableBytes) {
  const Routine &r = GetParam();
  constexpr int64_t kMargin = 40;
  constexpr uint8_t kCanary = 0xC3;
  std::mt19937 rng(19);
  PageGuarded after[2] = {PageGuarded(8192, Guard::After), PageGuarded(8192, Guard::After)};
  PageGuarded before[2] = {PageGuarded(8192, Guard::Before), PageGuarded(8192, Guard::Before)};
  const int srcRows = r.before + 1 + r.after;
  for (int32_t count = 0; count <= 300; ++count)
    for (int pattern = 0; pattern < 4; ++pattern)
      for (int sign : {1, -1}) {
        const int64_t rowBytes = int64_t{count} * r.bytes;
        const int64_t gap = 1 + (count + pattern) % 3;
        const int64_t pitch = sign * (rowBytes + gap);
        const size_t srcBytes = static_cast<size_t>((srcRows - 1) * (rowBytes + gap) + rowBytes);
        const uint8_t *a[2];
        for (int plane = 0; plane < 2; ++plane) {
          PageGuarded &g = sign > 0 ? after[plane] : before[plane];
          g.Protect(false);
          uint8_t *low = g.Reframe(srcBytes);
          Fill(low, srcBytes, pattern, r.bytes, rng);
          g.Protect(true);
          a[plane] = low + (sign > 0 ? r.before : r.after) * (rowBytes + gap);
        }
        const int64_t dp = sign * (rowBytes + 2 * gap);
        const int64_t span = (r.dstRows - 1) * (rowBytes + 2 * gap) + rowBytes;
        std::vector<uint8_t> out[2];
        for (int simd = 0; simd < 2; ++simd) {
          out[simd].assign(static_cast<size_t>(2 * (span + 2 * kMargin)), kCanary);
          uint8_t *d[2];
          for (int plane = 0; plane < 2; ++plane)
            d[plane] = out[simd].data() + plane * (span + 2 * kMargin) + kMargin +
                       (sign > 0 ? 0 : span - rowBytes);
          std::snprintf(g_current, sizeof g_current, "%s (%s), count %d, pitch %lld",
                        r.name.c_str(), simd ? "sse2" : "portable", count,
                        static_cast<long long>(pitch));
          r.call(simd != 0, d[0], d[1], dp, a[0], a[1], pitch, count);
        }
        ASSERT_EQ(out[0], out[1]) << r.name << " count " << count << " pattern " << pattern
                                  << " pitch " << pitch;
        // Outside the destination rows, the canaries stand.
        for (int64_t plane = 0; plane < 2; ++plane)
          for (int64_t i = 0; i < span + 2 * kMargin; ++i) {
            const int64_t x = i - kMargin;
            const bool inRow = x >= 0 && x < span && x % (rowBytes + 2 * gap) < rowBytes;
            if (!inRow) {
              ASSERT_EQ(out[0][static_cast<size_t>(plane * (span + 2 * kMargin) + i)], kCanary)
                  << r.name << " count " << count << " byte " << x;
            }
          }
      }
}

INSTANTIATE_TEST_SUITE_P(Routines, CentredParity, ::testing::ValuesIn(Routines()), RoutineName);

// A vertical ramp of 4:2:2 chroma rows through 4:2:2 -> 4:2:0 -> 4:2:2 comes
// back as the float reference of centred siting gives it: every interior row
// exactly, the edge rows as the nearest chroma row (edges repeat).
template <class T>
void RampSurvives(int shift) {
  constexpr int kRows = 8, kWidth = 37;
  const auto ramp = [&](double y) { return 16.0 + 4.0 * y; };
  // Float reference: chroma row k sits at frame row 2k + 0.5; frame row y
  // takes the linear blend of the two nearest, clamped at the edges.
  const auto reference = [&](int y) {
    const double c = std::clamp((y - 0.5) / 2.0, 0.0, kRows / 2 - 1.0);
    const int k = static_cast<int>(c);
    const double t = c - k;
    const int k1 = std::min(k + 1, kRows / 2 - 1);
    return (1 - t) * ramp(2 * k + 0.5) + t * ramp(2 * k1 + 0.5);
  };
  std::vector<T> full(kRows * kWidth), half(kRows / 2 * kWidth), back(kRows * kWidth);
  for (int y = 0; y < kRows; ++y)
    for (int x = 0; x < kWidth; ++x) full[y * kWidth + x] = static_cast<T>(int(ramp(y)) << shift);
  const int64_t p = kWidth * sizeof(T);
  for (bool simd : {false, true}) {
    const Routine down = Routines()[sizeof(T) - 1];
    for (int k = 0; k < kRows / 2; ++k) {
      const auto *s = reinterpret_cast<const uint8_t *>(&full[2 * k * kWidth]);
      auto *d = reinterpret_cast<uint8_t *>(&half[k * kWidth]);
      down.call(simd, d, d, 0, s, s, p, kWidth);
    }
    for (int k = 0; k < kRows / 2; ++k) {
      const Routine up = Routines()[2 + 3 * (sizeof(T) - 1) +
                                    (k == 0               ? 0
                                     : k == kRows / 2 - 1 ? 1
                                                          : 2)];
      const auto *s = reinterpret_cast<const uint8_t *>(&half[k * kWidth]);
      auto *d = reinterpret_cast<uint8_t *>(&back[2 * k * kWidth]);
      up.call(simd, d, d, p, s, s, p, kWidth);
    }
    for (int y = 0; y < kRows; ++y)
      EXPECT_EQ(static_cast<double>(back[y * kWidth + kWidth - 1] >> shift), reference(y))
          << "row " << y;
  }
}

TEST(CentredFilters, RampSurvivesTheRoundTrip) {
  RampSurvives<uint8_t>(0);
  RampSurvives<uint16_t>(6);
}

}  // namespace
}  // namespace tqcs::test
