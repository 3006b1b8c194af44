#include "drivers/driver_tables.hpp"

#include "video/general.hpp"

namespace tqcs {

void FillDriverTables(StaticTables &t) {
  // The slots that offer no operation hold the one shared empty function.
  const SlotEntry stubs[] = {
      {15, Erase(&EmptyStub)}, {16, Erase(&EmptyStub)}, {17, Erase(&EmptyStub)}};
  const SlotEntry yuvaStubs[] = {
      {12, Erase(&EmptyStub)}, {13, Erase(&EmptyStub)}, {14, Erase(&EmptyStub)}};
  FillNullSlots(t.rgb32, stubs);
  FillNullSlots(t.yuva, yuvaStubs);
  FillNullSlots(t.yuv422, stubs);

  FillNullSlots(t.general, video::GeneralOperations());
  FillNullSlots(t.rgb32, drivers::RGB32Drivers());
  FillNullSlots(t.rgb24, drivers::RGB24Drivers());
  FillNullSlots(t.yuva, drivers::YUVADrivers());
  FillNullSlots(t.yuv16, drivers::YUV16Drivers());
  FillNullSlots(t.yuv422, drivers::YUV422Drivers());
  FillNullSlots(t.yuv420, drivers::YUV420Drivers());
  FillNullSlots(t.yuv, drivers::YUVDrivers());
}

}  // namespace tqcs
