// The one row loop of the SIMD tiers: whole blocks by a SIMD body, the rest of
// the row by the slot's portable routine. Private to src/kernels/{sse2,ssse3,
// sse41}; internal linkage like row.hpp, so each unit compiles its own copy
// with its own instruction set.
//
//   x86::InBlocks<K::RGB24_2_RGB32_Row, 16>(
//       [&](uint8_t *d, const uint8_t *s) { ... 16 pixels at d, s ... },
//       dst, src, count, alpha);
//
// The body states its block width and what it does to one block; it is called
// with the slot's row pointers (every pointer argument but the coefficient
// rows, in argument order) advanced to the block. The pixels after the last
// whole block go to the portable routine with every row pointer advanced by
// its extent (slot_extents.hpp) for the pixels done, the count reduced by
// them, and pitches, constants and coefficient rows as they came. So nothing
// is ever read or written outside the caller's row: the body never runs on a
// partial block, and the offsets of the tail are the table's, not the tier's.
//
// kKeep pixels are always left to the portable routine, for kernels whose
// blocks read the pair or group after them and whose last pair or group has
// its own rule there. A body given as Prepare(make) is made by make() once,
// and only when at least one block runs (constants read from coefficient
// rows, say). A body given as AllBlocks(run) is called once, with the row
// pointers and the number of whole blocks (at least one), for a routine of the
// tier that loops over its blocks itself.
//
// The kernel objects' operations run through the same loop, keyed by the
// operation, with the portable object as the twin (object_extents.hpp holds
// their extents):
//
//   x86::InBlocks<ColorSpaceOp::V210_2_YUV422, 24>(*this, body, dstY, ...);
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>
#include <utility>

#include "kernels/colorspace.hpp"
#include "kernels/kernel_slots.hpp"
#include "kernels/object_extents.hpp"
#include "kernels/slot_extents.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::x86 {
namespace {

// The portable routine of each slot as a callable, the twin that takes a SIMD
// body's tail. Only a twin that a tier calls is named in its unit's code, so
// slots without a portable routine (the whole-plane ones) cost nothing here.
template <K kSlot>
struct SlotTwin;
#define TQCS_PORTABLE_TWIN(n, name, ret, params) \
  template <>                                    \
  struct SlotTwin<K::name> {                     \
    template <class... A>                        \
    void operator()(A... args) const {           \
      portable::name(args...);                   \
    }                                            \
  };
TCS_KERNEL_SLOTS(TQCS_PORTABLE_TWIN)
#undef TQCS_PORTABLE_TWIN

// The portable object's operation of each name, called without virtual
// dispatch (the SSE2 object derives from the portable one).
template <ColorSpaceOp kOp>
struct PortableOp;
#define TQCS_PORTABLE_OP(name, ret, params)             \
  template <>                                           \
  struct PortableOp<ColorSpaceOp::name> {               \
    template <class... A>                               \
    static ret Call(ColorSpaceC &portable, A... args) { \
      return portable.ColorSpaceC::name(args...);       \
    }                                                   \
  };
TQCS_COLORSPACE_OPS(TQCS_PORTABLE_OP)
#undef TQCS_PORTABLE_OP

// What the loop knows of a row routine: its signature and its extents.
template <K kSlot>
struct SlotFacts {
  using Fn = typename SlotFn<kSlot>::Type;
  static_assert(ExtentsIndex(kSlot) < kSlotExtents.size(),
                "a SIMD slot needs its row extents in slot_extents.hpp");
  static constexpr SlotExtents kExtents = kSlotExtents[ExtentsIndex(kSlot)];
};
template <ColorSpaceOp kOp>
struct OpFacts {
  using Fn = typename OpFn<kOp>::Type;
  static constexpr OpExtents kExtents = ExtentsOf(kOp);
};

// A body with a rule of its own: made once before the first block
// (Prepare), or run over all the blocks in one call (AllBlocks).
enum class BodyRule { Prepared, AllBlocks };
template <BodyRule kRule, class Fn>
struct RuledBody {
  Fn fn;
};
template <class Make>
inline RuledBody<BodyRule::Prepared, Make> Prepare(Make make) {
  return {make};
}
template <class Run>
inline RuledBody<BodyRule::AllBlocks, Run> AllBlocks(Run run) {
  return {run};
}
template <class Body, BodyRule kRule>
inline constexpr bool kHasRule = false;
template <BodyRule kRule, class Fn>
inline constexpr bool kHasRule<RuledBody<kRule, Fn>, kRule> = true;

template <class Facts, class Fn = typename Facts::Fn>
struct BlockRow;

template <class Facts, class... A>
struct BlockRow<Facts, void (*)(A...)> {
  using Args = std::tuple<A...>;
  static constexpr size_t kArgs = sizeof...(A);
  static constexpr std::array<ArgKind, kArgs> kKinds{KindOf<A>()...};
  static constexpr auto kExtents = Facts::kExtents;

