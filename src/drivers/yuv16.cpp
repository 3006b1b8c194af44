// Drivers of the packed 4:2:2 source (root sub-table 4). The packing flag
// names the source order: zero YUYV, non-zero UYVY.
#include <optional>

#include "drivers/driver_kit.hpp"
#include "drivers/driver_tables.hpp"
#include "frame/yuv420_rows.hpp"

namespace tqcs::drivers {
namespace {

struct FromYUV16 : Defaults {
  using Src = PackedYUV16;
  static constexpr Fast kFast = Fast::kNaturalEvenWidth;
};

// 0: delegated whole to TQMemProc's frame swap; no check of its own.
struct YUV16_Swap_Frame {
  using Dst = PackedYUV16;
  using Src = PackedYUV16;
  static void Single(uint8_t *dst, int64_t dstPitch, const uint8_t *src, int64_t srcPitch,
                     int32_t width, int32_t height, uint8_t flip) {
    g_pMemProcRoot->pMem->TMP_YUV16_Swap_Frame(dst, dstPitch, src, srcPitch, width, height, flip);
  }
};

// 1-2: TQMemProc's row swap, twice per row pair and once more for the last
// row of an odd height (into, or from, field 1).
struct YUV16_Swap : Generic<YUV16_Swap, FromYUV16> {
  TQCS_DRIVER_NAMES(YUV16_Swap);
  using Dst = PackedYUV16;
  static constexpr Odd kOdd = Odd::kField1Only;
  static auto MakeRow(Form) {
    return std::optional(
        [](Rows d, Rows s, int32_t n) { g_pMemProcRoot->pMem->TMP_YUV16_Swap_Row(d[0], s[0], n); });
  }
};

// The four 4:2:2 to RGB kernels by packing and channel order.
template <class Member>
Member ByOrders(uint8_t packing, uint8_t order, Member yuyvRgb, Member yuyvBgr, Member uyvyRgb,
                Member uyvyBgr) {
  return packing ? (order ? uyvyBgr : uyvyRgb) : (order ? yuyvBgr : yuyvRgb);
}

// 3-5: to RGB32 with a constant alpha. The whole-image call of contiguous
// frames joins the rows, so the odd pixel ending each row blends with the next
// row's first pair rather than repeating its own: kept for compatibility.
struct YUV16_2_RGB32 : Generic<YUV16_2_RGB32, FromYUV16> {
  TQCS_DRIVER_NAMES(YUV16_2_RGB32);
  using Dst = Packed<4>;
  static bool OptionsPass(Form, int32_t matrix, uint8_t, uint8_t, uint8_t) {
    return MatrixBelow4(matrix);
  }
  static auto MakeRow(Form, int32_t matrix, uint8_t order, uint8_t packing, uint8_t alpha) {
    using T = TCS_KernelTable;
    const auto kernel = ByOrders(packing, order, &T::YUYV_2_RGB32_Row, &T::YUYV_2_BGR32_Row,
                                 &T::UYVY_2_RGB32_Row, &T::UYVY_2_BGR32_Row);
    const YuvToRgbRows t = YuvToRgb(matrix);
    return RowIf(Usable(t), [=](Rows d, Rows s, int32_t n) {
      (Kernels().*kernel)(d[0], s[0], n, alpha, t.rv, t.gu, t.gv, t.bu);
    });
  }
};

// 6-8: to RGB24.
struct YUV16_2_RGB24 : Generic<YUV16_2_RGB24, FromYUV16> {
  TQCS_DRIVER_NAMES(YUV16_2_RGB24);
  using Dst = Packed<3>;
  static bool OptionsPass(Form, int32_t matrix, uint8_t, uint8_t) { return MatrixBelow4(matrix); }
  static auto MakeRow(Form, int32_t matrix, uint8_t order, uint8_t packing) {
    using T = TCS_KernelTable;
    const auto kernel = ByOrders(packing, order, &T::YUYV_2_RGB24_Row, &T::YUYV_2_BGR24_Row,
                                 &T::UYVY_2_RGB24_Row, &T::UYVY_2_BGR24_Row);
    const YuvToRgbRows t = YuvToRgb(matrix);
    return RowIf(Usable(t), [=](Rows d, Rows s, int32_t n) {
      (Kernels().*kernel)(d[0], s[0], n, t.rv, t.gu, t.gv, t.bu);
    });
  }
};

// 9-11: to YUVA with a constant alpha; no matrix.
struct YUV16_2_YUVA : Generic<YUV16_2_YUVA, FromYUV16> {
  TQCS_DRIVER_NAMES(YUV16_2_YUVA);
  using Dst = Packed<4>;
  // Row by row only: the odd pixel of a row's last pair repeats that pair's
  // chroma, which a joined run of rows would take from the next row instead.
  static constexpr Fast kFast = Fast::kNone;
  static auto MakeRow(Form, uint8_t packing, uint8_t alpha) {
    const auto kernel =
        packing ? &TCS_KernelTable::UYVY_2_YUVA_Row : &TCS_KernelTable::YUYV_2_YUVA_Row;
    return std::optional(
        [=](Rows d, Rows s, int32_t n) { (Kernels().*kernel)(d[0], s[0], n, alpha); });
  }
};

// 12-14: to planar 4:2:2, one call per row.
struct YUV16_2_YUV422 : Generic<YUV16_2_YUV422, FromYUV16> {
  TQCS_DRIVER_NAMES(YUV16_2_YUV422);
  using Dst = Planar422<1>;
  static constexpr Fast kFast = Fast::kNone;
  static auto MakeRow(Form, uint8_t packing) {
    const auto kernel =
        packing ? &TCS_KernelTable::UYVY_2_YUV422_Row : &TCS_KernelTable::YUYV_2_YUV422_Row;
    return std::optional(
        [=](Rows d, Rows s, int32_t n) { (Kernels().*kernel)(d[0], d[1], d[2], s[0], n); });
  }
};

// 15-17: to planar 4:2:0 without a working buffer: one kernel call reads two
// source rows of one field and writes both luma rows and the merged chroma row.
struct YUV16_2_YUV420 : Defaults420 {
  TQCS_DRIVER_NAMES(YUV16_2_YUV420);
  using Dst = Planar420<1>;
  using Src = PackedYUV16;
  static constexpr Rule RuleFor(Form) { return {Style::kLogReturn, true, true, 1, 2}; }

