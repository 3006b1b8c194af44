// The sibling stand-ins: TQCPUBase's level, null test and log; TQMemProc's
// copies, fills, extraction and scaling arithmetic.
#include <TQCPUBase.h>
#include <TQMemProc.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace {

class EnvVar {
 public:
  EnvVar(const char *name, const char *value) : name_(name) {
    if (const char *old = std::getenv(name)) old_ = old, had_ = true;
    setenv(name, value, 1);
  }
  ~EnvVar() { had_ ? (void)setenv(name_, old_.c_str(), 1) : (void)unsetenv(name_); }

 private:
  const char *name_;
  std::string old_;
  bool had_ = false;
};

TEST(TQCPUBase, LevelOverrideAcceptsAnyNumber) {
  for (const char *v : {"0", "1", "4", "5", "9"}) {
    EnvVar env("TCB_CPU_LEVEL", v);
    EXPECT_EQ(TCB_GetCPUInsHigh(), static_cast<uint32_t>(std::atoi(v)));
  }
  EnvVar garbage("TCB_CPU_LEVEL", "fast");
  EXPECT_EQ(TCB_GetCPUInsHigh(), TCB_GetCPUInsHighDetected());
  EXPECT_LE(TCB_GetCPUInsHighDetected(), 4u);
}

TEST(TQCPUBase, NullPointerTestLooksAtTheLeadingRunOnly) {
  void *run[4] = {&run, &run, nullptr, &run};
  EXPECT_FALSE(TCB_HasNullPointer(run, 2));
  EXPECT_TRUE(TCB_HasNullPointer(run, 3));
  EXPECT_FALSE(TCB_HasNullPointer(run, 0));
  EXPECT_TRUE(TCB_HasNullPointer(nullptr, 1));
}

TEST(TQCPUBase, LogWritesOneUtf8LineAtOrAboveTheThreshold) {
  EnvVar threshold("TCB_LOG_LEVEL", "1");
  testing::internal::CaptureStderr();
  TCB_WriteLog(0, u"Unit", u"Op()", u"%s", u"hidden");
  TCB_WriteLog(3, u"TQVideoColorAPI", u"TCS_X_Frame()", u"%s", u"Out of Memory \u00e9");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "[TQ 3] TQVideoColorAPI TCS_X_Frame(): Out of Memory \xc3\xa9\n");
}

TEST(TQMemProc, PlaneCopyHonoursFlip) {
  const std::vector<uint8_t> src = {1, 2, 9, 3, 4, 9, 5, 6, 9};  // 3 rows of 2, pitch 3
  std::vector<uint8_t> dst(6, 0);
  g_pMemProcAPI->pMem->TMP_PlaneCopy(dst.data(), 2, src.data(), 3, 2, 3, 1);
  EXPECT_EQ(dst, (std::vector<uint8_t>{5, 6, 3, 4, 1, 2}));
  g_pMemProcAPI->pMem->TMP_PlaneCopy(dst.data(), 2, src.data(), 3, 2, 3, 0);
  EXPECT_EQ(dst, (std::vector<uint8_t>{1, 2, 3, 4, 5, 6}));
}

TEST(TQMemProc, FillExtractAndSwap) {
  std::vector<uint8_t> plane(8, 0);
  g_pMemProcAPI->pFill->TMP_PlaneFill(plane.data(), 4, 3, 255, 2);
  EXPECT_EQ(plane, (std::vector<uint8_t>{255, 255, 255, 0, 255, 255, 255, 0}));

  const uint8_t pixels[8] = {10, 11, 12, 13, 20, 21, 22, 23};
  uint8_t alpha[2] = {};
  g_pMemProcAPI->pMem->TMP_ExtractChannel_Row(alpha, pixels, 2, 3);
  EXPECT_EQ(alpha[0], 13);
  EXPECT_EQ(alpha[1], 23);

  uint8_t swapped[8] = {};
  g_pMemProcAPI->pMem->TMP_YUV16_Swap_Row(swapped, pixels, 4);
  EXPECT_EQ(std::vector<uint8_t>(swapped, swapped + 8),
            (std::vector<uint8_t>{11, 10, 13, 12, 21, 20, 23, 22}));

  uint8_t rgb24[6] = {};
  g_pMemProcAPI->pPixel->TMP_RGB32_2_RGB24_Row(rgb24, pixels, 2);
  EXPECT_EQ(std::vector<uint8_t>(rgb24, rgb24 + 6), (std::vector<uint8_t>{10, 11, 12, 20, 21, 22}));
}

TEST(TQMemProc, RangeScalingRoundsToNearestAndClamps) {
  const uint8_t in[6] = {0, 16, 128, 235, 240, 255};
  uint8_t out[6];
  // Full to legal, luma: x 219/255 + 16.
  g_pMemProcAPI->pPixel->TMP_Scale_Run(out, in, 14071, 512, 6);
  EXPECT_EQ(std::vector<uint8_t>(out, out + 6), (std::vector<uint8_t>{16, 30, 126, 218, 222, 235}));
  // Legal to full, luma: (x - 16) x 255/219, clamped.
  g_pMemProcAPI->pPixel->TMP_Scale_Run(out, in, 19077, -596, 6);
  EXPECT_EQ(std::vector<uint8_t>(out, out + 6), (std::vector<uint8_t>{0, 0, 130, 255, 255, 255}));
}

}  // namespace