  static constexpr size_t kRows = [] {
    size_t n = 0;
    for (ArgKind k : kKinds) n += k == ArgKind::Row ? 1 : 0;
    return n;
  }();
  static_assert(kRows == kExtents.rowCount, "the extents list one entry per row pointer");
  // The argument position of each row pointer, and of the count.
  static constexpr std::array<size_t, kRows> kRowAt = [] {
    std::array<size_t, kRows> at{};
    size_t r = 0;
    for (size_t i = 0; i < kArgs; ++i)
      if (kKinds[i] == ArgKind::Row) at[r++] = i;
    return at;
  }();
  static constexpr size_t kCountAt = [] {
    for (size_t i = 0; i < kArgs; ++i)
      if (kKinds[i] == ArgKind::Count) return i;
    return kArgs;
  }();

  // Bytes that row r advances per block, checked to be the same for every block.
  template <int kBlock>
  static constexpr int64_t BlockStep(size_t r) {
    return kExtents.rows[r].Step(kBlock);
  }
  template <int kBlock>
  static constexpr bool WholeGroups() {
    for (size_t r = 0; r < kRows; ++r)
      if (!kExtents.rows[r].Linear(kBlock)) return false;
    return true;
  }
  static constexpr bool PerPixel() {
    for (size_t r = 0; r < kRows; ++r)
      if (!kExtents.rows[r].Linear(1)) return false;
    return true;
  }

  // Argument I with `done` pixels taken off the front of the row.
  template <size_t I>
  static std::tuple_element_t<I, Args> Moved(const Args &args, int64_t done) {
    const auto a = std::get<I>(args);
    if constexpr (kKinds[I] == ArgKind::Row) {
      constexpr RowExtent kRow = kExtents.rows[OrdinalOf(kKinds, I)];
      return Advance(a, kRow.Step(done));
    } else if constexpr (kKinds[I] == ArgKind::Count) {
      return static_cast<int32_t>(a - done);
    } else {
      return a;
    }
  }
  template <size_t... I>
  static Args MovedAll(const Args &args, int64_t done, std::index_sequence<I...>) {
    return Args{Moved<I>(args, done)...};
  }
  // Argument I of a call on the first `count` pixels of the row.
  template <size_t I>
  static std::tuple_element_t<I, Args> Head(const Args &args, int32_t count) {
    if constexpr (kKinds[I] == ArgKind::Count) {
      return count;
    } else {
      return std::get<I>(args);
    }
  }
  template <class Twin, size_t... I>
  static void TwinHead(const Twin &twin, const Args &args, int32_t count,
                       std::index_sequence<I...>) {
    twin(Head<I>(args, count)...);
  }

