#include "support/kernel_shapes.hpp"

#include "base/table_entries.hpp"

namespace tqcs::test {

SlotSignature SignatureOf(int32_t slot) {
  switch (slot) {
#define TQCS_SIGNATURE_CASE(n, name, ret, params)    \
  case n: {                                          \
    using C = detail::Caller<SlotFn<K::name>::Type>; \
    return {C::Written(), C::Pitched(), C::kCoefs};  \
  }
    TCS_KERNEL_SLOTS(TQCS_SIGNATURE_CASE)
#undef TQCS_SIGNATURE_CASE
  }
  return {};
}

const char *SlotName(int32_t slot) {
#define TQCS_NAME_ENTRY(n, name, ret, params) #name,
  static const char *const names[] = {TCS_KERNEL_SLOTS(TQCS_NAME_ENTRY)};
#undef TQCS_NAME_ENTRY
  return slot >= 0 && slot < TCS_KERNEL_SLOT_COUNT ? names[slot] : "?";
}

void CallSlot(const TCS_KernelTable &table, int32_t slot, const CallArgs &args) {
  switch (slot) {
#define TQCS_CALL_CASE(n, name, ret, params)                                \
  case n:                                                                   \
    detail::Caller<SlotFn<K::name>::Type>::Call(                            \
        reinterpret_cast<SlotFn<K::name>::Type>(LoadSlot(table, n)), args); \
    return;
    TCS_KERNEL_SLOTS(TQCS_CALL_CASE)
#undef TQCS_CALL_CASE
  }
}

}  // namespace tqcs::test
