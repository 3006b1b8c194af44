// SSE2 zero fills; the count unit differs per slot.
#include <emmintrin.h>

#include <cstddef>

#include "kernels/kernel_slots.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using Index = std::ptrdiff_t;
using x86::Load;
using x86::Store;

// Sixteen units of kUnit bytes (kUnit 16-byte stores) per step, the rest to
// the portable routine kRest.
template <int kUnit, void (*kRest)(uint8_t *, const uint8_t *, int32_t)>
void ClearRow(uint8_t *dst, const uint8_t *unused, int32_t count) {
  const __m128i zero = _mm_setzero_si128();
  Index i = 0;
  for (; i + 16 <= count; i += 16)
    for (int k = 0; k < kUnit; ++k) Store(dst + kUnit * i + 16 * k, zero);
  kRest(dst + kUnit * i, unused, count - static_cast<int32_t>(i));
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

void sse2::Clear_Row_A(uint8_t *dst, const uint8_t *unused, int32_t count) {
  ClearRow<1, &portable::Clear_Row_A>(dst, unused, count);
}
void sse2::Clear_Row_B(uint8_t *dst, const uint8_t *unused, int32_t count) {
  ClearRow<2, &portable::Clear_Row_B>(dst, unused, count);
}
void sse2::Clear_Row_C(uint8_t *dst, const uint8_t *unused, int32_t count) {
  ClearRow<4, &portable::Clear_Row_C>(dst, unused, count);
}
void sse2::Clear_Row_D(uint8_t *dst, const uint8_t *unused, int32_t count) {
  ClearRow<3, &portable::Clear_Row_D>(dst, unused, count);
}
void sse2::Clear_Row_E(uint8_t *dst, const uint8_t *unused, int32_t count) {
  ClearRow<8, &portable::Clear_Row_E>(dst, unused, count);
}

}  // namespace tqcs
