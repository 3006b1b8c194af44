// The 16-bit product forms of kernels/x86/exact_products.hpp against the
// portable arithmetic they stand for, (x * c + add) >> s with add 0 or
// 2^(s-1), over the whole input range the matrix kernels give them and every
// int16 weight: the centring and scaling of every sample, one product in
// 16-bit lanes, and the sum of two in 32-bit lanes (the shift over every sum
// the range can reach, the madd at every pair of inputs against the extreme
// weights).
#include "kernels/x86/exact_products.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>

namespace {

using namespace tqcs;

int64_t Reference(int64_t product, int shift, bool round) {
  return (product + (round ? int64_t{1} << (shift - 1) : 0)) >> shift;
}

// x over lo..hi at a shift: centred 8-bit chroma (-128..127) at 14, rounding
// (4:4:4) or truncating (the even pixel of 4:2:2); the sum of two centred
// samples (-256..254) at 15, truncating (the odd pixel of 4:2:2). Both
// roundings are proved at both shifts.
struct Form {
  int shift;
  bool round;
  int lo, hi;
  std::string Name() const {
    return "shift" + std::to_string(shift) + (round ? "_rounded" : "_truncated");
  }
  // x * 2^(16 - shift): the scaled input (ExactScaling shows the kernels
  // form exactly this).
  int16_t Scaled(int x) const { return static_cast<int16_t>(x * (1 << (16 - shift))); }
  __m128i Scale(__m128i x) const { return _mm_mullo_epi16(x, _mm_set1_epi16(Scaled(1))); }
  __m128i Product(__m128i scaled, __m128i c) const {
    return round ? x86::ProductHigh<true>(scaled, c) : x86::ProductHigh<false>(scaled, c);
  }
  __m128i Sum(__m128i sum) const {
    return round ? x86::SumHigh<true>(sum) : x86::SumHigh<false>(sum);
  }
  __m128i PairSum(__m128i scaled, __m128i c) const {
    return round ? x86::PairSumHigh<true>(scaled, c) : x86::PairSumHigh<false>(scaled, c);
  }
};

void PrintTo(const Form &f, std::ostream *os) { *os << f.Name(); }

const Form kForms[] = {
    {14, false, -128, 127},
    {14, true, -128, 127},
    {15, false, -256, 255},
    {15, true, -256, 255},
};

__m128i Pair(int32_t lo, int32_t hi) {
  return _mm_set1_epi32(static_cast<int32_t>(
      static_cast<uint16_t>(lo) | static_cast<uint32_t>(static_cast<uint16_t>(hi)) << 16));
}

class ExactProducts : public testing::TestWithParam<Form> {};

// Every byte b in the high half of a lane centres to (b - 128) * 256, and
// scales to (b - 128) * 2^(16 - s) at both shifts; the sum of two scaled
// centred samples is the scaled sum.
TEST(ExactScaling, EveryCentredSampleAndSum) {
  for (int b = 0; b < 256; ++b) {
    const __m128i c = x86::Centred256(_mm_set1_epi16(static_cast<int16_t>(b << 8)));
    ASSERT_EQ(static_cast<int16_t>(_mm_cvtsi128_si32(c)), (b - 128) * 256) << b;
    ASSERT_EQ(static_cast<int16_t>(_mm_cvtsi128_si32(x86::ScaleFrom256<14>(c))), (b - 128) * 4);
    for (int n = 0; n < 256; ++n) {
      const __m128i d = x86::Centred256(_mm_set1_epi16(static_cast<int16_t>(n << 8)));
      const __m128i sum = _mm_add_epi16(x86::ScaleFrom256<15>(c), x86::ScaleFrom256<15>(d));
      ASSERT_EQ(static_cast<int16_t>(_mm_cvtsi128_si32(sum)), (b - 128 + n - 128) * 2);
    }
  }
}

// Every x of the range against every int16 weight, eight weights a register.
TEST_P(ExactProducts, OneProductInSixteenBitLanes) {
  const Form &f = GetParam();
  alignas(16) int16_t got[8], weights[8];
  for (int x = f.lo; x <= f.hi; ++x) {
    const __m128i scaled = _mm_set1_epi16(f.Scaled(x));
    for (int32_t c0 = INT16_MIN; c0 <= INT16_MAX; c0 += 8) {
      for (int k = 0; k < 8; ++k) weights[k] = static_cast<int16_t>(c0 + k);
      const __m128i c = _mm_load_si128(reinterpret_cast<const __m128i *>(weights));
      _mm_store_si128(reinterpret_cast<__m128i *>(got), f.Product(scaled, c));
      for (int k = 0; k < 8; ++k) {
        ASSERT_EQ(got[k], Reference(int64_t{x} * weights[k], f.shift, f.round))
            << "x " << x << ", c " << weights[k];
      }
    }
  }
}

// The shift of a two-product sum: every sum s with |s| <= 2 * 2^15 * max|x|
// (all that two int16 weights can reach), as the madd gives it (s scaled).
TEST_P(ExactProducts, ShiftOfEverySumOfTwoProducts) {
  const Form &f = GetParam();
  const int scale = 16 - f.shift;
  const int64_t reach = 2 * int64_t{32768} * -f.lo;
  alignas(16) int32_t got[4];
  for (int64_t s0 = -reach; s0 <= reach; s0 += 4) {
    const auto s = [&](int k) { return static_cast<int32_t>((s0 + k) * (int64_t{1} << scale)); };
    _mm_store_si128(reinterpret_cast<__m128i *>(got),
                    f.Sum(_mm_setr_epi32(s(0), s(1), s(2), s(3))));
    for (int k = 0; k < 4; ++k) ASSERT_EQ(got[k], Reference(s0 + k, f.shift, f.round)) << s0 + k;
  }
}

// The whole two-product form at every pair of inputs of the range, against
// the weights where the sum is largest in magnitude and a spread of others.
TEST_P(ExactProducts, SumOfTwoProductsInThirtyTwoBitLanes) {
  const Form &f = GetParam();
  const int16_t weights[] = {INT16_MIN, INT16_MIN + 1, -12345, -1, 0, 1, 9876, INT16_MAX};
  for (int16_t c0 : weights) {
    for (int16_t c1 : weights) {
      const __m128i c = Pair(c0, c1);
      for (int x0 = f.lo; x0 <= f.hi; ++x0) {
        for (int x1 = f.lo; x1 <= f.hi; ++x1) {
          const int32_t got = _mm_cvtsi128_si32(f.PairSum(f.Scale(Pair(x0, x1)), c));
          ASSERT_EQ(got, Reference(int64_t{x0} * c0 + int64_t{x1} * c1, f.shift, f.round))
              << "x " << x0 << ", " << x1 << ", c " << c0 << ", " << c1;
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Forms, ExactProducts, testing::ValuesIn(kForms),
                         [](const auto &info) { return info.param.Name(); });

}  // namespace
