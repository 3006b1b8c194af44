#include "drivers/slot_layouts.hpp"

#include <span>

#include "drivers/driver_tables.hpp"

namespace tqcs::drivers {

const SlotLayout *LayoutOfSlot(int table, int32_t slot) {
  struct Unit {
    std::span<const SlotEntry> (*entries)();
    std::span<const SlotLayout> (*layouts)();
  };
  // By root position, from 1.
  static constexpr Unit kUnits[] = {
      {RGB32Drivers, RGB32Layouts}, {RGB24Drivers, RGB24Layouts},   {YUVADrivers, YUVALayouts},
      {YUV16Drivers, YUV16Layouts}, {YUV422Drivers, YUV422Layouts}, {YUV420Drivers, YUV420Layouts},
      {YUVDrivers, YUVLayouts},
  };
  if (table < 1 || table > static_cast<int>(std::size(kUnits))) return nullptr;
  const Unit &unit = kUnits[table - 1];
  const auto entries = unit.entries();
  for (size_t i = 0; i < entries.size(); ++i)
    if (entries[i].slot == slot) return &unit.layouts()[i];
  return nullptr;
}

}  // namespace tqcs::drivers
