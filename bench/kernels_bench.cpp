// Every SIMD kernel slot against its portable twin on one row (1920 pixels;
// 3840 samples for the 16-bit families), per tier this processor has. Each
// pair is checked to give the same bytes before either is timed.
#include <TQCPUBase.h>
#include <benchmark/benchmark.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include "base/table_entries.hpp"
#include "kernels/kernel_table.hpp"
#include "support/buffers.hpp"
#include "support/kernel_shapes.hpp"

namespace {

using namespace tqcs;
using namespace tqcs::test;

constexpr int32_t kRow = 1920;

// Buffers for one call of a slot at kRow pixels; rows of two-row kernels sit
// one row length apart.
struct RowSet {
  explicit RowSet(int32_t slot) : sig(SignatureOf(slot)) {
    const SlotExtents &shape = *ExtentsOf(slot);
    std::mt19937 rng(7);
    for (auto &row : coefs)
      for (auto &e : row) e = static_cast<int16_t>(rng() % 16384);
    for (size_t r = 0; r < shape.rowCount; ++r) {
      const size_t bytes = shape.rows[r].Bytes(kRow);
      const int before = sig.pitched[r] && !sig.written[r] ? shape.srcRowsBefore : 0;
      const int rows = sig.pitched[r] ? before + 2 : 1;
      storage.emplace_back(bytes * rows);
      for (auto &b : storage.back()) b = static_cast<uint8_t>(rng());
      args.rows.push_back(storage.back().data() + before * bytes);
      args.pitches.push_back(sig.pitched[r] ? static_cast<int64_t>(bytes) : 0);
    }
    args.count = kRow;
    for (auto &row : coefs) args.coefs.push_back(row.data());
  }
  std::vector<std::vector<uint8_t>> Written() const {
    std::vector<std::vector<uint8_t>> out;
    for (size_t r = 0; r < storage.size(); ++r)
      if (sig.written[r]) out.push_back(storage[r]);
    return out;
  }
  SlotSignature sig;
  std::vector<std::vector<uint8_t>> storage;
  std::array<std::array<int16_t, 8>, 8> coefs{};
  CallArgs args;
};

void RunSlot(benchmark::State &state, uint32_t level, int32_t slot) {
  RowSet rows(slot);
  const TCS_KernelTable &table = KernelTableForLevel(level);
  if (level != 0) {
    RowSet reference(slot);
    CallSlot(KernelTableForLevel(0), slot, reference.args);
    CallSlot(table, slot, rows.args);
    if (rows.Written() != reference.Written()) {
      state.SkipWithError("differs from the portable routine");
      return;
    }
  }
  for (auto _ : state) {
    CallSlot(table, slot, rows.args);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(int64_t(state.iterations()) * kRow);
}

const bool g_registered = [] {
  const TCS_KernelTable &portable = KernelTableForLevel(0);
  const uint32_t machine = TCB_GetCPUInsHighDetected();
  for (int32_t slot = 0; slot < TCS_KERNEL_SLOT_COUNT; ++slot) {
    if (!ExtentsOf(slot)) continue;
    bool any = false;
    for (uint32_t level : {1u, 2u, 4u}) {
      if (level > machine) continue;
      const Fn fn = LoadSlot(KernelTableForLevel(level), slot);
      // A level whose routine is the one of the level below adds nothing.
      const uint32_t below = level == 4 ? 2 : level - 1;
      if (fn == LoadSlot(portable, slot) || fn == reinterpret_cast<Fn>(&EmptyStub)) continue;
      if (level != 1 && fn == LoadSlot(KernelTableForLevel(below), slot)) continue;
      any = true;
      const char *tier = level == 1 ? "sse2" : level == 2 ? "ssse3" : "sse41";
      benchmark::RegisterBenchmark((std::string("slot/") + SlotName(slot) + "/" + tier).c_str(),
                                   [level, slot](benchmark::State &s) { RunSlot(s, level, slot); });
    }
    if (any)
      benchmark::RegisterBenchmark((std::string("slot/") + SlotName(slot) + "/portable").c_str(),
                                   [slot](benchmark::State &s) { RunSlot(s, 0, slot); });
  }
  return true;
}();

}  // namespace
