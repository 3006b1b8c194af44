// SSE2 zero fills; the count unit differs per slot.
#include <emmintrin.h>

#include <cstddef>

#include "kernels/kernel_slots.hpp"
#include "kernels/x86/in_blocks.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using x86::Store;

// Sixteen units of kUnit bytes (kUnit 16-byte stores) per block.
template <K kSlot, int kUnit>
inline void ClearRow(uint8_t *dst, const uint8_t *unused, int32_t count) {
  x86::InBlocks<kSlot, 16>(
      [](uint8_t *d, const uint8_t *) {
        for (int k = 0; k < kUnit; ++k) Store(d + 16 * k, _mm_setzero_si128());
      },
      dst, unused, count);
}

}  // namespace
}  // namespace tqcs::sse2

namespace tqcs {

void sse2::Clear_Row_A(uint8_t *dst, const uint8_t *unused, int32_t count) {
  ClearRow<K::Clear_Row_A, 1>(dst, unused, count);
}
void sse2::Clear_Row_B(uint8_t *dst, const uint8_t *unused, int32_t count) {
  ClearRow<K::Clear_Row_B, 2>(dst, unused, count);
}
void sse2::Clear_Row_C(uint8_t *dst, const uint8_t *unused, int32_t count) {
  ClearRow<K::Clear_Row_C, 4>(dst, unused, count);
}
void sse2::Clear_Row_D(uint8_t *dst, const uint8_t *unused, int32_t count) {
  ClearRow<K::Clear_Row_D, 3>(dst, unused, count);
}
void sse2::Clear_Row_E(uint8_t *dst, const uint8_t *unused, int32_t count) {
  ClearRow<K::Clear_Row_E, 8>(dst, unused, count);
}

}  // namespace tqcs
