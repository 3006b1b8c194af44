// One way to test a row kernel: describe it once (the bytes of its sources and
// destinations for a count, how to call it, a model of what it writes) and let
// the shared checks run it on seeded random and uniform rows against the model.
// Every source ends exactly where its heap block ends (the address sanitizer
// reports any read past the row), every destination is followed by canaries
// and starts out holding random bytes, so bytes the model leaves alone must
// keep them. Counts below the kernel's minimum must write nothing at all.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "support/buffers.hpp"
#include "support/kernel_samples.hpp"

namespace tqcs::test {

using Bytes = std::vector<uint8_t>;
using Rows = std::vector<Bytes>;
using Sizes = std::vector<size_t>;

// A row start that converts to whatever pointer type the kernel takes.
struct RowPtr {
  uint8_t *p;
  template <class T>
  operator T *() const {
    return reinterpret_cast<T *>(p);
  }
  RowPtr operator+(int64_t bytes) const { return {p + bytes}; }
};
struct ConstRowPtr {
  const uint8_t *p;
  template <class T>
  operator const T *() const {
    return reinterpret_cast<const T *>(p);
  }
  ConstRowPtr operator+(int64_t bytes) const { return {p + bytes}; }
};

// The rows handed to a kernel: sources in[k], destinations out[k].
struct KernelArgs {
  std::vector<ConstRowPtr> in;
  std::vector<RowPtr> out;
};
using Args = const KernelArgs &;

struct KernelCase {
  std::string name;
  // Bytes of each source and each destination for a count of at least 1.
  std::function<Sizes(int32_t)> inSizes, outSizes;
  std::function<void(const KernelArgs &, int32_t)> call;
  // Overwrites, in the destinations' old contents, what the kernel must write.
  std::function<void(Rows &out, const Rows &in, int32_t count)> model;
  // Bytes past an aligned address where each row starts; 1 (sources) and
  // 1 + 2k (destination k) when not given.
  Sizes inOffsets = {};
  int32_t minCount = 1;  // smaller counts write nothing
  Sizes outOffsets = {};
  bool portableOnly = false;  // levels 1 to 4 keep the empty stub in this slot
};
void PrintTo(const KernelCase &c, std::ostream *os);
std::string CaseName(const ::testing::TestParamInfo<KernelCase> &info);

// Seeded random sources of the sizes the case gives for `count`.
Rows RandomSources(const KernelCase &c, int32_t count, uint32_t seed);
// Runs the kernel on copies of `src`; its destinations start as bytes seeded
// by `seed`. Returns what they hold afterwards; a changed canary fails the test.
Rows RunKernel(const KernelCase &c, const Rows &src, int32_t count, uint32_t seed = 1);
// What the model says the destinations hold afterwards.
Rows ModelOf(const KernelCase &c, const Rows &src, int32_t count, uint32_t seed = 1);
// The kernel's destinations against the model's, first difference reported.
::testing::AssertionResult MatchesModel(const KernelCase &c, const Rows &src, int32_t count,
                                        uint32_t seed = 1);
// The same with source 0 and destination 0 one buffer (a same-size kernel
// run in place).
::testing::AssertionResult MatchesModelInPlace(const KernelCase &c, int32_t count, uint32_t seed);

// Seeded random rows at every count, then rows of all 0x00 and all 0xFF bytes
// at the last two counts, against the model.
void ExpectModelOnRows(const KernelCase &c, const std::vector<int32_t> &counts);
// Counts 0, -1, -2, -7, INT32_MIN and 1 .. minCount - 1 leave every
// destination as it was.
void ExpectNothingWritten(const KernelCase &c);

// Row sizes that grow by these many bytes per count, after rows of fixed
// sizes (coefficient rows): PerCount({4, 1}), PerCount({6}, {16, 16}).
std::function<Sizes(int32_t)> PerCount(const Sizes &bytes, const Sizes &fixed = {});

// make(table) lists the cases of one kernel table; this calls it for every
// tested level and appends "_L<level>" to the names. Portable-only cases are
// kept on level 0 alone.
std::vector<KernelCase> OnEveryLevel(
    const std::function<std::vector<KernelCase>(const TCS_KernelTable &)> &make);
// The cases of several lists in one.
std::vector<KernelCase> Joined(std::vector<std::vector<KernelCase>> lists);
// make(table, entry) for every entry of a list, on every tested level.
template <class List, class Make>
std::vector<KernelCase> OnEveryLevel(const List &list, Make make) {
  return OnEveryLevel([&](const TCS_KernelTable &t) {
    std::vector<KernelCase> cases;
    for (const auto &entry : list) cases.push_back(make(t, entry));
    return cases;
  });
}

// `rows` rows of `bytes` bytes in one region, `gap` bytes between them. With
// `upward` the first row is the last in memory and the pitch is negative.
struct Pitched {
  int rows;
  size_t bytes;
  bool upward = false;
  size_t gap = 3;
  size_t size() const { return rows > 0 ? rows * bytes + (rows - 1) * gap : 0; }
  size_t At(int r) const { return size_t(upward ? rows - 1 - r : r) * (bytes + gap); }
  int64_t pitch() const { return (upward ? -1 : 1) * int64_t(bytes + gap); }
};

}  // namespace tqcs::test

// A suite over `cases` (an expression giving a vector of KernelCase, built
// once and kept as Suite##Cases()) with the checks every row kernel gets:
// seeded random and uniform rows at the given counts against the model, and
// nothing written for counts below the minimum. More TEST_P of the suite may
// follow.
#define TQCS_KERNEL_SUITE(Suite, cases, ...)                                                    \
  const std::vector<::tqcs::test::KernelCase> &Suite##Cases() {                                 \
    static const std::vector<::tqcs::test::KernelCase> all = cases;                             \
    return all;                                                                                 \
  }                                                                                             \
  class Suite : public ::testing::TestWithParam<::tqcs::test::KernelCase> {};                   \
  TEST_P(Suite, RowsMatchModel) { ::tqcs::test::ExpectModelOnRows(GetParam(), {__VA_ARGS__}); } \
  TEST_P(Suite, NothingWrittenBelowMinimumCount) {                                              \
    ::tqcs::test::ExpectNothingWritten(GetParam());                                             \
  }                                                                                             \
  INSTANTIATE_TEST_SUITE_P(Kernels, Suite, ::testing::ValuesIn(Suite##Cases()),                 \
                           ::tqcs::test::CaseName)
