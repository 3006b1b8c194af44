// Drivers of the YUVA source (root sub-table 3).
#include <optional>

#include "drivers/driver_kit.hpp"
#include "drivers/driver_tables.hpp"

namespace tqcs::drivers {
namespace {

struct FromYUVA : Defaults {
  using Src = Packed<4>;
};

// 0-2: to RGB32, alpha carried over; one kernel call per row.
struct YUVA_2_RGB32 : Generic<YUVA_2_RGB32, FromYUVA> {
  TQCS_DRIVER_NAMES(YUVA_2_RGB32);
  using Dst = Packed<4>;
  static bool OptionsPass(Form, int32_t matrix, uint8_t) { return MatrixBelow4(matrix); }
  static auto MakeRow(Form, int32_t matrix, uint8_t order) {
    const auto kernel =
        order ? &TCS_KernelTable::YUVA_2_BGR32_Row : &TCS_KernelTable::YUVA_2_RGB32_Row;
    const YuvToRgbRows t = YuvToRgb(matrix);
    return RowIf(Usable(t), [=](Rows d, Rows s, int32_t n) {
      (Kernels().*kernel)(d[0], s[0], n, t.rv, t.gu, t.gv, t.bu);
    });
  }
};

// 3-5: to RGB24, alpha dropped. The frame form tests only pointers and
// pitches and returns silently for a selector that names no set.
struct YUVA_2_RGB24 : Generic<YUVA_2_RGB24, FromYUVA> {
  TQCS_DRIVER_NAMES(YUVA_2_RGB24);
  using Dst = Packed<3>;
  static constexpr Fast kFast = Fast::kNatural;
  static constexpr Rule RuleFor(Form f) {
    return f == Form::kFrame ? Rule{Style::kLogReturn, true, false} : kLogged;
  }
  static bool OptionsPass(Form f, int32_t matrix, uint8_t) {
    return f == Form::kFrame || MatrixBelow4(matrix);
  }
  static auto MakeRow(Form, int32_t matrix, uint8_t order) {
    const auto kernel =
        order ? &TCS_KernelTable::YUVA_2_BGR24_Row : &TCS_KernelTable::YUVA_2_RGB24_Row;
    const YuvToRgbRows t = YuvToRgb(matrix);
    auto row = [=](Rows d, Rows s, int32_t n) {
      (Kernels().*kernel)(d[0], s[0], n, t.rv, t.gu, t.gv, t.bu);
    };
    return RowIf(Usable(t), row);
  }
};

// 6-8: to packed 4:2:2, a pure repack (the even pixel's chroma); silent.
struct YUVA_2_YUV16 : Generic<YUVA_2_YUV16, FromYUVA> {
  TQCS_DRIVER_NAMES(YUVA_2_YUV16);
  using Dst = PackedYUV16;
  static constexpr Rule RuleFor(Form) { return kSilentRule; }
  static constexpr Fast kFast = Fast::kNaturalEvenWidth;
  static auto MakeRow(Form, uint8_t packing) {
    const auto kernel =
        packing ? &TCS_KernelTable::YUVA_2_UYVY_Row : &TCS_KernelTable::YUVA_2_YUYV_Row;
    return std::optional(
        WithinOddRow<Src>([=](Rows d, Rows s, int32_t n) { (Kernels().*kernel)(d[0], s[0], n); }));
  }
};

// 9-11: to planar 4:2:2; silent, one call per row.
struct YUVA_2_YUV422 : Generic<YUVA_2_YUV422, FromYUVA> {
  TQCS_DRIVER_NAMES(YUVA_2_YUV422);
  using Dst = Planar422<1>;
  static constexpr Rule RuleFor(Form) { return kSilentRule; }
  static auto MakeRow(Form) {
    return std::optional(
        [](Rows d, Rows s, int32_t n) { Kernels().YUVA_2_YUV422_Row(d[0], d[1], d[2], s[0], n); });
  }
};

const auto kTable = TableOf({
    TQCS_TRIPLE(TCS_YUVATable, YUVA_2_RGB32),
    TQCS_TRIPLE(TCS_YUVATable, YUVA_2_RGB24),
    TQCS_TRIPLE(TCS_YUVATable, YUVA_2_YUV16),
    TQCS_TRIPLE(TCS_YUVATable, YUVA_2_YUV422),
});

}  // namespace

std::span<const SlotEntry> YUVADrivers() { return kTable.entries; }
std::span<const SlotLayout> YUVALayouts() { return kTable.layouts; }

}  // namespace tqcs::drivers
