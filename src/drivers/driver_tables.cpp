#include "drivers/driver_tables.hpp"

namespace tqcs {

void FillDriverTables(StaticTables &t) {
  const SlotEntry stubs[] = {{15, Erase(&EmptyStub)}, {16, Erase(&EmptyStub)}, {17, Erase(&EmptyStub)}};
  const SlotEntry yuvaStubs[] = {{12, Erase(&EmptyStub)}, {13, Erase(&EmptyStub)}, {14, Erase(&EmptyStub)}};
  FillNullSlots(t.rgb32, stubs);
  FillNullSlots(t.yuva, yuvaStubs);
  FillNullSlots(t.yuv422, stubs);
}

}  // namespace tqcs
