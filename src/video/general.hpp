// The general video operations of root sub-table 0: the format-code
// dispatchers (frame, field and descriptor forms), the 24/32-bit repackers and
// the channel split, the format-free field split and compose, and the
// full/video range scaling.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include <cstdint>
#include <span>

#include "base/plane.hpp"
#include "base/table_entries.hpp"

namespace tqcs::video {

// Every operation of the sub-table, declared from the public slot list so each
// has exactly the signature of its typed table member.
#define TQCS_VIDEO_DECLARE(n, name, ret, params) ret name params;
TCS_GENERAL_SLOTS(TQCS_VIDEO_DECLARE)
#undef TQCS_VIDEO_DECLARE

// The 19 entries of sub-table 0, for the table fill at start-up.
std::span<const SlotEntry> GeneralOperations();

// A byte offset from a pointer, formed as an integer.
inline uint8_t *Offset(uint8_t *p, int64_t bytes) {
  return reinterpret_cast<uint8_t *>(reinterpret_cast<uintptr_t>(p) +
                                     static_cast<uintptr_t>(bytes));
}

// A product formed in 32 bits and sign-extended, as the counts and offsets of
// several operations here are: kept for compatibility, so values past the
// signed 32-bit range wrap. See docs/compatibility.md.
inline int32_t Mul32(int64_t a, int64_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

}  // namespace tqcs::video
