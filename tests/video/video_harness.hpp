// What the video tests share: the library loaded once per program, the general
// table, pictures with canaries, log capture, the images of each form, and the
// signature-driven slot caller of the driver tests.
#pragma once

#include <TQColorSpace/TQColorSpace.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/state.hpp"
#include "drivers/driver_harness.hpp"
#include "support/buffers.hpp"
#include "support/log_capture.hpp"

namespace tqcs::video_test {

using test::GuardedBuffer;
using test::LogCapture;
using test::PlaneArg;
using Records = std::vector<test::LogRecord>;

class Library : public ::testing::Environment {
  void SetUp() override { ASSERT_EQ(TCS_DllMain(nullptr, TCS_REASON_PROCESS_ATTACH, nullptr), 1); }
};
[[maybe_unused]] inline const auto *const kLibrary =
    ::testing::AddGlobalTestEnvironment(new Library);

inline const TCS_GeneralTable &General() { return *g_pColorSpaceAPI->pGeneral; }

// The bytes of a buffer, then 1 when no canary around them was touched.
inline std::vector<uint8_t> Bytes(const GuardedBuffer &b) {
  std::vector<uint8_t> out(b.data(), b.data() + b.size());
  out.push_back(b.CanariesIntact());
  return out;
}

// The records logged while fn runs, and the one of a refused call.
template <class F>
Records Captured(F fn) {
  LogCapture log;
  fn();
  return log.records();
}
inline test::LogRecord Invalid(std::u16string unit, std::u16string function) {
  return {1, std::move(unit), std::move(function), u"%s", u"Invalid Input Parameters"};
}

// Gives a variable (a root pointer, a table) another value while alive.
template <class T>
struct Scoped {
  Scoped(T &variable, T value) : variable(variable), saved(std::exchange(variable, value)) {}
  ~Scoped() { variable = saved; }
  T &variable;
  T saved;
};

// The images of a call in argument order: frame (destination, source), split
// (field 1, field 2, source), compose (destination, field 1, field 2).
enum Form { kFrame, kSplit, kCompose };
inline constexpr Form kForms[] = {kFrame, kSplit, kCompose};
inline int ImageCount(Form f) { return f == kFrame ? 2 : 3; }
inline bool IsOutput(Form f, int i) { return f == kSplit ? i < 2 : i == 0; }
inline bool IsField(Form f, int i) { return f == kSplit ? i < 2 : f == kCompose && i > 0; }

// `rows` rows of `pitch` seeded random bytes at an unaligned address, with
// canaries after them.
struct Picture {
  Picture(int64_t pitch, int64_t rows, uint32_t seed)
      : pitch(pitch), mem(static_cast<size_t>(pitch * std::max<int64_t>(rows, 1)), 3) {
    mem.Randomize(seed);
  }
  uint8_t *Row(int64_t y) { return mem.data() + y * pitch; }
  int64_t pitch;
  GuardedBuffer mem;
};

// The first plane of every picture.
template <class P>
std::vector<PlaneArg> Args(std::vector<P> &io) {
  std::vector<PlaneArg> out;
  for (Picture &p : io) out.push_back({p.mem.data(), p.pitch});
  return out;
}

// Calls any slot with the planes' pointers and pitches, width and height, then
// the options and flip, each converted to the slot's own parameter type.
template <class Fn>
void CallSlot(Fn fn, const std::vector<PlaneArg> &planes, int32_t w, int32_t h,
              std::vector<int64_t> options, uint8_t flip) {
  options.push_back(flip);
  test::InvokeWithPlanes(fn, planes, w, h, options);
}

}  // namespace tqcs::video_test
