// Drivers of the planar 4:2:0 source (root sub-table 6). The chroma is first
// widened to 4:2:2, field by field, into the working rows; the 4:2:2 row
// kernels then produce each destination row. Every form writes the destination
// bottom-up under flip, which keeps the source's chroma rows with their luma
// rows for any height.
#include <optional>

#include "drivers/driver_kit.hpp"
#include "drivers/driver_tables.hpp"
#include "frame/yuv420_rows.hpp"

namespace tqcs::drivers {
namespace {

using frame::Upsample;

const uint16_t *Samples(const uint8_t *p) { return reinterpret_cast<const uint16_t *>(p); }

// The colour conversions from 4:2:0: at least eight rows; the working buffer's
// failure is written with Self::kScratchFailure.
template <class Self>
struct FromYUV420 : Defaults420 {
  using Src = Planar420<1>;
  static constexpr Rule RuleFor(Form) { return {Style::kLogReturn, true, true, 1, 8}; }
  static constexpr const char16_t *kScratchFailure = log::msg::kOutOfMemory;
  static size_t ScratchBytes(int32_t width) { return 2 * static_cast<size_t>(width); }
  // One upsampling step of the 8-bit source into the working rows.
  static void WidenChroma(Upsample kind, const ChromaScratch &s, const uint8_t *u, int64_t pu,
                          const uint8_t *v, int64_t pv, int32_t half) {
    (Kernels().*frame::UpsampleKernel(kind))(s.ua(), half, s.va(), half, u, pu, v, pv, half);
  }

  template <Form F, class Images, class... Opts>
  static void Walk(int32_t width, int32_t height, uint8_t flip, const Images &images,
                   Opts... opts) {
    const auto made = Self::MakeRow(F, opts...);
    if (!made) return;
    uint8_t *memory = ScratchOrRecord<Self>(F, Self::ScratchBytes(width), Self::kScratchFailure);
    if (!memory) return;
    const ChromaScratch s{memory, width};
    frame::WalkFrom420<F>(images, height, flip, [&](const auto &dst, const auto &src) {
      Convert(dst, src, width, height, s, *made);
    });
    FreeScratch(memory);
  }

