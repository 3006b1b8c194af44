// The row extents of every tiered kernel slot, as data: how many bytes each
// pointer argument spans for a pixel count, how many rows a pitched source
// spans, and whether the first source may be the first destination. The SIMD
// tiers advance their pointers by these extents when they hand a row's tail to
// the portable routine, and the tests and benchmarks size their buffers from
// them, so a slot's extents are written here once.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <type_traits>

#include "kernels/kernel_slots.hpp"

namespace tqcs {

// Bytes of one row for a count: per pixel, per whole pair (count / 2), per
// pair rounded up ((count + 1) / 2), per whole group of four pixels
// (count / 4), plus a fixed part, plus per V210 word of the count / 2 whole
// pairs (ceil(4 * (count / 2) / 3) words), plus per group of four rounded up
// ((count + 3) / 4).
struct RowExtent {
  int32_t perPixel = 0, perPair = 0, perCeilPair = 0, fixed = 0, perQuad = 0, perV210Word = 0,
          perCeilQuad = 0;

  // The bytes of the first `n` pixels, without the fixed part: where the
  // pixel after them starts when `n` is a whole number of the row's groups.
  constexpr int64_t Step(int64_t n) const {
    return perPixel * n + perPair * (n / 2) + perCeilPair * ((n + 1) / 2) + perQuad * (n / 4) +
           perV210Word * ((4 * (n / 2) + 2) / 3) + perCeilQuad * ((n + 3) / 4);
  }
  // The bytes of a whole row of `count` pixels. A negative fixed part shortens
  // a row that has pixels (one byte less than two per pixel, say); a row
  // without pixels has none.
  constexpr size_t Bytes(int32_t count) const {
    if (count < 1) return static_cast<size_t>(fixed > 0 ? fixed : 0);
    return static_cast<size_t>(Step(count) + fixed);
  }
  // True when every run of `block` pixels spans the same bytes, so whole
  // blocks can be stepped over by one constant.
  constexpr bool Linear(int64_t block) const {
    for (int64_t k = 1; k <= 4; ++k)
      if (Step(k * block) != k * Step(block)) return false;
    return Step(0) == 0;
  }
};

namespace extent {
constexpr RowExtent Px(int32_t n) { return {n}; }
constexpr RowExtent Pairs(int32_t n) { return {0, n}; }
constexpr RowExtent CeilPairs(int32_t n) { return {0, 0, n}; }
constexpr RowExtent Fixed(int32_t n) { return {0, 0, 0, n}; }
constexpr RowExtent Quads(int32_t n) { return {0, 0, 0, 0, n}; }
constexpr RowExtent V210Words() { return {0, 0, 0, 0, 0, 4}; }
// An 8+2 row of count samples: a high byte each and a low byte per four.
constexpr RowExtent Blocked8Plus2() { return {1, 0, 0, 0, 0, 0, 1}; }
}  // namespace extent

// One slot (of the kernel table, or an operation of the kernel objects,
// object_extents.hpp): the extent of every pointer argument other than
// coefficient rows, in argument order. A pointer followed by a pitch is one of
// several rows: a source spans `srcRowsBefore` rows before it and
// `srcRowsAfter` after, a destination one after. Sources are exactly as long
// as the portable routine reads them; destinations at least as long as it
// writes them.
struct RowsAfter {
  int rows = 1;
};

template <class Slot>
struct Extents {
  static constexpr size_t kMaxRows = 4;
  Slot slot{};
  std::array<RowExtent, kMaxRows> rows{};
  size_t rowCount = 0;
  int srcRowsBefore = 0, srcRowsAfter = 1;
  bool inPlace = false;  // the first source may be the first destination

