// Each source-format unit's slot table, for the table fill at start-up.
#pragma once

#include <span>

#include "base/table_entries.hpp"
#include "drivers/slot_layouts.hpp"

namespace tqcs::drivers {

std::span<const SlotEntry> RGB32Drivers();
std::span<const SlotEntry> RGB24Drivers();
std::span<const SlotEntry> YUVADrivers();
std::span<const SlotEntry> YUV16Drivers();
std::span<const SlotEntry> YUV422Drivers();
std::span<const SlotEntry> YUV420Drivers();
std::span<const SlotEntry> YUVDrivers();

// The layouts of each unit's slot table, index by index with its entries.
std::span<const SlotLayout> RGB32Layouts();
std::span<const SlotLayout> RGB24Layouts();
std::span<const SlotLayout> YUVALayouts();
std::span<const SlotLayout> YUV16Layouts();
std::span<const SlotLayout> YUV422Layouts();
std::span<const SlotLayout> YUV420Layouts();
std::span<const SlotLayout> YUVLayouts();

}  // namespace tqcs::drivers
