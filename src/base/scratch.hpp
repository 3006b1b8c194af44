// Scratch memory of the conversions that need rows or planes of their own:
// allocated per call, freed on every path. Tests may replace the allocator to
// make every allocation fail.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace tqcs {

using ScratchAllocator = void *(*)(size_t bytes);

uint8_t *AllocateScratch(size_t bytes);
void FreeScratch(uint8_t *p);
// Installs `allocator` (null: the standard one) and returns the one before.
ScratchAllocator SetScratchAllocatorForTesting(ScratchAllocator allocator);

// Scratch owned for the length of a call.
struct ScratchDeleter {
  void operator()(uint8_t *p) const { FreeScratch(p); }
};
using ScratchBuffer = std::unique_ptr<uint8_t, ScratchDeleter>;
inline ScratchBuffer MakeScratch(size_t bytes) { return ScratchBuffer(AllocateScratch(bytes)); }

}  // namespace tqcs
