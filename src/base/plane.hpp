// A plane of an image, and the forms in which an operation meets a frame.
#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

namespace tqcs {

// How an operation meets a frame: the whole frame, a frame split into two
// fields, two fields composed into a frame; kSingle marks a slot outside the
// triples.
enum class Form { kFrame, kSplit, kCompose, kSingle };

// One plane: a pointer to row 0 and a signed byte pitch.
// Row addresses are formed as integers: a refused or flipped call may hold a
// null base, and nothing is dereferenced before the checks pass.
struct Plane {
  uint8_t *p;
  int64_t pitch;
  uint8_t *Row(int64_t y) const {
    return reinterpret_cast<uint8_t *>(reinterpret_cast<uintptr_t>(p) +
                                       static_cast<uintptr_t>(y * pitch));
  }
};

template <int N>
using Planes = std::array<Plane, N>;

// The byte address of a C argument's plane: sources are never written.
template <class T>
uint8_t *Bytes(T *p) {
  return reinterpret_cast<uint8_t *>(const_cast<std::remove_const_t<T> *>(p));
}

}  // namespace tqcs
