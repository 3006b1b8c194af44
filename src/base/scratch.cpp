#include "base/scratch.hpp"

namespace tqcs {
namespace {
ScratchAllocator g_allocator = &std::malloc;
}  // namespace

uint8_t *AllocateScratch(size_t bytes) { return static_cast<uint8_t *>(g_allocator(bytes)); }
void FreeScratch(uint8_t *p) { std::free(p); }

ScratchAllocator SetScratchAllocatorForTesting(ScratchAllocator allocator) {
  const ScratchAllocator previous = g_allocator;
  g_allocator = allocator ? allocator : &std::malloc;
  return previous;
}

}  // namespace tqcs
