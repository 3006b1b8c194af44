// The fill of sub-tables 0 to 7 (the general video operations and every
// driver, each unit's slot table stored into its typed sub-table) and of the
// frame operations in the kernel table.
#include "drivers/driver_tables.hpp"
#include "frame/chroma_planes.hpp"
#include "kernels/kernel_slots.hpp"
#include "startup/api.hpp"
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

void FillWholePlaneKernelSlots(TCS_KernelTable &table) {
  const SlotEntry wholePlane[] = {
      {static_cast<int32_t>(K::YUV420_2_YUV422_UV_Frame), Erase(&frame::YUV420_2_YUV422_UV_Frame)},
      {static_cast<int32_t>(K::YUV420_16_2_YUV422_16_UV_Frame),
       Erase(&frame::YUV420_16_2_YUV422_16_UV_Frame)},
      {static_cast<int32_t>(K::YUV422_2_YUV420_UV_Frame), Erase(&frame::YUV422_2_YUV420_UV_Frame)},
      {static_cast<int32_t>(K::YUV422_16_2_YUV420_16_UV_Frame),
       Erase(&frame::YUV422_16_2_YUV420_16_UV_Frame)},
  };
  FillNullSlots(table, wholePlane);
}

}  // namespace tqcs