  template <int kBlock, class Block, size_t... R>
  static void Loop(const Block &block, const Args &args, int64_t blocks,
                   std::index_sequence<R...>) {
    for (int64_t b = 0; b < blocks; ++b)
      block(Advance(std::get<kRowAt[R]>(args),
                    b * std::integral_constant<int64_t, BlockStep<kBlock>(R)>{})...);
  }
  template <class Whole, size_t... R>
  static void All(const Whole &run, const Args &args, int64_t blocks, std::index_sequence<R...>) {
    run(std::get<kRowAt[R]>(args)..., blocks);
  }

  template <int kBlock, int kKeep, class Body, class Twin>
  static void Run(const Body &body, const Twin &twin, const Args &args) {
    static_assert(WholeGroups<kBlock>(),
                  "a block must hold whole groups of every row (pairs, V210 words, 8+2 runs)");
    const int64_t count = std::get<kCountAt>(args);
    const int64_t blocks = count - kKeep >= kBlock ? (count - kKeep) / kBlock : 0;
    if (blocks > 0) {
      if constexpr (kHasRule<Body, BodyRule::Prepared>) {
        Loop<kBlock>(body.fn(), args, blocks, std::make_index_sequence<kRows>{});
      } else if constexpr (kHasRule<Body, BodyRule::AllBlocks>) {
        All(body.fn, args, blocks, std::make_index_sequence<kRows>{});
      } else {
        Loop<kBlock>(body, args, blocks, std::make_index_sequence<kRows>{});
      }
    }
    // A count below 1 writes nothing, so a row without pixels left needs no call.
    if (count > blocks * kBlock)
      std::apply(twin, MovedAll(args, blocks * kBlock, std::make_index_sequence<kArgs>{}));
  }

  template <int kBlock, int kKeep, class Body, class Twin>
  static void RunAfter(int32_t head, const Body &body, const Twin &twin, const Args &args) {
    static_assert(PerPixel(), "a head of any length needs rows of whole pixels");
    if (head > 0) TwinHead(twin, args, head, std::make_index_sequence<kArgs>{});
    Run<kBlock, kKeep>(body, twin, MovedAll(args, head, std::make_index_sequence<kArgs>{}));
  }
};

// The row of slot kSlot: whole blocks of kBlock pixels (leaving at least
// kKeep pixels) by `body`, the rest by the portable routine.
template <K kSlot, int kBlock, int kKeep = 0, class Body, class... A>
inline void InBlocks(const Body &body, A... args) {
  using Row = BlockRow<SlotFacts<kSlot>>;
  Row::template Run<kBlock, kKeep>(body, SlotTwin<kSlot>{}, typename Row::Args(args...));
}

// The same after a head of `head` pixels (0 <= head <= count) given to the
// portable routine first, for bodies that need an aligned destination.
template <K kSlot, int kBlock, int kKeep = 0, class Body, class... A>
inline void InBlocksAfter(int32_t head, const Body &body, A... args) {
  using Row = BlockRow<SlotFacts<kSlot>>;
  Row::template RunAfter<kBlock, kKeep>(head, body, SlotTwin<kSlot>{}, typename Row::Args(args...));
}

// The row of operation kOp of a kernel object: whole blocks by `body`, the
// rest by the portable object's operation of the same name.
template <ColorSpaceOp kOp, int kBlock, int kKeep = 0, class Body, class... A>
inline void InBlocks(ColorSpaceC &portable, const Body &body, A... args) {
  using Row = BlockRow<OpFacts<kOp>>;
  Row::template Run<kBlock, kKeep>(
      body, [&portable](auto... a) { PortableOp<kOp>::Call(portable, a...); },
      typename Row::Args(args...));
}

// The bytes of row pointer `row` of slot kSlot for `count` pixels.
template <K kSlot>
inline int64_t RowBytes(size_t row, int32_t count) {
  return static_cast<int64_t>(SlotFacts<kSlot>::kExtents.rows[row].Bytes(count));
}

}  // namespace
}  // namespace tqcs::x86
