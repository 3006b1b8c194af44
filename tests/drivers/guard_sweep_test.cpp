// Every slot of sub-tables 1 to 7, in each of its forms, at many small widths
// and heights, both flips, tight and padded (odd) pitches, with every plane
// ending at an unreadable page and then starting right after one: a byte read
// or written outside the planes the caller described faults, and the canaries
// in the pitch padding must survive. The plane layouts are the library's own
// description of each slot (drivers/slot_layouts.hpp): a packed 4:2:2 row of
// odd width is 2 x width bytes, a field holds (height + 1) / 2 or height / 2
// rows as its conversion says.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

#include "drivers/driver_harness.hpp"
#include "drivers/slot_calls.hpp"
#include "support/guarded_planes.hpp"
#include "support/log_capture.hpp"

namespace tqcs::test {
namespace {

::testing::Environment *const kLoaded = ::testing::AddGlobalTestEnvironment(new LoadedLibrary);

using namespace calls;

constexpr int32_t kWidths[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 16, 17, 31, 33, 40};
constexpr size_t kBuffers = 9, kCapacity = 4 * 4096;

class GuardSweep : public ::testing::TestWithParam<SlotRef> {};

TEST_P(GuardSweep, NoByteOutsideThePlanesIsTouched) {
  const SlotRef &slot = GetParam();
  if (slot.pointerCount == 0) {  // the shared empty function
    slot.call({}, 0, 0, {});
    return;
  }
  const SlotLayout *layout = LayoutOf(slot);
  ASSERT_NE(layout, nullptr) << slot.name << " has no layout in the library";
  const bool histogram = !slot.hasFlip;
  ReportSweepFaults();
  LogCapture log;  // refusals and "Not Implemented" stay off stderr
  for (Guard guard : {Guard::After, Guard::Before}) {
    GuardedSet set(guard, kBuffers, kCapacity);
    for (int32_t w : kWidths)
      for (int32_t h = 1; h <= 9; ++h)
        for (int padded = 0; padded < 2; ++padded)
          for (int64_t flip = 0; flip < 2; ++flip) {
            std::snprintf(g_sweepCase, sizeof g_sweepCase,
                          "%s w %d h %d padded %d flip %d guard %s", slot.name.c_str(), w, h,
                          padded, static_cast<int>(flip),
                          guard == Guard::After ? "after" : "before");
            std::vector<PlaneArg> planes;
            std::vector<size_t> outputs;
            for (const CallImage &image : layout->Images(h)) {
              for (const PlaneShape &shape : Shapes(image, w)) {
                const size_t k = planes.size();
                const int64_t pitch =
                    std::max<int64_t>(shape.rowBytes, 1) + (padded ? 3 + 2 * int64_t(k) : 0);
                std::vector<Span> spans;
                AddRows(spans, 0, pitch, shape.rowBytes, shape.rows);
                planes.push_back({set.Place(k, spans, w * 131 + h * 7 + uint32_t(k)), pitch});
                if (image.written) outputs.push_back(k);
              }
            }
            // The histogram takes three arrays and one source pitch: the
            // harness hands out pitches in order, so the source's goes first.
            if (histogram) planes[0].pitch = planes[3].pitch;
            slot.call(planes, w, h, OptionsWithFlip(slot, flip));
            for (size_t k : outputs)
              if (!histogram && !set.CanariesIntact(k)) {
                ADD_FAILURE() << g_sweepCase << ": plane " << k << " written outside its rows";
                return;
              }
            log.clear();
          }
  }
}

std::vector<SlotRef> Slots() { return AllDriverSlots(); }

INSTANTIATE_TEST_SUITE_P(EverySlot, GuardSweep, ::testing::ValuesIn(Slots()),
                         [](const auto &info) { return info.param.name; });

}  // namespace
}  // namespace tqcs::test
