// Every driver slot of sub-tables 1 to 7 called with bad arguments: the record
// it writes (or does not), and nothing written to any buffer.
#include <gtest/gtest.h>

#include <cstring>

#include "drivers/driver_harness.hpp"
#include "support/log_capture.hpp"

namespace tqcs::test {
namespace {

::testing::Environment *const kLoaded = ::testing::AddGlobalTestEnvironment(new LoadedLibrary);

enum class Outcome { kInvalid, kSilent, kNotImplemented, kKeyContinue, kSkip };

struct Expectation {
  int table;  // 0: any
  const char *contains;
  Outcome widthZero;
  Outcome nullPointer;
  const char16_t *unit = u"TQVideoColorAPI";
};

// First match wins. What each family does with a width of 0 and with a null
// first pointer.
constexpr Outcome I = Outcome::kInvalid, S = Outcome::kSilent, N = Outcome::kNotImplemented;
const Expectation kExpectations[] = {
    // The red/blue swap of RGB24 logs its own key and carries on (with a null
    // pointer it would go on to fault, as the caller asked).
    {2, "SwapRB", Outcome::kKeyContinue, Outcome::kSkip, u"TQRGB24toOthers"},
    // Frame forms that test pointers and pitches only.
    {2, "RGB24_2_YUVA_Frame", S, I},
    {3, "RGB24_Frame", S, I},
    // Names without a conversion.
    {2, "_2_YUV_", N, N},
    {4, "_2_YUV_", N, N},
    {6, "_2_YUV_", N, N},
    {6, "_2_YUVA_", N, N},
    {7, "", N, N},
    // Delegated to TQMemProc, no check of its own.
    {4, "Swap_Frame", S, S},
    {5, "10Bit_2_YUV16", I, I, u"TQYUV422toOthers"},
    {6, "10Bit_2_YUV16", I, I, u"TQYUV420toOthers"},
    {5, "10Bit_2_YUV422_Frame", S, S},
    {6, "10Bit_2_YUV420_Frame", S, S},
    {5, "UV_Compose", S, S},
    {5, "UV_Field", S, S},
    {5, "UV_", I, I},
    {6, "UV_", I, I},
    {1, "YUV420", I, I},
    {1, "", S, S},
    {2, "YUV422", S, S},
    {2, "HSV", S, S},
    {2, "Gray", S, S},
    {2, "Histogram", S, S},
    {3, "YUV16", S, S},
    {3, "YUV422", S, S},
    {3, "Reserved", S, S},
    {5, "YUVA", S, S},
    {5, "2_YUV16", S, S},
    {5, "Reserved", S, S},
    {0, "", I, I},
};

const Expectation &ExpectationFor(const SlotRef &slot) {
  for (const Expectation &e : kExpectations)
    if ((e.table == 0 || e.table == slot.table) && slot.name.find(e.contains) != std::string::npos)
      return e;
  throw std::logic_error("unreachable");
}

std::u16string Wide(const std::string &s) { return std::u16string(s.begin(), s.end()); }

class DriverRefusal : public ::testing::TestWithParam<SlotRef> {
 protected:
  // Calls the slot on canary-filled buffers and checks the records and that
  // no buffer changed.
  void Expect(Outcome outcome, int32_t width, bool nullFirst) {
    const SlotRef &slot = GetParam();
    if (outcome == Outcome::kSkip) GTEST_SKIP();
    std::vector<std::vector<uint8_t>> buffers(slot.pointerCount, std::vector<uint8_t>(4096, 0xCD));
    std::vector<PlaneArg> planes;
    for (auto &b : buffers) planes.push_back({b.data(), 64});
    if (nullFirst && !planes.empty()) planes[0].p = nullptr;
    const std::vector<int64_t> options(slot.optionCount, 0);
    LogCapture log;
    slot.call(planes, width, 8, options);
    for (auto &b : buffers) EXPECT_EQ(b, std::vector<uint8_t>(4096, 0xCD)) << slot.name;
    const Expectation &e = ExpectationFor(slot);
    const std::u16string function = Wide(slot.name) + u"()";
    std::vector<LogRecord> expected;
    if (outcome == Outcome::kInvalid)
      expected = {{1, e.unit, function, u"%s", u"Invalid Input Parameters"}};
    if (outcome == Outcome::kNotImplemented)
      expected = {{1, e.unit, function, u"%s", u"Not Implemented"}};
    if (outcome == Outcome::kKeyContinue)
      expected = {{1, e.unit, function, u"%s", u"TQCOLORSPACE_LOG_INVALID_PARAM"}};
    EXPECT_EQ(log.records(), expected) << slot.name;
  }
};

TEST_P(DriverRefusal, WidthZero) { Expect(ExpectationFor(GetParam()).widthZero, 0, false); }

TEST_P(DriverRefusal, NullFirstPointer) {
  if (GetParam().pointerCount == 0) GTEST_SKIP() << "the empty function takes no arguments";
  Expect(ExpectationFor(GetParam()).nullPointer, 8, true);
}

INSTANTIATE_TEST_SUITE_P(EverySlot, DriverRefusal, ::testing::ValuesIn(AllDriverSlots()),
                         [](const auto &info) { return info.param.name; });

TEST(DriverTables, StubsStandExactlyInTheUnsupportedSlots) {
  const auto isStub = [](const SlotRef &s) { return s.name.find("Reserved") != std::string::npos; };
  int stubs = 0;
  for (const SlotRef &s : AllDriverSlots()) {
    Fn fn;
    const void *base = s.table == 1   ? static_cast<const void *>(g_pColorSpaceAPI->pRGB32)
                       : s.table == 2 ? static_cast<const void *>(g_pColorSpaceAPI->pRGB24)
                       : s.table == 3 ? static_cast<const void *>(g_pColorSpaceAPI->pYUVA)
                       : s.table == 4 ? static_cast<const void *>(g_pColorSpaceAPI->pYUV16)
                       : s.table == 5 ? static_cast<const void *>(g_pColorSpaceAPI->pYUV422)
                       : s.table == 6 ? static_cast<const void *>(g_pColorSpaceAPI->pYUV420)
                                      : static_cast<const void *>(g_pColorSpaceAPI->pYUV);
    std::memcpy(&fn, static_cast<const char *>(base) + s.slot * sizeof(Fn), sizeof fn);
    ASSERT_NE(fn, nullptr) << s.name;
    EXPECT_EQ(fn == Erase(&EmptyStub), isStub(s)) << s.name;
    stubs += isStub(s);
  }
  EXPECT_EQ(stubs, 9);
}

}  // namespace
}  // namespace tqcs::test