  template <Form F, class Images>
  static void Walk(int32_t width, int32_t height, uint8_t flip, const Images &images,
                   uint8_t packing) {
    const auto kernel =
        packing ? &TCS_KernelTable::UYVY_2_YUV420_UV_Row : &TCS_KernelTable::YUYV_2_YUV420_UV_Row;
    auto image = [&](const Planes<3> &dst, const auto &src, int32_t rows) {
      frame::ForEachMergePair(rows, true, [&](const frame::MergePair &m) {
        uint8_t *lumaA = dst[0].Row(m.a);
        (Kernels().*kernel)(lumaA, frame::Distance(lumaA, dst[0].Row(m.b)), dst[1].Row(m.chroma),
                            dst[2].Row(m.chroma), src(0, m.a),
                            frame::Distance(src(0, m.a), src(0, m.b)), width);
      });
    };
    frame::WalkTo420<F>(images, height, flip, image);
  }
};

// 18-20: present in the table, not implemented.
TQCS_NAME_ONLY(YUV16_2_YUV, PackedYUV16, Packed<3>);

const auto kTable = TableOf({
    Entry<YUV16_Swap_Frame, Form::kSingle>(&TCS_YUV16Table::TCS_YUV16_Swap_Frame),
    Entry<YUV16_Swap, Form::kSplit>(&TCS_YUV16Table::TCS_YUV16_Swap_Split),
    Entry<YUV16_Swap, Form::kCompose>(&TCS_YUV16Table::TCS_YUV16_Swap_Compose),
    TQCS_TRIPLE(TCS_YUV16Table, YUV16_2_RGB32),
    TQCS_TRIPLE(TCS_YUV16Table, YUV16_2_RGB24),
    TQCS_TRIPLE(TCS_YUV16Table, YUV16_2_YUVA),
    TQCS_TRIPLE(TCS_YUV16Table, YUV16_2_YUV422),
    TQCS_TRIPLE(TCS_YUV16Table, YUV16_2_YUV420),
    TQCS_NOT_IMPLEMENTED(TCS_YUV16Table, YUV16_2_YUV),
});

}  // namespace

std::span<const SlotEntry> YUV16Drivers() { return kTable.entries; }
std::span<const SlotLayout> YUV16Layouts() { return kTable.layouts; }

}  // namespace tqcs::drivers
