// RGB frames to planar 4:2:0, shared by the RGB24 and RGB32 sources: each
// luma row is converted with 4:2:2 chroma (the conversion's kRow kernel) into
// the working rows, and every pair of rows of one field is merged into one
// chroma row by kernel 34.
#pragma once

#include <tuple>

#include "drivers/driver_kit.hpp"
#include "frame/yuv420_rows.hpp"

namespace tqcs::drivers {

template <class Conv>
struct RgbToYUV420 : Defaults420 {
  using Dst = Planar420<1>;
  static constexpr Rule RuleFor(Form) { return {Style::kLogReturn, true, true, 1, 2}; }
  static bool OptionsPass(Form, int32_t matrix, uint8_t) { return MatrixBelow4(matrix); }

  template <Form F, class Images>
  static void Walk(int32_t width, int32_t height, uint8_t flip, const Images &images,
                   int32_t matrix, uint8_t order) {
    const RgbToYuvRows r = RgbToYuv(matrix, order);
    if (!Usable(r)) return;
    uint8_t *memory =
        ScratchOrRecord<Conv>(F, 2 * static_cast<size_t>(width), log::msg::kOutOfMemory);
    if (!memory) return;
    const ChromaScratch s{memory, width};
    const int32_t half = width / 2;
    auto toYuv422 = [&](uint8_t *y, uint8_t *u, uint8_t *v, const uint8_t *src) {
      (Kernels().*Conv::kRow)(y, u, v, src, width, r.y, r.u, r.v);
    };
    auto image = [&](const Planes<3> &dst, const auto &src, int32_t rows) {
      frame::ForEachMergePair(rows, true, [&](const frame::MergePair &m) {
        toYuv422(dst[0].Row(m.a), s.ua(), s.va(), src(0, m.a));
        toYuv422(dst[0].Row(m.b), s.ub(), s.vb(), src(0, m.b));
        Kernels().YUV422_2_YUV420_UV_Row(dst[1].Row(m.chroma), dst[2].Row(m.chroma), s.ua(), half,
                                         s.va(), half, half);
      });
    };
    frame::WalkTo420<F>(images, height, flip, image);
    FreeScratch(memory);
  }
};

}  // namespace tqcs::drivers
