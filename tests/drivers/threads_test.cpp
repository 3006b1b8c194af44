// Many threads converting different frames at once through the shared tables
// get exactly what one thread gets.
#include <gtest/gtest.h>

#include <thread>

#include "drivers/driver_harness.hpp"

namespace tqcs::test {
namespace {

::testing::Environment *const kLoaded = ::testing::AddGlobalTestEnvironment(new LoadedLibrary);

// RGB24 to 4:2:0 and back, with working buffers allocated per call.
std::vector<uint8_t> RoundTrip(uint32_t seed) {
  constexpr int32_t w = 32, h = 16;
  Image rgb({{3 * w, h}}, 4), yuv({{w, h}, {w / 2, h / 2}, {w / 2, h / 2}}, 4),
      back({{4 * w, h}}, 4);
  rgb.Randomize(seed);
  SlotNamed("TCS_RGB24_2_YUV420_Frame")
      .call({yuv.Args()[0], yuv.Args()[1], yuv.Args()[2], rgb.Args()[0]}, w, h, {0, 1, 0});
  SlotNamed("TCS_YUV420_2_RGB32_Frame")
      .call({back.Args()[0], yuv.Args()[0], yuv.Args()[1], yuv.Args()[2]}, w, h, {0, 1, 255, 0});
  return back.Pixels(0);
}

TEST(Threads, ConcurrentConversionsMatchSequentialOnes) {
  constexpr int kThreads = 8, kRounds = 20;
  std::vector<std::vector<uint8_t>> expected;
  for (int t = 0; t < kThreads; ++t) expected.push_back(RoundTrip(t));
  std::vector<int> mismatches(kThreads, 0);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      for (int r = 0; r < kRounds; ++r) mismatches[t] += RoundTrip(t) != expected[t];
    });
  for (auto &th : threads) th.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(mismatches[t], 0) << "thread " << t;
}

}  // namespace
}  // namespace tqcs::test
