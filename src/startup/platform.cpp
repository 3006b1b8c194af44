#include "startup/platform.hpp"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace tqcs {

void ReleaseModule(void *handle) {
  if (!handle) return;
#if defined(_WIN32)
  FreeLibrary(static_cast<HMODULE>(handle));
#else
  dlclose(handle);
#endif
}

}  // namespace tqcs
