#include "support/kernel_shapes.hpp"

#include <algorithm>

#include "base/table_entries.hpp"

namespace tqcs::test {

size_t RowSize::Bytes(int32_t count) const {
  // A negative fixed part shortens a row that has pixels (one byte less than
  // two per pixel, say); a row without pixels has none.
  if (count < 1) return static_cast<size_t>(std::max(fixed, 0));
  const int64_t n = count;
  return static_cast<size_t>(perPixel * n + perPair * (n / 2) + perCeilPair * ((n + 1) / 2) +
                             perQuad * (n / 4) + fixed + perV210Word * ((4 * (n / 2) + 2) / 3) +
                             perCeilQuad * ((n + 3) / 4));
}

const std::vector<KernelShape> &AllShapes() {
  // Sources exactly as long as the portable routine reads them; destinations
  // at least as long as it writes them.
  static const std::vector<KernelShape> shapes = {
      // Packed 4:2:2 <-> Y,U,V,A and planar 4:2:2.
      {K::YUYV_2_YUVA_Row, {Pairs(8), Pairs(4)}},
      {K::YUVA_2_YUYV_Row, {CeilPairs(4), Px(4)}},
      {K::UYVY_2_YUVA_Row, {Pairs(8), Pairs(4)}},
      {K::YUVA_2_UYVY_Row, {CeilPairs(4), Px(4)}},
      {K::YUV422_2_YUVA_Row, {Pairs(8), Pairs(2), Pairs(1), Pairs(1)}},
      {K::YUVA_2_YUV422_Row, {Px(1), Pairs(1), Pairs(1), Px(4)}},
      {K::YUV422_2_YUYV_Row, {Pairs(4), Pairs(2), Pairs(1), Pairs(1)}},
      {K::YUYV_2_YUV422_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(4)}},
      {K::YUV422_2_UYVY_Row, {Pairs(4), Pairs(2), Pairs(1), Pairs(1)}},
      {K::UYVY_2_YUV422_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(4)}},
      // 24/32-bit RGB.
      {K::RGB24_2_RGB32_Row, {Px(4), Px(3)}},
      {K::RGB24_2_BGR32_Row, {Px(4), Px(3)}},
      {K::RGB32_2_BGR24_Row, {Px(3), Px(4)}},
      {K::RGB32_SwapRB_Row, {Px(4), Px(4)}, 0, true},
      {K::RGB24_SwapRB_Row, {Px(3), Px(3)}, 0, true},
      // RGB -> YUV.
      {K::RGB32_2_YUYV_Row, {CeilPairs(4), Px(4)}},
      {K::RGB32_2_UYVY_Row, {CeilPairs(4), Px(4)}},
      {K::RGB24_2_YUYV_Row, {CeilPairs(4), Px(3)}},
      {K::RGB24_2_UYVY_Row, {CeilPairs(4), Px(3)}},
      {K::RGB32_2_YUVA_Row, {Px(4), Px(4)}},
      {K::RGB24_2_YUVA_Row, {Px(4), Px(3)}},
      {K::RGB32_2_YUV422_Row, {Px(1), Pairs(1), Pairs(1), Px(4)}},
      {K::RGB24_2_YUV422_Row, {Px(1), Pairs(1), Pairs(1), Px(3)}},
      {K::RGB24_2_Gray_Row, {Px(1), Px(3)}},
      // YUV -> RGB.
      {K::YUYV_2_RGB32_Row, {Pairs(8), Pairs(4)}},
      {K::YUYV_2_BGR32_Row, {Pairs(8), Pairs(4)}},
      {K::UYVY_2_RGB32_Row, {Pairs(8), Pairs(4)}},
      {K::UYVY_2_BGR32_Row, {Pairs(8), Pairs(4)}},
      {K::YUYV_2_RGB24_Row, {Pairs(6), Pairs(4)}},
      {K::YUYV_2_BGR24_Row, {Pairs(6), Pairs(4)}},
      {K::UYVY_2_RGB24_Row, {Pairs(6), Pairs(4)}},
      {K::UYVY_2_BGR24_Row, {Pairs(6), Pairs(4)}},
      {K::YUV422_2_RGB32_Row, {Pairs(8), Pairs(2), Pairs(1), Pairs(1)}},
      {K::YUV422_2_BGR32_Row, {Pairs(8), Pairs(2), Pairs(1), Pairs(1)}},
      {K::YUV422_2_RGB24_Row, {Pairs(6), Pairs(2), Pairs(1), Pairs(1)}},
      {K::YUV422_2_BGR24_Row, {Pairs(6), Pairs(2), Pairs(1), Pairs(1)}},
      {K::YUVA_2_RGB32_Row, {Px(4), Px(4)}},
      {K::YUVA_2_BGR32_Row, {Px(4), Px(4)}},
      {K::YUVA_2_RGB24_Row, {Px(3), Px(4)}},
      {K::YUVA_2_BGR24_Row, {Px(3), Px(4)}},
      // Chroma rows between 4:2:0 and 4:2:2 (count = chroma samples).
      {K::YUV420_2_YUV422_UV_FirstRow, {Px(1), Px(1), Px(1), Px(1)}},
      {K::YUV420_2_YUV422_UV_LastRow, {Px(1), Px(1), Px(1), Px(1)}},
      {K::YUV420_2_YUV422_UV_Row, {Px(1), Px(1), Px(1), Px(1)}, 1},
      {K::YUV422_2_YUV420_UV_Row, {Px(1), Px(1), Px(1), Px(1)}},
      {K::YUYV_2_YUV420_UV_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(4)}},
      {K::UYVY_2_YUV420_UV_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(4)}},
      {K::YUV420_10Bit_2_YUV422_UV_Row, {Px(1), Px(1), Px(2), Px(2)}, 1},
      {K::YUV420_16_2_YUV422_16_UV_FirstRow, {Px(2), Px(2), Px(2), Px(2)}},
      {K::YUV420_16_2_YUV422_16_UV_LastRow, {Px(2), Px(2), Px(2), Px(2)}},
      {K::YUV420_16_2_YUV422_16_UV_Row, {Px(2), Px(2), Px(2), Px(2)}, 1},
      {K::YUV420_10Bit_2_YUV422_10Bit_UV_Row, {Px(2), Px(2), Px(2), Px(2)}, 1},
      {K::YUV422_16_2_YUV420_16_UV_Row, {Px(2), Px(2), Px(2), Px(2)}},
      {K::YUYV16_2_YUV420_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(8)}},
      {K::UYVY16_2_YUV420_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(8)}},
      {K::UYVY16_2_YUV420_16_Row, {Pairs(4), Pairs(2), Pairs(2), Pairs(8)}},
      {K::YUYV16_2_YUV420_16_Row, {Pairs(4), Pairs(2), Pairs(2), Pairs(8)}},
      // 10-bit planes to 8-bit.
      {K::YUV422_10Bit_2_YUYV_Row, {Pairs(4), Pairs(4), Pairs(2), Pairs(2)}},
      {K::YUV422_10Bit_2_UYVY_Row, {Pairs(4), Pairs(4), Pairs(2), Pairs(2)}},
      {K::Y10Bit_2_Y8_Row, {Px(1), Px(2)}},
      // HSV and histogram.
      {K::RGB24_2_HSV_Row, {Px(2), Px(1), Px(1), Px(3)}},
      {K::BGR24_2_HSV_Row, {Px(2), Px(1), Px(1), Px(3)}},
      {K::RGB24_Histogram_Row, {Fixed(1024), Fixed(1024), Fixed(1024), Px(3)}},

      // 16-bit RGB and the deep-colour YUV families (deep_color).
      {K::RGB48_2_YUYV16_Row, {CeilPairs(8), Px(6)}},
      {K::RGB48_2_UYVY16_Row, {CeilPairs(8), Px(6)}},
      {K::RGB24_2_YUYV16_Row, {CeilPairs(8), Px(3)}},
      {K::RGB24_2_UYVY16_Row, {CeilPairs(8), Px(3)}},
      {K::YUYV16_2_RGB64_Row, {Pairs(16), Pairs(8)}},
      {K::UYVY16_2_RGB64_Row, {Pairs(16), Pairs(8)}},
      {K::YUYV16_2_BGR64_Row, {Pairs(16), Pairs(8)}},
      {K::UYVY16_2_BGR64_Row, {Pairs(16), Pairs(8)}},
      {K::RGB64_2_BGR32_Row, {Px(4), Px(8)}},
      {K::BGR32_2_RGB64_Row, {Px(8), Px(4)}},
      {K::YUYV16_2_RGB32_Row, {Pairs(8), Pairs(8)}},
      {K::YUYV16_2_BGR32_Row, {Pairs(8), Pairs(8)}},
      {K::UYVY16_2_RGB32_Row, {Pairs(8), Pairs(8)}},
      {K::UYVY16_2_BGR32_Row, {Pairs(8), Pairs(8)}},
      {K::RGB64_SwapRB_Row, {Px(8), Px(8)}, 0, true},
      {K::RGB48_2_RGB64_Row, {Px(8), Px(6)}},
      {K::RGB48_2_BGR64_Row, {Px(8), Px(6)}},
      {K::RGB24_2_RGB48_Row, {Px(6), Px(3)}},
      {K::RGB24_2_BGR48_Row, {Px(6), Px(3)}},
      {K::RGB24_2_RGB64_Row, {Px(8), Px(3)}},
      {K::RGB24_2_BGR64_Row, {Px(8), Px(3)}},
      {K::RGB24_Key_2_RGB64_Row, {Px(8), Px(3), Px(1)}},
      {K::RGB24_Key_2_BGR64_Row, {Px(8), Px(3), Px(1)}},
      {K::RGB48_2_RGB30_Row, {Px(6), Px(6)}, 0, true},
      {K::RGB48_2_BGR24_Row, {Px(3), Px(6)}},
      {K::RGB48_2_RGB32_Row, {Px(4), Px(6)}},
      {K::RGB48_2_BGR32_Row, {Px(4), Px(6)}},
      {K::RGB48_2_RGB64_Opaque_Row, {Px(8), Px(6)}},
      {K::RGB48_2_BGR64_Opaque_Row, {Px(8), Px(6)}},
      {K::RGB32_2_YUYV16_Row, {CeilPairs(8), Px(4)}},
      {K::RGB32_2_UYVY16_Row, {CeilPairs(8), Px(4)}},
      {K::YUV422_10Bit_2_RGB64_Row, {Pairs(16), Pairs(4), Pairs(2), Pairs(2)}},
      {K::YUV422_10Bit_2_BGR64_Row, {Pairs(16), Pairs(4), Pairs(2), Pairs(2)}},
      {K::YUV422_10Bit_2_RGB32_Row, {Pairs(8), Pairs(4), Pairs(2), Pairs(2)}},
      {K::YUV422_10Bit_2_BGR32_Row, {Pairs(8), Pairs(4), Pairs(2), Pairs(2)}},
      {K::YUV411_2_RGB32_Row, {Quads(16), Quads(4), Quads(1), Quads(1)}},
      {K::YUV411_2_BGR32_Row, {Quads(16), Quads(4), Quads(1), Quads(1)}},
      {K::RGB48_2_YUV422_16_Row, {Px(2), Pairs(2), Pairs(2), Px(6)}},

      // 16-bit planar and packed moves (planar16).
      {K::YUV422_16_2_YUYV16_Row, {Pairs(8), Pairs(4), Pairs(2), Pairs(2)}},
      {K::YUV422_16_2_UYVY16_Row, {Pairs(8), Pairs(4), Pairs(2), Pairs(2)}},
      {K::YUYV16_2_YUYV_Row, {Pairs(4), Pairs(8)}},
      {K::YUYV16_2_UYVY_Row, {Pairs(4), Pairs(8)}},
      {K::Y16_2_Y10_Row, {Px(2), Px(2)}, 0, true},
      {K::YUV422_2_YUYV16_Row, {Pairs(8), Pairs(2), Pairs(1), Pairs(1)}},
      {K::YUV422_2_UYVY16_Row, {Pairs(8), Pairs(2), Pairs(1), Pairs(1)}},
      {K::YUYV16_2_YUV422_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(8)}},
      {K::UYVY16_2_YUV422_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(8)}},
      {K::UYVY16_2_YUV422_16_Row, {Pairs(4), Pairs(2), Pairs(2), Pairs(8)}},
      {K::YUYV16_2_YUV422_16_Row, {Pairs(4), Pairs(2), Pairs(2), Pairs(8)}},
      {K::Y8_2_Y16_Row, {Px(2), Px(1)}},
      {K::Y16_2_Y10_Pairs_Row, {Px(4), Px(4)}, 0, true},
      {K::YUV422_16_2_YUYV_Row, {Pairs(4), Pairs(4), Pairs(2), Pairs(2)}},
      {K::YUV422_16_2_UYVY_Row, {Pairs(4), Pairs(4), Pairs(2), Pairs(2)}},

      // 8+2 packing (pack_8plus2).
      {K::Split16To8Plus2_Row, {Blocked8Plus2(), Px(2)}},
      {K::Join8Plus2To16_Row, {Px(2), Blocked8Plus2()}},
      {K::Pack8To8Plus2_Row, {Blocked8Plus2(), Px(1)}},
      {K::Pack8To8Plus2_SwapPairs_Row, {Blocked8Plus2(), Px(1)}},
      {K::Unpack8Plus2To8_Row, {Px(1), Blocked8Plus2()}},
      {K::Unpack8Plus2To8_SwapPairs_Row, {Px(1), Blocked8Plus2()}},
      {K::YUV422_16_2_YUYV_8Plus2_Row, {Pairs(5), Pairs(4), Pairs(2), Pairs(2)}},

      // V210 (v210).
      {K::V210_2_YUYV16_Row, {Pairs(8), V210Words()}},
      {K::V210_2_UYVY16_Row, {Pairs(8), V210Words()}},
      {K::YUYV16_2_V210_Row, {V210Words(), Pairs(8)}},
      {K::UYVY16_2_V210_Row, {V210Words(), Pairs(8)}},
      {K::V210_2_YUV8_Row, {Pairs(4), V210Words()}},
      {K::V210_2_YUV8_B_Row, {Pairs(4), V210Words()}},
      {K::YUV8_2_V210_Row, {V210Words(), Pairs(4)}},
      {K::YUV8_2_V210_B_Row, {V210Words(), Pairs(4)}},

      // Key planes, chroma interleaving and zero fills (repack_8bit).
      {K::YUYV_Key_2_YUVA_Row, {Pairs(8), Pairs(4), Pairs(2)}},
      {K::YUVA_2_YUYV_Key_Row, {CeilPairs(4), Px(1), Px(4)}},
      {K::RGB24_Key_2_BGR32_Row, {Px(4), Px(3), Px(1)}},
      {K::RGB24_Key_2_RGB32_Row, {Px(4), Px(3), Px(1)}},
      {K::RGB32_2_YUYV_Key_Row, {CeilPairs(4), Px(1), Px(4)}},
      {K::RGB32_2_UYVY_Key_Row, {CeilPairs(4), Px(1), Px(4)}},
      {K::YUYV_Key_2_RGB32_Row, {Pairs(8), Pairs(4), Pairs(2)}},
      {K::YUYV_Key_2_BGR32_Row, {Pairs(8), Pairs(4), Pairs(2)}},
      {K::UYVY_Key_2_RGB32_Row, {Pairs(8), Pairs(4), Pairs(2)}},
      {K::UYVY_Key_2_BGR32_Row, {Pairs(8), Pairs(4), Pairs(2)}},
      // The first source is read up to its last even byte.
      {K::Deinterleave_Pairs_Row, {Px(1), Px(1), {2, 0, 0, -1}, Px(2)}},
      {K::Int32_2_Int16_Deinterleave_Row, {Px(1), Px(1), {2, 0, 0, -1}, Px(2)}},
      {K::UV_Deinterleave_Row, {Px(1), Px(1), Px(2)}},
      {K::UV_Interleave_Row, {Px(2), Px(1), Px(1)}},
      {K::UV_422_2_444_Row, {Px(1), Px(1), CeilPairs(1), CeilPairs(1)}},
      {K::Clear_Row_A, {Px(1), Fixed(0)}},
      {K::Clear_Row_B, {Px(2), Fixed(0)}},
      {K::Clear_Row_C, {Px(4), Fixed(0)}},
      {K::Clear_Row_D, {Px(3), Fixed(0)}},
      {K::Clear_Row_E, {Px(8), Fixed(0)}},
  };
  return shapes;
}