 private:
  // Each widening step fills two working rows of U and of V; the two luma
  // rows that use them follow. With bit 1 of the height set, two more rows are
  // converted with the working rows as the last step left them.
  template <class DstView, class SrcView, class Row>
  static void Convert(const DstView &dst, const SrcView &src, int32_t width, int32_t height,
                      const ChromaScratch &s, const Row &row) {
    const int32_t half = width / 2;
    const int64_t rest = frame::ForEachWidenStep(height, true, [&](const frame::WidenStep &st) {
      const uint8_t *u = src(1, st.chroma), *v = src(2, st.chroma);
      Self::WidenChroma(st.kind, s, u, frame::Distance(u, src(1, st.other)), v,
                        frame::Distance(v, src(2, st.other)), half);
      row(dst(0, st.out1), src(0, st.out1), s.ua(), s.va(), width, s);
      row(dst(0, st.out2), src(0, st.out2), s.ub(), s.vb(), width, s);
    });
    if (height & 2) {
      row(dst(0, rest), src(0, rest), s.ua(), s.va(), width, s);
      row(dst(0, rest + 1), src(0, rest + 1), s.ub(), s.vb(), width, s);
    }
  }
};

// 0-2: to RGB32 with a constant alpha.
struct YUV420_2_RGB32 : FromYUV420<YUV420_2_RGB32> {
  TQCS_DRIVER_NAMES(YUV420_2_RGB32);
  using Dst = Packed<4>;
  static bool OptionsPass(Form, int32_t matrix, uint8_t, uint8_t) { return MatrixBelow4(matrix); }
  static auto MakeRow(Form, int32_t matrix, uint8_t order, uint8_t alpha) {
    const auto kernel =
        order ? &TCS_KernelTable::YUV422_2_BGR32_Row : &TCS_KernelTable::YUV422_2_RGB32_Row;
    const YuvToRgbRows t = YuvToRgb(matrix);
    return RowIf(Usable(t), [=](uint8_t *d, const uint8_t *y, const uint8_t *u, const uint8_t *v,
                                int32_t n, const ChromaScratch &) {
      (Kernels().*kernel)(d, y, u, v, n, alpha, t.rv, t.gu, t.gv, t.bu);
    });
  }
};

// 3-5: to RGB24.
struct YUV420_2_RGB24 : FromYUV420<YUV420_2_RGB24> {
  TQCS_DRIVER_NAMES(YUV420_2_RGB24);
  using Dst = Packed<3>;
  static bool OptionsPass(Form, int32_t matrix, uint8_t) { return MatrixBelow4(matrix); }
  static auto MakeRow(Form, int32_t matrix, uint8_t order) {
    const auto kernel =
        order ? &TCS_KernelTable::YUV422_2_BGR24_Row : &TCS_KernelTable::YUV422_2_RGB24_Row;
    const YuvToRgbRows t = YuvToRgb(matrix);
    return RowIf(Usable(t), [=](uint8_t *d, const uint8_t *y, const uint8_t *u, const uint8_t *v,
                                int32_t n, const ChromaScratch &) {
      (Kernels().*kernel)(d, y, u, v, n, t.rv, t.gu, t.gv, t.bu);
    });
  }
};

// 6-8 and 15-17: present in the table, not implemented.
TQCS_NAME_ONLY(YUV420_2_YUVA, Planar420<1>, Packed<4>, Defaults420);
TQCS_NAME_ONLY(YUV420_2_YUV, Planar420<1>, Packed<3>, Defaults420);

// 9-11: to packed 4:2:2. A failed working buffer is written as "Invalid Input
// Parameters" at level 3, unlike the other allocating drivers: kept so.
struct YUV420_2_YUV16 : FromYUV420<YUV420_2_YUV16> {
  TQCS_DRIVER_NAMES(YUV420_2_YUV16);
  using Dst = PackedYUV16;
  static constexpr const char16_t *kScratchFailure = log::msg::kInvalidParams;
  static auto MakeRow(Form, uint8_t packing) {
    const auto kernel =
        packing ? &TCS_KernelTable::YUV422_2_UYVY_Row : &TCS_KernelTable::YUV422_2_YUYV_Row;
    return std::optional([=](uint8_t *d, const uint8_t *y, const uint8_t *u, const uint8_t *v,
                             int32_t n,
                             const ChromaScratch &) { (Kernels().*kernel)(d, y, u, v, n); });
  }
};

// 12-14: 10-bit planes to 8-bit packed 4:2:2. The chroma goes through the one
// 10-bit upsampling kernel (50); at the first and last chroma row of each
// field it is given a zero pitch, so those rows keep their own samples. Luma
// is reduced by kernel 51 into a third working row before packing.
struct YUV420_10Bit_2_YUV16 : FromYUV420<YUV420_10Bit_2_YUV16> {
  TQCS_DRIVER_NAMES(YUV420_10Bit_2_YUV16);
  using Dst = PackedYUV16;
  using Src = Planar420<2>;
  static constexpr const char16_t *kUnit = log::unit::kYUV420;
  static constexpr const char16_t *kScratchFailure = log::msg::kInvalidParams;
  static size_t ScratchBytes(int32_t width) { return 3 * static_cast<size_t>(width); }
  static void WidenChroma(Upsample kind, const ChromaScratch &s, const uint8_t *u, int64_t pu,
                          const uint8_t *v, int64_t pv, int32_t half) {
    const bool edge = kind != Upsample::kInterior;
    Kernels().YUV420_10Bit_2_YUV422_UV_Row(s.ua(), half, s.va(), half, Samples(u), edge ? 0 : pu,
                                           Samples(v), edge ? 0 : pv, half);
  }
  static auto MakeRow(Form, uint8_t packing) {
    const auto kernel =
        packing ? &TCS_KernelTable::YUV422_2_UYVY_Row : &TCS_KernelTable::YUV422_2_YUYV_Row;
    return std::optional([=](uint8_t *d, const uint8_t *y, const uint8_t *u, const uint8_t *v,
                             int32_t n, const ChromaScratch &s) {
      uint8_t *luma = s.base + 2 * static_cast<size_t>(s.width);
      Kernels().Y10Bit_2_Y8_Row(luma, Samples(y), n);
      (Kernels().*kernel)(d, luma, u, v, n);
    });
  }
};

// 18-20: chroma planes only, 4:2:0 to 4:2:2, written straight into the
// destination planes. With bit 1 of the height set, the two remaining rows
// repeat the rows the last upsampling call wrote, as the colour drivers reuse
// their working rows.
struct YUV420_2_YUV422_UV : Defaults420 {
  TQCS_DRIVER_NAMES(YUV420_2_YUV422_UV);
  using Dst = ChromaPlanes422;
  using Src = ChromaPlanes420;
  static constexpr Rule RuleFor(Form) { return {Style::kLogReturn, true, true, 2, 8}; }

