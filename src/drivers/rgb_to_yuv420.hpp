// RGB frames to planar 4:2:0, shared by the RGB24 and RGB32 sources: each
// luma row is converted with 4:2:2 chroma into the scratch rows, and every
// pair of rows of one field is merged into one chroma row by kernel 34.
#pragma once

#include <tuple>

#include "drivers/yuv420_walks.hpp"

namespace tqcs::drivers {

template <class Self, class SrcLayout>
struct RgbToYUV420 : Defaults {
  using Dst = Planar422<1>;  // Y, U, V; the chroma planes hold height / 2 rows
  using Src = SrcLayout;
  static constexpr Rule RuleFor(Form) { return {Style::kLogReturn, true, true, 1, 2}; }
  static bool OptionsPass(Form, int32_t matrix, uint8_t) { return MatrixBelow4(matrix); }

  template <Form F, class... Rest>
  static void Walk(int32_t width, int32_t height, uint8_t flip, const Rest &...rest) {
    const auto all = std::forward_as_tuple(rest...);
    constexpr size_t n = sizeof...(Rest);
    const RgbToYuvRows rows = RgbToYuv(std::get<n - 2>(all), std::get<n - 1>(all));
    if (!Usable(rows)) return;
    uint8_t *memory =
        ScratchOrRecord<Self>(F, 2 * static_cast<size_t>(width), log::msg::kOutOfMemory);
    if (!memory) return;
    const ChromaScratch s{memory, width};
    const int32_t half = width / 2;
    auto image = [&](const Planes<3> &dst, const auto &src, int32_t imageHeight) {
      ForEachChromaPair(imageHeight, [&](int64_t a, int64_t b, int64_t c) {
        Self::ConvertRow(dst[0].Row(a), s.ua(), s.va(), src(0, a), width, rows);
        Self::ConvertRow(dst[0].Row(b), s.ub(), s.vb(), src(0, b), width, rows);
        Kernels().YUV422_2_YUV420_UV_Row(dst[1].Row(c), dst[2].Row(c), s.ua(), half, s.va(), half,
                                         half);
      });
    };
    WalkTo420<F>(all, height, flip, image);
    FreeScratch(memory);
  }
};

}  // namespace tqcs::drivers