const KernelShape *ShapeOf(int32_t slot) {
  const auto &all = AllShapes();
  auto it = std::find_if(all.begin(), all.end(), [slot](const KernelShape &s) {
    return static_cast<int32_t>(s.slot) == slot;
  });
  return it == all.end() ? nullptr : &*it;
}

SlotSignature SignatureOf(int32_t slot) {
  switch (slot) {
#define TQCS_SIGNATURE_CASE(n, name, ret, params)    \
  case n: {                                          \
    using C = detail::Caller<SlotFn<K::name>::Type>; \
    return {C::Written(), C::Pitched(), C::kCoefs};  \
  }
    TCS_KERNEL_SLOTS(TQCS_SIGNATURE_CASE)
#undef TQCS_SIGNATURE_CASE
  }
  return {};
}

const char *SlotName(int32_t slot) {
#define TQCS_NAME_ENTRY(n, name, ret, params) #name,
  static const char *const names[] = {TCS_KERNEL_SLOTS(TQCS_NAME_ENTRY)};
#undef TQCS_NAME_ENTRY
  return slot >= 0 && slot < TCS_KERNEL_SLOT_COUNT ? names[slot] : "?";
}

void CallSlot(const TCS_KernelTable &table, int32_t slot, const CallArgs &args) {
  switch (slot) {
#define TQCS_CALL_CASE(n, name, ret, params)                                \
  case n:                                                                   \
    detail::Caller<SlotFn<K::name>::Type>::Call(                            \
        reinterpret_cast<SlotFn<K::name>::Type>(LoadSlot(table, n)), args); \
    return;
    TCS_KERNEL_SLOTS(TQCS_CALL_CASE)
#undef TQCS_CALL_CASE
  }
}

}  // namespace tqcs::test
