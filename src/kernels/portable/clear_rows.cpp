// Portable zero fills; the count unit differs per slot.
#include <cstring>

#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs::portable {
namespace {

template <size_t kUnit>
void ClearUnits(uint8_t *dst, int32_t count) {
  if (count < 1) return;
  std::memset(dst, 0, kUnit * static_cast<size_t>(count));
}

}  // namespace

void Clear_Row_A(uint8_t *dst, const uint8_t *, int32_t count) { ClearUnits<1>(dst, count); }
void Clear_Row_B(uint8_t *dst, const uint8_t *, int32_t count) { ClearUnits<2>(dst, count); }
void Clear_Row_C(uint8_t *dst, const uint8_t *, int32_t count) { ClearUnits<4>(dst, count); }
void Clear_Row_D(uint8_t *dst, const uint8_t *, int32_t count) { ClearUnits<3>(dst, count); }
void Clear_Row_E(uint8_t *dst, const uint8_t *, int32_t count) { ClearUnits<8>(dst, count); }

}  // namespace tqcs::portable
