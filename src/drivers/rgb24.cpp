// Drivers of the RGB24 source (root sub-table 2).
#include <algorithm>
#include <cstring>
#include <optional>

#include "drivers/driver_tables.hpp"
#include "drivers/rgb_to_yuv420.hpp"

namespace tqcs::drivers {
namespace {

// 0-2: exchange bytes 0 and 2; log and continue, flip on the destination, the
// last row of an odd height dropped.
struct RGB24_SwapRB : Generic<RGB24_SwapRB> {
  TQCS_DRIVER_NAMES(RGB24_SwapRB);
  using Dst = Packed<3>;
  using Src = Packed<3>;
  static constexpr const char16_t *kUnit = log::unit::kRGB24;
  static constexpr Rule RuleFor(Form) { return {Style::kLogContinue, false}; }
  static constexpr Side kFrameFlip = Side::kDestination;
  static constexpr Fast kFast = Fast::kNatural;
  static constexpr Odd kOdd = Odd::kDrop;
  static auto MakeRow(Form) {
    return std::optional(
        [](Rows d, Rows s, int32_t n) { Kernels().RGB24_SwapRB_Row(d[0], s[0], n); });
  }
};

// 3-5: to YUVA with a constant alpha. The frame form tests only pointers and
// pitches and returns silently for a selector that names no set.
struct RGB24_2_YUVA : Generic<RGB24_2_YUVA> {
  TQCS_DRIVER_NAMES(RGB24_2_YUVA);
  using Dst = Packed<4>;
  using Src = Packed<3>;
  static constexpr Fast kFast = Fast::kNatural;
  static constexpr Rule RuleFor(Form f) {
    return f == Form::kFrame ? Rule{Style::kLogReturn, true, false} : kLogged;
  }
  static bool OptionsPass(Form f, int32_t matrix, uint8_t, uint8_t) {
    return f == Form::kFrame || MatrixBelow4(matrix);
  }
  static auto MakeRow(Form, int32_t matrix, uint8_t order, uint8_t alpha) {
    const RgbToYuvRows r = RgbToYuv(matrix, order);
    auto row = [=](Rows d, Rows s, int32_t n) {
      Kernels().RGB24_2_YUVA_Row(d[0], s[0], n, alpha, r.y, r.u, r.v);
    };
    return RowIf(Usable(r), row);
  }
};

// 6-8: to packed 4:2:2, YUYV or UYVY by the packing flag.
struct RGB24_2_YUV16 : Generic<RGB24_2_YUV16> {
  TQCS_DRIVER_NAMES(RGB24_2_YUV16);
  using Dst = PackedYUV16;
  using Src = Packed<3>;
  static constexpr Fast kFast = Fast::kNaturalEvenWidth;
  static bool OptionsPass(Form, int32_t matrix, uint8_t, uint8_t) { return MatrixBelow4(matrix); }
  static auto MakeRow(Form, int32_t matrix, uint8_t packing, uint8_t order) {
    const auto kernel =
        packing ? &TCS_KernelTable::RGB24_2_UYVY_Row : &TCS_KernelTable::RGB24_2_YUYV_Row;
    const RgbToYuvRows r = RgbToYuv(matrix, order);
    return RowIf(Usable(r), WithinOddRow<Src>([=](Rows d, Rows s, int32_t n) {
                   (Kernels().*kernel)(d[0], s[0], n, r.y, r.u, r.v);
                 }));
  }
};

// 9-11: to planar 4:2:2, silent, one kernel call per row; only the HD and SD
// sets are known here.
struct RGB24_2_YUV422 : Generic<RGB24_2_YUV422> {
  TQCS_DRIVER_NAMES(RGB24_2_YUV422);
  using Dst = Planar422<1>;
  using Src = Packed<3>;
  static constexpr Rule RuleFor(Form) { return kSilentRule; }
  static bool OptionsPass(Form, int32_t matrix, uint8_t) { return MatrixBelow4(matrix); }
  static auto MakeRow(Form, int32_t matrix, uint8_t order) {
    const RgbToYuvRows r = RgbToYuvHdSd(matrix, order);
    return RowIf(Usable(r), [=](Rows d, Rows s, int32_t n) {
      Kernels().RGB24_2_YUV422_Row(d[0], d[1], d[2], s[0], n, r.y, r.u, r.v);
    });
  }
};

// 12-14: to planar 4:2:0 through a working buffer.
struct RGB24_2_YUV420 : RgbToYUV420<RGB24_2_YUV420> {
  TQCS_DRIVER_NAMES(RGB24_2_YUV420);
  using Src = Packed<3>;
  static constexpr auto kRow = &TCS_KernelTable::RGB24_2_YUV422_Row;
};

// 15-17: present in the table, not implemented.
TQCS_NAME_ONLY(RGB24_2_YUV, Packed<3>, Packed<3>);

// 18-20: to hue (16-bit), saturation and value planes; silent, pitches untested.
// The kernel stores hues as 16-bit values: a hue row at an odd address (an odd
// pitch, or an odd base) is converted in runs into an aligned buffer on the
// stack and copied out byte-wise.
struct RGB24_2_HSV : Generic<RGB24_2_HSV> {
  TQCS_DRIVER_NAMES(RGB24_2_HSV);
  using Dst = HSVPlanes;
  using Src = Packed<3>;
  static constexpr Rule RuleFor(Form) { return {Style::kSilent, false}; }
  static constexpr Fast kFast = Fast::kNatural;
  static auto MakeRow(Form, uint8_t order) {
    const auto kernel =
        order ? &TCS_KernelTable::BGR24_2_HSV_Row : &TCS_KernelTable::RGB24_2_HSV_Row;
    return std::optional([=](Rows d, Rows s, int32_t n) {
      if (reinterpret_cast<uintptr_t>(d[0]) % alignof(uint16_t) == 0)
        return (Kernels().*kernel)(reinterpret_cast<uint16_t *>(d[0]), d[1], d[2], s[0], n);
      constexpr int32_t kRun = 256;
      uint16_t hue[kRun];
      for (int32_t i = 0; i < n; i += kRun) {
        const int32_t k = std::min(kRun, n - i);
        (Kernels().*kernel)(hue, d[1] + i, d[2] + i, s[0] + 3 * int64_t{i}, k);
        std::memcpy(d[0] + 2 * int64_t{i}, hue, 2 * static_cast<size_t>(k));
      }
    });
  }
};

// 21-23: to grey; flip on the destination; a selector that names no set
// converts nothing.
struct RGB24_2_Gray : Generic<RGB24_2_Gray> {
  TQCS_DRIVER_NAMES(RGB24_2_Gray);
  using Dst = Packed<1>;
  using Src = Packed<3>;
  static constexpr Rule RuleFor(Form) { return {Style::kSilent, false}; }
  static constexpr Side kFrameFlip = Side::kDestination;
  static constexpr Fast kFast = Fast::kNatural;
  static auto MakeRow(Form, int32_t matrix, uint8_t order) {
    const int16_t *luma = RgbToYuv(matrix, order).y;
    auto row = [=](Rows d, Rows s, int32_t n) { Kernels().RGB24_2_Gray_Row(d[0], s[0], luma, n); };
    return NamesASet(matrix) ? std::optional(row) : std::nullopt;
  }
};

// 24: per-channel histograms that accumulate; with the channel-order flag set
// the first and third arrays are exchanged so each array counts one colour.
struct RGB24_Histogram {
  using Dst = HistogramCounts;
  using Src = Packed<3>;
  static void Single(uint32_t *hist0, uint32_t *hist1, uint32_t *hist2, const uint8_t *src,
                     int64_t srcPitch, int32_t width, int32_t height, uint8_t order) {
    if (!hist0 || !hist1 || !hist2 || !src || width < 1 || height < 1) return;
    if (order) std::swap(hist0, hist2);
    if (srcPitch == 3 * int64_t{width} && FitsOneCall(width, height)) {
      Kernels().RGB24_Histogram_Row(hist0, hist1, hist2, src, width * height);
      return;
    }
    const Plane plane{const_cast<uint8_t *>(src), srcPitch};
    for (int32_t y = 0; y < height; ++y)
      Kernels().RGB24_Histogram_Row(hist0, hist1, hist2, plane.Row(y), width);
  }
};

const auto kTable = TableOf({
    TQCS_TRIPLE(TCS_RGB24Table, RGB24_SwapRB),
    TQCS_TRIPLE(TCS_RGB24Table, RGB24_2_YUVA),
    TQCS_TRIPLE(TCS_RGB24Table, RGB24_2_YUV16),
    TQCS_TRIPLE(TCS_RGB24Table, RGB24_2_YUV422),
    TQCS_TRIPLE(TCS_RGB24Table, RGB24_2_YUV420),
    TQCS_NOT_IMPLEMENTED(TCS_RGB24Table, RGB24_2_YUV),
    TQCS_TRIPLE(TCS_RGB24Table, RGB24_2_HSV),
    TQCS_TRIPLE(TCS_RGB24Table, RGB24_2_Gray),
    TQCS_SINGLE(TCS_RGB24Table, RGB24_Histogram),
});

}  // namespace

std::span<const SlotEntry> RGB24Drivers() { return kTable.entries; }
std::span<const SlotLayout> RGB24Layouts() { return kTable.layouts; }

}  // namespace tqcs::drivers
