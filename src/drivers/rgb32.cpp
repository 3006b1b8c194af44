// Drivers of the RGB32 source (root sub-table 1). All are silent but the 4:2:0
// triple, which logs and reports a failed allocation.
#include <optional>

#include "base/state.hpp"
#include "drivers/driver_tables.hpp"
#include "drivers/rgb_to_yuv420.hpp"
#include "kernels/colorspace.hpp"

namespace tqcs::drivers {
namespace {

struct SilentRGB32 : Defaults {
  using Src = Packed<4>;
  static constexpr Rule RuleFor(Form) { return kSilentRule; }
  static bool OptionsPass(Form, int32_t matrix, auto...) { return MatrixBelow4(matrix); }
};

// 0-2: exchange bytes 0 and 2; flip on the source; the last row of an odd
// height is dropped, as in the RGB24 swap.
struct RGB32_SwapRB : Generic<RGB32_SwapRB, SilentRGB32> {
  TQCS_DRIVER_NAMES(RGB32_SwapRB);
  using Dst = Packed<4>;
  static constexpr Fast kFast = Fast::kNatural;
  static constexpr Odd kOdd = Odd::kDrop;
  static bool OptionsPass(Form) { return true; }
  static auto MakeRow(Form) {
    return std::optional(
        [](Rows d, Rows s, int32_t n) { Kernels().RGB32_SwapRB_Row(d[0], s[0], n); });
  }
};

// 3-5: to YUVA, the alpha byte carried over.
struct RGB32_2_YUVA : Generic<RGB32_2_YUVA, SilentRGB32> {
  TQCS_DRIVER_NAMES(RGB32_2_YUVA);
  using Dst = Packed<4>;
  static constexpr Fast kFast = Fast::kNatural;
  static auto MakeRow(Form, int32_t matrix, uint8_t order) {
    const RgbToYuvRows r = RgbToYuv(matrix, order);
    return RowIf(Usable(r), [=](Rows d, Rows s, int32_t n) {
      Kernels().RGB32_2_YUVA_Row(d[0], s[0], n, r.y, r.u, r.v);
    });
  }
};

// 6-8: to packed 4:2:2 with the component-pair coefficient rows.
struct RGB32_2_YUV16 : Generic<RGB32_2_YUV16, SilentRGB32> {
  TQCS_DRIVER_NAMES(RGB32_2_YUV16);
  using Dst = PackedYUV16;
  static constexpr Fast kFast = Fast::kNaturalEvenWidth;
  static auto MakeRow(Form, int32_t matrix, uint8_t packing, uint8_t order) {
    const auto kernel =
        packing ? &TCS_KernelTable::RGB32_2_UYVY_Row : &TCS_KernelTable::RGB32_2_YUYV_Row;
    const RgbToYuvRows r = RgbToYuvPairs(matrix, order);
    return RowIf(Usable(r), WithinOddRow<Src>([=](Rows d, Rows s, int32_t n) {
                   (Kernels().*kernel)(d[0], s[0], n, r.y, r.u, r.v);
                 }));
  }
};

// 9-11: to planar 4:2:2; only the HD and SD sets are known here.
struct RGB32_2_YUV422 : Generic<RGB32_2_YUV422, SilentRGB32> {
  TQCS_DRIVER_NAMES(RGB32_2_YUV422);
  using Dst = Planar422<1>;
  static auto MakeRow(Form, int32_t matrix, uint8_t order) {
    const RgbToYuvRows r = RgbToYuvHdSd(matrix, order);
    return RowIf(Usable(r), [=](Rows d, Rows s, int32_t n) {
      Kernels().RGB32_2_YUV422_Row(d[0], d[1], d[2], s[0], n, r.y, r.u, r.v);
    });
  }
};

// 12-14: to planar 4:2:0 through a working buffer.
struct RGB32_2_YUV420 : RgbToYUV420<RGB32_2_YUV420> {
  TQCS_DRIVER_NAMES(RGB32_2_YUV420);
  using Src = Packed<4>;
  static constexpr auto kRow = &TCS_KernelTable::RGB32_2_YUV422_Row;
};

// 18-20: to grey through the kernel object chosen at start-up; flip on the
// destination; a selector that names no set converts nothing.
struct RGB32_2_Gray : Generic<RGB32_2_Gray, SilentRGB32> {
  TQCS_DRIVER_NAMES(RGB32_2_Gray);
  using Dst = Packed<1>;
  static constexpr Rule RuleFor(Form) { return {Style::kSilent, false}; }
  static constexpr Side kFrameFlip = Side::kDestination;
  static constexpr Fast kFast = Fast::kNatural;
  static bool OptionsPass(Form, int32_t, uint8_t) { return true; }
  static auto MakeRow(Form, int32_t matrix, uint8_t order) {
    const int16_t *luma = RgbToYuv(matrix, order).y;
    auto row = [=](Rows d, Rows s, int32_t n) {
      g_pColorSpaceImpl->RGB_2_YUV_Matrix(d[0], s[0], luma, n);
    };
    return NamesASet(matrix) ? std::optional(row) : std::nullopt;
  }
};

const auto kTable = TableOf({
    TQCS_TRIPLE(TCS_RGB32Table, RGB32_SwapRB),
    TQCS_TRIPLE(TCS_RGB32Table, RGB32_2_YUVA),
    TQCS_TRIPLE(TCS_RGB32Table, RGB32_2_YUV16),
    TQCS_TRIPLE(TCS_RGB32Table, RGB32_2_YUV422),
    TQCS_TRIPLE(TCS_RGB32Table, RGB32_2_YUV420),
    TQCS_TRIPLE(TCS_RGB32Table, RGB32_2_Gray),
});

}  // namespace

std::span<const SlotEntry> RGB32Drivers() { return kTable.entries; }
std::span<const SlotLayout> RGB32Layouts() { return kTable.layouts; }

}  // namespace tqcs::drivers
