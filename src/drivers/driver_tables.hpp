// Each source-format unit's slot table, for the table fill at start-up.
#pragma once

#include <span>

#include "base/table_entries.hpp"

namespace tqcs::drivers {

std::span<const SlotEntry> RGB32Drivers();
std::span<const SlotEntry> RGB24Drivers();
std::span<const SlotEntry> YUVADrivers();
std::span<const SlotEntry> YUV16Drivers();
std::span<const SlotEntry> YUV422Drivers();
std::span<const SlotEntry> YUV420Drivers();
std::span<const SlotEntry> YUVDrivers();

}  // namespace tqcs::drivers