  template <Form F, class Images>
  static void Walk(int32_t width, int32_t height, uint8_t flip, const Images &images) {
    frame::WalkFrom420<F>(images, height, flip, [&](const auto &dst, const auto &src) {
      const int32_t half = width / 2;
      frame::WidenStep last{};
      const int64_t rest = frame::ForEachWidenStep(height, true, [&](const frame::WidenStep &st) {
        frame::Widen(Kernels().*frame::UpsampleKernel(st.kind), st, dst, 0, src, 0, half);
        last = st;
      });
      if (height & 2) {
        for (size_t plane = 0; plane < 2; ++plane) {
          g_pMemProcRoot->pMem->TMP_MemCopy(dst(plane, rest), dst(plane, last.out1), half);
          g_pMemProcRoot->pMem->TMP_MemCopy(dst(plane, rest + 1), dst(plane, last.out2), half);
        }
      }
    });
  }
};

// 21: 10-bit planes to 8-bit planes by kernel 51, one chroma row for every two
// luma rows; silent. Flip writes every destination plane bottom-up.
struct YUV420_10Bit_2_YUV420_Frame {
  using Dst = Planar420<1>;
  using Src = Planar420<2>;
  static void Single(uint8_t *dstY, int64_t dstYPitch, uint8_t *dstU, int64_t dstUPitch,
                     uint8_t *dstV, int64_t dstVPitch, const uint16_t *srcY, int64_t srcYPitch,
                     const uint16_t *srcU, int64_t srcUPitch, const uint16_t *srcV,
                     int64_t srcVPitch, int32_t width, int32_t height, uint8_t flip) {
    Planes<3> dst{Plane{dstY, dstYPitch}, Plane{dstU, dstUPitch}, Plane{dstV, dstVPitch}};
    const Planes<3> src{Plane{Bytes(srcY), srcYPitch}, Plane{Bytes(srcU), srcUPitch},
                        Plane{Bytes(srcV), srcVPitch}};
    if (!AllPresent(dst, true) || !AllPresent(src, true) || width < 1 || height < 1) return;
    if (flip) frame::TurnUpsideDown420(dst, height);
    for (int32_t y = 0; y < height; ++y) {
      Kernels().Y10Bit_2_Y8_Row(dst[0].Row(y), Samples(src[0].Row(y)), width);
      if (!(y & 1)) continue;
      for (int i = 1; i < 3; ++i)
        Kernels().Y10Bit_2_Y8_Row(dst[i].Row(y >> 1), Samples(src[i].Row(y >> 1)), width / 2);
    }
  }
};

// 22: the chroma of one field, 4:2:0 to 4:2:2. A non-zero first flag marks the
// second (bottom) field, whose chroma is sited towards its lower row: its rows
// are walked upwards, as the frame walks walk the bottom field.
struct YUV420_2_YUV422_UV_Field {
  using Dst = ChromaPlanes422;
  using Src = ChromaPlanes420;
  static constexpr const char16_t *kUnit = log::unit::kVideoColor;
  static void Single(uint8_t *dstU, int64_t dstUPitch, uint8_t *dstV, int64_t dstVPitch,
                     const uint8_t *srcU, int64_t srcUPitch, const uint8_t *srcV, int64_t srcVPitch,
                     int32_t width, int32_t height, uint8_t secondField, uint8_t flip) {
    Planes<2> dst{Plane{dstU, dstUPitch}, Plane{dstV, dstVPitch}};
    const Planes<2> src{Plane{Bytes(srcU), srcUPitch}, Plane{Bytes(srcV), srcVPitch}};
    if (!AllPresent(dst, true) || !AllPresent(src, true) || width < 2 || height < 2) {
      WriteRecord(log::kInvalid, kUnit, u"TCS_YUV420_2_YUV422_UV_Field()",
                  log::msg::kInvalidParams);
      return;
    }
    if (flip) frame::TurnUpsideDown(dst, height);
    const int64_t rows = height >> 1;
    for (int64_t c = 0; c < rows; ++c) {
      const frame::WidenStep st = frame::FieldWidenStep(c, rows, secondField);
      frame::Widen(Kernels().*frame::UpsampleKernel(st.kind), st, frame::FrameView{dst}, 0,
                   frame::FrameView{src}, 0, width / 2);
    }
  }
};

const auto kTable = TableOf({
    TQCS_TRIPLE(TCS_YUV420Table, YUV420_2_RGB32),
    TQCS_TRIPLE(TCS_YUV420Table, YUV420_2_RGB24),
    TQCS_NOT_IMPLEMENTED(TCS_YUV420Table, YUV420_2_YUVA),
    TQCS_TRIPLE(TCS_YUV420Table, YUV420_2_YUV16),
    TQCS_TRIPLE(TCS_YUV420Table, YUV420_10Bit_2_YUV16),
    TQCS_NOT_IMPLEMENTED(TCS_YUV420Table, YUV420_2_YUV),
    TQCS_TRIPLE(TCS_YUV420Table, YUV420_2_YUV422_UV),
    TQCS_SINGLE(TCS_YUV420Table, YUV420_10Bit_2_YUV420_Frame),
    TQCS_SINGLE(TCS_YUV420Table, YUV420_2_YUV422_UV_Field),
});

}  // namespace

std::span<const SlotEntry> YUV420Drivers() { return kTable.entries; }
std::span<const SlotLayout> YUV420Layouts() { return kTable.layouts; }

}  // namespace tqcs::drivers
