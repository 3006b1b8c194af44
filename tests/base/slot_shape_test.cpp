// The slot-shape decoder on the kinds of signature the tables hold: the
// drivers, the dispatchers and the tests all call slots through it.
#include "base/slot_shape.hpp"

#include <TQColorSpace/TQColorSpace.h>
#include <gtest/gtest.h>

#include <vector>

namespace tqcs {
namespace {

template <auto kMember>
using Of = MemberShape<decltype(kMember)>;

// A 4:2:0 split: two three-plane fields written from one packed source.
using Split420 = Of<&TCS_RGB24Table::TCS_RGB24_2_YUV420_Split>;
static_assert(Split420::kFrameShaped && Split420::kPlanes == 7 && Split420::kDestinations == 6);
static_assert(Split420::kWidth == 14 && Split420::kHeight == 15 && Split420::kFirstOption == 16);
static_assert(Split420::kOptions == 2 && Split420::kFlip == 18);

// A compose reads two fields into one frame: one destination plane.
using Compose = Of<&TCS_YUV16Table::TCS_YUV16_2_RGB32_Compose>;
static_assert(Compose::kFrameShaped && Compose::kDestinations == 1 && Compose::kSources == 2);

// The histogram's counts have no pitch, so its last byte is an option.
using Histogram = Of<&TCS_RGB24Table::TCS_RGB24_Histogram>;
static_assert(!Histogram::kFrameShaped && Histogram::kPlanes == 4 && Histogram::kDestinations == 3);
static_assert(Histogram::kWidth == 5 && Histogram::kOptions == 1);

// Format codes between the planes: not a frame-shaped slot.
static_assert(!Of<&TCS_GeneralTable::TCS_ColorConvFrame>::kFrameShaped);
static_assert(!Of<&TCS_GeneralTable::TCS_ColorConvFrameEx>::kFrameShaped);

// Arguments go to their roles: the histogram's source pitch is its own
// plane's, not the first plane's.
TEST(SlotShape, CallsWithArgumentsByRole) {
  struct From {
    uint8_t *Pointer(size_t i) const { return base + i; }
    int64_t Pitch(size_t i) const { return 100 + static_cast<int64_t>(i); }
    int32_t Width() const { return 7; }
    int32_t Height() const { return 9; }
    int64_t Option(size_t i) const { return 40 + static_cast<int64_t>(i); }
    uint8_t Flip() const { return 1; }
    uint8_t *base;
  };
  static uint8_t bytes[8];
  static std::vector<int64_t> seen;
  seen.clear();
  auto histogram = +[](uint32_t *h0, uint32_t *h1, uint32_t *h2, const uint8_t *src, int64_t pitch,
                       int32_t w, int32_t h, uint8_t order) {
    seen = {reinterpret_cast<uint8_t *>(h0) - bytes,
            reinterpret_cast<uint8_t *>(h1) - bytes,
            reinterpret_cast<uint8_t *>(h2) - bytes,
            src - bytes,
            pitch,
            w,
            h,
            order};
  };
  SlotShape<decltype(histogram)>::Call(histogram, From{bytes});
  EXPECT_EQ(seen, (std::vector<int64_t>{0, 1, 2, 3, 103, 7, 9, 40}));

  auto frame = +[](uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch, int32_t w,
                   int32_t h, int32_t matrix, uint8_t order, uint8_t flip) {
    seen = {dst - bytes, dstPitch, src - bytes, srcPitch, w, h, matrix, order, flip};
  };
  SlotShape<decltype(frame)>::Call(frame, From{bytes});
  EXPECT_EQ(seen, (std::vector<int64_t>{0, 100, 1, 101, 7, 9, 40, 41, 1}));
}

}  // namespace
}  // namespace tqcs
