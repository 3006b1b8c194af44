// The SSE2 kernel object against the portable one, operation by operation:
// the same sources, the same starting destinations, byte-identical
// destinations afterwards (canary margins on both sides included).
//
// Sources are read-only regions against an unreadable page (ending at it, or
// starting at it or just after it), so a read outside the rows the portable
// operation reads faults. Multi-row operations run with pitches going down
// and up in memory. Data: random bytes, all 0, all 255, and bytes drawn from
// values where rounding and clamping turn; coefficient rows of random int16
// values and of the two extremes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <string>

#include "kernels/colorspace.hpp"
#include "kernels/object_extents.hpp"
#include "support/kernel_shapes.hpp"
#include "support/page_guard.hpp"

namespace tqcs::test {
namespace {

// One operation: its name, a caller of its member, its extents (the
// library's table) and the layout of its arguments, read from the member's
// signature.
struct OpCase {
  const char *name;
  void (*call)(ColorSpace &, const CallArgs &);
  const OpExtents *extents;
  std::vector<bool> written, pitched;
};

void PrintTo(const OpCase &c, std::ostream *os) { *os << c.name; }

template <auto kOp>
struct Op;
template <class... A, void (ColorSpace::*kOp)(A...)>
struct Op<kOp> {
  template <size_t... I>
  static void Call(ColorSpace &cs, const CallArgs &a, std::index_sequence<I...>) {
    (cs.*kOp)(detail::Pick<A, detail::OrdinalOf<A...>(I)>(a)...);
  }
  static void Call(ColorSpace &cs, const CallArgs &a) {
    Call(cs, a, std::index_sequence_for<A...>{});
  }
  static OpCase Case(const char *name, ColorSpaceOp op) {
    using Signature = detail::Caller<void (*)(A...)>;
    return {name, &Call, &ExtentsOf(op), Signature::Written(), Signature::Pitched()};
  }
};

// Every operation of the kernel objects, in their order.
std::vector<OpCase> Ops() {
#define TQCS_OP_CASE(name, ret, params) Op<&ColorSpace::name>::Case(#name, ColorSpaceOp::name),
  return {TQCS_COLORSPACE_OPS(TQCS_OP_CASE)};
#undef TQCS_OP_CASE
}

enum class Placement { EndAtGuard, StartAtGuard, StartAfterGuard };

constexpr int64_t kGap = 3;     // bytes between the rows of a region
constexpr size_t kMargin = 40;  // canary bytes around destinations
constexpr uint8_t kTurning[] = {0, 1, 2, 3, 4, 63, 64, 127, 128, 129, 191, 192, 252, 253, 254, 255};

void Fill(uint8_t *p, size_t n, int pattern, std::mt19937 &rng) {
  for (size_t i = 0; i < n; ++i)
    p[i] = pattern == 1   ? 0
           : pattern == 2 ? 255
           : pattern == 3 ? kTurning[rng() % std::size(kTurning)]
                          : static_cast<uint8_t>(rng());
}

struct Variant {
  Placement placement;
  int pitchSign;  // +1 or -1
  int pattern;    // Fill
  int coefMode;   // 0 random, 1 all 32767, 2 all -32768
  size_t offset;  // destination misalignment; source offset after the guard
};

class ColorSpaceParity : public ::testing::TestWithParam<OpCase> {
 protected:
  void SetUp() override {
    if (!__builtin_cpu_supports("sse2")) GTEST_SKIP() << "no SSE2";
  }

