// The row walks of planar 4:2:0, written once for frames and fields.
//
// A frame of 4:2:0 is walked in groups of four luma rows. Rows 0 and 2 of a
// group belong to the top field and share chroma row 0 of the group; rows 1
// and 3 belong to the bottom field and share chroma row 1. Chroma therefore
// never mixes the two fields of an interlaced frame. Downsampling weights each
// pair three to one towards the outer row (row 0 of the top field, row 3 of the
// bottom field); upsampling uses the field-sited weights 7:1 and 5:3.
//
// The walks address rows through accessors (row index to pointer), so one walk
// serves a frame, one field of a frame and a frame made of two field buffers.
// A kernel that needs two rows receives their byte distance as its pitch.
#pragma once

#include <cstdint>

#include "drivers/driver_kit.hpp"

namespace tqcs::drivers {

inline int64_t Distance(const uint8_t *from, const uint8_t *to) {
  return static_cast<int64_t>(reinterpret_cast<uintptr_t>(to) - reinterpret_cast<uintptr_t>(from));
}

// Calls pair(rowA, rowB, chromaRow) for every chroma row of a 4:2:0 image of
// `height` luma rows, rowA being the row weighted three to one: (0, 2) and
// (3, 1) of every group of four, then (4G, 4G + 1) when bit 1 of the height is
// set. A last single row of an odd height has no partner and is not visited.
template <class Pair>
void ForEachChromaPair(int32_t height, const Pair &pair) {
  const int64_t groups = height >> 2;
  for (int64_t g = 0; g < groups; ++g) {
    pair(4 * g, 4 * g + 2, 2 * g);
    pair(4 * g + 3, 4 * g + 1, 2 * g + 1);
  }
  if (height & 2) pair(4 * groups, 4 * groups + 1, 2 * groups);
}

// A 4:2:0 chroma upsampling step: kernel 31 (first), 32 (last) or 33
// (interior) on chroma row `chroma`, walking its field forwards (dir +1) or
// backwards (dir -1); the kernel's two output rows are luma rows out1, out2.
enum class Upsample { kFirst, kLast, kInterior };
struct UpsampleStep {
  Upsample kind;
  int64_t chroma;
  int64_t dir;
  int64_t out1, out2;
};

// Calls step(...) for every upsampling call of a 4:2:0 image of `height` luma
// rows (height >= 8), group by group: the top field walked downwards, the
// bottom field upwards, so the same kernels give each field its own siting.
// Returns the first luma row that no step covered (4G).
template <class Step>
int64_t ForEachUpsampleStep(int32_t height, const Step &step) {
  const int64_t groups = height >> 2;
  for (int64_t g = 0; g < groups; ++g) {
    const int64_t y = 4 * g;
    if (g == 0) {
      step(UpsampleStep{Upsample::kFirst, 2 * g, +1, y, y + 2});
      step(UpsampleStep{Upsample::kLast, 2 * g + 1, +1, y + 1, y + 3});
    } else if (g == groups - 1) {
      step(UpsampleStep{Upsample::kLast, 2 * g, -1, y + 2, y});
      step(UpsampleStep{Upsample::kFirst, 2 * g + 1, -1, y + 3, y + 1});
    } else {
      step(UpsampleStep{Upsample::kInterior, 2 * g, +1, y, y + 2});
      step(UpsampleStep{Upsample::kInterior, 2 * g + 1, -1, y + 3, y + 1});
    }
  }
  return 4 * groups;
}

// The 8-bit upsampling kernel of a step.
inline auto UpsampleKernel(Upsample kind) {
  switch (kind) {
    case Upsample::kFirst:
      return &TCS_KernelTable::YUV420_2_YUV422_UV_FirstRow;
    case Upsample::kLast:
      return &TCS_KernelTable::YUV420_2_YUV422_UV_LastRow;
    case Upsample::kInterior:
      break;
  }
  return &TCS_KernelTable::YUV420_2_YUV422_UV_Row;
}

// Views of images by plane and row index.
template <size_t N>
struct FrameView {
  std::array<Plane, N> p;
  uint8_t *operator()(size_t plane, int64_t y) const { return p[plane].Row(y); }
};
// One field of a frame: rows parity, parity + 2, ...
template <size_t N>
struct FieldView {
  std::array<Plane, N> p;
  int64_t parity;
  uint8_t *operator()(size_t plane, int64_t y) const { return p[plane].Row(2 * y + parity); }
};
// A frame made of two field buffers: even rows from the first, odd rows from
// the second.
template <size_t N>
struct FieldsView {
  std::array<Plane, N> first, second;
  uint8_t *operator()(size_t plane, int64_t y) const {
    return ((y & 1) ? second : first)[plane].Row(y >> 1);
  }
};

// Deduction from the planes (aggregate deduction is not in every compiler).
template <size_t N>
FrameView(std::array<Plane, N>) -> FrameView<N>;
template <size_t N>
FieldView(std::array<Plane, N>, int64_t) -> FieldView<N>;
template <size_t N>
FieldsView(std::array<Plane, N>, std::array<Plane, N>) -> FieldsView<N>;

// Turns a 4:2:0 image upside down: a luma plane (the first of three) over
// `height` rows, the chroma planes over height / 2 rows.
template <size_t N>
void TurnUpsideDown420(std::array<Plane, N> &p, int32_t height) {
  for (size_t i = 0; i < N; ++i) {
    std::array<Plane, 1> one{p[i]};
    TurnUpsideDown(one, (N == 3 && i == 0) ? height : height >> 1);
    p[i] = one[0];
  }
}

// The three forms of a conversion to planar 4:2:0, given image(dst, src,
// rows) that converts one 4:2:0 image from a source view: the frame; each field
// of the frame as a 4:2:0 image of its own rows (field 1 takes the extra row of
// an odd height); the frame made of two field buffers. The source is read
// bottom-up under flip, except in the compose form, which writes the frame
// bottom-up. Each form keeps every field's chroma in its own field.
template <Form F, class Images, class Image>
void WalkTo420(const Images &images, int32_t height, uint8_t flip, const Image &image) {
  if constexpr (F == Form::kFrame) {
    auto src = std::get<1>(images);
    if (flip) TurnUpsideDown(src, height);
    image(std::get<0>(images), FrameView{src}, height);
  } else if constexpr (F == Form::kSplit) {
    auto src = std::get<2>(images);
    if (flip) TurnUpsideDown(src, height);
    image(std::get<0>(images), FieldView{src, 0}, (height + 1) / 2);
    image(std::get<1>(images), FieldView{src, 1}, height / 2);
  } else {
    auto dst = std::get<0>(images);
    if (flip) TurnUpsideDown420(dst, height);
    image(dst, FieldsView{std::get<1>(images), std::get<2>(images)}, height);
  }
}

// The scratch rows of the 4:2:0 conversions: 2 x width bytes holding four
// half-width chroma rows, U of row a, U of row b, V of row a, V of row b.
struct ChromaScratch {
  uint8_t *base;
  int32_t width;
  uint8_t *ua() const { return base; }
  uint8_t *ub() const { return base + width / 2; }
  uint8_t *va() const { return base + width; }
  uint8_t *vb() const { return base + width + width / 2; }
};

// Allocates the scratch of a conversion, or writes its failure record.
template <class Conv>
uint8_t *ScratchOrRecord(Form form, size_t bytes, const char16_t *message) {
  uint8_t *scratch = AllocateScratch(bytes);
  if (!scratch) {
    const char16_t *name = form == Form::kSplit     ? Conv::kNames.split
                           : form == Form::kCompose ? Conv::kNames.compose
                                                    : Conv::kNames.frame;
    WriteRecord(log::kFailure, Conv::kUnit, name, message);
  }
  return scratch;
}

}  // namespace tqcs::drivers
