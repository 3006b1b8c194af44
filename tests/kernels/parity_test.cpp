// Every SIMD routine against its portable twin, slot by slot, at each level
// that installs it: the same sources, the same starting destinations, and
// byte-identical destinations afterwards (canary margins included).
//
// Sources are read-only and sit against an unreadable page: ending at it (a
// read past the row faults), or starting right after it (a read before the
// row faults). Destinations carry margins on both sides that must survive.
// Data: seeded random bytes, all 0, all 255, bytes drawn from the values
// where rounding and clamping turn, and 16-bit samples at the 10-bit extremes
// with stray low bits; coefficient rows of random int16 values
// over the whole range and of the two extremes; alpha 0, 1, 254, 255.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include "base/table_entries.hpp"
#include "kernels/kernel_table.hpp"
#include "support/buffers.hpp"
#include "support/kernel_shapes.hpp"
#include "support/page_guard.hpp"

namespace tqcs::test {
namespace {

struct ParityCase {
  uint32_t level;
  int32_t slot;
};

void PrintTo(const ParityCase &c, std::ostream *os) {
  *os << "slot " << c.slot << " at level " << c.level;
}

std::string Name(const ::testing::TestParamInfo<ParityCase> &info) {
  return "Slot" + std::to_string(info.param.slot) + "_L" + std::to_string(info.param.level);
}

// Every slot whose routine at a level is not the portable one (nor the stub).
std::vector<ParityCase> SimdSlots() {
  std::vector<ParityCase> cases;
  const TCS_KernelTable &reference = KernelTableForLevel(0);
  for (uint32_t level : KernelTestLevels()) {
    const TCS_KernelTable &table = KernelTableForLevel(level);
    for (int32_t slot = 0; slot < TCS_KERNEL_SLOT_COUNT; ++slot) {
      const Fn fn = LoadSlot(table, slot);
      if (fn != LoadSlot(reference, slot) && fn != reinterpret_cast<Fn>(&EmptyStub))
        cases.push_back({level, slot});
    }
  }
  return cases;
}

// A read or write past a guard page ends the program; say which call did it.
char g_current[160];
const bool g_faultHandler = [] {
  ReportFaultsWith("fault outside the caller's rows in ", g_current, sizeof g_current);
  return true;
}();

enum class Placement { EndAtGuard, StartAtGuard, StartAfterGuard };

constexpr int64_t kGap = 5;     // bytes between rows of a multi-row region
constexpr size_t kMargin = 48;  // canary bytes around destinations
constexpr uint8_t kTurningValues[] = {0, 1, 2, 63, 64, 127, 128, 129, 191, 192, 253, 254, 255};

void FillPattern(uint8_t *p, size_t n, int pattern, std::mt19937 &rng) {
  for (size_t i = 0; i < n; ++i) {
    switch (pattern) {
      case 1:
        p[i] = 0;
        break;
      case 2:
        p[i] = 255;
        break;
      case 3:
        p[i] = kTurningValues[rng() % std::size(kTurningValues)];
        break;
      case 4: {
        // Little-endian 16-bit samples holding 10-bit 0 or 1023 in bits 6 to
        // 15, with stray bits below.
        const uint16_t sample =
            static_cast<uint16_t>((rng() % 2 ? 1023u << 6 : 0u) | (rng() & 63u));
        p[i] = static_cast<uint8_t>(i % 2 ? sample >> 8 : sample);
        break;
      }
      default:
        p[i] = static_cast<uint8_t>(rng());
    }
  }
}

// One row region: `before` rows before the row handed to the kernel and
// `after` rows after it, `pitch` apart (the kernel's row is at `row`).
struct Region {
  int before = 0, after = 0;
  size_t rowBytes = 0;
  int64_t pitch = 0;
  size_t Size() const {
    if (pitch == 0) return rowBytes;
    return static_cast<size_t>(before + after + 1) * (rowBytes + kGap) - kGap;
  }
  // Offset of the kernel's row from the lowest address.
  size_t RowOffset() const {
    if (pitch == 0) return 0;
    return static_cast<size_t>((pitch > 0 ? before : after) *
                               (static_cast<int64_t>(rowBytes) + kGap));
  }
};

struct Variant {
  Placement placement;
  int pitchSign;  // +1, -1, or 0 (sources at pitch 0, destinations +1)
  int pattern;    // FillPattern
  int coefMode;   // 0 random, 1 all 32767, 2 all -32768
  uint8_t alpha;
  size_t dstOffset;
  size_t srcOffset;  // StartAfterGuard only
};

class Parity : public ::testing::TestWithParam<ParityCase> {
 protected:
  // Runs the slot at the case's level and at level 0 on the same inputs.
  // With inPlace, source 0 is destination 0 (filled with the source bytes).
  void Check(int32_t count, const Variant &v, bool inPlace = false) {
    const ParityCase &c = GetParam();
    const SlotExtents *shape = ExtentsOf(c.slot);
    ASSERT_NE(shape, nullptr) << "slot " << c.slot << " has a SIMD routine but no row extents";
    const SlotSignature sig = SignatureOf(c.slot);
    ASSERT_EQ(shape->rowCount, sig.written.size()) << "slot " << c.slot;
    std::mt19937 rng(static_cast<uint32_t>(count) * 7919u +
                     static_cast<uint32_t>(v.pattern * 31 + c.slot));

    const size_t n = sig.written.size();
    std::vector<Region> regions(n);
    std::vector<PageGuarded> sources;
    std::vector<std::vector<uint8_t>> dstStart(n);
    std::vector<size_t> sourceIndex(n, 0);
    for (size_t r = 0; r < n; ++r) {
      Region &g = regions[r];
      g.rowBytes = shape->rows[r].Bytes(count);
      if (sig.pitched[r]) {
        const bool source = !sig.written[r];
        g.before = source ? shape->srcRowsBefore : 0;
        g.after = 1;
        const int sign = source ? v.pitchSign : (v.pitchSign == 0 ? 1 : v.pitchSign);
        g.pitch = sign * (static_cast<int64_t>(g.rowBytes) + kGap);
      }
      if (sig.written[r]) {
        dstStart[r].resize(g.Size() + 2 * kMargin + 16);
        FillPattern(dstStart[r].data(), dstStart[r].size(), 0, rng);
      } else {
        const size_t offset = v.placement == Placement::StartAfterGuard ? v.srcOffset : 0;
        const Guard guard = v.placement == Placement::EndAtGuard ? Guard::After : Guard::Before;
        sources.emplace_back(g.Size() + offset, guard);
        FillPattern(sources.back().data(), g.Size() + offset, v.pattern, rng);
        sourceIndex[r] = sources.size() - 1;
      }
    }
    std::array<std::array<int16_t, 8>, 8> coefs{};
    for (auto &row : coefs)
      for (auto &e : row)
        e = v.coefMode == 1 ? 32767 : v.coefMode == 2 ? -32768 : static_cast<int16_t>(rng());

    auto run = [&](const TCS_KernelTable &table) {
      std::vector<std::vector<uint8_t>> dst = dstStart;
      CallArgs args;
      args.count = count;
      args.alpha = v.alpha;
      for (auto &row : coefs) args.coefs.push_back(row.data());
      for (size_t r = 0; r < n; ++r) {
        const Region &g = regions[r];
        uint8_t *base = sig.written[r]
                            ? dst[r].data() + kMargin + v.dstOffset
                            : sources[sourceIndex[r]].data() +
                                  (v.placement == Placement::StartAfterGuard ? v.srcOffset : 0);
        args.rows.push_back(base + g.RowOffset());
        args.pitches.push_back(g.pitch);
      }
      if (inPlace) {
        // The first destination takes the first source's bytes and serves as both.
        const size_t src =
            std::find(sig.written.begin(), sig.written.end(), false) - sig.written.begin();
        std::memcpy(args.rows[0], args.rows[src], regions[src].rowBytes);
        args.rows[src] = args.rows[0];
      }
      for (PageGuarded &s : sources) s.Protect(true);
      snprintf(g_current, sizeof g_current, "slot %d, level %u, count %d, placement %d%s", c.slot,
               c.level, count, int(v.placement), inPlace ? ", in place" : "");
      CallSlot(table, c.slot, args);
      for (PageGuarded &s : sources) s.Protect(false);
      return dst;
    };
    const auto want = run(KernelTableForLevel(0));
    const auto got = run(KernelTableForLevel(c.level));
    for (size_t r = 0; r < n; ++r) {
      if (!sig.written[r]) continue;
      const auto mismatch = std::mismatch(got[r].begin(), got[r].end(), want[r].begin());
      ASSERT_TRUE(mismatch.first == got[r].end())
          << "count " << count << ", destination " << r << " byte "
          << (mismatch.first - got[r].begin()) - static_cast<long>(kMargin + v.dstOffset) << ": "
          << int(*mismatch.first) << ", portable " << int(*mismatch.second) << " (pattern "
          << v.pattern << ", coefficients " << v.coefMode << ", alpha " << int(v.alpha)
          << ", pitch sign " << v.pitchSign << ", placement " << int(v.placement)
          << (inPlace ? ", in place" : "") << ")";
    }
  }
};

std::vector<int32_t> Counts() {
  std::vector<int32_t> counts = {INT32_MIN, -7, -1};
  for (int32_t c = 0; c <= 140; ++c) counts.push_back(c);
  for (int32_t c : {191, 255, 256, 257, 383, 1023, 1920, 1921, 4099}) counts.push_back(c);
  return counts;
}

TEST_P(Parity, SameBytesAsPortable) {
  constexpr uint8_t kAlphas[] = {0, 1, 254, 255};
  int k = 0;
  for (int32_t count : Counts()) {
    for (Placement placement :
         {Placement::EndAtGuard, Placement::StartAtGuard, Placement::StartAfterGuard}) {
      ++k;
      const Variant v{placement,
                      k % 3 == 0 ? -1 : (k % 3 == 1 ? 1 : 0),
                      k % 5,
                      k % 7 == 3 ? 1 + (k / 7) % 2 : 0,
                      kAlphas[k % 4],
                      placement == Placement::StartAtGuard ? 0 : static_cast<size_t>(k % 16),
                      static_cast<size_t>((k * 7) % 16)};
      Check(count, v);
      if (HasFatalFailure()) return;
    }
  }
}

TEST_P(Parity, InPlaceWhereThePortableRoutineAllowsIt) {
  const SlotExtents *shape = ExtentsOf(GetParam().slot);
  if (!shape || !shape->inPlace) GTEST_SKIP() << "not an in-place kernel";
  for (int32_t count = 0; count <= 200; ++count) {
    Check(count, {Placement::EndAtGuard, 1, count % 4, 0, 255, static_cast<size_t>(count % 16), 0},
          true);
    if (HasFatalFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(Kernels, Parity, ::testing::ValuesIn(SimdSlots()), Name);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Parity);

}  // namespace
}  // namespace tqcs::test
