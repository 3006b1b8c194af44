// Drivers of the planar 4:2:2 source (root sub-table 5): a luma plane and two
// chroma planes of width / 2 samples, one chroma row per luma row.
#include <optional>

#include "drivers/driver_kit.hpp"
#include "drivers/driver_tables.hpp"
#include "frame/yuv420_rows.hpp"

namespace tqcs::drivers {
namespace {

struct From422 : Defaults {
  using Src = Planar422<1>;
};

// 0-2: to RGB32 with a constant alpha; one call per row.
struct YUV422_2_RGB32 : Generic<YUV422_2_RGB32, From422> {
  TQCS_DRIVER_NAMES(YUV422_2_RGB32);
  using Dst = Packed<4>;
  static bool OptionsPass(Form, int32_t matrix, uint8_t, uint8_t) { return MatrixBelow4(matrix); }
  static auto MakeRow(Form, int32_t matrix, uint8_t order, uint8_t alpha) {
    const auto kernel =
        order ? &TCS_KernelTable::YUV422_2_BGR32_Row : &TCS_KernelTable::YUV422_2_RGB32_Row;
    const YuvToRgbRows t = YuvToRgb(matrix);
    return RowIf(Usable(t), [=](Rows d, Rows s, int32_t n) {
      (Kernels().*kernel)(d[0], s[0], s[1], s[2], n, alpha, t.rv, t.gu, t.gv, t.bu);
    });
  }
};

// 3-5: to RGB24.
struct YUV422_2_RGB24 : Generic<YUV422_2_RGB24, From422> {
  TQCS_DRIVER_NAMES(YUV422_2_RGB24);
  using Dst = Packed<3>;
  static bool OptionsPass(Form, int32_t matrix, uint8_t) { return MatrixBelow4(matrix); }
  static auto MakeRow(Form, int32_t matrix, uint8_t order) {
    const auto kernel =
        order ? &TCS_KernelTable::YUV422_2_BGR24_Row : &TCS_KernelTable::YUV422_2_RGB24_Row;
    const YuvToRgbRows t = YuvToRgb(matrix);
    return RowIf(Usable(t), [=](Rows d, Rows s, int32_t n) {
      (Kernels().*kernel)(d[0], s[0], s[1], s[2], n, t.rv, t.gu, t.gv, t.bu);
    });
  }
};

// 6-8: to YUVA with a constant alpha; silent.
struct YUV422_2_YUVA : Generic<YUV422_2_YUVA, From422> {
  TQCS_DRIVER_NAMES(YUV422_2_YUVA);
  using Dst = Packed<4>;
  static constexpr Rule RuleFor(Form) { return kSilentRule; }
  static auto MakeRow(Form, uint8_t alpha) {
    return std::optional([=](Rows d, Rows s, int32_t n) {
      Kernels().YUV422_2_YUVA_Row(d[0], s[0], s[1], s[2], n, alpha);
    });
  }
};

// 9-11: to packed 4:2:2; silent.
struct YUV422_2_YUV16 : Generic<YUV422_2_YUV16, From422> {
  TQCS_DRIVER_NAMES(YUV422_2_YUV16);
  using Dst = PackedYUV16;
  static constexpr Rule RuleFor(Form) { return kSilentRule; }
  static auto MakeRow(Form, uint8_t packing) {
    const auto kernel =
        packing ? &TCS_KernelTable::YUV422_2_UYVY_Row : &TCS_KernelTable::YUV422_2_YUYV_Row;
    return std::optional(
        [=](Rows d, Rows s, int32_t n) { (Kernels().*kernel)(d[0], s[0], s[1], s[2], n); });
  }
};

// 12-14: 10-bit planes (16-bit samples) to 8-bit packed 4:2:2.
struct YUV422_10Bit_2_YUV16 : Generic<YUV422_10Bit_2_YUV16, From422> {
  TQCS_DRIVER_NAMES(YUV422_10Bit_2_YUV16);
  using Dst = PackedYUV16;
  using Src = Planar422<2>;
  static constexpr const char16_t *kUnit = log::unit::kYUV422;
  static auto MakeRow(Form, uint8_t packing) {
    const auto kernel = packing ? &TCS_KernelTable::YUV422_10Bit_2_UYVY_Row
                                : &TCS_KernelTable::YUV422_10Bit_2_YUYV_Row;
    return std::optional([=](Rows d, Rows s, int32_t n) {
      (Kernels().*kernel)(d[0], reinterpret_cast<const uint16_t *>(s[0]),
                          reinterpret_cast<const uint16_t *>(s[1]),
                          reinterpret_cast<const uint16_t *>(s[2]), n);
    });
  }
};

// 18-20: chroma planes only, 4:2:2 to 4:2:0 (the luma plane is already the
// 4:2:0 one). Rows are paired within each field, three to one towards the
// outer row, without a working buffer.
struct YUV422_2_YUV420_UV : Defaults420 {
  TQCS_DRIVER_NAMES(YUV422_2_YUV420_UV);
  using Dst = ChromaPlanes420;
  using Src = ChromaPlanes422;
  static constexpr Rule RuleFor(Form f) {
    return {f == Form::kCompose ? Style::kSilent : Style::kLogReturn, true, true, 2, 2};
  }
  template <Form F, class Images>
  static void Walk(int32_t width, int32_t height, uint8_t flip, const Images &images) {
    auto image = [&](const Planes<2> &dst, const auto &src, int32_t rows) {
      frame::ForEachMergePair(rows, true, [&](const frame::MergePair &m) {
        frame::Merge(Kernels().YUV422_2_YUV420_UV_Row, m, frame::FrameView{dst}, 0, src, 0,
                     width / 2);
      });
    };
    frame::WalkTo420<F>(images, height, flip, image);
  }
};

// 21: 10-bit planes to 8-bit planes, each sample shifted right by 6; tests only
// its six pointers; flip writes the destination planes bottom-up.
struct YUV422_10Bit_2_YUV422_Frame {
  using Dst = Planar422<1>;
  using Src = Planar422<2>;
  static void Single(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, int64_t dstUPitch,
                     uint8_t *dstV, int64_t dstVPitch, const uint16_t *srcY, int64_t srcYPitch,
                     const uint16_t *srcU, int64_t srcUPitch, const uint16_t *srcV,
                     int64_t srcVPitch, int32_t width, int32_t height, uint8_t flip) {
    if (!dstY || !dstU || !dstV || !srcY || !srcU || !srcV) return;
    Planes<3> dst{Plane{dstY, dstYPitch}, Plane{dstU, dstUPitch}, Plane{dstV, dstVPitch}};
    const Planes<3> src{Plane{Bytes(srcY), srcYPitch}, Plane{Bytes(srcU), srcUPitch},
                        Plane{Bytes(srcV), srcVPitch}};
    if (flip) frame::TurnUpsideDown(dst, height);
    for (int32_t y = 0; y < height; ++y)
      for (int i = 0; i < 3; ++i)
        Kernels().Y10Bit_2_Y8_Row(dst[i].Row(y), reinterpret_cast<const uint16_t *>(src[i].Row(y)),
                                  i == 0 ? width : width / 2);
  }
};

// 22: the chroma of one field, 4:2:2 to 4:2:0, pairing consecutive field rows.
// A non-zero first flag marks the second (bottom) field, whose pairs are
// weighted towards their lower row, as the frame walks weight it.
struct YUV422_2_YUV420_UV_Field {
  using Dst = ChromaPlanes420;
  using Src = ChromaPlanes422;
  static void Single(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch,
                     const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV, int64_t srcVPitch,
                     int32_t width, int32_t height, uint8_t secondField, uint8_t flip) {
    if (!dstU || !dstV || !srcU || !srcV || dstUPitch <= 0 || dstVPitch <= 0 || srcUPitch <= 0 ||
        srcVPitch <= 0 || width < 2 || height < 2)
      return;
    Planes<2> dst{Plane{dstU, dstUPitch}, Plane{dstV, dstVPitch}};
    if (flip) frame::TurnUpsideDown(dst, height >> 1);
    const Planes<2> src{Plane{Bytes(srcU), srcUPitch}, Plane{Bytes(srcV), srcVPitch}};
    for (int64_t c = 0; c < (height >> 1); ++c)
      frame::Merge(Kernels().YUV422_2_YUV420_UV_Row, frame::FieldMergePair(c, secondField),
                   frame::FrameView{dst}, 0, frame::FrameView{src}, 0, width / 2);
  }
};

const auto kTable = TableOf({
    TQCS_TRIPLE(TCS_YUV422Table, YUV422_2_RGB32),
    TQCS_TRIPLE(TCS_YUV422Table, YUV422_2_RGB24),
    TQCS_TRIPLE(TCS_YUV422Table, YUV422_2_YUVA),
    TQCS_TRIPLE(TCS_YUV422Table, YUV422_2_YUV16),
    TQCS_TRIPLE(TCS_YUV422Table, YUV422_10Bit_2_YUV16),
    TQCS_TRIPLE(TCS_YUV422Table, YUV422_2_YUV420_UV),
    TQCS_SINGLE(TCS_YUV422Table, YUV422_10Bit_2_YUV422_Frame),
    TQCS_SINGLE(TCS_YUV422Table, YUV422_2_YUV420_UV_Field),
});

}  // namespace

std::span<const SlotEntry> YUV422Drivers() { return kTable.entries; }
std::span<const SlotLayout> YUV422Layouts() { return kTable.layouts; }

}  // namespace tqcs::drivers
