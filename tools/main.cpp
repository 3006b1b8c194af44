// tqcs: reports what the library chose on this machine: the processor level,
// the kernel tier installed at that level and whether loading succeeded.
#include <TQCPUBase.h>
#include <TQColorSpace/TQColorSpace.h>

#include <cstdio>

namespace {

const char *TierName(uint32_t level) {
  switch (level) {
    case 1:
      return "SSE2";
    case 2:
    case 3:
      return "SSSE3 (slots 7, 8, 10) over SSE2";
    case 4:
      return "SSE4.1/AVX (slot 144), SSSE3 (slots 7, 8, 10) over SSE2";
    default:
      return "portable";
  }
}

}  // namespace

int main() {
  const uint32_t detected = TCB_GetCPUInsHighDetected();
  const uint32_t level = TCB_GetCPUInsHigh();
  const TCS_APIStu *api = TCS_GetAPIStuPtr();
  const int32_t check = TCS_CheckAPIStu(api);
  std::printf("processor level: %u (detected %u)\n", level, detected);
  std::printf("kernel tier:     %s\n", TierName(level));
  std::printf("load state:      %s (check result %d)\n",
              check == TCS_CHECK_OK ? "loaded" : "incomplete", check);
  return 0;
}
