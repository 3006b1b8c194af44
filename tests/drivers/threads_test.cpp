// Many threads converting different frames at once through the shared tables
// get exactly what one thread gets: every driver slot of sub-tables 1 to 7 in
// every form, every dispatcher code pair in its three forms and every pair of
// the descriptor forms' extended space in one of its forms, run by 16
// threads at once, each starting at a different job. Under ThreadSanitizer this
// is the library's data-race check.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

#include "base/formats.hpp"
#include "drivers/driver_harness.hpp"
#include "drivers/slot_calls.hpp"
#include "support/log_capture.hpp"

namespace tqcs::test {
namespace {

::testing::Environment *const kLoaded = ::testing::AddGlobalTestEnvironment(new LoadedLibrary);

using Job = std::function<std::vector<uint8_t>()>;

// One driver slot on fresh images: the output planes' bytes, then whether the
// pads around them are intact.
Job DriverJob(const SlotRef &slot, int32_t w, int32_t h, int64_t flip) {
  if (!calls::LayoutOf(slot)) return nullptr;
  return [&slot, w, h, flip] { return calls::RunOnFreshImages(slot, w, h, flip); };
}

// One dispatcher call between two codes in one of its forms, on buffers large
// enough for any layout of the codes.
Job DispatchJob(int form, int s, int d, int32_t w, int32_t h, uint8_t flip) {
  return [=] {
    const int64_t pitch = 4 * int64_t{w} + 5;
    std::vector<std::vector<uint8_t>> buffers(form == 0 ? 2 : 3,
                                              std::vector<uint8_t>(3 * pitch * h + 64));
    uint8_t k = 0;
    for (auto &b : buffers)
      for (auto &byte : b) byte = static_cast<uint8_t>(k += 29);
    auto p = [&](size_t i) { return buffers[i].data(); };
    const TCS_GeneralTable &g = *g_pColorSpaceAPI->pGeneral;
    if (form == 0) g.TCS_ColorConvFrame(p(0), pitch, d, p(1), pitch, s, 0, w, h, flip);
    if (form == 1) g.TCS_ColorConvSplit(p(0), pitch, p(1), pitch, d, p(2), pitch, s, 1, w, h, flip);
    if (form == 2)
      g.TCS_ColorConvCompose(p(0), pitch, d, p(1), pitch, p(2), pitch, s, 3, w, h, flip);
    std::vector<uint8_t> out;
    for (const auto &b : buffers) out.insert(out.end(), b.begin(), b.end());
    return out;
  };
}

// One descriptor call between two codes of the extended space in one of its
// forms, every plane a buffer of its own, large enough for any layout.
Job DescriptorJob(int form, int32_t s, int32_t d, int32_t w, int32_t h, uint8_t flip) {
  return [=] {
    const int64_t pitch = 8 * int64_t{w} + 5;
    std::vector<std::vector<uint8_t>> planes(9, std::vector<uint8_t>(pitch * h + 64));
    uint8_t k = 0;
    for (auto &b : planes)
      for (auto &byte : b) byte = static_cast<uint8_t>(k += 29);
    TCS_FrameDesc desc[3] = {};
    for (int i = 0; i < 3; ++i) {
      const bool out = form == 1 ? i < 2 : i == 0;
      desc[i].format = out ? d : s;
      for (int p = 0; p < 3; ++p) desc[i].plane[p] = {planes[3 * i + p].data(), pitch};
    }
    const TCS_GeneralTable &g = *g_pColorSpaceAPI->pGeneral;
    if (form == 0) g.TCS_ColorConvFrameEx(&desc[0], &desc[1], 0, w, h, flip);
    if (form == 1) g.TCS_ColorConvSplitEx(&desc[0], &desc[1], &desc[2], 1, w, h, flip);
    if (form == 2) g.TCS_ColorConvComposeEx(&desc[0], &desc[1], &desc[2], 3, w, h, flip);
    std::vector<uint8_t> out;
    for (const auto &b : planes) out.insert(out.end(), b.begin(), b.end());
    return out;
  };
}

TEST(Threads, EveryEntryPointAtOnceMatchesOneThread) {
  static const std::vector<SlotRef> slots = AllDriverSlots();
  std::vector<Job> jobs;
  int64_t flip = 0;
  for (const SlotRef &slot : slots)
    if (Job job = DriverJob(slot, 9, 10, flip ^= 1)) jobs.push_back(job);
  for (int form = 0; form < 3; ++form)
    for (int s = 0; s < 11; ++s)
      for (int d = 0; d < 11; ++d) jobs.push_back(DispatchJob(form, s, d, 7, 10, (s + d) & 1));
  for (const FormatInfo &src : kFormats)
    for (const FormatInfo &dst : kFormats)
      if ((src.code > 10 || dst.code > 10) && src.packing != Packing::Reserved &&
          dst.packing != Packing::Reserved)
        jobs.push_back(DescriptorJob((src.code + dst.code) % 3, src.code, dst.code, 12, 8,
                                     (src.code ^ dst.code) & 1));

  // One thread first. Jobs that write a log record (operations that are names
  // only) are left out: the log sink of the tests is not shared between threads.
  std::vector<Job> run;
  std::vector<std::vector<uint8_t>> expected;
  for (const Job &job : jobs) {
    LogCapture log;
    auto out = job();
    if (!log.records().empty()) continue;
    run.push_back(job);
    expected.push_back(std::move(out));
  }
  ASSERT_GT(run.size(), 300u);

  constexpr int kThreads = 16;
  std::vector<int> mismatches(kThreads, 0);
  std::atomic<int> ready{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([&, t] {
      ++ready;
      while (ready < kThreads) std::this_thread::yield();
      for (size_t i = 0; i < run.size(); ++i) {
        const size_t j = (i + t * run.size() / kThreads) % run.size();
        mismatches[t] += run[j]() != expected[j];
      }
    });
  for (auto &th : threads) th.join();
  for (int t = 0; t < kThreads; ++t) EXPECT_EQ(mismatches[t], 0) << "thread " << t;
}

}  // namespace
}  // namespace tqcs::test
