#pragma once

#include <span>

#include "core/api.hpp"

namespace tqcs {

// Stores every driver of sub-tables 0 to 7, the empty stub in the slots that
// offer no operation.
void FillDriverTables(StaticTables &tables);

// Each source-format unit's slot table.
namespace drivers {
std::span<const SlotEntry> RGB32Drivers();
std::span<const SlotEntry> RGB24Drivers();
std::span<const SlotEntry> YUVADrivers();
std::span<const SlotEntry> YUV16Drivers();
std::span<const SlotEntry> YUV422Drivers();
std::span<const SlotEntry> YUV420Drivers();
std::span<const SlotEntry> YUVDrivers();
}  // namespace drivers

}  // namespace tqcs
