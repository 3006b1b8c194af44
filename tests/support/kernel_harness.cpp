#include "support/kernel_harness.hpp"

#include <algorithm>
#include <cstring>

namespace tqcs::test {
namespace {

size_t OffsetOf(const Sizes &offsets, size_t k, size_t fallback) {
  return k < offsets.size() ? offsets[k] : fallback;
}

// The seeded start of destination k.
uint32_t DestSeed(uint32_t seed, size_t k) { return seed + 101 * static_cast<uint32_t>(k); }

// Sources copied to the very end of their own heap blocks.
struct Sources {
  Sources(const KernelCase &c, const Rows &src) {
    blocks.reserve(src.size());
    for (size_t k = 0; k < src.size(); ++k) {
      const size_t offset = OffsetOf(c.inOffsets, k, 1);
      blocks.emplace_back(offset + src[k].size());
      std::copy(src[k].begin(), src[k].end(), blocks.back().begin() + offset);
      ptrs.push_back({blocks.back().data() + offset});
    }
  }
  Rows blocks;
  std::vector<ConstRowPtr> ptrs;
};

// Guarded destinations of the case's sizes, seeded random contents.
struct Destinations {
  Destinations(const KernelCase &c, const Sizes &sizes, uint32_t seed) {
    bufs.reserve(sizes.size());
    for (size_t k = 0; k < sizes.size(); ++k) {
      bufs.emplace_back(sizes[k], OffsetOf(c.outOffsets, k, 1 + 2 * k));
      bufs.back().Randomize(DestSeed(seed, k));
      ptrs.push_back({bufs.back().data()});
    }
  }
  Rows Contents(const KernelCase &c, int32_t count) const {
    Rows out;
    for (size_t k = 0; k < bufs.size(); ++k) {
      EXPECT_TRUE(bufs[k].CanariesIntact())
          << c.name << ": written outside destination " << k << ", count " << count;
      out.emplace_back(bufs[k].data(), bufs[k].data() + bufs[k].size());
    }
    return out;
  }
  std::vector<GuardedBuffer> bufs;
  std::vector<RowPtr> ptrs;
};

::testing::AssertionResult SameRows(const KernelCase &c, int32_t count, const Rows &got,
                                    const Rows &want) {
  for (size_t k = 0; k < want.size(); ++k)
    if (got[k].size() != want[k].size())
      return ::testing::AssertionFailure()
             << c.name << ": the model sized destination " << k << " differently";
  for (size_t k = 0; k < want.size(); ++k)
    for (size_t i = 0; i < want[k].size(); ++i)
      if (got[k][i] != want[k][i])
        return ::testing::AssertionFailure()
               << c.name << ", count " << count << ": destination " << k << " byte " << i << " is "
               << int(got[k][i]) << ", model " << int(want[k][i]);
  return ::testing::AssertionSuccess();
}

}  // namespace

void PrintTo(const KernelCase &c, std::ostream *os) { *os << c.name; }
std::string CaseName(const ::testing::TestParamInfo<KernelCase> &info) { return info.param.name; }

Rows RandomSources(const KernelCase &c, int32_t count, uint32_t seed) {
  Rows src;
  for (size_t size : c.inSizes(count))
    src.push_back(RandomBytes(size, seed + 17 * static_cast<uint32_t>(src.size())));
  return src;
}

Rows RunKernel(const KernelCase &c, const Rows &src, int32_t count, uint32_t seed) {
  const Sources s(c, src);
  Destinations d(c, c.outSizes(count), seed);
  c.call(KernelArgs{s.ptrs, d.ptrs}, count);
  return d.Contents(c, count);
}

Rows ModelOf(const KernelCase &c, const Rows &src, int32_t count, uint32_t seed) {
  Rows out;
  for (size_t size : c.outSizes(count))
    out.push_back(RandomBytes(size, DestSeed(seed, out.size())));
  c.model(out, src, count);
  return out;
}

::testing::AssertionResult MatchesModel(const KernelCase &c, const Rows &src, int32_t count,
                                        uint32_t seed) {
  return SameRows(c, count, RunKernel(c, src, count, seed), ModelOf(c, src, count, seed));
}

::testing::AssertionResult MatchesModelInPlace(const KernelCase &c, int32_t count, uint32_t seed) {
  const Rows src = RandomSources(c, count, seed);
  const Sources s(c, src);
  GuardedBuffer row(src[0].size(), 1);
  std::memcpy(row.data(), src[0].data(), src[0].size());
  KernelArgs args{s.ptrs, {{row.data()}}};
  args.in[0] = {row.data()};
  c.call(args, count);
  Rows want = {src[0]};
  c.model(want, src, count);
  EXPECT_TRUE(row.CanariesIntact()) << c.name << " in place, count " << count;
  return SameRows(c, count, {Bytes(row.data(), row.data() + row.size())}, want);
}

void ExpectModelOnRows(const KernelCase &c, const std::vector<int32_t> &counts) {
  for (int32_t n : counts)
    EXPECT_TRUE(MatchesModel(c, RandomSources(c, n, 7919u * static_cast<uint32_t>(n)), n, n));
  for (uint8_t fill : {0x00, 0xFF})
    for (size_t i = counts.size() > 2 ? counts.size() - 2 : 0; i < counts.size(); ++i) {
      Rows src = RandomSources(c, counts[i], 0);
      for (Bytes &row : src) std::fill(row.begin(), row.end(), fill);
      EXPECT_TRUE(MatchesModel(c, src, counts[i], 5)) << "rows of 0x" << std::hex << int(fill);
    }
}

void ExpectNothingWritten(const KernelCase &c) {
  std::vector<int32_t> counts = {0, -1, -2, -7, INT32_MIN};
  for (int32_t n = 1; n < c.minCount; ++n) counts.push_back(n);
  const Rows src = RandomSources(c, 16, 3);
  for (int32_t n : counts) {
    const Sources s(c, src);
    Destinations d(c, c.outSizes(16), 4);
    c.call(KernelArgs{s.ptrs, d.ptrs}, n);
    const Rows after = d.Contents(c, n);
    for (size_t k = 0; k < after.size(); ++k)
      EXPECT_EQ(after[k], RandomBytes(after[k].size(), DestSeed(4, k)))
          << c.name << ": destination " << k << " written for count " << n;
  }
}

std::function<Sizes(int32_t)> PerCount(const Sizes &bytes, const Sizes &fixed) {
  return [bytes, fixed](int32_t n) {
    Sizes s = fixed;
    for (size_t b : bytes) s.push_back(b * static_cast<size_t>(n));
    return s;
  };
}

std::vector<KernelCase> Joined(std::vector<std::vector<KernelCase>> lists) {
  std::vector<KernelCase> all;
  for (auto &list : lists)
    for (KernelCase &c : list) all.push_back(std::move(c));
  return all;
}

std::vector<KernelCase> OnEveryLevel(
    const std::function<std::vector<KernelCase>(const TCS_KernelTable &)> &make) {
  std::vector<KernelCase> all;
  for (uint32_t level : KernelTestLevels())
    for (KernelCase &c : make(KernelTableForLevel(level)))
      if (level == 0 || !c.portableOnly) {
        c.name += "_L" + std::to_string(level);
        all.push_back(std::move(c));
      }
  return all;
}

}  // namespace tqcs::test
