// The argument shape of each kernel slot, read from its typed signature, and a
// generic caller that hands any slot its pointers, pitches, count, alpha and
// coefficient rows. With the library's table of row extents, differential
// tests and the per-slot benchmark need no line of their own per slot.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

#include "kernels/kernel_slots.hpp"
#include "kernels/slot_extents.hpp"

namespace tqcs::test {

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

using Arg = ArgKind;

// Index among the arguments of the same kind (pitches: the row before).
template <class... A>
constexpr int OrdinalOf(size_t position) {
  return tqcs::OrdinalOf(std::array<Arg, sizeof...(A)>{KindOf<A>()...}, position);
}

template <class A, int kOrdinal>
A Pick(const CallArgs &a) {
  constexpr Arg kind = KindOf<A>();
  if constexpr (kind == Arg::Row) return reinterpret_cast<A>(a.rows[kOrdinal]);
  if constexpr (kind == Arg::Pitch) return a.pitches[kOrdinal];
  if constexpr (kind == Arg::Count) return a.count;
  if constexpr (kind == Arg::Coef) return a.coefs[kOrdinal];
  if constexpr (kind == Arg::Constant) return a.alpha;
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
