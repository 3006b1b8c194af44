// Table entries: sub-tables are arrays of function pointers viewed through
// typed structs, read and written by slot. The floor of the library: every
// layer may use this, and it uses nothing of ours but the public header.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include <cstdint>
#include <cstring>
#include <span>

namespace tqcs {

// A type-erased table entry; slots are read and written by position with
// memcpy.
using Fn = void (*)();

template <class F>
Fn Erase(F *f) {
  return reinterpret_cast<Fn>(f);
}

template <class Table>
inline constexpr int32_t kSlotCount = static_cast<int32_t>(sizeof(Table) / sizeof(Fn));

template <class Table>
Fn LoadSlot(const Table &table, int32_t slot) {
  Fn fn;
  std::memcpy(&fn, reinterpret_cast<const char *>(&table) + slot * sizeof(Fn), sizeof fn);
  return fn;
}

template <class Table>
void StoreSlot(Table &table, int32_t slot, Fn fn) {
  std::memcpy(reinterpret_cast<char *>(&table) + slot * sizeof(Fn), &fn, sizeof fn);
}

struct SlotEntry {
  int32_t slot;
  Fn fn;
};

// Stores each entry whose slot is still null: a slot set earlier is never
// overwritten, so the order of fills is the order of preference.
template <class Table>
void FillNullSlots(Table &table, std::span<const SlotEntry> entries) {
  for (const SlotEntry &e : entries)
    if (!LoadSlot(table, e.slot)) StoreSlot(table, e.slot, e.fn);
}

// The one shared do-nothing function of the unsupported slots.
void EmptyStub();

}  // namespace tqcs

static_assert(tqcs::kSlotCount<TCS_GeneralTable> == TCS_GENERAL_SLOT_COUNT);
static_assert(tqcs::kSlotCount<TCS_RGB32Table> == TCS_RGB32_SLOT_COUNT);
static_assert(tqcs::kSlotCount<TCS_RGB24Table> == TCS_RGB24_SLOT_COUNT);
static_assert(tqcs::kSlotCount<TCS_YUVATable> == TCS_YUVA_SLOT_COUNT);
static_assert(tqcs::kSlotCount<TCS_YUV16Table> == TCS_YUV16_SLOT_COUNT);
static_assert(tqcs::kSlotCount<TCS_YUV422Table> == TCS_YUV422_SLOT_COUNT);
static_assert(tqcs::kSlotCount<TCS_YUV420Table> == TCS_YUV420_SLOT_COUNT);
static_assert(tqcs::kSlotCount<TCS_YUVTable> == TCS_YUV_SLOT_COUNT);
static_assert(tqcs::kSlotCount<TCS_KernelTable> == TCS_KERNEL_SLOT_COUNT);
