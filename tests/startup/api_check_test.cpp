// TCS_CheckAPIStu on synthetic structures.
#include <TQColorSpace/TQColorSpace.h>
#include <gtest/gtest.h>

#include "startup/api.hpp"

namespace tqcs {
namespace {

void Dummy() {}

// A root whose every validated slot holds a function.
struct SyntheticApi {
  StaticTables t{};
  SyntheticApi() {
    t.root = {&t.general, &t.rgb32,  &t.rgb24, &t.yuva,  &t.yuv16,
              &t.yuv422,  &t.yuv420, &t.yuv,   &t.kernel};
    FillAll(t.general);
    FillAll(t.rgb32);
    FillAll(t.rgb24);
    FillAll(t.yuva);
    FillAll(t.yuv16);
    FillAll(t.yuv422);
    FillAll(t.yuv420);
    FillAll(t.yuv);
    FillAll(t.kernel);
  }
  template <class Table>
  static void FillAll(Table &table) {
    for (int32_t i = 0; i < kSlotCount<Table>; ++i) StoreSlot(table, i, Erase(&Dummy));
  }
};

TEST(CheckAPIStu, CompleteStructurePasses) {
  SyntheticApi api;
  EXPECT_EQ(TCS_CheckAPIStu(&api.t.root), 1);
}

TEST(CheckAPIStu, NullRootOrSubTableGivesMinusOne) {
  EXPECT_EQ(TCS_CheckAPIStu(nullptr), -1);
  for (int position = 0; position < 8; ++position) {
    SyntheticApi api;
    reinterpret_cast<void **>(&api.t.root)[position] = nullptr;
    EXPECT_EQ(TCS_CheckAPIStu(&api.t.root), -1) << "position " << position;
  }
}

TEST(CheckAPIStu, NullKernelTablePointerIsLeftToTheNullPointerTest) {
  // Position 8 is not tested for null at the first step; TQCPUBase reports a
  // null run as holding a null pointer.
  SyntheticApi api;
  api.t.root.pKernel = nullptr;
  EXPECT_EQ(TCS_CheckAPIStu(&api.t.root), 10);
}

TEST(CheckAPIStu, NullSlotInsideAValidatedRunGivesTen) {
  const struct {
    const char *name;
    void (*clear)(StaticTables &);
  } cases[] = {
      {"general 18", [](StaticTables &t) { StoreSlot(t.general, 18, nullptr); }},
      {"rgb24 24", [](StaticTables &t) { StoreSlot(t.rgb24, 24, nullptr); }},
      {"yuv422 0", [](StaticTables &t) { StoreSlot(t.yuv422, 0, nullptr); }},
      {"yuv 14", [](StaticTables &t) { StoreSlot(t.yuv, 14, nullptr); }},
      {"kernel 160", [](StaticTables &t) { StoreSlot(t.kernel, 160, nullptr); }},
  };
  for (const auto &c : cases) {
    SyntheticApi api;
    c.clear(api.t);
    EXPECT_EQ(TCS_CheckAPIStu(&api.t.root), 10) << c.name;
  }
}

TEST(CheckAPIStu, OnlyTheLeadingSlotsAreValidated) {
  // A 25-slot run over a longer table: slot 25 and beyond are never looked at.
  struct Longer {
    Fn slots[30];
  } longer{};
  for (int i = 0; i < 25; ++i) longer.slots[i] = Erase(&Dummy);
  SyntheticApi api;
  api.t.root.pRGB24 = reinterpret_cast<TCS_RGB24Table *>(&longer);
  EXPECT_EQ(TCS_CheckAPIStu(&api.t.root), 1);
}

TEST(CheckAPIStu, EmptyStubSlotsPass) {
  SyntheticApi api;
  StoreSlot(api.t.rgb32, 15, Erase(&EmptyStub));
  StoreSlot(api.t.kernel, 53, Erase(&EmptyStub));
  EXPECT_EQ(TCS_CheckAPIStu(&api.t.root), 1);
}

}  // namespace
}  // namespace tqcs
