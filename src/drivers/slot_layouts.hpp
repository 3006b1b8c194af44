// The image layouts of the driver slots as data: for every slot of sub-tables
// 1 to 7 that has a driver, how many planes each image of a call holds, how
// many bytes a row of each plane takes for a width and how many rows each
// plane holds for a frame height, in each form. Each slot's description is
// made from the conversion struct its table line names (driver_kit.hpp,
// `Entry`), so the drivers, the tests and the benchmarks read one set of facts.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/plane.hpp"

namespace tqcs::drivers {

// One plane: its samples' size, a row of the width's samples (or half of them,
// rounded down, for chroma), one row for every luma row (or for every two, for
// 4:2:0 chroma); or a fixed row of samples, one row whatever the height (the
// histogram's counts).
struct PlaneLayout {
  int32_t sampleBytes = 1;
  bool halfWidth = false;
  bool halfHeight = false;
  int32_t fixedSamples = 0;

  constexpr int64_t RowBytes(int32_t width) const {
    return int64_t{sampleBytes} * (fixedSamples ? fixedSamples : halfWidth ? width / 2 : width);
  }
  // The rows of the plane in an image of `luma` rows whose 4:2:0 chroma planes
  // hold `chroma` rows.
  constexpr int64_t Rows(int64_t luma, int64_t chroma) const {
    return fixedSamples ? 1 : halfHeight ? chroma : luma;
  }
};

// An image of up to three planes, in argument order.
struct ImageLayout {
  int planes = 0;
  std::array<PlaneLayout, 3> plane{};
};

// What happens to the last row of an odd height in the field forms.
enum class Odd {
  kDrop,          // the last row of an odd height is not converted
  kCopyToField2,  // converted into field 1, then copied into field 2
  kField1Only,    // converted into (or from) field 1 only
};

// One image of a call: its layout, the rows of its luma planes and of its
// 4:2:0 chroma planes, and whether the call writes it.
struct CallImage {
  ImageLayout layout;
  int64_t lumaRows = 0, chromaRows = 0;
  bool written = false;

  constexpr int64_t RowBytes(int plane, int32_t width) const {
    return layout.plane[plane].RowBytes(width);
  }
  constexpr int64_t Rows(int plane) const { return layout.plane[plane].Rows(lumaRows, chromaRows); }
};

struct CallImages {
  std::array<CallImage, 3> image{};
  size_t count = 0;
  const CallImage *begin() const { return image.data(); }
  const CallImage *end() const { return image.data() + count; }
};

// A driver slot: its form (a slot outside the triples is called like a
// _Frame), the layouts of its destination and source images, and what its
// field forms do with the last row of an odd height.
struct SlotLayout {
  Form form = Form::kFrame;
  ImageLayout dst, src;
  Odd odd = Odd::kCopyToField2;

  // The luma rows of field `f` (0 or 1) of a frame of `height` rows: both
  // hold height / 2 rows where the odd row is dropped, both (height + 1) / 2
  // where a split copies it into field 2, otherwise field 1 takes it.
  constexpr int64_t FieldRows(int f, int32_t height) const {
    if (odd == Odd::kDrop) return height / 2;
    if (odd == Odd::kCopyToField2 && form == Form::kSplit) return (height + 1) / 2;
    return f == 0 ? (height + 1) / 2 : height / 2;
  }

  // The images of a call on a frame of `height` rows, in argument order: the
  // destination and the source; a split's two fields and the source; a
  // compose's destination and two fields. A split's field is a 4:2:0 image of
  // its own rows; a compose takes the frame's chroma rows alternately from
  // its two fields.
  constexpr CallImages Images(int32_t height) const {
    const int64_t frameChroma = height / 2;
    auto field = [&](const ImageLayout &l, int f, bool written) {
      const int64_t luma = FieldRows(f, height);
      const int64_t chroma = form == Form::kSplit ? luma / 2
                             : f == 0             ? (frameChroma + 1) / 2
                                                  : frameChroma / 2;
      return CallImage{l, luma, chroma, written};
    };
    const CallImage whole[] = {{dst, height, frameChroma, true}, {src, height, frameChroma, false}};
    if (form == Form::kSplit) return {{field(dst, 0, true), field(dst, 1, true), whole[1]}, 3};
    if (form == Form::kCompose) return {{whole[0], field(src, 0, false), field(src, 1, false)}, 3};
    return {{whole[0], whole[1]}, 2};
  }
};

// The layout of slot `slot` of root sub-table `table` (1 to 7), or null for a
// slot without a driver (the reserved slots).
const SlotLayout *LayoutOfSlot(int table, int32_t slot);

}  // namespace tqcs::drivers
