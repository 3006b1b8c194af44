// Calling any driver slot generically: arguments are built from the slot's own
// signature (pointer and pitch pairs from a list of planes, width and height,
// then the options, then flip), so one test body serves every conversion.
#pragma once

#include <TQColorSpace/TQColorSpace.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
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

// Whether a slot can be called by role from planes and integer options.
template <class Sig>
inline constexpr bool kByRole = [] {
  using Shape = SlotShape<Sig>;
  return []<size_t... I>(std::index_sequence<I...>) {
    return ((I < Shape::kFirstOption ||
             std::is_integral_v<std::tuple_element_t<I, typename Shape::Params>>)&&...);
  }
  (std::make_index_sequence<Shape::kParams>{});
}();

// One slot of root sub-tables 0 to 7, by name, with a type-erased caller
// (frame-shaped slots and the shared empty function only).
struct SlotRef {
  std::string name;
  int table;
  int slot;
  std::function<void(const std::vector<PlaneArg> &, int32_t, int32_t, const std::vector<int64_t> &)>
      call;
  size_t pointerCount;  // planes, 0 for the shared empty function
  size_t optionCount;   // the flip included
  bool hasFlip;
};

// Every slot of the general table (0) and of the drivers' sub-tables (1 to 7).
inline std::vector<SlotRef> AllSlots() {
  std::vector<SlotRef> out;
  // The functions are read from the live table only when called, so the list
  // can be built before the library state is.
  auto add = [&](int table, auto fnOf, const char *name, int slot) {
    using Sig = decltype(fnOf());
    using Shape = SlotShape<Sig>;
    SlotRef ref{name,
                table,
                slot,
                nullptr,
                Shape::kPlanes,
                Shape::kOptions + Shape::kFrameShaped,
                Shape::kFrameShaped};
    if constexpr (kByRole<Sig>) {
      ref.call = [fnOf](const std::vector<PlaneArg> &planes, int32_t w, int32_t h,
                        const std::vector<int64_t> &options) {
        InvokeWithPlanes(fnOf(), planes, w, h, options);
      };
    } else {
      ref.call = [name](const std::vector<PlaneArg> &, int32_t, int32_t,
                        const std::vector<int64_t> &) {
        ADD_FAILURE() << name << " is not called by planes and options";
      };
    }
    out.push_back(std::move(ref));
  };
#define TQCS_ADD(tableIndex, field)                                                  \
  [&](int n, const char *name, auto member) {                                        \
    add(                                                                             \
        tableIndex, [member] { return g_pColorSpaceAPI->field->*member; }, name, n); \
  }
  const auto general = TQCS_ADD(0, pGeneral);
  const auto rgb32 = TQCS_ADD(1, pRGB32);
  const auto rgb24 = TQCS_ADD(2, pRGB24);
  const auto yuva = TQCS_ADD(3, pYUVA);
  const auto yuv16 = TQCS_ADD(4, pYUV16);
  const auto yuv422 = TQCS_ADD(5, pYUV422);
  const auto yuv420 = TQCS_ADD(6, pYUV420);
  const auto yuv = TQCS_ADD(7, pYUV);
#undef TQCS_ADD
#define TQCS_GENERAL_ENTRY(n, name, ret, params) general(n, #name, &TCS_GeneralTable::name);
#define TQCS_RGB32_ENTRY(n, name, ret, params) rgb32(n, #name, &TCS_RGB32Table::name);
#define TQCS_RGB24_ENTRY(n, name, ret, params) rgb24(n, #name, &TCS_RGB24Table::name);
#define TQCS_YUVA_ENTRY(n, name, ret, params) yuva(n, #name, &TCS_YUVATable::name);
#define TQCS_YUV16_ENTRY(n, name, ret, params) yuv16(n, #name, &TCS_YUV16Table::name);
#define TQCS_YUV422_ENTRY(n, name, ret, params) yuv422(n, #name, &TCS_YUV422Table::name);
#define TQCS_YUV420_ENTRY(n, name, ret, params) yuv420(n, #name, &TCS_YUV420Table::name);
#define TQCS_YUV_ENTRY(n, name, ret, params) yuv(n, #name, &TCS_YUVTable::name);
  TCS_GENERAL_SLOTS(TQCS_GENERAL_ENTRY)
  TCS_RGB32_SLOTS(TQCS_RGB32_ENTRY)
  TCS_RGB24_SLOTS(TQCS_RGB24_ENTRY)
  TCS_YUVA_SLOTS(TQCS_YUVA_ENTRY)
  TCS_YUV16_SLOTS(TQCS_YUV16_ENTRY)
  TCS_YUV422_SLOTS(TQCS_YUV422_ENTRY)
  TCS_YUV420_SLOTS(TQCS_YUV420_ENTRY)
  TCS_YUV_SLOTS(TQCS_YUV_ENTRY)
  return out;
}

// The slots of sub-tables 1 to 7.
std::vector<SlotRef> AllDriverSlots();
const SlotRef &SlotNamed(const std::string &name);

// A slot by root position and slot number.
inline const SlotRef &SlotAt(int table, int slot) {
  static const std::vector<SlotRef> slots = AllSlots();
  for (const SlotRef &s : slots)
    if (s.table == table && s.slot == slot) return s;
  throw std::out_of_range("no slot " + std::to_string(slot) + " in table " + std::to_string(table));
}

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
