// The 16-bit product forms of kernels/x86/exact_products.hpp against the
// portable arithmetic they stand for, (x * c + add) >> s with add 0 or
// 2^(s-1), over the whole input range the matrix kernels give them and every
// int16 weight: the centring and scaling of every sample, one product in
// 16-bit lanes, the sum of two in 32-bit lanes, and the rounding forms built
// on them.
#include "kernels/x86/exact_products.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>

namespace {

using namespace tqcs;

int64_t Truncated(int64_t product, int shift) { return product >> shift; }
int64_t Rounded(int64_t product, int shift) {
  return (product + (int64_t{1} << (shift - 1))) >> shift;
}

int16_t Lane0(__m128i v) { return static_cast<int16_t>(_mm_cvtsi128_si32(v)); }

__m128i Pair(int32_t lo, int32_t hi) {
  return _mm_set1_epi32(static_cast<int32_t>(
      static_cast<uint16_t>(lo) | static_cast<uint32_t>(static_cast<uint16_t>(hi)) << 16));
}

// Every byte b in the high half of a lane centres to (b - 128) * 256 and
// scales to (b - 128) * 2^(16 - s); the sum of two scaled centred samples is
// the scaled sum.
TEST(ExactScaling, EveryCentredSampleAndSum) {
  for (int b = 0; b < 256; ++b) {
    const __m128i c = x86::Centred256(_mm_set1_epi16(static_cast<int16_t>(b << 8)));
    ASSERT_EQ(Lane0(c), (b - 128) * 256) << b;
    ASSERT_EQ(Lane0(x86::ScaleFrom256<13>(c)), (b - 128) * 8) << b;
    ASSERT_EQ(Lane0(x86::ScaleFrom256<14>(c)), (b - 128) * 4) << b;
    for (int n = 0; n < 256; ++n) {
      const __m128i d = x86::Centred256(_mm_set1_epi16(static_cast<int16_t>(n << 8)));
      const __m128i sum = _mm_add_epi16(x86::ScaleFrom256<15>(c), x86::ScaleFrom256<15>(d));
      ASSERT_EQ(Lane0(sum), (b - 128 + n - 128) * 2) << b << " " << n;
    }
  }
}

// x over lo..hi at a shift: centred 8-bit chroma (-128..127) at 13 (the
// rounding forms' base) and 14 (the even pixel of 4:2:2); the sum of two
// centred samples (-256..254) at 15 (the odd pixel).
struct Form {
  int shift;
  int lo, hi;
  int16_t Scaled(int x) const { return static_cast<int16_t>(x * (1 << (16 - shift))); }
};

void PrintTo(const Form &f, std::ostream *os) { *os << "shift" << f.shift; }

const Form kForms[] = {{13, -128, 127}, {14, -128, 127}, {15, -256, 255}};

class ExactProducts : public testing::TestWithParam<Form> {};

// Every x of the range against every int16 weight, eight weights a register.
TEST_P(ExactProducts, OneProductInSixteenBitLanes) {
  const Form &f = GetParam();
  alignas(16) int16_t got[8], weights[8];
  for (int x = f.lo; x <= f.hi; ++x) {
    const __m128i scaled = _mm_set1_epi16(f.Scaled(x));
    for (int32_t c0 = INT16_MIN; c0 <= INT16_MAX; c0 += 8) {
      for (int k = 0; k < 8; ++k) weights[k] = static_cast<int16_t>(c0 + k);
      const __m128i c = _mm_load_si128(reinterpret_cast<const __m128i *>(weights));
      _mm_store_si128(reinterpret_cast<__m128i *>(got), x86::ProductHigh(scaled, c));
      for (int k = 0; k < 8; ++k) {
        ASSERT_EQ(got[k], Truncated(int64_t{x} * weights[k], f.shift))
            << "x " << x << ", c " << weights[k];
      }
    }
  }
}

// Two products summed before the shift: every pair of inputs of the range,
// against the weights where the sum is largest in magnitude and a spread of
// others.
TEST_P(ExactProducts, SumOfTwoProductsInThirtyTwoBitLanes) {
  const Form &f = GetParam();
  const int16_t weights[] = {INT16_MIN, INT16_MIN + 1, -12345, -1, 0, 1, 9876, INT16_MAX};
  for (int16_t c0 : weights) {
    for (int16_t c1 : weights) {
      const __m128i c = Pair(c0, c1);
      for (int x0 = f.lo; x0 <= f.hi; ++x0) {
        for (int x1 = f.lo; x1 <= f.hi; ++x1) {
          const int32_t got =
              _mm_cvtsi128_si32(x86::PairSumHigh(Pair(f.Scaled(x0), f.Scaled(x1)), c));
          ASSERT_EQ(got, Truncated(int64_t{x0} * c0 + int64_t{x1} * c1, f.shift))
              << "x " << x0 << ", " << x1 << ", c " << c0 << ", " << c1;
        }
      }
    }
  }
}

// The shift of a two-product sum on every sum S the range can reach (at most
// 2 * 2^15 * max|x| in magnitude), handed to the madd as M = S 2^(16 - s)
// split into (M >> 14, the low 14 bits) against the weights (2^14, 1).
TEST_P(ExactProducts, ShiftOfEverySumOfTwoProducts) {
  const Form &f = GetParam();
  const int64_t reach = 2 * int64_t{32768} * -f.lo, scale = int64_t{1} << (16 - f.shift);
  const __m128i weights = Pair(1 << 14, 1);
  alignas(16) int32_t lanes[4], got[4];
  for (int64_t s0 = -reach; s0 <= reach; s0 += 4) {
    for (int k = 0; k < 4; ++k) {
      const int64_t m = (s0 + k) * scale, hi = m >> 14;
      lanes[k] = static_cast<int32_t>(static_cast<uint16_t>(hi) |
                                      static_cast<uint32_t>(m - hi * 16384) << 16);
    }
    const __m128i scaled = _mm_load_si128(reinterpret_cast<const __m128i *>(lanes));
    _mm_store_si128(reinterpret_cast<__m128i *>(got), x86::PairSumHigh(scaled, weights));
    for (int k = 0; k < 4; ++k) ASSERT_EQ(got[k], Truncated(s0 + k, f.shift)) << s0 + k;
  }
}

INSTANTIATE_TEST_SUITE_P(Shifts, ExactProducts, testing::ValuesIn(kForms), [](const auto &info) {
  return "shift" + std::to_string(info.param.shift);
});

// The rounding forms: floor((S + 2^13) / 2^14) + y is (floor(S / 2^13) + 2y
// + 1) >> 1 for every sum S of up to two products of a centred sample and an
// int16 weight (|S| <= 2^23), each with a luma byte y that runs through 0..255
// as S does (the truncated part is proved above).
TEST(ExactRounding, HalvedTruncationPlusLuma) {
  alignas(16) int16_t q[8], y[8], got[8];
  for (int64_t s0 = -(int64_t{1} << 23); s0 <= int64_t{1} << 23; s0 += 8) {
    for (int k = 0; k < 8; ++k) {
      q[k] = static_cast<int16_t>(Truncated(s0 + k, 13));
      y[k] = static_cast<int16_t>((s0 + k) & 255);
    }
    const __m128i sum =
        _mm_add_epi16(_mm_load_si128(reinterpret_cast<const __m128i *>(q)),
                      x86::TwicePlusOne(_mm_load_si128(reinterpret_cast<const __m128i *>(y))));
    _mm_store_si128(reinterpret_cast<__m128i *>(got), x86::Halve(sum));
    for (int k = 0; k < 8; ++k) ASSERT_EQ(got[k], Rounded(s0 + k, 14) + y[k]) << s0 + k;
  }
}

}  // namespace
