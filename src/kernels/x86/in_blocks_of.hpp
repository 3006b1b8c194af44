// The block loop of in_blocks.hpp for a routine that stands in no kernel slot
// (so has no entry in the slot extents): whole blocks of kBlock samples by the
// SIMD body, the rest of the row by the portable routine kTwin. Every pointer
// argument is a row of one sample a pixel: the body gets them advanced to its
// block, and the tail call gets them advanced by the samples done, the count
// (the one int32_t argument) reduced by them, pitches as they came. Private to
// the SIMD tiers, internal linkage like in_blocks.hpp.
#pragma once

#include <cstdint>
#include <tuple>
#include <type_traits>

namespace tqcs::x86 {
namespace {

template <class A>
inline A MovedBy(A a, int64_t done) {
  if constexpr (std::is_pointer_v<A>) {
    return a + done;
  } else if constexpr (std::is_same_v<A, int32_t>) {
    return static_cast<A>(a - done);
  } else {
    return a;
  }
}

template <class A>
inline int64_t CountOf(A a) {
  if constexpr (std::is_same_v<A, int32_t>) {
    return a;
  } else {
    return 0;
  }
}

// The row pointers among the arguments, as a tuple, advanced by `at`.
template <class A>
inline auto RowAt(A a, int64_t at) {
  if constexpr (std::is_pointer_v<A>) {
    return std::tuple<A>(a + at);
  } else {
    return std::tuple<>();
  }
}

template <auto kTwin, int kBlock, class Body, class... A>
inline void InBlocksOf(const Body &body, A... args) {
  static_assert((std::is_same_v<A, int32_t> + ...) == 1, "one count among the arguments");
  const int64_t count = (CountOf(args) + ...);
  const int64_t blocks = count >= kBlock ? count / kBlock : 0;
  for (int64_t b = 0; b < blocks; ++b) std::apply(body, std::tuple_cat(RowAt(args, b * kBlock)...));
  // A count below 1 writes nothing, so a row without samples left needs no call.
  if (count > blocks * kBlock) kTwin(MovedBy(args, blocks * kBlock)...);
}

}  // namespace
}  // namespace tqcs::x86
