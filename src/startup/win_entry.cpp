// The Windows loader's notifications, passed to the shared entry point. The
// notification codes are the entry point's reasons, so they go through as
// they are; a failed process attach returns FALSE and the loader refuses the
// module (LoadLibrary returns null, or a process linked against the library
// does not start).
#include <TQColorSpace/TQColorSpace.h>
#include <windows.h>

static_assert(DLL_PROCESS_DETACH == TCS_REASON_PROCESS_DETACH);
static_assert(DLL_PROCESS_ATTACH == TCS_REASON_PROCESS_ATTACH);
static_assert(DLL_THREAD_ATTACH == TCS_REASON_THREAD_ATTACH);
static_assert(DLL_THREAD_DETACH == TCS_REASON_THREAD_DETACH);

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved) {
  return TCS_DllMain(module, reason, reserved) ? TRUE : FALSE;
}
