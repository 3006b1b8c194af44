#include "kernels/kernel_table.hpp"

#include <TQMemProc.h>

#include "kernels/kernel_slots.hpp"

namespace tqcs {
namespace {

constexpr Tier kLevel4[] = {Tier::SSE41, Tier::SSSE3, Tier::SSE2, Tier::Portable};
constexpr Tier kLevel2[] = {Tier::SSSE3, Tier::SSE2, Tier::Portable};
constexpr Tier kLevel1[] = {Tier::SSE2, Tier::Portable};
constexpr Tier kLevel0[] = {Tier::Portable};

}  // namespace

std::span<const Tier> TiersForLevel(uint32_t level) {
  switch (level) {
    case 4:
      return kLevel4;
    case 2:
    case 3:
      return kLevel2;
    case 1:
      return kLevel1;
    default:
      return kLevel0;
  }
}

void FillTier(Tier tier, TCS_KernelTable &table) { FillNullSlots(table, TierEntries(tier)); }

void FillKernelTable(uint32_t level, TCS_KernelTable &table) {
  for (Tier tier : TiersForLevel(level)) FillTier(tier, table);
}

void FillFixedKernelSlots(TCS_KernelTable &table) {
  const SlotEntry fixed[] = {
      {static_cast<int32_t>(K::GetFormatBitsPerPixel), Erase(&portable::GetFormatBitsPerPixel)},
      {static_cast<int32_t>(K::GetFormatClass), Erase(&portable::GetFormatClass)},
      {static_cast<int32_t>(K::ConvertColorValue), Erase(&portable::ConvertColorValue)},
      // Taken from TQMemProc as it stands; its pointers are not checked here.
      {static_cast<int32_t>(K::RGB32_2_RGB24_Row),
       Erase(g_pMemProcAPI->pPixel->TMP_RGB32_2_RGB24_Row)},
  };
  FillNullSlots(table, fixed);
}

}  // namespace tqcs
