#include "support/buffers.hpp"

namespace tqcs::test {

GuardedBuffer::GuardedBuffer(size_t size, size_t offset, size_t guard)
    : storage_(offset + size + guard, kCanary), size_(size), offset_(offset) {}

void GuardedBuffer::Randomize(uint32_t seed) {
  std::mt19937 rng(seed);
  for (size_t i = 0; i < size_; ++i) data()[i] = static_cast<uint8_t>(rng());
}

void GuardedBuffer::Fill(uint8_t value) {
  for (size_t i = 0; i < size_; ++i) data()[i] = value;
}

bool GuardedBuffer::CanariesIntact() const {
  for (size_t i = 0; i < offset_; ++i)
    if (storage_[i] != kCanary) return false;
  for (size_t i = offset_ + size_; i < storage_.size(); ++i)
    if (storage_[i] != kCanary) return false;
  return true;
}

std::vector<uint8_t> RandomBytes(size_t size, uint32_t seed) {
  std::mt19937 rng(seed);
  std::vector<uint8_t> out(size);
  for (auto &b : out) b = static_cast<uint8_t>(rng());
  return out;
}

}  // namespace tqcs::test

#include <TQCPUBase.h>

#include <map>
#include <mutex>

#include "kernels/kernel_table.hpp"
#include "startup/api.hpp"

namespace tqcs::test {

const TCS_KernelTable &KernelTableForLevel(uint32_t level) {
  static std::mutex lock;
  static std::map<uint32_t, TCS_KernelTable> tables;
  std::lock_guard<std::mutex> guard(lock);
  auto [it, inserted] = tables.try_emplace(level);
  if (inserted) {
    FillFixedKernelSlots(it->second);
    FillWholePlaneKernelSlots(it->second);
    FillKernelTable(level, it->second);
  }
  return it->second;
}

std::vector<uint32_t> KernelTestLevels() {
  // A level above what this processor has would run instructions it lacks.
  const uint32_t machine = TCB_GetCPUInsHighDetected();
  std::vector<uint32_t> levels;
  for (uint32_t level : {0u, 1u, 2u, 4u})
    if (level == 0 || level <= machine) levels.push_back(level);
  return levels;
}

}  // namespace tqcs::test
