// Prints a hash of what every driver slot of sub-tables 1 to 7 and every
// tiered kernel slot writes for seeded inputs, one line a slot, through the
// tables start-up built at the level in force (TCB_CPU_LEVEL). Every build of
// the library (the ELF one, the Windows one) must print the same lines at
// every level: the comparison needs hashes, not the frames themselves.
#include <TQCPUBase.h>
#include <TQColorSpace/TQColorSpace.h>

#include <cinttypes>
#include <cstdio>
#include <random>
#include <vector>

#include "core/startup.hpp"
#include "drivers/driver_harness.hpp"
#include "drivers/slot_layouts.hpp"
#include "support/kernel_shapes.hpp"
#include "support/log_capture.hpp"

namespace tqcs::test {
namespace {

constexpr uint64_t kFnvBasis = 0xcbf29ce484222325ull;

uint64_t Fnv(uint64_t h, const std::vector<uint8_t> &bytes) {
  for (uint8_t b : bytes) h = (h ^ b) * 0x100000001b3ull;
  return h;
}

// Widths and heights cover odd sizes, single rows and the SIMD bodies' tails.
void HashDrivers() {
  for (const SlotRef &slot : AllDriverSlots()) {
    if (!layouts::LayoutOf(slot)) continue;
    uint64_t h = kFnvBasis;
    uint32_t seed = 1;
    for (int32_t w : {1, 2, 7, 16, 33, 70})
      for (int32_t rows : {1, 2, 5, 8})
        for (int64_t flip = 0; flip < 2; ++flip)
          h = Fnv(h, layouts::RunOnFreshImages(slot, w, rows, flip, seed += 3));
    std::printf("driver %s %016" PRIx64 "\n", slot.name.c_str(), h);
  }
}

// Rows of a pitched source span the rows its kernel reads before and after.
void HashKernels(const TCS_KernelTable &table) {
  for (const KernelShape &shape : AllShapes()) {
    const int32_t slot = static_cast<int32_t>(shape.slot);
    const SlotSignature sig = SignatureOf(slot);
    uint64_t h = kFnvBasis;
    for (int32_t count : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 47, 64, 100, 255}) {
      std::mt19937 rng(static_cast<uint32_t>(slot * 1000 + count));
      std::vector<std::vector<uint8_t>> buffers(shape.rows.size());
      std::vector<std::vector<int16_t>> coefs(8, std::vector<int16_t>(8));
      CallArgs args;
      args.count = count;
      args.alpha = 200;
      for (auto &row : coefs) {
        for (int16_t &c : row) c = static_cast<int16_t>(rng());
        args.coefs.push_back(row.data());
      }
      for (size_t r = 0; r < shape.rows.size(); ++r) {
        const int64_t bytes = static_cast<int64_t>(shape.rows[r].Bytes(count));
        const int64_t pitch = sig.pitched[r] ? bytes + 5 : 0;
        const int before = sig.pitched[r] && !sig.written[r] ? shape.srcRowsBefore : 0;
        buffers[r].resize(static_cast<size_t>((before + 2) * (bytes + 5)));
        for (uint8_t &b : buffers[r]) b = static_cast<uint8_t>(rng());
        args.rows.push_back(buffers[r].data() + before * pitch);
        args.pitches.push_back(pitch);
      }
      CallSlot(table, slot, args);
      for (size_t r = 0; r < buffers.size(); ++r)
        if (sig.written[r]) h = Fnv(h, buffers[r]);
    }
    std::printf("kernel %s %016" PRIx64 "\n", SlotName(slot), h);
  }
}

}  // namespace
}  // namespace tqcs::test

int main() {
  using namespace tqcs;
  // A forced level this processor lacks would run instructions it does not have.
  const uint32_t level = TCB_GetCPUInsHigh();
  if (level >= 1 && level <= 4 && level > TCB_GetCPUInsHighDetected()) {
    std::printf("level %u is above this processor's: not run\n", level);
    return 77;
  }
  test::LogCapture quiet;  // refusals of the odd sizes stay off stderr
  if (!TCS_DllMain(nullptr, TCS_REASON_PROCESS_ATTACH, nullptr)) return 1;
  std::printf("level %u\n", level);
  test::HashDrivers();
  test::HashKernels(*g_pColorSpaceAPI->pKernel);
  return 0;
}
