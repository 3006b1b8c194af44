// The rows of planar 4:2:0, grouped: which luma rows share a chroma row, and
// in which order and direction each field's chroma is walked. The
// field-siting rule of 4:2:0 is written here once, for the frame drivers and
// for the whole-plane chroma routines.
//
// Each field carries its own chroma: chroma row c of a field serves field
// rows 2c and 2c + 1. Chroma is sited towards the outer row of its pair: the
// upper row in the first (top) field, the lower row in the second (bottom)
// field. Downsampling weights a pair three to one towards that row; upsampling
// walks the first field downwards and the second upwards, so the same
// first-row, last-row and interior kernels give each field its own siting. A
// progressive frame is walked as one first field.
//
// In an interlaced frame, field rows interleave (row r of field f is frame
// row 2r + f, chroma row c of field f frame chroma row 2c + f): the frame is
// walked in groups of four luma rows, rows 0 and 2 of a group from the top
// field sharing chroma row 0, rows 1 and 3 from the bottom field sharing
// chroma row 1. Chroma therefore never mixes the two fields.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include <cstdint>
#include <tuple>

#include "base/plane.hpp"
#include "frame/views.hpp"

namespace tqcs::frame {

// A 4:2:2 to 4:2:0 merge: luma rows a (weighted three to one) and b give
// chroma row `chroma`.
struct MergePair {
  int64_t a, b, chroma;
};

// A 4:2:0 to 4:2:2 widening step: the first-row, last-row or interior kernel
// on chroma row `chroma`, whose neighbour in the walk is chroma row `other`
// (the same row where the field has only one); the kernel's two output rows
// are luma rows out1 and out2.
enum class Upsample { kFirst, kLast, kInterior };
struct WidenStep {
  Upsample kind;
  int64_t chroma, other;
  int64_t out1, out2;
};

// Chroma row c of a field (`second` for the bottom one), in field rows.
constexpr MergePair FieldMergePair(int64_t c, bool second) {
  return {2 * c + second, 2 * c + 1 - second, c};
}

// Chroma row c of a field of `rows` chroma rows, in field rows.
constexpr WidenStep FieldWidenStep(int64_t c, int64_t rows, bool second) {
  Upsample kind = Upsample::kInterior;
  int64_t dir = second ? -1 : 1;
  if (c == 0) {
    kind = second ? Upsample::kLast : Upsample::kFirst;
    dir = rows == 1 ? 0 : 1;
  } else if (c == rows - 1) {
    kind = second ? Upsample::kFirst : Upsample::kLast;
    dir = -1;
  }
  const int64_t lower = 2 * c + 1, upper = 2 * c;
  return {kind, c, c + dir, dir < 0 ? lower : upper, dir < 0 ? upper : lower};
}

// The same rows in the interlaced frame that field `f` belongs to.
constexpr MergePair InFrame(const MergePair &m, int64_t f) {
  return {2 * m.a + f, 2 * m.b + f, 2 * m.chroma + f};
}
constexpr WidenStep InFrame(const WidenStep &s, int64_t f) {
  return {s.kind, 2 * s.chroma + f, 2 * s.other + f, 2 * s.out1 + f, 2 * s.out2 + f};
}

// Calls pair(MergePair) for every chroma row of a 4:2:0 image of `height`
// luma rows. Interlaced: group by group, the top field's pair first; two rows
// left after the last group (bit 1 of the height) merge as a progressive pair.
// A last single row of an odd height has no partner and is not visited.
template <class Pair>
void ForEachMergePair(int32_t height, bool interlaced, const Pair &pair) {
  if (!interlaced) {
    for (int64_t c = 0; c < (height >> 1); ++c) pair(FieldMergePair(c, false));
    return;
  }
  const int64_t groups = height >> 2;
  for (int64_t g = 0; g < groups; ++g) {
    pair(InFrame(FieldMergePair(g, false), 0));
    pair(InFrame(FieldMergePair(g, true), 1));
  }
  if (height & 2) pair(MergePair{4 * groups, 4 * groups + 1, 2 * groups});
}

// Calls step(WidenStep) for every widening call of a 4:2:0 image of `height`
// luma rows, in the order the calls are made (interlaced: group by group, the
// top field's step first). Returns the first luma row that no step covered:
// the two rows left after the last group (bit 1 of the height) are the
// caller's, as is a last single row of an odd height.
template <class Step>
int64_t ForEachWidenStep(int32_t height, bool interlaced, const Step &step) {
  if (!interlaced) {
    const int64_t rows = height >> 1;
    for (int64_t c = 0; c < rows; ++c) step(FieldWidenStep(c, rows, false));
    return 2 * rows;
  }
  const int64_t groups = height >> 2;
  for (int64_t g = 0; g < groups; ++g) {
    step(InFrame(FieldWidenStep(g, groups, false), 0));
    step(InFrame(FieldWidenStep(g, groups, true), 1));
  }
  return 4 * groups;
}

// The 8-bit widening kernel of a step.
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

// One widening step on planes U and V of two views (from plane dstU and srcU
// on): the kernel's pitches are the byte distances from each row to its
// partner. 8-bit and 16-bit samples alike.
template <class D, class S, class DstView, class SrcView>
void Widen(void (*kernel)(D *, int64_t, D *, int64_t, const S *, int64_t, const S *, int64_t,
                          int32_t),
           const WidenStep &st, const DstView &dst, size_t dstU, const SrcView &src, size_t srcU,
           int32_t width) {
  auto d = [&](size_t k, int64_t y) { return dst(dstU + k, y); };
  auto s = [&](size_t k, int64_t y) { return src(srcU + k, y); };
  kernel(reinterpret_cast<D *>(d(0, st.out1)), Distance(d(0, st.out1), d(0, st.out2)),
         reinterpret_cast<D *>(d(1, st.out1)), Distance(d(1, st.out1), d(1, st.out2)),
         reinterpret_cast<const S *>(s(0, st.chroma)), Distance(s(0, st.chroma), s(0, st.other)),
         reinterpret_cast<const S *>(s(1, st.chroma)), Distance(s(1, st.chroma), s(1, st.other)),
         width);
}

// One merge on planes U and V of two views into chroma row m.chroma.
template <class D, class S, class DstView, class SrcView>
void Merge(void (*kernel)(D *, D *, const S *, int64_t, const S *, int64_t, int32_t),
           const MergePair &m, const DstView &dst, size_t dstU, const SrcView &src, size_t srcU,
           int32_t width) {
  auto s = [&](size_t k, int64_t y) { return src(srcU + k, y); };
  kernel(reinterpret_cast<D *>(dst(dstU, m.chroma)), reinterpret_cast<D *>(dst(dstU + 1, m.chroma)),
         reinterpret_cast<const S *>(s(0, m.a)), Distance(s(0, m.a), s(0, m.b)),
         reinterpret_cast<const S *>(s(1, m.a)), Distance(s(1, m.a), s(1, m.b)), width);
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

// The three forms of a conversion from planar 4:2:0, given convert(dst, src)
// on two views: the frame; the frame split into two field buffers, the source
// read bottom-up under flip; two field buffers composed into the frame. The
// frame and compose forms write the destination bottom-up under flip.
template <Form F, class Images, class Convert>
void WalkFrom420(const Images &images, int32_t height, uint8_t flip, const Convert &convert) {
  if constexpr (F == Form::kFrame) {
    auto dst = std::get<0>(images);
    if (flip) TurnUpsideDown(dst, height);
    convert(FrameView{dst}, FrameView{std::get<1>(images)});
  } else if constexpr (F == Form::kSplit) {
    auto src = std::get<2>(images);
    if (flip) TurnUpsideDown420(src, height);
    convert(FieldsView{std::get<0>(images), std::get<1>(images)}, FrameView{src});
  } else {
    auto dst = std::get<0>(images);
    if (flip) TurnUpsideDown(dst, height);
    convert(FrameView{dst}, FieldsView{std::get<1>(images), std::get<2>(images)});
  }
}

}  // namespace tqcs::frame
