// The one place that states which row routines each tier implements, and from
// it the routine each code path uses for every row slot: its own tier's if the
// tier lists one, otherwise that of the nearest less capable tier that does.
// Entries are typed by their slot: a routine with another slot's signature
// does not compile.
#pragma once

#include "row_slots.hpp"

namespace tqmp {

// A tier's routine for one row slot, or none. `listed` says which, so that
// choosing between tiers stays a constant expression even where comparing a
// function's address with null is not one (the sanitizer builds).
template <class F>
struct Entry {
  constexpr Entry() = default;
  constexpr Entry(F *routine) : fn(routine), listed(true) {}
  F *fn = nullptr;
  bool listed = false;
};

// One entry per row slot; unlisted where a tier adds nothing.
struct RowSet {
#define TQMP_ROW_MEMBER(name, ret, params) Entry<ret params> name{};
  TQMP_ROW_SLOTS(TQMP_ROW_MEMBER)
#undef TQMP_ROW_MEMBER
};

// The code paths in order of capability, named as TMP_CPU_PATH names them;
// each needs the processor features of the ones before it.
inline constexpr const char *kPathNames[] = {"portable", "sse2", "ssse3", "avx2"};
inline constexpr int kPaths = 4;

// Each tier's list, grouped by the unit that defines the routines.
inline constexpr RowSet kTierRows[kPaths] = {
// portable/: every slot.
#define TQMP_PORTABLE_ENTRY(name, ret, params) portable::name,
    {TQMP_ROW_SLOTS(TQMP_PORTABLE_ENTRY)},
#undef TQMP_PORTABLE_ENTRY
    {
        // sse2/repack.cpp and sse2/range_scaling.cpp: every slot.
        .ExtractChannel_Row = sse2::ExtractChannel_Row,
        .YUV16_Swap_Row = sse2::YUV16_Swap_Row,
        .Scale_Row = sse2::Scale_Row,
        .Scale_Run = sse2::Scale_Run,
        .RGB32_2_RGB24_Row = sse2::RGB32_2_RGB24_Row,
    },
    {
        // ssse3/repack.cpp: byte shuffles; the pair swap and the scaling keep
        // the SSE2 routines (a shuffle gains nothing over their shifts and
        // multiplies).
        .ExtractChannel_Row = ssse3::ExtractChannel_Row,
        .RGB32_2_RGB24_Row = ssse3::RGB32_2_RGB24_Row,
    },
    {
        // avx2/repack.cpp and avx2/range_scaling.cpp: every slot.
        .ExtractChannel_Row = avx2::ExtractChannel_Row,
        .YUV16_Swap_Row = avx2::YUV16_Swap_Row,
        .Scale_Row = avx2::Scale_Row,
        .Scale_Run = avx2::Scale_Run,
        .RGB32_2_RGB24_Row = avx2::RGB32_2_RGB24_Row,
    },
};

// The routines of code path `path`.
constexpr RowSet RowsOfPath(int path) {
  RowSet rows;
  for (int tier = 0; tier <= path; ++tier) {
#define TQMP_ROW_TAKE(name, ret, params) \
  if (kTierRows[tier].name.listed) rows.name = kTierRows[tier].name;
    TQMP_ROW_SLOTS(TQMP_ROW_TAKE)
#undef TQMP_ROW_TAKE
  }
  return rows;
}

}  // namespace tqmp
