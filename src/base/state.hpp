// The start-up state that every layer reads: the kernel table in use,
// TQMemProc's root and the kernel object. Start-up writes them; nothing below
// it does.
#pragma once

#include <TQColorSpace/TQColorSpace.h>
#include <TQMemProc.h>

namespace tqcs {

class ColorSpace;
struct ProgressiveChroma;

// The kernel table in use, read afresh by every driver call.
inline const TCS_KernelTable &Kernels() { return *g_pColorSpaceAPI->pKernel; }

// TQMemProc's root, stored by the entry point after a successful build.
extern TMP_APIStu *g_pMemProcRoot;

// The kernel object the drivers call through; chosen once at start-up.
extern ColorSpace *g_pColorSpaceImpl;

// The frame-sited 4:2:0 chroma routines (kernels/chroma_progressive.hpp);
// chosen once at start-up like the kernel object.
extern const ProgressiveChroma *g_pProgressiveChroma;

}  // namespace tqcs
