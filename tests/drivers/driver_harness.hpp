// Calling any driver slot generically: arguments are built from the slot's own
// signature (pointer and pitch pairs from a list of planes, width and height,
// then the options, then flip), so one test body serves every conversion.
#pragma once

#include <TQColorSpace/TQColorSpace.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "base/slot_shape.hpp"
#include "base/state.hpp"
#include "startup/api.hpp"

namespace tqcs::test {

// Loads the library state once per test program, as the loader would.
class LoadedLibrary : public ::testing::Environment {
 public:
  void SetUp() override {
    TCS_DllMain(nullptr, TCS_REASON_PROCESS_ATTACH, nullptr);
    // While the general table is still being filled the load reports failure
    // and leaves TQMemProc's root unset; the drivers under test need it.
    if (!g_pMemProcRoot) g_pMemProcRoot = TMP_GetAPIStuPtr();
  }
};

struct PlaneArg {
  uint8_t *p;
  int64_t pitch;
};

// Calls a slot with arguments by role: plane i's pointer and pitch from
// planes[i], width and height, then every later scalar from `options` (the
// flip, when the slot has one, last).
template <class Ret, class... A>
void InvokeWithPlanes(Ret (*fn)(A...), const std::vector<PlaneArg> &planes, int32_t width,
                      int32_t height, const std::vector<int64_t> &options) {
  using Shape = SlotShape<Ret (*)(A...)>;
  struct From {
    const std::vector<PlaneArg> &planes;
    int32_t width, height;
    const std::vector<int64_t> &options;
    uint8_t *Pointer(size_t i) const { return planes.at(i).p; }
    int64_t Pitch(size_t i) const { return planes.at(i).pitch; }
    int32_t Width() const { return width; }
    int32_t Height() const { return height; }
    int64_t Option(size_t i) const { return options.at(i); }
    uint8_t Flip() const { return static_cast<uint8_t>(options.at(Shape::kOptions)); }
  };
  Shape::Call(fn, From{planes, width, height, options});
}

// One slot of sub-tables 1 to 7, by name, with a type-erased caller.
struct SlotRef {
  std::string name;
  int table;
  int slot;
  std::function<void(const std::vector<PlaneArg> &, int32_t, int32_t, const std::vector<int64_t> &)>
      call;
  size_t pointerCount;  // planes, 0 for the shared empty function
  size_t optionCount;   // the flip included
};

std::vector<SlotRef> AllDriverSlots();
const SlotRef &SlotNamed(const std::string &name);

// An image of any layout: planes of given row bytes and rows, each with a pad
// of canary bytes after every row and after the last.
struct PlaneShape {
  int64_t rowBytes;
  int64_t rows;
};

class Image {
 public:
  Image(std::vector<PlaneShape> shapes, int64_t pad);
  void Randomize(uint32_t seed);
  std::vector<PlaneArg> Args();
  // The bytes of the rows (without pads).
  std::vector<uint8_t> Pixels(size_t plane) const;
  std::vector<uint8_t> Row(size_t plane, int64_t row) const;
  bool PadsIntact() const;
  size_t planes() const { return shapes_.size(); }
  const PlaneShape &shape(size_t plane) const { return shapes_[plane]; }
  int64_t pitch(size_t plane) const { return shapes_[plane].rowBytes + pad_; }

 private:
  std::vector<PlaneShape> shapes_;
  int64_t pad_;
  std::vector<std::vector<uint8_t>> data_;
};

}  // namespace tqcs::test
