// Start-up state shared with the rest of the library.
#pragma once

#include <TQMemProc.h>

#include "kernels/colorspace.hpp"

namespace tqcs {

// TQMemProc's root, stored by the entry point after a successful build.
extern TMP_APIStu *g_pMemProcRoot;

// The kernel object the drivers call through; chosen once at start-up.
extern ColorSpace *g_pColorSpaceImpl;

}  // namespace tqcs
