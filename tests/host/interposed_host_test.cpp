// A host that links the shared library and exports its own TQCPUBase
// functions: the library must call the host's definitions, which proves the
// siblings are bound as ordinary, interposable dynamic symbols.
#include <TQCPUBase.h>
#include <TQColorSpace/TQColorSpace.h>
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
}  // namespace

extern "C" {
__attribute__((visibility("default"))) uint32_t TCB_GetCPUInsHigh(void) {
  ++g_levelCalls;
  return 0;
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
