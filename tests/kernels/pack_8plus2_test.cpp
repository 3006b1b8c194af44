// 8+2 row kernels (slots 71-77) against a model: a row of 10-bit values laid
// out in blocks of 32, high bytes first, then the low bit pairs; a partial
// last block of n values is its n high bytes followed directly by ceil(n / 4)
// low bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "support/kernel_harness.hpp"

namespace {

using namespace tqcs::test;
using Values = std::vector<uint32_t>;

// Bytes of an 8+2 row of n values.
size_t BlockedSize(int64_t n) { return size_t(n + n / 32 * 8 + (n % 32 + 3) / 4); }

// The 8+2 bytes of a row of 10-bit values.
Bytes Blocked(const Values &values) {
  Bytes out;
  for (size_t base = 0; base < values.size(); base += 32) {
    const size_t n = std::min<size_t>(32, values.size() - base);
    for (size_t k = 0; k < n; ++k) out.push_back(static_cast<uint8_t>(values[base + k] >> 2));
    Bytes low((n + 3) / 4, 0);
    for (size_t k = 0; k < n; ++k)
      low[k / 4] |= static_cast<uint8_t>((values[base + k] & 3) << (2 * (k % 4)));
    out.insert(out.end(), low.begin(), low.end());
  }
  return out;
}

// The n 10-bit values of an 8+2 row.
Values Unblocked(const Bytes &row, size_t n) {
  Values out;
  for (size_t base = 0, at = 0; base < n; base += 32) {
    const size_t m = std::min<size_t>(32, n - base);
    for (size_t k = 0; k < m; ++k)
      out.push_back(uint32_t{row[at + k]} << 2 | (row[at + m + k / 4] >> (2 * (k % 4)) & 3));
    at += m + (m + 3) / 4;
  }
  return out;
}

// Sample k's place when pairs are swapped; the lone last sample of an odd row
// keeps its own.
size_t Swapped(size_t k, size_t n) { return (k ^ 1) < n ? (k ^ 1) : k; }

// The samples of a row: `bytes` each, shifted right by `down`.
Values Read(const Bytes &row, int bytes, int down) {
  Values v;
  for (size_t i = 0; i < row.size() / bytes; ++i) v.push_back(GetSample(row, i, bytes) >> down);
  return v;
}

std::vector<KernelCase> Cases(const TCS_KernelTable &t) {
  const auto blocked = [](int32_t n) { return Sizes{BlockedSize(n)}; };
  std::vector<KernelCase> cases = {
      {"Split16To8Plus2", PerCount({2}), blocked,
       [&t](Args a, int32_t n) { t.Split16To8Plus2_Row(a.out[0], a.in[0], n); },
       [](Rows &out, const Rows &in, int32_t) { out[0] = Blocked(Read(in[0], 2, 6)); }},
      {"Join8Plus2To16", blocked, PerCount({2}),
       [&t](Args a, int32_t n) { t.Join8Plus2To16_Row(a.out[0], a.in[0], n); },
       [](Rows &out, const Rows &in, int32_t n) {
         const Values v = Unblocked(in[0], size_t(n));
         for (size_t k = 0; k < v.size(); ++k) PutSample(out[0], k, 2, v[k] << 6);
       }},
      // Planar 4:2:2: count / 2 whole pairs as Y0 U Y1 V; the odd last pixel's
      // luma exists but is not converted.
      {"YUV422_16_2_YUYV_8Plus2",
       [](int32_t n) {
         return Sizes{2 * size_t(n), 2 * size_t(n / 2), 2 * size_t(n / 2)};
       },
       [](int32_t n) { return Sizes{BlockedSize(4 * (n / 2))}; },
       [&t](Args a, int32_t n) {
         t.YUV422_16_2_YUYV_8Plus2_Row(a.out[0], a.in[0], a.in[1], a.in[2], n);
       },
       [](Rows &out, const Rows &in, int32_t n) {
         const Values y = Read(in[0], 2, 6), u = Read(in[1], 2, 6), v = Read(in[2], 2, 6);
         Values all;
         for (size_t p = 0; p < size_t(n / 2); ++p)
           all.insert(all.end(), {y[2 * p], u[p], y[2 * p + 1], v[p]});
         out[0] = Blocked(all);
       }},
  };
  for (bool swap : {false, true}) {
    cases.push_back({swap ? "Pack8To8Plus2_SwapPairs" : "Pack8To8Plus2", PerCount({1}), blocked,
                     [&t, swap](Args a, int32_t n) {
                       (swap ? t.Pack8To8Plus2_SwapPairs_Row : t.Pack8To8Plus2_Row)(a.out[0],
                                                                                    a.in[0], n);
                     },
                     [swap](Rows &out, const Rows &in, int32_t n) {
                       Values v;
                       for (size_t k = 0; k < size_t(n); ++k)
                         v.push_back(uint32_t{in[0][swap ? Swapped(k, n) : k]} << 2);
                       out[0] = Blocked(v);
                     }});
    // The low bits are dropped.
    cases.push_back({swap ? "Unpack8Plus2To8_SwapPairs" : "Unpack8Plus2To8", blocked, PerCount({1}),
                     [&t, swap](Args a, int32_t n) {
                       (swap ? t.Unpack8Plus2To8_SwapPairs_Row : t.Unpack8Plus2To8_Row)(a.out[0],
                                                                                        a.in[0], n);
                     },
                     [swap](Rows &out, const Rows &in, int32_t n) {
                       const Values v = Unblocked(in[0], size_t(n));
                       for (size_t k = 0; k < v.size(); ++k)
                         out[0][swap ? Swapped(k, n) : k] = uint8_t(v[k] >> 2);
                     }});
  }
  return cases;
}

TQCS_KERNEL_SUITE(Pack8Plus2Kernels, OnEveryLevel(Cases), 1, 2, 3, 4, 5, 6, 7, 8, 9, 31, 32, 33, 34,
                  35, 36, 37, 63, 64, 65, 100, 1001);

// Five values worked by hand: high bytes FF 00 55 AA 00, then the low parts
// 3, 0, 1, 2 in byte 0 (1001 0011) and 1 in byte 1; and back.
TEST(Pack8Plus2Blocks, HandSplitPartialBlock) {
  const uint16_t src[5] = {0x3FF << 6, 0x000 << 6 | 0x3F, 0x155 << 6, 0x2AA << 6, 0x001 << 6};
  const Bytes want = {0xFF, 0x00, 0x55, 0xAA, 0x00, 0x93, 0x01};
  for (uint32_t level : KernelTestLevels()) {
    const TCS_KernelTable &t = KernelTableForLevel(level);
    Bytes got(7);
    uint16_t back[5];
    t.Split16To8Plus2_Row(got.data(), src, 5);
    t.Join8Plus2To16_Row(back, want.data(), 5);
    EXPECT_EQ(got, want) << "level " << level;
    EXPECT_EQ(std::vector<int>(back, back + 5), std::vector<int>({0xFFC0, 0, 0x5540, 0xAA80, 0x40}))
        << "level " << level;
  }
}

}  // namespace
