// Start-up: the tier fill rule, the kernel object per level, the entry point's
// records and the build-once guard.
#include <TQCPUBase.h>
#include <TQColorSpace/TQColorSpace.h>
#include <TQMemProc.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "base/state.hpp"
#include "frame/chroma_planes.hpp"
#include "kernels/colorspace.hpp"
#include "kernels/kernel_slots.hpp"
#include "kernels/kernel_table.hpp"
#include "startup/api.hpp"
#include "support/log_capture.hpp"

namespace tqcs {
namespace {

int32_t Slot(K k) { return static_cast<int32_t>(k); }
Fn Portable(int32_t slot) {
  TCS_KernelTable only{};
  FillTier(Tier::Portable, only);
  return LoadSlot(only, slot);
}

class FillRule : public ::testing::TestWithParam<uint32_t> {};

TEST_P(FillRule, ASlotSetEarlierIsNeverOverwritten) {
  TCS_KernelTable table{};
  const int32_t preset[] = {Slot(K::YUYV_2_YUVA_Row), Slot(K::RGB24_2_RGB32_Row),
                            Slot(K::UYVY_Key_2_YUVA_Row), Slot(K::Int32_2_Int16_Deinterleave_Row),
                            Slot(K::YUV422_16_2_UYVY_Row)};
  for (int32_t s : preset) StoreSlot(table, s, Erase(&EmptyStub));
  FillKernelTable(GetParam(), table);
  for (int32_t s : preset) EXPECT_EQ(LoadSlot(table, s), Erase(&EmptyStub)) << s;
}

TEST_P(FillRule, EveryTieredSlotIsFilledAndNoOtherIsTouched) {
  TCS_KernelTable table{};
  FillKernelTable(GetParam(), table);
  for (int32_t s = 0; s < TCS_KERNEL_SLOT_COUNT; ++s)
    EXPECT_EQ(LoadSlot(table, s) != nullptr, IsTieredSlot(s)) << "slot " << s;
}

TEST_P(FillRule, TheSSE2GapHoldsTheEmptyStubOnLevelsOneToFour) {
  const uint32_t level = GetParam();
  TCS_KernelTable table{};
  FillKernelTable(level, table);
  const bool simd = level >= 1 && level <= 4;
  for (K k : {K::UYVY_Key_2_YUVA_Row, K::YUVA_2_UYVY_Key_Row, K::RGB24_2_RGB48_Expand_Row}) {
    const Fn expected = simd ? Erase(&EmptyStub) : Portable(Slot(k));
    EXPECT_EQ(LoadSlot(table, Slot(k)), expected) << Slot(k);
  }
}

INSTANTIATE_TEST_SUITE_P(Levels, FillRule, ::testing::Values(0u, 1u, 2u, 3u, 4u, 5u, 17u));

TEST(FillRule, PortableTierSharesOneRoutineBetweenSlots124And144) {
  EXPECT_EQ(Portable(Slot(K::Int32_2_Int16_Deinterleave_Row)),
            Portable(Slot(K::Deinterleave_Pairs_Row)));
}

// Each tier list: ascending, one entry per slot, tiered slots only.
TEST(TierLists, AscendingUniqueAndTiered) {
  for (Tier tier : {Tier::SSE41, Tier::SSSE3, Tier::SSE2, Tier::Portable}) {
    int32_t last = -1;
    for (const SlotEntry &e : TierEntries(tier)) {
      EXPECT_GT(e.slot, last) << TierName(tier);
      EXPECT_TRUE(IsTieredSlot(e.slot)) << TierName(tier) << " slot " << e.slot;
      EXPECT_NE(e.fn, nullptr) << TierName(tier) << " slot " << e.slot;
      last = e.slot;
    }
  }
}

// Every tiered slot has a SIMD routine on every level from 1 to 4 (but the
// three that keep the empty stub): SSE2, SSSE3 for slots 7, 8 and 10 from
// level 2, the VEX-encoded slot 144 on level 4.
TEST(TierLists, EveryTieredSlotIsSIMDOnLevelsOneToFour) {
  auto listed = [](Tier tier, int32_t slot) {
    for (const SlotEntry &e : TierEntries(tier))
      if (e.slot == slot) return e.fn;
    return Fn{nullptr};
  };
  for (uint32_t level : {1u, 2u, 3u, 4u}) {
    TCS_KernelTable table{};
    FillKernelTable(level, table);
    for (int32_t s = 0; s < TCS_KERNEL_SLOT_COUNT; ++s) {
      if (!IsTieredSlot(s) || LoadSlot(table, s) == Erase(&EmptyStub)) continue;
      const bool shuffled = level >= 2 && (s == 7 || s == 8 || s == 10);
      const bool vex = level == 4 && s == Slot(K::Int32_2_Int16_Deinterleave_Row);
      const Fn expected = listed(vex ? Tier::SSE41 : shuffled ? Tier::SSSE3 : Tier::SSE2, s);
      EXPECT_NE(expected, nullptr) << "slot " << s << " has no routine in its tier";
      EXPECT_EQ(LoadSlot(table, s), expected) << "slot " << s << ", level " << level;
      EXPECT_NE(LoadSlot(table, s), Portable(s)) << "slot " << s << ", level " << level;
    }
  }
}

TEST(FillRule, TiersByLevel) {
  auto tiers = [](uint32_t level) {
    auto span = TiersForLevel(level);
    return std::vector<Tier>(span.begin(), span.end());
  };
  using enum Tier;
  EXPECT_EQ(tiers(0), (std::vector{Portable}));
  EXPECT_EQ(tiers(1), (std::vector{SSE2, Portable}));
  EXPECT_EQ(tiers(2), (std::vector{SSSE3, SSE2, Portable}));
  EXPECT_EQ(tiers(3), (std::vector{SSSE3, SSE2, Portable}));
  EXPECT_EQ(tiers(4), (std::vector{SSE41, SSSE3, SSE2, Portable}));
  EXPECT_EQ(tiers(5), (std::vector{Portable}));
}

// Runs once per processor level 0 to 5, forced through TCB_CPU_LEVEL by CTest.
class StartupAtForcedLevel : public ::testing::Test {
 protected:
  void SetUp() override {
    const char *env = std::getenv("TCB_CPU_LEVEL");
    if (!env) GTEST_SKIP() << "run by CTest with TCB_CPU_LEVEL set";
    level_ = TCB_GetCPUInsHigh();
    ResetForTesting();
  }
  uint32_t level_ = 0;
};

TEST_F(StartupAtForcedLevel, BuildsTheTablesForTheLevel) {
  test::LogCapture log;
  BuildColorSpaceAPI();
  ASSERT_EQ(g_pColorSpaceAPI, &Tables().root);
  EXPECT_TRUE(log.records().empty()) << "the build itself logs nothing";

  const TCS_KernelTable &k = *g_pColorSpaceAPI->pKernel;
  TCS_KernelTable expected{};
  FillKernelTable(level_, expected);
  for (int32_t s = 0; s < TCS_KERNEL_SLOT_COUNT; ++s) {
    if (IsTieredSlot(s)) {
      EXPECT_EQ(LoadSlot(k, s), LoadSlot(expected, s)) << "slot " << s;
    }
  }

  // Slot 9 is TQMemProc's routine, stored unchanged.
  EXPECT_EQ(LoadSlot(k, Slot(K::RGB32_2_RGB24_Row)),
            Erase(g_pMemProcAPI->pPixel->TMP_RGB32_2_RGB24_Row));
  EXPECT_EQ(k.GetFormatBitsPerPixel, &portable::GetFormatBitsPerPixel);
  EXPECT_EQ(k.YUV420_2_YUV422_UV_Frame, &frame::YUV420_2_YUV422_UV_Frame);

  const bool simd = level_ >= 1 && level_ <= 4;
  EXPECT_EQ(g_pColorSpaceImpl, simd ? ColorSpaceSSE2Instance() : ColorSpaceCInstance());
  EXPECT_TRUE(KernelObjectGuard() & (simd ? 1 : 2));

  // The unsupported driver slots hold the one shared empty function.
  EXPECT_EQ(LoadSlot(*g_pColorSpaceAPI->pRGB32, 15), Erase(&EmptyStub));
  EXPECT_EQ(LoadSlot(*g_pColorSpaceAPI->pYUVA, 14), Erase(&EmptyStub));
  EXPECT_EQ(LoadSlot(*g_pColorSpaceAPI->pYUV422, 16), Erase(&EmptyStub));
}

TEST_F(StartupAtForcedLevel, SecondBuildTouchesNothing) {
  BuildColorSpaceAPI();
  TCS_KernelTable &k = Tables().kernel;
  StoreSlot(k, Slot(K::YUYV_2_YUVA_Row), nullptr);
  EXPECT_TRUE(BuildColorSpaceAPI());
  EXPECT_EQ(LoadSlot(k, Slot(K::YUYV_2_YUVA_Row)), nullptr);
}

TEST_F(StartupAtForcedLevel, EntryPointRecordsLoadAndUnload) {
  test::LogCapture log;
  EXPECT_EQ(TCS_DllMain(nullptr, TCS_REASON_PROCESS_ATTACH, nullptr), 1);
  EXPECT_EQ(TCS_CheckAPIStu(g_pColorSpaceAPI), TCS_CHECK_OK);
  EXPECT_EQ(g_pMemProcRoot, TMP_GetAPIStuPtr());
  EXPECT_EQ(TCS_DllMain(nullptr, TCS_REASON_THREAD_ATTACH, nullptr), 1);
  EXPECT_EQ(TCS_DllMain(nullptr, TCS_REASON_THREAD_DETACH, nullptr), 1);
  EXPECT_EQ(TCS_DllMain(nullptr, TCS_REASON_PROCESS_DETACH, nullptr), 1);
  const test::LogRecord load{0, u"TQColorSpace", u"DllMain()", u"%s", u"DLL Loading Succeed"};
  const test::LogRecord unload{0, u"TQColorSpace", u"DllMain()", u"%s", u"DLL Unloading Succeed"};
  EXPECT_EQ(log.records(), (std::vector<test::LogRecord>{load, unload}));
  // Detach tears nothing down.
  EXPECT_NE(g_pColorSpaceAPI, nullptr);
}

}  // namespace
}  // namespace tqcs
