// Linked into every test program that CTest runs at forced processor levels:
// a forced level of 1 to 4 above what this processor has would run
// instructions it lacks, so such a run skips every test and says so.
#include <TQCPUBase.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

class LevelGuard : public ::testing::Environment {
 public:
  void SetUp() override {
    const char *forced = std::getenv("TCB_CPU_LEVEL");
    if (!forced) return;
    const long level = std::strtol(forced, nullptr, 10);
    const uint32_t machine = TCB_GetCPUInsHighDetected();
    if (level >= 1 && level <= 4 && static_cast<uint32_t>(level) > machine) {
      std::printf("level %ld is above this processor's (%u): not run\n", level, machine);
      GTEST_SKIP();
    }
  }
};

[[maybe_unused]] ::testing::Environment *const g_levelGuard =
    ::testing::AddGlobalTestEnvironment(new LevelGuard);

}  // namespace
