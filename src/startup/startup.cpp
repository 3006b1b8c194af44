// Start-up: the library's tables built and filled once, the kernel object
// chosen, and the entry point that the loader's notifications reach.
#include <TQCPUBase.h>

#include <new>

#include "base/coefficients.hpp"
#include "base/log.hpp"
#include "base/state.hpp"
#include "kernels/chroma_progressive.hpp"
#include "kernels/colorspace.hpp"
#include "kernels/kernel_table.hpp"
#include "startup/api.hpp"
#include "startup/platform.hpp"

namespace tqcs {

TMP_APIStu *g_pMemProcRoot = nullptr;
ColorSpace *g_pColorSpaceImpl = nullptr;
const ProgressiveChroma *g_pProgressiveChroma = nullptr;

namespace {

// A module handle released at process detach. Nothing ever stores one, so the
// release below always sees null; it is kept as the detach path's contract.
void *g_hReleaseModule = nullptr;

uint8_t g_kernelObjectGuard = 0;
enum : uint8_t { kSSE2Built = 1, kCBuilt = 2 };

template <class Object, uint8_t kBit>
ColorSpace *KernelObject() {
  alignas(Object) static unsigned char storage[sizeof(Object)];
  if (!(g_kernelObjectGuard & kBit)) {
    new (storage) Object();
    g_kernelObjectGuard |= kBit;
  }
  return std::launder(reinterpret_cast<Object *>(storage));
}

const log::Site kDllMain{log::unit::kColorSpace, u"DllMain()"};

}  // namespace

ColorSpace *ColorSpaceSSE2Instance() { return KernelObject<ColorSpaceSSE2, kSSE2Built>(); }
ColorSpace *ColorSpaceCInstance() { return KernelObject<ColorSpaceC, kCBuilt>(); }
uint8_t KernelObjectGuard() { return g_kernelObjectGuard; }

bool BuildColorSpaceAPI() {
  if (g_pColorSpaceAPI) return true;

  // The guard is set before anything is filled.
  StaticTables &t = Tables();
  g_pColorSpaceAPI = &t.root;
  t.root = {&t.general, &t.rgb32,  &t.rgb24, &t.yuva,  &t.yuv16,
            &t.yuv422,  &t.yuv420, &t.yuv,   &t.kernel};

  DeriveCoefficientTables();
  FillFixedKernelSlots(t.kernel);
  FillDriverTables(t);
  FillWholePlaneKernelSlots(t.kernel);

  const uint32_t level = TCB_GetCPUInsHigh();
  for (Tier tier : TiersForLevel(level)) {
    if (tier == Tier::SSE2 && !g_pColorSpaceImpl) {
      g_pColorSpaceImpl = ColorSpaceSSE2Instance();
      g_pProgressiveChroma = &kProgressiveChromaSSE2;
    }
    if (tier == Tier::Portable && !g_pColorSpaceImpl) {
      g_pColorSpaceImpl = ColorSpaceCInstance();
      g_pProgressiveChroma = &kProgressiveChromaPortable;
    }
    FillTier(tier, t.kernel);
  }
  return TCS_CheckAPIStu(&t.root) == TCS_CHECK_OK;
}

void ResetForTesting() {
  g_pColorSpaceAPI = nullptr;
  g_pColorSpaceImpl = nullptr;
  g_pProgressiveChroma = nullptr;
  g_pMemProcRoot = nullptr;
  Tables() = StaticTables{};
}

}  // namespace tqcs

extern "C" int32_t TCS_DllMain(void *, uint32_t reason, void *) {
  using namespace tqcs;
  switch (reason) {
    case TCS_REASON_PROCESS_ATTACH:
      if (!BuildColorSpaceAPI()) {
        log::Write(log::kFailure, kDllMain, log::msg::kLoadFailed);
        return 0;
      }
      g_pMemProcRoot = TMP_GetAPIStuPtr();
      if (!g_pMemProcRoot) {
        log::Write(log::kFailure, kDllMain, log::msg::kLoadFailed);
        return 0;
      }
      log::Write(log::kInfo, kDllMain, log::msg::kLoadOk);
      return 1;
    case TCS_REASON_PROCESS_DETACH:
      ReleaseModule(g_hReleaseModule);
      g_hReleaseModule = nullptr;
      log::Write(log::kInfo, kDllMain, log::msg::kUnloadOk);
      return 1;
    default:
      return 1;
  }
}
