// Filling the kernel table: fixed slots, then one list of (slot, routine) per
// tier, each stored only into slots that are still null.
#pragma once

#include <cstdint>
#include <span>

#include "base/table_entries.hpp"

namespace tqcs {

// The kernel tiers, most capable first. Named `sse41`, `ssse3`, `sse2` and
// `portable` everywhere: folders, namespaces, tool output.
enum class Tier { SSE41, SSSE3, SSE2, Portable };
const char *TierName(Tier tier);

// The tiers that a processor level installs, most capable first. Levels above
// 4 are unknown to this library and get the portable tier only.
std::span<const Tier> TiersForLevel(uint32_t level);

// One tier's list of slots and routines, in ascending slot order.
std::span<const SlotEntry> TierEntries(Tier tier);

// Stores one tier into the null slots of the table.
void FillTier(Tier tier, TCS_KernelTable &table);

// The tier part of start-up as a pure function of the level (slots 3-8,
// 10-132 and 137-160); tests build one table per level in one process.
void FillKernelTable(uint32_t level, TCS_KernelTable &table);

// The single-implementation row slots: 0 to 2, and slot 9 copied from
// TQMemProc's sub-table 6 slot 11. (Slots 133 to 136, the whole-plane chroma
// routines, are frame operations; start-up stores them with the drivers.)
void FillFixedKernelSlots(TCS_KernelTable &table);

// True for the 153 slots that have tiered implementations.
constexpr bool IsTieredSlot(int32_t slot) {
  return (slot >= 3 && slot <= 8) || (slot >= 10 && slot <= 132) || (slot >= 137 && slot <= 160);
}

}  // namespace tqcs
