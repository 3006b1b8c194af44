// The loader's notifications: loading the library is process attach,
// unloading is process detach. An ELF load cannot be refused, so a failed
// attach leaves the library loaded with the state start-up left; the entry
// point has logged "DLL Loading Failed" and TCS_CheckAPIStu reports the gap.
#include <TQColorSpace/TQColorSpace.h>

namespace {

__attribute__((constructor)) void OnLoad() {
  TCS_DllMain(nullptr, TCS_REASON_PROCESS_ATTACH, nullptr);
}

__attribute__((destructor)) void OnUnload() {
  TCS_DllMain(nullptr, TCS_REASON_PROCESS_DETACH, nullptr);
}

}  // namespace