  void Check(int32_t count, const Variant &v) {
    const OpCase &op = GetParam();
    const OpExtents &extents = *op.extents;
    ASSERT_EQ(extents.rowCount, op.written.size()) << op.name;
    std::mt19937 rng(static_cast<uint32_t>(count) * 7919u + static_cast<uint32_t>(v.pattern));
    const size_t n = extents.rowCount;
    // Per pointer: row bytes, rows after the given one, pitch, region size.
    std::vector<size_t> bytes(n), size(n), rowAt(n);
    std::vector<int64_t> pitch(n, 0);
    std::vector<PageGuarded> sources;
    std::vector<size_t> source(n, 0);
    std::vector<std::vector<uint8_t>> start(n);
    for (size_t r = 0; r < n; ++r) {
      bytes[r] = extents.rows[r].Bytes(count);
      const bool pitchedSource = op.pitched[r] && !op.written[r];
      const int before = pitchedSource ? extents.srcRowsBefore : 0;
      const int after = op.pitched[r] ? (pitchedSource ? extents.srcRowsAfter : 1) : 0;
      const int64_t step = static_cast<int64_t>(bytes[r]) + kGap;
      pitch[r] = op.pitched[r] ? v.pitchSign * step : 0;
      size[r] = bytes[r] + static_cast<size_t>((before + after) * step);
      rowAt[r] = static_cast<size_t>((v.pitchSign < 0 ? after : before) * step);
      if (op.written[r]) {
        start[r].resize(size[r] + 2 * kMargin + 16);
        Fill(start[r].data(), start[r].size(), 0, rng);
        continue;
      }
      const size_t skip = v.placement == Placement::StartAfterGuard ? v.offset : 0;
      sources.emplace_back(size[r] + skip,
                           v.placement == Placement::EndAtGuard ? Guard::After : Guard::Before);
      Fill(sources.back().data(), size[r] + skip, v.pattern, rng);
      source[r] = sources.size() - 1;
    }
    std::array<std::array<int16_t, 8>, 2> coefs;
    for (auto &row : coefs)
      for (auto &e : row)
        e = v.coefMode == 1 ? 32767 : v.coefMode == 2 ? -32768 : static_cast<int16_t>(rng());

    auto run = [&](ColorSpace &cs) {
      std::vector<std::vector<uint8_t>> dst = start;
      CallArgs args;
      args.count = count;
      for (auto &row : coefs) args.coefs.push_back(row.data());
      for (size_t r = 0; r < n; ++r) {
        uint8_t *base = op.written[r]
                            ? dst[r].data() + kMargin + v.offset
                            : sources[source[r]].data() +
                                  (v.placement == Placement::StartAfterGuard ? v.offset : 0);
        args.rows.push_back(base + rowAt[r]);
        args.pitches.push_back(pitch[r]);
      }
      for (PageGuarded &s : sources) s.Protect(true);
      op.call(cs, args);
      for (PageGuarded &s : sources) s.Protect(false);
      return dst;
    };
    const auto want = run(*ColorSpaceCInstance());
    const auto got = run(*ColorSpaceSSE2Instance());
    for (size_t r = 0; r < n; ++r) {
      if (!op.written[r]) continue;
      const auto bad = std::mismatch(got[r].begin(), got[r].end(), want[r].begin());
      ASSERT_TRUE(bad.first == got[r].end())
          << op.name << ", count " << count << ", destination " << r << " byte "
          << (bad.first - got[r].begin()) - static_cast<long>(kMargin + v.offset) << ": "
          << int(*bad.first) << ", portable " << int(*bad.second) << " (pattern " << v.pattern
          << ", coefficients " << v.coefMode << ", pitch sign " << v.pitchSign << ", placement "
          << int(v.placement) << ")";
    }
  }
};

TEST_P(ColorSpaceParity, SameBytesAsPortable) {
  std::vector<int32_t> counts = {INT32_MIN, -5, -1};
  for (int32_t c = 0; c <= 140; ++c) counts.push_back(c);
  for (int32_t c : {191, 256, 383, 1023, 1920, 1921, 4099}) counts.push_back(c);
  int k = 0;
  for (int32_t count : counts) {
    for (Placement placement :
         {Placement::EndAtGuard, Placement::StartAtGuard, Placement::StartAfterGuard}) {
      ++k;
      Check(count, {placement, k % 2 ? 1 : -1, k % 4, k % 5 == 2 ? 1 + (k / 5) % 2 : 0,
                    static_cast<size_t>((k * 7) % 16)});
      if (HasFatalFailure()) return;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(KernelObject, ColorSpaceParity, ::testing::ValuesIn(Ops()),
                         [](const ::testing::TestParamInfo<OpCase> &info) {
                           return std::string(info.param.name);
                         });

}  // namespace
}  // namespace tqcs::test
