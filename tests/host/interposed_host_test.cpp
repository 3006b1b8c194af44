// A host that links the shared library and exports its own TQCPUBase
// functions: the library must call the host's definitions, which proves the
// siblings are bound as ordinary, interposable dynamic symbols.
#include <TQCPUBase.h>
#include <TQColorSpace/TQColorSpace.h>
#include <TQMemProc.h>
#include <gtest/gtest.h>

#include <cstdarg>
#include <string>
#include <vector>

namespace {
struct HostRecord {
  int32_t level;
  std::u16string function;
  std::u16string message;
};
// Outlives every static destructor: unloading logs after main has returned.
std::vector<HostRecord> &HostLog() {
  static auto *log = new std::vector<HostRecord>;
  return *log;
}
int g_levelCalls = 0;

// What start-up had done when it asked for the processor level, and when it
// asked TQMemProc for its root.
struct Snapshot {
  bool taken = false;
  bool rootPublished = false, coefficientsDerived = false, fixedKernelSlots = false;
  bool driversStored = false, wholePlaneSlots = false, tiersFilled = false, checkPassed = false;
};
Snapshot g_atLevelQuery, g_atMemProcQuery;

Snapshot Take() {
  Snapshot s;
  s.taken = true;
  const TCS_APIStu *api = g_pColorSpaceAPI;
  s.rootPublished = api != nullptr && api->pKernel != nullptr;
  if (!s.rootPublished) return s;
  s.coefficientsDerived = g_sR_V_HD[0] == 25800;
  s.fixedKernelSlots = api->pKernel->GetFormatBitsPerPixel && api->pKernel->RGB32_2_RGB24_Row;
  s.driversStored = api->pRGB24->TCS_RGB24_SwapRB_Frame && api->pGeneral->TCS_ColorConvFrame;
  s.wholePlaneSlots = api->pKernel->YUV420_2_YUV422_UV_Frame != nullptr;
  s.tiersFilled = api->pKernel->YUYV_2_YUVA_Row && api->pKernel->YUV422_16_2_UYVY_Row;
  s.checkPassed = TCS_CheckAPIStu(api) == TCS_CHECK_OK;
  return s;
}
}  // namespace

extern "C" {
__attribute__((visibility("default"))) uint32_t TCB_GetCPUInsHigh(void) {
  ++g_levelCalls;
  g_atLevelQuery = Take();
  return 0;
}
__attribute__((visibility("default"))) TMP_APIStu *TMP_GetAPIStuPtr(void) {
  g_atMemProcQuery = Take();
  return g_pMemProcAPI;
}
__attribute__((visibility("default"))) void TCB_WriteLog(int32_t level, const char16_t *,
                                                         const char16_t *function,
                                                         const char16_t *format, ...) {
  va_list args;
  va_start(args, format);
  const char16_t *message = va_arg(args, const char16_t *);
  va_end(args);
  HostLog().push_back({level, function, message});
}
}

TEST(InterposedHost, LoadRanThroughTheHostsSiblingFunctions) {
  // The loader ran process attach before main: it asked the host for the level
  // and wrote its one load record through the host's log.
  EXPECT_EQ(g_levelCalls, 1);
  ASSERT_FALSE(HostLog().empty());
  EXPECT_EQ(HostLog().front().function, u"DllMain()");
  const bool complete = TCS_CheckAPIStu(TCS_GetAPIStuPtr()) == TCS_CHECK_OK;
  EXPECT_EQ(HostLog().front().message,
            complete ? std::u16string(u"DLL Loading Succeed") : u"DLL Loading Failed");
  EXPECT_EQ(HostLog().front().level, complete ? 0 : 3);
}

TEST(InterposedHost, StartUpRunsInItsOrder) {
  // The guard and the root come first; coefficients, fixed kernel slots,
  // drivers and the whole-plane routines before the level is read; the tiers
  // after it; TQMemProc's root last, once the check has passed.
  ASSERT_TRUE(g_atLevelQuery.taken);
  EXPECT_TRUE(g_atLevelQuery.rootPublished);
  EXPECT_TRUE(g_atLevelQuery.coefficientsDerived);
  EXPECT_TRUE(g_atLevelQuery.fixedKernelSlots);
  EXPECT_TRUE(g_atLevelQuery.driversStored);
  EXPECT_TRUE(g_atLevelQuery.wholePlaneSlots);
  EXPECT_FALSE(g_atLevelQuery.tiersFilled);
  EXPECT_FALSE(g_atLevelQuery.checkPassed);
  ASSERT_TRUE(g_atMemProcQuery.taken);
  EXPECT_TRUE(g_atMemProcQuery.tiersFilled);
  EXPECT_TRUE(g_atMemProcQuery.checkPassed);
}

TEST(InterposedHost, RootPointerIsPublishedAndStable) {
  ASSERT_NE(TCS_GetAPIStuPtr(), nullptr);
  EXPECT_EQ(TCS_GetAPIStuPtr(), g_pColorSpaceAPI);
  // A second attach does not rebuild anything.
  TCS_APIStu *before = TCS_GetAPIStuPtr();
  const int calls = g_levelCalls;
  TCS_DllMain(nullptr, TCS_REASON_PROCESS_ATTACH, nullptr);
  EXPECT_EQ(TCS_GetAPIStuPtr(), before);
  EXPECT_EQ(g_levelCalls, calls);
}