  constexpr Extents(Slot s, std::initializer_list<RowExtent> r, int before = 0, bool same = false)
      : slot(s), rowCount(r.size()), srcRowsBefore(before), inPlace(same) {
    size_t k = 0;
    for (const RowExtent &e : r) rows[k++] = e;
  }
  constexpr Extents(Slot s, std::initializer_list<RowExtent> r, RowsAfter after) : Extents(s, r) {
    srcRowsAfter = after.rows;
  }
};
using SlotExtents = Extents<K>;

namespace detail {
constexpr auto MakeSlotExtents() {
  using namespace extent;
  return std::array{
      // Packed 4:2:2 <-> Y,U,V,A and planar 4:2:2.
      SlotExtents{K::YUYV_2_YUVA_Row, {Pairs(8), Pairs(4)}},
      SlotExtents{K::YUVA_2_YUYV_Row, {CeilPairs(4), Px(4)}},
      SlotExtents{K::UYVY_2_YUVA_Row, {Pairs(8), Pairs(4)}},
      SlotExtents{K::YUVA_2_UYVY_Row, {CeilPairs(4), Px(4)}},
      SlotExtents{K::YUV422_2_YUVA_Row, {Pairs(8), Pairs(2), Pairs(1), Pairs(1)}},
      SlotExtents{K::YUVA_2_YUV422_Row, {Px(1), Pairs(1), Pairs(1), Px(4)}},
      SlotExtents{K::YUV422_2_YUYV_Row, {Pairs(4), Pairs(2), Pairs(1), Pairs(1)}},
      SlotExtents{K::YUYV_2_YUV422_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(4)}},
      SlotExtents{K::YUV422_2_UYVY_Row, {Pairs(4), Pairs(2), Pairs(1), Pairs(1)}},
      SlotExtents{K::UYVY_2_YUV422_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(4)}},
      // 24/32-bit RGB.
      SlotExtents{K::RGB24_2_RGB32_Row, {Px(4), Px(3)}},
      SlotExtents{K::RGB24_2_BGR32_Row, {Px(4), Px(3)}},
      SlotExtents{K::RGB32_2_BGR24_Row, {Px(3), Px(4)}},
      SlotExtents{K::RGB32_SwapRB_Row, {Px(4), Px(4)}, 0, true},
      SlotExtents{K::RGB24_SwapRB_Row, {Px(3), Px(3)}, 0, true},
      // RGB -> YUV.
      SlotExtents{K::RGB32_2_YUYV_Row, {CeilPairs(4), Px(4)}},
      SlotExtents{K::RGB32_2_UYVY_Row, {CeilPairs(4), Px(4)}},
      SlotExtents{K::RGB24_2_YUYV_Row, {CeilPairs(4), Px(3)}},
      SlotExtents{K::RGB24_2_UYVY_Row, {CeilPairs(4), Px(3)}},
      SlotExtents{K::RGB32_2_YUVA_Row, {Px(4), Px(4)}},
      SlotExtents{K::RGB24_2_YUVA_Row, {Px(4), Px(3)}},
      SlotExtents{K::RGB32_2_YUV422_Row, {Px(1), Pairs(1), Pairs(1), Px(4)}},
      SlotExtents{K::RGB24_2_YUV422_Row, {Px(1), Pairs(1), Pairs(1), Px(3)}},
      SlotExtents{K::RGB24_2_Gray_Row, {Px(1), Px(3)}},
      // YUV -> RGB.
      SlotExtents{K::YUYV_2_RGB32_Row, {Pairs(8), Pairs(4)}},
      SlotExtents{K::YUYV_2_BGR32_Row, {Pairs(8), Pairs(4)}},
      SlotExtents{K::UYVY_2_RGB32_Row, {Pairs(8), Pairs(4)}},
      SlotExtents{K::UYVY_2_BGR32_Row, {Pairs(8), Pairs(4)}},
      SlotExtents{K::YUYV_2_RGB24_Row, {Pairs(6), Pairs(4)}},
      SlotExtents{K::YUYV_2_BGR24_Row, {Pairs(6), Pairs(4)}},
      SlotExtents{K::UYVY_2_RGB24_Row, {Pairs(6), Pairs(4)}},
      SlotExtents{K::UYVY_2_BGR24_Row, {Pairs(6), Pairs(4)}},
      SlotExtents{K::YUV422_2_RGB32_Row, {Pairs(8), Pairs(2), Pairs(1), Pairs(1)}},
      SlotExtents{K::YUV422_2_BGR32_Row, {Pairs(8), Pairs(2), Pairs(1), Pairs(1)}},
      SlotExtents{K::YUV422_2_RGB24_Row, {Pairs(6), Pairs(2), Pairs(1), Pairs(1)}},
      SlotExtents{K::YUV422_2_BGR24_Row, {Pairs(6), Pairs(2), Pairs(1), Pairs(1)}},
      SlotExtents{K::YUVA_2_RGB32_Row, {Px(4), Px(4)}},
      SlotExtents{K::YUVA_2_BGR32_Row, {Px(4), Px(4)}},
      SlotExtents{K::YUVA_2_RGB24_Row, {Px(3), Px(4)}},
      SlotExtents{K::YUVA_2_BGR24_Row, {Px(3), Px(4)}},
      // Chroma rows between 4:2:0 and 4:2:2 (count = chroma samples).
      SlotExtents{K::YUV420_2_YUV422_UV_FirstRow, {Px(1), Px(1), Px(1), Px(1)}},
      SlotExtents{K::YUV420_2_YUV422_UV_LastRow, {Px(1), Px(1), Px(1), Px(1)}},
      SlotExtents{K::YUV420_2_YUV422_UV_Row, {Px(1), Px(1), Px(1), Px(1)}, 1},
      SlotExtents{K::YUV422_2_YUV420_UV_Row, {Px(1), Px(1), Px(1), Px(1)}},
      SlotExtents{K::YUYV_2_YUV420_UV_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(4)}},
      SlotExtents{K::UYVY_2_YUV420_UV_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(4)}},
      SlotExtents{K::YUV420_10Bit_2_YUV422_UV_Row, {Px(1), Px(1), Px(2), Px(2)}, 1},
      SlotExtents{K::YUV420_16_2_YUV422_16_UV_FirstRow, {Px(2), Px(2), Px(2), Px(2)}},
      SlotExtents{K::YUV420_16_2_YUV422_16_UV_LastRow, {Px(2), Px(2), Px(2), Px(2)}},
      SlotExtents{K::YUV420_16_2_YUV422_16_UV_Row, {Px(2), Px(2), Px(2), Px(2)}, 1},
      SlotExtents{K::YUV420_10Bit_2_YUV422_10Bit_UV_Row, {Px(2), Px(2), Px(2), Px(2)}, 1},
      SlotExtents{K::YUV422_16_2_YUV420_16_UV_Row, {Px(2), Px(2), Px(2), Px(2)}},
      SlotExtents{K::YUYV16_2_YUV420_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(8)}},
      SlotExtents{K::UYVY16_2_YUV420_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(8)}},
      SlotExtents{K::UYVY16_2_YUV420_16_Row, {Pairs(4), Pairs(2), Pairs(2), Pairs(8)}},
      SlotExtents{K::YUYV16_2_YUV420_16_Row, {Pairs(4), Pairs(2), Pairs(2), Pairs(8)}},
      // 10-bit planes to 8-bit.
      SlotExtents{K::YUV422_10Bit_2_YUYV_Row, {Pairs(4), Pairs(4), Pairs(2), Pairs(2)}},
      SlotExtents{K::YUV422_10Bit_2_UYVY_Row, {Pairs(4), Pairs(4), Pairs(2), Pairs(2)}},
      SlotExtents{K::Y10Bit_2_Y8_Row, {Px(1), Px(2)}},
      // HSV and histogram.
      SlotExtents{K::RGB24_2_HSV_Row, {Px(2), Px(1), Px(1), Px(3)}},
      SlotExtents{K::BGR24_2_HSV_Row, {Px(2), Px(1), Px(1), Px(3)}},
      SlotExtents{K::RGB24_Histogram_Row, {Fixed(1024), Fixed(1024), Fixed(1024), Px(3)}},

      // Deep-colour RGB repacks and the deep-colour YUV families.
      SlotExtents{K::RGB48_2_YUYV16_Row, {CeilPairs(8), Px(6)}},
      SlotExtents{K::RGB48_2_UYVY16_Row, {CeilPairs(8), Px(6)}},
      SlotExtents{K::RGB24_2_YUYV16_Row, {CeilPairs(8), Px(3)}},
      SlotExtents{K::RGB24_2_UYVY16_Row, {CeilPairs(8), Px(3)}},
      SlotExtents{K::YUYV16_2_RGB64_Row, {Pairs(16), Pairs(8)}},
      SlotExtents{K::UYVY16_2_RGB64_Row, {Pairs(16), Pairs(8)}},
      SlotExtents{K::YUYV16_2_BGR64_Row, {Pairs(16), Pairs(8)}},
      SlotExtents{K::UYVY16_2_BGR64_Row, {Pairs(16), Pairs(8)}},
      SlotExtents{K::RGB64_2_BGR32_Row, {Px(4), Px(8)}},
      SlotExtents{K::BGR32_2_RGB64_Row, {Px(8), Px(4)}},
      SlotExtents{K::YUYV16_2_RGB32_Row, {Pairs(8), Pairs(8)}},
      SlotExtents{K::YUYV16_2_BGR32_Row, {Pairs(8), Pairs(8)}},
      SlotExtents{K::UYVY16_2_RGB32_Row, {Pairs(8), Pairs(8)}},
      SlotExtents{K::UYVY16_2_BGR32_Row, {Pairs(8), Pairs(8)}},
      SlotExtents{K::RGB64_SwapRB_Row, {Px(8), Px(8)}, 0, true},
      SlotExtents{K::RGB48_2_RGB64_Row, {Px(8), Px(6)}},
      SlotExtents{K::RGB48_2_BGR64_Row, {Px(8), Px(6)}},
      SlotExtents{K::RGB24_2_RGB48_Row, {Px(6), Px(3)}},
      SlotExtents{K::RGB24_2_BGR48_Row, {Px(6), Px(3)}},
      SlotExtents{K::RGB24_2_RGB64_Row, {Px(8), Px(3)}},
      SlotExtents{K::RGB24_2_BGR64_Row, {Px(8), Px(3)}},
      SlotExtents{K::RGB24_Key_2_RGB64_Row, {Px(8), Px(3), Px(1)}},
      SlotExtents{K::RGB24_Key_2_BGR64_Row, {Px(8), Px(3), Px(1)}},
      SlotExtents{K::RGB48_2_RGB30_Row, {Px(6), Px(6)}, 0, true},
      SlotExtents{K::RGB48_2_BGR24_Row, {Px(3), Px(6)}},
      SlotExtents{K::RGB48_2_RGB32_Row, {Px(4), Px(6)}},
      SlotExtents{K::RGB48_2_BGR32_Row, {Px(4), Px(6)}},
      SlotExtents{K::RGB48_2_RGB64_Opaque_Row, {Px(8), Px(6)}},
      SlotExtents{K::RGB48_2_BGR64_Opaque_Row, {Px(8), Px(6)}},
      SlotExtents{K::RGB32_2_YUYV16_Row, {CeilPairs(8), Px(4)}},
      SlotExtents{K::RGB32_2_UYVY16_Row, {CeilPairs(8), Px(4)}},
      SlotExtents{K::YUV422_10Bit_2_RGB64_Row, {Pairs(16), Pairs(4), Pairs(2), Pairs(2)}},
      SlotExtents{K::YUV422_10Bit_2_BGR64_Row, {Pairs(16), Pairs(4), Pairs(2), Pairs(2)}},
      SlotExtents{K::YUV422_10Bit_2_RGB32_Row, {Pairs(8), Pairs(4), Pairs(2), Pairs(2)}},
      SlotExtents{K::YUV422_10Bit_2_BGR32_Row, {Pairs(8), Pairs(4), Pairs(2), Pairs(2)}},
      SlotExtents{K::YUV411_2_RGB32_Row, {Quads(16), Quads(4), Quads(1), Quads(1)}},
      SlotExtents{K::YUV411_2_BGR32_Row, {Quads(16), Quads(4), Quads(1), Quads(1)}},
      SlotExtents{K::RGB48_2_YUV422_16_Row, {Px(2), Pairs(2), Pairs(2), Px(6)}},

      // 16-bit planar and packed moves.
      SlotExtents{K::YUV422_16_2_YUYV16_Row, {Pairs(8), Pairs(4), Pairs(2), Pairs(2)}},
      SlotExtents{K::YUV422_16_2_UYVY16_Row, {Pairs(8), Pairs(4), Pairs(2), Pairs(2)}},
      SlotExtents{K::YUYV16_2_YUYV_Row, {Pairs(4), Pairs(8)}},
      SlotExtents{K::YUYV16_2_UYVY_Row, {Pairs(4), Pairs(8)}},
      SlotExtents{K::Y16_2_Y10_Row, {Px(2), Px(2)}, 0, true},
      SlotExtents{K::YUV422_2_YUYV16_Row, {Pairs(8), Pairs(2), Pairs(1), Pairs(1)}},
      SlotExtents{K::YUV422_2_UYVY16_Row, {Pairs(8), Pairs(2), Pairs(1), Pairs(1)}},
      SlotExtents{K::YUYV16_2_YUV422_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(8)}},
      SlotExtents{K::UYVY16_2_YUV422_Row, {Pairs(2), Pairs(1), Pairs(1), Pairs(8)}},
      SlotExtents{K::UYVY16_2_YUV422_16_Row, {Pairs(4), Pairs(2), Pairs(2), Pairs(8)}},
      SlotExtents{K::YUYV16_2_YUV422_16_Row, {Pairs(4), Pairs(2), Pairs(2), Pairs(8)}},
      SlotExtents{K::Y8_2_Y16_Row, {Px(2), Px(1)}},
      SlotExtents{K::Y16_2_Y10_Pairs_Row, {Px(4), Px(4)}, 0, true},
      SlotExtents{K::YUV422_16_2_YUYV_Row, {Pairs(4), Pairs(4), Pairs(2), Pairs(2)}},
      SlotExtents{K::YUV422_16_2_UYVY_Row, {Pairs(4), Pairs(4), Pairs(2), Pairs(2)}},

      // 8+2 packing.
      SlotExtents{K::Split16To8Plus2_Row, {Blocked8Plus2(), Px(2)}},
      SlotExtents{K::Join8Plus2To16_Row, {Px(2), Blocked8Plus2()}},
      SlotExtents{K::Pack8To8Plus2_Row, {Blocked8Plus2(), Px(1)}},
      SlotExtents{K::Pack8To8Plus2_SwapPairs_Row, {Blocked8Plus2(), Px(1)}},
      SlotExtents{K::Unpack8Plus2To8_Row, {Px(1), Blocked8Plus2()}},
      SlotExtents{K::Unpack8Plus2To8_SwapPairs_Row, {Px(1), Blocked8Plus2()}},
      SlotExtents{K::YUV422_16_2_YUYV_8Plus2_Row, {Pairs(5), Pairs(4), Pairs(2), Pairs(2)}},

      // V210.
      SlotExtents{K::V210_2_YUYV16_Row, {Pairs(8), V210Words()}},
      SlotExtents{K::V210_2_UYVY16_Row, {Pairs(8), V210Words()}},
      SlotExtents{K::YUYV16_2_V210_Row, {V210Words(), Pairs(8)}},
      SlotExtents{K::UYVY16_2_V210_Row, {V210Words(), Pairs(8)}},
      SlotExtents{K::V210_2_YUV8_Row, {Pairs(4), V210Words()}},
      SlotExtents{K::V210_2_YUV8_B_Row, {Pairs(4), V210Words()}},
      SlotExtents{K::YUV8_2_V210_Row, {V210Words(), Pairs(4)}},
      SlotExtents{K::YUV8_2_V210_B_Row, {V210Words(), Pairs(4)}},

      // Key planes, chroma-plane interleaving and zero fills.
      SlotExtents{K::YUYV_Key_2_YUVA_Row, {Pairs(8), Pairs(4), Pairs(2)}},
      SlotExtents{K::YUVA_2_YUYV_Key_Row, {CeilPairs(4), Px(1), Px(4)}},
      SlotExtents{K::RGB24_Key_2_BGR32_Row, {Px(4), Px(3), Px(1)}},
      SlotExtents{K::RGB24_Key_2_RGB32_Row, {Px(4), Px(3), Px(1)}},
      SlotExtents{K::RGB32_2_YUYV_Key_Row, {CeilPairs(4), Px(1), Px(4)}},
      SlotExtents{K::RGB32_2_UYVY_Key_Row, {CeilPairs(4), Px(1), Px(4)}},
      SlotExtents{K::YUYV_Key_2_RGB32_Row, {Pairs(8), Pairs(4), Pairs(2)}},
      SlotExtents{K::YUYV_Key_2_BGR32_Row, {Pairs(8), Pairs(4), Pairs(2)}},
      SlotExtents{K::UYVY_Key_2_RGB32_Row, {Pairs(8), Pairs(4), Pairs(2)}},
      SlotExtents{K::UYVY_Key_2_BGR32_Row, {Pairs(8), Pairs(4), Pairs(2)}},
      // The first source is read up to its last even byte.
      SlotExtents{K::Deinterleave_Pairs_Row, {Px(1), Px(1), {2, 0, 0, -1}, Px(2)}},
      SlotExtents{K::Int32_2_Int16_Deinterleave_Row, {Px(1), Px(1), {2, 0, 0, -1}, Px(2)}},
      SlotExtents{K::UV_Deinterleave_Row, {Px(1), Px(1), Px(2)}},
      SlotExtents{K::UV_Interleave_Row, {Px(2), Px(1), Px(1)}},
      SlotExtents{K::UV_422_2_444_Row, {Px(1), Px(1), CeilPairs(1), CeilPairs(1)}},
      SlotExtents{K::Clear_Row_A, {Px(1), Fixed(0)}},
      SlotExtents{K::Clear_Row_B, {Px(2), Fixed(0)}},
      SlotExtents{K::Clear_Row_C, {Px(4), Fixed(0)}},
      SlotExtents{K::Clear_Row_D, {Px(3), Fixed(0)}},
      SlotExtents{K::Clear_Row_E, {Px(8), Fixed(0)}},
  };
}
}  // namespace detail

