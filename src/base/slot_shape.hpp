// The argument layout of a slot, read from its typed signature: the one
// decoder of the parameters of a driver or a general operation, used by the
// drivers' adapters, the dispatcher's forwarding and the tests' generic calls.
//
// A slot's parameters open with its planes: each a pointer, followed by its
// signed 64-bit pitch unless it is an accumulator (the histogram's counts);
// the destinations (pointers to non-const) come first. After the planes come
// width and height (int32), then the options. A slot is frame-shaped when
// every plane has its pitch, width and height follow, every option is an
// integer and the last parameter is the flip byte: the shape of every
// _Frame, _Split and _Compose slot.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>
#include <utility>

namespace tqcs {

enum class Role : uint8_t { kPointer, kPitch, kWidth, kHeight, kOption, kFlip };

// One parameter: its role, and the plane or option it belongs to.
struct Param {
  Role role = Role::kOption;
  uint8_t index = 0;
};

template <class Sig>
struct SlotShape;

template <class R, class... P>
struct SlotShape<R (*)(P...)> {
  using Params = std::tuple<P...>;
  static constexpr size_t kParams = sizeof...(P);

 private:
  struct Layout {
    std::array<Param, kParams> params{};
    size_t planes = 0, pitched = 0, destinations = 0, firstOption = 0;
    bool frameShaped = false;
  };

  static constexpr Layout Decode() {
    constexpr bool pointer[] = {std::is_pointer_v<P>..., false};
    constexpr bool writable[] = {!std::is_const_v<std::remove_pointer_t<P>>..., false};
    constexpr bool pitch[] = {std::is_same_v<P, int64_t>..., false};
    constexpr bool is32[] = {std::is_same_v<P, int32_t>..., false};
    constexpr bool integral[] = {std::is_integral_v<P>..., false};
    constexpr bool byte[] = {std::is_same_v<P, uint8_t>..., false};
    Layout l;
    size_t i = 0;
    bool destinations = true;
    for (; i < kParams && pointer[i]; ++i, ++l.planes) {
      destinations = destinations && writable[i];
      if (destinations) ++l.destinations;
      l.params[i] = {Role::kPointer, static_cast<uint8_t>(l.planes)};
      if (pitch[i + 1]) {
        l.params[++i] = {Role::kPitch, static_cast<uint8_t>(l.planes)};
        ++l.pitched;
      }
    }
    const bool sized = i + 1 < kParams && is32[i] && is32[i + 1];
    if (sized) {
      l.params[i++].role = Role::kWidth;
      l.params[i++].role = Role::kHeight;
    }
    l.firstOption = i;
    bool options = true;
    for (size_t k = i; k < kParams; ++k) {
      l.params[k] = {Role::kOption, static_cast<uint8_t>(k - i)};
      options = options && integral[k];
    }
    constexpr size_t last = kParams ? kParams - 1 : 0;
    l.frameShaped =
        l.planes > 0 && l.pitched == l.planes && sized && options && i < kParams && byte[last];
    if (l.frameShaped) l.params[last].role = Role::kFlip;
    return l;
  }
  static constexpr Layout kLayout = Decode();

 public:
  // Every plane (pointer, with or without its pitch), and how many of the
  // first are destinations.
  static constexpr size_t kPlanes = kLayout.planes;
  static constexpr size_t kDestinations = kLayout.destinations;
  static constexpr size_t kSources = kPlanes - kDestinations;
  static constexpr bool kFrameShaped = kLayout.frameShaped;
  // Positions of width and height (after the planes) and of the options.
  static constexpr size_t kWidth = kPlanes + kLayout.pitched;
  static constexpr size_t kHeight = kWidth + 1;
  static constexpr size_t kFirstOption = kLayout.firstOption;
  // The options, the flip not counted; the flip is the last parameter of a
  // frame-shaped slot.
  static constexpr size_t kOptions = kParams - kFirstOption - (kFrameShaped ? 1 : 0);
  static constexpr size_t kFlip = kParams - 1;
  static constexpr std::array<Param, kParams> kRoles = kLayout.params;

  // The argument positions of plane k's pointer and of its pitch.
  static constexpr size_t PointerAt(size_t plane) { return Position(Role::kPointer, plane); }
  static constexpr size_t PitchAt(size_t plane) { return Position(Role::kPitch, plane); }

  // Calls fn with every argument taken from `from`, by role: Pointer(plane)
  // (a byte address), Pitch(plane), Width(), Height(), Option(index) and
  // Flip().
  template <class From>
  static R Call(R (*fn)(P...), const From &from) {
    return [&]<size_t... I>(std::index_sequence<I...>) { return fn(Argument<I>(from)...); }
    (std::make_index_sequence<kParams>{});
  }

 private:
  static constexpr size_t Position(Role role, size_t index) {
    for (size_t i = 0; i < kParams; ++i)
      if (kRoles[i].role == role && kRoles[i].index == index) return i;
    return kParams;
  }

  template <size_t I, class From>
  static std::tuple_element_t<I, Params> Argument(const From &from) {
    using T = std::tuple_element_t<I, Params>;
    constexpr Param p = kRoles[I];
    if constexpr (p.role == Role::kPointer) {
      return reinterpret_cast<T>(from.Pointer(p.index));
    } else if constexpr (p.role == Role::kPitch) {
      return from.Pitch(p.index);
    } else if constexpr (p.role == Role::kWidth) {
      return from.Width();
    } else if constexpr (p.role == Role::kHeight) {
      return from.Height();
    } else if constexpr (p.role == Role::kFlip) {
      return from.Flip();
    } else {
      return static_cast<T>(from.Option(p.index));
    }
  }
};

// The shape of the slot a typed table member holds.
template <class M>
struct MemberShape;
template <class Table, class F>
struct MemberShape<F Table::*> : SlotShape<F> {};

}  // namespace tqcs
