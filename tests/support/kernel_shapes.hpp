// The row extents of each tiered kernel slot, and a generic caller that hands
// any slot its pointers, pitches, count, alpha and coefficient rows from its
// typed signature. Differential tests and the per-slot benchmark use both, so
// a slot needs one line here, not a test of its own.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

#include "kernels/kernel_slots.hpp"

namespace tqcs::test {

// Bytes of one row for a count: per pixel, per whole pair (count / 2), per
// pair rounded up ((count + 1) / 2), per whole group of four pixels
// (count / 4), plus a fixed part, plus per V210 word of the count / 2 whole
// pairs (ceil(4 * (count / 2) / 3) words), plus per group of four rounded up
// ((count + 3) / 4).
struct RowSize {
  int32_t perPixel = 0, perPair = 0, perCeilPair = 0, fixed = 0, perQuad = 0, perV210Word = 0,
          perCeilQuad = 0;
  size_t Bytes(int32_t count) const;
};
constexpr RowSize Px(int32_t n) { return {n, 0, 0, 0}; }
constexpr RowSize Pairs(int32_t n) { return {0, n, 0, 0}; }
constexpr RowSize CeilPairs(int32_t n) { return {0, 0, n, 0}; }
constexpr RowSize Fixed(int32_t n) { return {0, 0, 0, n}; }
constexpr RowSize Quads(int32_t n) { return {0, 0, 0, 0, n}; }
constexpr RowSize V210Words() { return {0, 0, 0, 0, 0, 4}; }
// An 8+2 row of count samples: a high byte each and a low byte per four.
constexpr RowSize Blocked8Plus2() { return {1, 0, 0, 0, 0, 0, 1}; }

// One slot: the size of every pointer argument other than coefficient rows,
// in argument order. A pointer followed by a pitch is one of several rows: a
// source spans `srcRowsBefore` rows before it and one after, a destination
// one after.
struct KernelShape {
  K slot;
  std::vector<RowSize> rows;
  int srcRowsBefore = 0;
  bool inPlace = false;  // the first source may be the first destination
};

// The shape of a slot, if it is listed.
const KernelShape *ShapeOf(int32_t slot);
const std::vector<KernelShape> &AllShapes();

// What a call is made of. Rows are the pointer arguments in order; pitches
// belong to the pointer before them.
struct CallArgs {
  std::vector<uint8_t *> rows;
  std::vector<int64_t> pitches;  // by row index; 0 for rows without a pitch
  int32_t count = 0;
  uint8_t alpha = 255;
  std::vector<const int16_t *> coefs;  // in order of the coefficient arguments
};

namespace detail {

enum class Arg { Row, Pitch, Count, Alpha, Coef };

template <class A>
constexpr Arg KindOf() {
  if constexpr (std::is_same_v<A, const int16_t *>) return Arg::Coef;
  if constexpr (std::is_pointer_v<A>) return Arg::Row;
  if constexpr (std::is_same_v<A, int64_t>) return Arg::Pitch;
  if constexpr (std::is_same_v<A, int32_t>) return Arg::Count;
  return Arg::Alpha;
}

// Index among the arguments of the same kind (pitches: the row before).
template <class... A>
constexpr int OrdinalOf(size_t position) {
  constexpr Arg kinds[] = {KindOf<A>()...};
  int rows = 0, coefs = 0;
  for (size_t i = 0; i < position; ++i) {
    if (kinds[i] == Arg::Row) ++rows;
    if (kinds[i] == Arg::Coef) ++coefs;
  }
  if (kinds[position] == Arg::Pitch) return rows - 1;
  return kinds[position] == Arg::Coef ? coefs : rows;
}

template <class A, int kOrdinal>
A Pick(const CallArgs &a) {
  constexpr Arg kind = KindOf<A>();
  if constexpr (kind == Arg::Row) return reinterpret_cast<A>(a.rows[kOrdinal]);
  if constexpr (kind == Arg::Pitch) return a.pitches[kOrdinal];
  if constexpr (kind == Arg::Count) return a.count;
  if constexpr (kind == Arg::Coef) return a.coefs[kOrdinal];
  if constexpr (kind == Arg::Alpha) return a.alpha;
}

template <class Fn>
struct Caller;
template <class R, class... A>
struct Caller<R (*)(A...)> {
  static constexpr int kCoefs = ((KindOf<A>() == Arg::Coef ? 1 : 0) + ... + 0);
  static constexpr int kRows = ((KindOf<A>() == Arg::Row ? 1 : 0) + ... + 0);
  template <size_t... I>
  static void Call(R (*fn)(A...), const CallArgs &a, std::index_sequence<I...>) {
    fn(Pick<A, OrdinalOf<A...>(I)>(a)...);
  }
  static void Call(R (*fn)(A...), const CallArgs &a) {
    Call(fn, a, std::index_sequence_for<A...>{});
  }
  // Whether the pointer at each row index is written.
  static std::vector<bool> Written() {
    std::vector<bool> out;
    ((KindOf<A>() == Arg::Row ? out.push_back(!std::is_const_v<std::remove_pointer_t<A>>) : void()),
     ...);
    return out;
  }
  // Whether each row index is followed by a pitch.
  static std::vector<bool> Pitched() {
    constexpr Arg kinds[] = {KindOf<A>()...};
    std::vector<bool> out;
    for (size_t i = 0; i < sizeof...(A); ++i)
      if (kinds[i] == Arg::Row) out.push_back(i + 1 < sizeof...(A) && kinds[i + 1] == Arg::Pitch);
    return out;
  }
};

}  // namespace detail

// A slot's argument layout, read from its signature.
struct SlotSignature {
  std::vector<bool> written;  // per row
  std::vector<bool> pitched;  // per row
  int coefs = 0;
};
SlotSignature SignatureOf(int32_t slot);

// The slot's kernel name.
const char *SlotName(int32_t slot);

// Calls slot `slot` of `table` with `args`.
void CallSlot(const TCS_KernelTable &table, int32_t slot, const CallArgs &args);

}  // namespace tqcs::test