// Every tiered slot that has a SIMD routine in some tier, in family order.
inline constexpr auto kSlotExtents = detail::MakeSlotExtents();

// Where a slot's extents stand in the table; the table's size for slots that
// are not listed.
constexpr size_t ExtentsIndex(K slot) {
  size_t i = 0;
  while (i < kSlotExtents.size() && kSlotExtents[i].slot != slot) ++i;
  return i;
}

// The extents of a slot; null for slots that are not listed.
constexpr const SlotExtents *ExtentsOf(K slot) {
  const size_t i = ExtentsIndex(slot);
  return i < kSlotExtents.size() ? &kSlotExtents[i] : nullptr;
}
constexpr const SlotExtents *ExtentsOf(int32_t slot) { return ExtentsOf(static_cast<K>(slot)); }

// What each argument of a row kernel is, read from its type: a coefficient row
// (const int16_t *), a pixel row (any other pointer), the pitch to the next
// row (int64_t), the count (int32_t), or a constant such as alpha.
enum class ArgKind { Row, Pitch, Count, Constant, Coef };

template <class A>
constexpr ArgKind KindOf() {
  if constexpr (std::is_same_v<A, const int16_t *>) return ArgKind::Coef;
  if constexpr (std::is_pointer_v<A>) return ArgKind::Row;
  if constexpr (std::is_same_v<A, int64_t>) return ArgKind::Pitch;
  if constexpr (std::is_same_v<A, int32_t>) return ArgKind::Count;
  return ArgKind::Constant;
}

// For argument `position` of a list of kinds: its index among the arguments of
// its kind (a pitch: the index of the row before it).
template <size_t kN>
constexpr int OrdinalOf(const std::array<ArgKind, kN> &kinds, size_t position) {
  int rows = 0, coefs = 0;
  for (size_t i = 0; i < position; ++i) {
    if (kinds[i] == ArgKind::Row) ++rows;
    if (kinds[i] == ArgKind::Coef) ++coefs;
  }
  if (kinds[position] == ArgKind::Pitch) return rows - 1;
  return kinds[position] == ArgKind::Coef ? coefs : rows;
}

}  // namespace tqcs
