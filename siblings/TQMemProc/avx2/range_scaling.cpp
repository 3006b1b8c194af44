// The AVX2 tier's range scaling (compiled with -mavx2 only): the SSE2 tier's
// exact high-half form over 32 bytes; the unpacks and the pack work within
// each 128-bit lane, so the bytes stay in order.
#include <immintrin.h>

#include "row_slots.hpp"
#include "x86/row.hpp"

namespace tqmp::avx2 {
namespace {

struct Vec256 {
  using T = __m256i;
  static constexpr int kBytes = 32;
  static T Splat(int16_t c) { return _mm256_set1_epi16(c); }
  static T Cycle(const int16_t *c) {
    return _mm256_broadcastq_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(c)));
  }
  static T Raise16(T offset) { return _mm256_adds_epi16(offset, _mm256_set1_epi16(16)); }
  static void Scale(uint8_t *d, const uint8_t *s, T gain, T offset) {
    const __m256i in = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(s));
    const __m256i zero = _mm256_setzero_si256();
    const auto half = [&](__m256i words) {
      return _mm256_srai_epi16(
          _mm256_adds_epi16(_mm256_mulhi_epi16(_mm256_slli_epi16(words, 7), gain), offset), 5);
    };
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(d),
                        _mm256_packus_epi16(half(_mm256_unpacklo_epi8(in, zero)),
                                            half(_mm256_unpackhi_epi8(in, zero))));
  }
};

}  // namespace

TQMP_SCALING_ROUTINES(Vec256)

}  // namespace tqmp::avx2
