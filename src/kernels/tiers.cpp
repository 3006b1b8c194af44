// The one place that states which slots each tier implements. Every entry is
// typed from the slot list: a routine whose signature is not its slot's, or a
// name that is not a slot, does not compile. Lists are grouped by the file
// that defines the routines; TierEntries() hands them out in ascending slot
// order, the order of the fill.
#include <algorithm>
#include <array>
#include <initializer_list>

#include "kernels/kernel_slots.hpp"
#include "kernels/kernel_table.hpp"

namespace tqcs {
namespace {

template <K kSlot>
SlotEntry Entry(typename SlotFn<kSlot>::Type fn) {
  return {static_cast<int32_t>(kSlot), Erase(fn)};
}

// The empty stub, stored on purpose in a slot of the SSE2 set.
template <K kSlot>
SlotEntry Stub() {
  return {static_cast<int32_t>(kSlot), Erase(&EmptyStub)};
}

#define TQCS_SLOT(tier, name) Entry<K::name>(&tier::name)

// A tier's entries in static storage (start-up allocates nothing), sorted by
// slot.
struct List {
  std::array<SlotEntry, TCS_KERNEL_SLOT_COUNT> entries{};
  size_t size = 0;
  void Add(const SlotEntry &e) { entries[size++] = e; }
  std::span<const SlotEntry> Ascending() {
    std::sort(entries.begin(), entries.begin() + size,
              [](const SlotEntry &a, const SlotEntry &b) { return a.slot < b.slot; });
    return {entries.data(), size};
  }
};

List Listed(std::initializer_list<SlotEntry> entries) {
  List list;
  for (const SlotEntry &e : entries) list.Add(e);
  return list;
}

List PortableList() {
  // Only the tiered slots: the fixed ones are filled apart, and the
  // whole-plane routines (133 to 136) have no portable row routine.
  List list;
#define TQCS_PORTABLE_ENTRY(n, name, ret, params) \
  if constexpr (IsTieredSlot(n)) list.Add(TQCS_SLOT(portable, name));
  TCS_KERNEL_SLOTS(TQCS_PORTABLE_ENTRY)
#undef TQCS_PORTABLE_ENTRY
  // Slot 144's portable entry is the routine of slot 124.
  for (size_t i = 0; i < list.size; ++i)
    if (list.entries[i].slot == static_cast<int32_t>(K::Int32_2_Int16_Deinterleave_Row))
      list.entries[i] = Entry<K::Int32_2_Int16_Deinterleave_Row>(&portable::Deinterleave_Pairs_Row);
  return list;
}

// clang-format off
List SSE2List() {
  return Listed({
      // The SSE2 set leaves three kernels as the empty stub: on levels 1 to 4
      // those operations do nothing. Kept for compatibility. See docs/compatibility.md.
      Stub<K::UYVY_Key_2_YUVA_Row>(), Stub<K::YUVA_2_UYVY_Key_Row>(),
      Stub<K::RGB24_2_RGB48_Expand_Row>(),

      // sse2/yuv422_repack.cpp, rgb_repack.cpp, uv_interleave.cpp, clear_rows.cpp
      TQCS_SLOT(sse2, YUYV_2_YUVA_Row), TQCS_SLOT(sse2, YUVA_2_YUYV_Row),
      TQCS_SLOT(sse2, UYVY_2_YUVA_Row), TQCS_SLOT(sse2, YUVA_2_UYVY_Row),
      TQCS_SLOT(sse2, RGB24_2_RGB32_Row), TQCS_SLOT(sse2, RGB24_2_BGR32_Row),
      TQCS_SLOT(sse2, RGB32_2_BGR24_Row), TQCS_SLOT(sse2, RGB32_SwapRB_Row),
      TQCS_SLOT(sse2, YUV422_2_YUYV_Row), TQCS_SLOT(sse2, YUYV_2_YUV422_Row),
      TQCS_SLOT(sse2, YUV422_2_UYVY_Row), TQCS_SLOT(sse2, UYVY_2_YUV422_Row),
      TQCS_SLOT(sse2, YUV422_2_YUVA_Row), TQCS_SLOT(sse2, YUVA_2_YUV422_Row),
      TQCS_SLOT(sse2, RGB24_2_HSV_Row), TQCS_SLOT(sse2, BGR24_2_HSV_Row),
      TQCS_SLOT(sse2, RGB24_SwapRB_Row), TQCS_SLOT(sse2, RGB24_Histogram_Row),
      TQCS_SLOT(sse2, YUYV_Key_2_YUVA_Row), TQCS_SLOT(sse2, YUVA_2_YUYV_Key_Row),
      TQCS_SLOT(sse2, RGB24_Key_2_BGR32_Row), TQCS_SLOT(sse2, RGB24_Key_2_RGB32_Row),
      TQCS_SLOT(sse2, Deinterleave_Pairs_Row), TQCS_SLOT(sse2, Int32_2_Int16_Deinterleave_Row),
      TQCS_SLOT(sse2, UV_Deinterleave_Row), TQCS_SLOT(sse2, UV_Interleave_Row),
      TQCS_SLOT(sse2, UV_422_2_444_Row), TQCS_SLOT(sse2, Clear_Row_A), TQCS_SLOT(sse2, Clear_Row_B),
      TQCS_SLOT(sse2, Clear_Row_C), TQCS_SLOT(sse2, Clear_Row_D), TQCS_SLOT(sse2, Clear_Row_E),

      // sse2/rgb_to_yuv_8bit.cpp
      TQCS_SLOT(sse2, RGB32_2_YUYV_Row), TQCS_SLOT(sse2, RGB32_2_UYVY_Row),
      TQCS_SLOT(sse2, RGB32_2_YUVA_Row), TQCS_SLOT(sse2, RGB32_2_YUV422_Row),
      TQCS_SLOT(sse2, RGB24_2_YUV422_Row), TQCS_SLOT(sse2, RGB24_2_YUYV_Row),
      TQCS_SLOT(sse2, RGB24_2_UYVY_Row), TQCS_SLOT(sse2, RGB24_2_YUVA_Row),
      TQCS_SLOT(sse2, RGB24_2_Gray_Row), TQCS_SLOT(sse2, RGB32_2_YUYV_Key_Row),
      TQCS_SLOT(sse2, RGB32_2_UYVY_Key_Row),

      // sse2/yuv_to_rgb_8bit.cpp
      TQCS_SLOT(sse2, YUYV_2_RGB32_Row), TQCS_SLOT(sse2, YUYV_2_BGR32_Row),
      TQCS_SLOT(sse2, UYVY_2_RGB32_Row), TQCS_SLOT(sse2, UYVY_2_BGR32_Row),
      TQCS_SLOT(sse2, YUVA_2_RGB32_Row), TQCS_SLOT(sse2, YUVA_2_BGR32_Row),
      TQCS_SLOT(sse2, YUV422_2_RGB32_Row), TQCS_SLOT(sse2, YUV422_2_BGR32_Row),
      TQCS_SLOT(sse2, YUV422_2_RGB24_Row), TQCS_SLOT(sse2, YUV422_2_BGR24_Row),
      TQCS_SLOT(sse2, YUYV_2_RGB24_Row), TQCS_SLOT(sse2, YUYV_2_BGR24_Row),
      TQCS_SLOT(sse2, UYVY_2_RGB24_Row), TQCS_SLOT(sse2, UYVY_2_BGR24_Row),
      TQCS_SLOT(sse2, YUVA_2_RGB24_Row), TQCS_SLOT(sse2, YUVA_2_BGR24_Row),
      TQCS_SLOT(sse2, YUYV_Key_2_RGB32_Row), TQCS_SLOT(sse2, YUYV_Key_2_BGR32_Row),
      TQCS_SLOT(sse2, UYVY_Key_2_RGB32_Row), TQCS_SLOT(sse2, UYVY_Key_2_BGR32_Row),

      // sse2/chroma_resample.cpp
      TQCS_SLOT(sse2, YUV420_2_YUV422_UV_FirstRow), TQCS_SLOT(sse2, YUV420_2_YUV422_UV_LastRow),
      TQCS_SLOT(sse2, YUV420_2_YUV422_UV_Row), TQCS_SLOT(sse2, YUV422_2_YUV420_UV_Row),
      TQCS_SLOT(sse2, YUYV_2_YUV420_UV_Row), TQCS_SLOT(sse2, UYVY_2_YUV420_UV_Row),
      TQCS_SLOT(sse2, YUV420_10Bit_2_YUV422_UV_Row),
      TQCS_SLOT(sse2, YUV420_16_2_YUV422_16_UV_FirstRow),
      TQCS_SLOT(sse2, YUV420_16_2_YUV422_16_UV_LastRow),
      TQCS_SLOT(sse2, YUV420_16_2_YUV422_16_UV_Row),
      TQCS_SLOT(sse2, YUV420_10Bit_2_YUV422_10Bit_UV_Row),
      TQCS_SLOT(sse2, YUV422_16_2_YUV420_16_UV_Row),
      TQCS_SLOT(sse2, YUYV16_2_YUV420_Row), TQCS_SLOT(sse2, UYVY16_2_YUV420_Row),
      TQCS_SLOT(sse2, UYVY16_2_YUV420_16_Row), TQCS_SLOT(sse2, YUYV16_2_YUV420_16_Row),

      // sse2/planar16.cpp
      TQCS_SLOT(sse2, YUV422_10Bit_2_YUYV_Row), TQCS_SLOT(sse2, YUV422_10Bit_2_UYVY_Row),
      TQCS_SLOT(sse2, Y10Bit_2_Y8_Row), TQCS_SLOT(sse2, YUV422_16_2_YUYV16_Row),
      TQCS_SLOT(sse2, YUV422_16_2_UYVY16_Row), TQCS_SLOT(sse2, YUYV16_2_YUYV_Row),
      TQCS_SLOT(sse2, YUYV16_2_UYVY_Row), TQCS_SLOT(sse2, Y16_2_Y10_Row),
      TQCS_SLOT(sse2, YUV422_2_YUYV16_Row), TQCS_SLOT(sse2, YUV422_2_UYVY16_Row),
      TQCS_SLOT(sse2, YUYV16_2_YUV422_Row), TQCS_SLOT(sse2, UYVY16_2_YUV422_Row),
      TQCS_SLOT(sse2, UYVY16_2_YUV422_16_Row), TQCS_SLOT(sse2, YUYV16_2_YUV422_16_Row),
      TQCS_SLOT(sse2, Y8_2_Y16_Row), TQCS_SLOT(sse2, Y16_2_Y10_Pairs_Row),
      TQCS_SLOT(sse2, YUV422_16_2_YUYV_Row), TQCS_SLOT(sse2, YUV422_16_2_UYVY_Row),

      // sse2/rgb_deep.cpp, rgb_to_yuv_deep.cpp, yuv_to_rgb_deep.cpp
      TQCS_SLOT(sse2, RGB48_2_YUYV16_Row), TQCS_SLOT(sse2, RGB48_2_UYVY16_Row),
      TQCS_SLOT(sse2, RGB24_2_YUYV16_Row), TQCS_SLOT(sse2, RGB24_2_UYVY16_Row),
      TQCS_SLOT(sse2, YUYV16_2_RGB64_Row), TQCS_SLOT(sse2, UYVY16_2_RGB64_Row),
      TQCS_SLOT(sse2, YUYV16_2_BGR64_Row), TQCS_SLOT(sse2, UYVY16_2_BGR64_Row),
      TQCS_SLOT(sse2, RGB64_2_BGR32_Row), TQCS_SLOT(sse2, BGR32_2_RGB64_Row),
      TQCS_SLOT(sse2, YUYV16_2_RGB32_Row), TQCS_SLOT(sse2, YUYV16_2_BGR32_Row),
      TQCS_SLOT(sse2, UYVY16_2_RGB32_Row), TQCS_SLOT(sse2, UYVY16_2_BGR32_Row),
      TQCS_SLOT(sse2, RGB64_SwapRB_Row), TQCS_SLOT(sse2, RGB48_2_RGB64_Row),
      TQCS_SLOT(sse2, RGB48_2_BGR64_Row), TQCS_SLOT(sse2, RGB24_2_RGB48_Row),
      TQCS_SLOT(sse2, RGB24_2_BGR48_Row), TQCS_SLOT(sse2, RGB24_2_RGB64_Row),
      TQCS_SLOT(sse2, RGB24_2_BGR64_Row), TQCS_SLOT(sse2, RGB24_Key_2_RGB64_Row),
      TQCS_SLOT(sse2, RGB24_Key_2_BGR64_Row), TQCS_SLOT(sse2, RGB48_2_RGB30_Row),
      TQCS_SLOT(sse2, RGB48_2_BGR24_Row), TQCS_SLOT(sse2, RGB48_2_RGB32_Row),
      TQCS_SLOT(sse2, RGB48_2_BGR32_Row), TQCS_SLOT(sse2, RGB48_2_RGB64_Opaque_Row),
      TQCS_SLOT(sse2, RGB48_2_BGR64_Opaque_Row), TQCS_SLOT(sse2, RGB32_2_YUYV16_Row),
      TQCS_SLOT(sse2, RGB32_2_UYVY16_Row), TQCS_SLOT(sse2, YUV422_10Bit_2_RGB64_Row),
      TQCS_SLOT(sse2, YUV422_10Bit_2_BGR64_Row), TQCS_SLOT(sse2, YUV422_10Bit_2_RGB32_Row),
      TQCS_SLOT(sse2, YUV422_10Bit_2_BGR32_Row), TQCS_SLOT(sse2, YUV411_2_RGB32_Row),
      TQCS_SLOT(sse2, YUV411_2_BGR32_Row), TQCS_SLOT(sse2, RGB48_2_YUV422_16_Row),

      // sse2/pack_8plus2.cpp
      TQCS_SLOT(sse2, Split16To8Plus2_Row), TQCS_SLOT(sse2, Join8Plus2To16_Row),
      TQCS_SLOT(sse2, Pack8To8Plus2_Row), TQCS_SLOT(sse2, Pack8To8Plus2_SwapPairs_Row),
      TQCS_SLOT(sse2, Unpack8Plus2To8_Row), TQCS_SLOT(sse2, Unpack8Plus2To8_SwapPairs_Row),
      TQCS_SLOT(sse2, YUV422_16_2_YUYV_8Plus2_Row),

      // sse2/v210.cpp
      TQCS_SLOT(sse2, V210_2_YUYV16_Row), TQCS_SLOT(sse2, V210_2_UYVY16_Row),
      TQCS_SLOT(sse2, YUYV16_2_V210_Row), TQCS_SLOT(sse2, UYVY16_2_V210_Row),
      TQCS_SLOT(sse2, V210_2_YUV8_Row), TQCS_SLOT(sse2, V210_2_YUV8_B_Row),
      TQCS_SLOT(sse2, YUV8_2_V210_Row), TQCS_SLOT(sse2, YUV8_2_V210_B_Row),
  });
}

// Byte-shuffle repacks (levels 2 to 4).
List SSSE3List() {
  return Listed({
      // ssse3/rgb_repack.cpp
      TQCS_SLOT(ssse3, RGB24_2_RGB32_Row),
      TQCS_SLOT(ssse3, RGB24_2_BGR32_Row),
      TQCS_SLOT(ssse3, RGB32_2_BGR24_Row),
  });
}

// VEX-encoded SSE4.1 (level 4).
List SSE41List() {
  return Listed({
      // sse41/uv_interleave.cpp
      TQCS_SLOT(sse41, Int32_2_Int16_Deinterleave_Row),
  });
}
// clang-format on

#undef TQCS_SLOT

}  // namespace

std::span<const SlotEntry> TierEntries(Tier tier) {
  static List sse41List = SSE41List(), ssse3List = SSSE3List(), sse2List = SSE2List(),
              portableList = PortableList();
  static const std::span<const SlotEntry> sse41 = sse41List.Ascending(),
                                          ssse3 = ssse3List.Ascending(),
                                          sse2 = sse2List.Ascending(),
                                          portable = portableList.Ascending();
  switch (tier) {
    case Tier::SSE41:
      return sse41;
    case Tier::SSSE3:
      return ssse3;
    case Tier::SSE2:
      return sse2;
    case Tier::Portable:
      break;
  }
  return portable;
}

const char *TierName(Tier tier) {
  switch (tier) {
    case Tier::SSE41:
      return "sse41";
    case Tier::SSSE3:
      return "ssse3";
    case Tier::SSE2:
      return "sse2";
    case Tier::Portable:
      break;
  }
  return "portable";
}

}  // namespace tqcs
