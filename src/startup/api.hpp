// The root API structure and its static sub-tables, and start-up, which builds
// and fills them: the roof of the library, the only part that sees the
// drivers, the general operations and the kernels together.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include "base/table_entries.hpp"

namespace tqcs {

// The library's static root structure and sub-tables.
struct StaticTables {
  TCS_APIStu root;
  TCS_GeneralTable general;
  TCS_RGB32Table rgb32;
  TCS_RGB24Table rgb24;
  TCS_YUVATable yuva;
  TCS_YUV16Table yuv16;
  TCS_YUV422Table yuv422;
  TCS_YUV420Table yuv420;
  TCS_YUVTable yuv;
  TCS_KernelTable kernel;
};
StaticTables &Tables();

// Start-up: builds the structure once; true when it passes the check.
bool BuildColorSpaceAPI();

// Test seam: forgets the built structure so start-up can run again.
void ResetForTesting();

// Stores every driver of sub-tables 0 to 7, the empty stub in the slots that
// offer no operation.
void FillDriverTables(StaticTables &tables);

// Stores the whole-plane chroma routines (frame operations) into the kernel
// table's slots 133 to 136 that are still null.
void FillWholePlaneKernelSlots(TCS_KernelTable &table);

}  // namespace tqcs
