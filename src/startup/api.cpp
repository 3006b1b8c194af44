#include "startup/api.hpp"

#include <TQCPUBase.h>

#include <cstddef>

extern "C" {
TCS_APIStu *g_pColorSpaceAPI = nullptr;

TCS_APIStu *TCS_GetAPIStuPtr(void) { return g_pColorSpaceAPI; }

int32_t TCS_CheckAPIStu(const TCS_APIStu *api) {
  if (!api || !api->pGeneral || !api->pRGB32 || !api->pRGB24 || !api->pYUVA || !api->pYUV16 ||
      !api->pYUV422 || !api->pYUV420 || !api->pYUV)
    return TCS_CHECK_NULL_TABLE;
  struct Run {
    const void *table;
    int32_t count;
  };
  // Sub-table 5 is tested twice; the repetition is part of the sequence.
  const Run runs[] = {
      {api->pGeneral, TCS_GENERAL_SLOT_COUNT}, {api->pRGB32, TCS_RGB32_SLOT_COUNT},
      {api->pRGB24, TCS_RGB24_SLOT_COUNT},     {api->pYUVA, TCS_YUVA_SLOT_COUNT},
      {api->pYUV16, TCS_YUV16_SLOT_COUNT},     {api->pYUV422, TCS_YUV422_SLOT_COUNT},
      {api->pYUV420, TCS_YUV420_SLOT_COUNT},   {api->pYUV, TCS_YUV_SLOT_COUNT},
      {api->pYUV422, TCS_YUV422_SLOT_COUNT},   {api->pKernel, TCS_KERNEL_SLOT_COUNT}};
  for (const Run &run : runs) {
    const auto hasNull = TCB_HasNullPointer(static_cast<void *const *>(run.table), run.count);
    if (static_cast<uint8_t>(hasNull)) return TCS_CHECK_NULL_SLOT;
  }
  return TCS_CHECK_OK;
}
}

namespace tqcs {

void EmptyStub() {}

StaticTables &Tables() {
  static StaticTables tables;
  return tables;
}

}  // namespace tqcs
