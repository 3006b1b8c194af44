// 8+2 row kernels (slots 71-77) against a model: a row of 10-bit values laid
// out in blocks of 32, high bytes first, then the low bit pairs; a partial
// last block of n values is its n high bytes followed directly by ceil(n / 4)
// low bytes.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "support/buffers.hpp"

namespace {

using Bytes = std::vector<uint8_t>;
using tqcs::test::GuardedBuffer;
using tqcs::test::KernelTableForLevel;
using tqcs::test::KernelTestLevels;

// The 8+2 bytes of a row of 10-bit values.
Bytes Blocked(const std::vector<uint32_t> &values) {
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

std::vector<uint32_t> Random10(size_t n, uint32_t seed) {
  std::mt19937 rng(seed);
  std::vector<uint32_t> v(n);
  for (auto &x : v) x = rng() & 0x3FF;
  return v;
}

// Little-endian bytes of 16-bit samples.
Bytes Samples16(const std::vector<uint32_t> &samples) {
  Bytes out;
  for (uint32_t s : samples) {
    out.push_back(static_cast<uint8_t>(s));
    out.push_back(static_cast<uint8_t>(s >> 8));
  }
  return out;
}

// A 16-bit sample holding `v` in bits 6-15 and noise below.
uint32_t With10(uint32_t v, std::mt19937 &rng) { return v << 6 | (rng() & 0x3F); }

// Index of the sample that k trades places with when pairs are swapped; the
// lone last sample of an odd row keeps its place.
size_t Swapped(size_t k, size_t n) { return (k ^ 1) < n ? (k ^ 1) : k; }

// One test case: the source rows (bytes), the expected destination bytes.
struct Case {
  std::vector<Bytes> sources;
  Bytes expected;
};

using Sources = std::vector<const uint8_t *>;
using Call = void (*)(const TCS_KernelTable &, uint8_t *, const Sources &, int32_t);
struct PackSlot {
  const char *name;
  Case (*make)(int32_t count, uint32_t seed);
  Call call;
};

Case MakeSplit(int32_t count, uint32_t seed) {
  std::mt19937 rng(seed);
  const auto values = Random10(static_cast<size_t>(count), seed);
  std::vector<uint32_t> samples;
  for (uint32_t v : values) samples.push_back(With10(v, rng));
  return {{Samples16(samples)}, Blocked(values)};
}
Case MakeJoin(int32_t count, uint32_t seed) {
  const auto values = Random10(static_cast<size_t>(count), seed);
  std::vector<uint32_t> samples;
  for (uint32_t v : values) samples.push_back(v << 6);
  return {{Blocked(values)}, Samples16(samples)};
}
template <bool kSwap>
Case MakePack8(int32_t count, uint32_t seed) {
  const Bytes src = tqcs::test::RandomBytes(static_cast<size_t>(count), seed);
  std::vector<uint32_t> values(src.size());
  for (size_t k = 0; k < src.size(); ++k)
    values[k] = uint32_t{src[kSwap ? Swapped(k, src.size()) : k]} << 2;
  return {{src}, Blocked(values)};
}
template <bool kSwap>
Case MakeUnpack8(int32_t count, uint32_t seed) {
  const auto values = Random10(static_cast<size_t>(count), seed);  // low bits must be dropped
  Bytes expected(values.size());
  for (size_t k = 0; k < values.size(); ++k)
    expected[kSwap ? Swapped(k, values.size()) : k] = static_cast<uint8_t>(values[k] >> 2);
  return {{Blocked(values)}, expected};
}
Case MakePlanar(int32_t count, uint32_t seed) {
  std::mt19937 rng(seed);
  const size_t pairs = static_cast<size_t>(count / 2);
  const auto y = Random10(2 * pairs, seed), u = Random10(pairs, seed + 1),
             v = Random10(pairs, seed + 2);
  std::vector<uint32_t> ys, us, vs, interleaved;
  for (uint32_t x : y) ys.push_back(With10(x, rng));
  for (uint32_t x : u) us.push_back(With10(x, rng));
  for (uint32_t x : v) vs.push_back(With10(x, rng));
  for (size_t p = 0; p < pairs; ++p)
    interleaved.insert(interleaved.end(), {y[2 * p], u[p], y[2 * p + 1], v[p]});
  if (count % 2) ys.push_back(0xFFFF);  // the odd last pixel's luma exists but is not converted
  return {{Samples16(ys), Samples16(us), Samples16(vs)}, Blocked(interleaved)};
}

const uint16_t *U16(const uint8_t *p) { return reinterpret_cast<const uint16_t *>(p); }
uint16_t *D16(uint8_t *p) { return reinterpret_cast<uint16_t *>(p); }

// clang-format off
#define TQCS_PACK_SLOT(name, make, ...)                                                      \
  PackSlot{#name, make, [](const TCS_KernelTable &t, uint8_t *d, const Sources &s, int32_t n) { \
             t.name##_Row(__VA_ARGS__, n); }}
const PackSlot kSlots[] = {
    TQCS_PACK_SLOT(Split16To8Plus2, MakeSplit, d, U16(s[0])),
    TQCS_PACK_SLOT(Join8Plus2To16, MakeJoin, D16(d), s[0]),
    TQCS_PACK_SLOT(Pack8To8Plus2, MakePack8<false>, d, s[0]),
    TQCS_PACK_SLOT(Pack8To8Plus2_SwapPairs, MakePack8<true>, d, s[0]),
    TQCS_PACK_SLOT(Unpack8Plus2To8, MakeUnpack8<false>, d, s[0]),
    TQCS_PACK_SLOT(Unpack8Plus2To8_SwapPairs, MakeUnpack8<true>, d, s[0]),
    TQCS_PACK_SLOT(YUV422_16_2_YUYV_8Plus2, MakePlanar, d, U16(s[0]), U16(s[1]), U16(s[2])),
};
#undef TQCS_PACK_SLOT
// clang-format on

class Pack8Plus2Kernels : public ::testing::TestWithParam<std::tuple<uint32_t, PackSlot>> {
 protected:
  const TCS_KernelTable &table() const { return KernelTableForLevel(std::get<0>(GetParam())); }
  const PackSlot &slot() const { return std::get<1>(GetParam()); }
};

// Every source sits at the very end of its own heap block (any read past it
// trips the address sanitizer), 2 bytes in; the destination is 4 bytes into
// a guarded buffer of exactly the expected size.
TEST_P(Pack8Plus2Kernels, RandomRowsMatchModel) {
  for (int32_t count :
       {1, 2, 3, 4, 5, 6, 7, 8, 9, 31, 32, 33, 34, 35, 36, 37, 63, 64, 65, 100, 1001}) {
    SCOPED_TRACE("count " + std::to_string(count));
    const Case c = slot().make(count, 77u + static_cast<uint32_t>(count));
    std::vector<Bytes> storage;
    Sources sources;
    for (const Bytes &s : c.sources) {
      Bytes block(2 + s.size(), 0xEE);
      std::copy(s.begin(), s.end(), block.begin() + 2);
      storage.push_back(std::move(block));
    }
    for (const Bytes &s : storage) sources.push_back(s.data() + 2);
    GuardedBuffer dst(c.expected.size(), 4);
    dst.Fill(0x5A);
    slot().call(table(), dst.data(), sources, count);
    ASSERT_EQ(Bytes(dst.data(), dst.data() + dst.size()), c.expected);
    EXPECT_TRUE(dst.CanariesIntact());
  }
}

TEST_P(Pack8Plus2Kernels, CountsBelowOneWriteNothing) {
  const Bytes src(256, 0x77);
  const Sources sources(3, src.data());
  for (int32_t count : {0, -1, -32, INT32_MIN}) {
    SCOPED_TRACE("count " + std::to_string(count));
    GuardedBuffer dst(0);
    slot().call(table(), dst.data(), sources, count);
    EXPECT_TRUE(dst.CanariesIntact());
  }
}

std::string SlotName(const ::testing::TestParamInfo<std::tuple<uint32_t, PackSlot>> &info) {
  return std::string(std::get<1>(info.param).name) + "_L" + std::to_string(std::get<0>(info.param));
}

INSTANTIATE_TEST_SUITE_P(AllLevels, Pack8Plus2Kernels,
                         ::testing::Combine(::testing::ValuesIn(KernelTestLevels()),
                                            ::testing::ValuesIn(kSlots)),
                         SlotName);

class Pack8Plus2Blocks : public ::testing::TestWithParam<uint32_t> {
 protected:
  const TCS_KernelTable &table() const { return KernelTableForLevel(GetParam()); }
};

// Five values worked by hand: high bytes FF 00 55 AA 00, then the low parts
// 3, 0, 1, 2 in byte 0 (1001 0011) and 1 in byte 1.
TEST_P(Pack8Plus2Blocks, HandSplitPartialBlock) {
  const uint16_t src[5] = {0x3FF << 6, 0x000 << 6 | 0x3F, 0x155 << 6, 0x2AA << 6, 0x001 << 6};
  GuardedBuffer dst(7);
  table().Split16To8Plus2_Row(dst.data(), src, 5);
  EXPECT_EQ(Bytes(dst.data(), dst.data() + 7), (Bytes{0xFF, 0x00, 0x55, 0xAA, 0x00, 0x93, 0x01}));
  EXPECT_TRUE(dst.CanariesIntact());

  uint16_t back[5];
  table().Join8Plus2To16_Row(back, dst.data(), 5);
  EXPECT_EQ(back[0], 0xFFC0);
  EXPECT_EQ(back[1], 0x0000);
  EXPECT_EQ(back[3], 0xAA80);
  EXPECT_EQ(back[4], 0x0040);
}

// Split then join keeps bits 6-15 of every sample; the swapping pack and
// unpack undo each other, odd counts included.
TEST_P(Pack8Plus2Blocks, RoundTrips) {
  for (int32_t count : {1, 45, 999}) {
    const size_t n = static_cast<size_t>(count);
    const Bytes raw = tqcs::test::RandomBytes(2 * n, 5u + count);
    std::vector<uint16_t> samples(n), back(n);
    std::memcpy(samples.data(), raw.data(), raw.size());
    Bytes blocks(n + (n + 3) / 4), bytes(raw.begin(), raw.begin() + count), bytesBack(n);
    table().Split16To8Plus2_Row(blocks.data(), samples.data(), count);
    table().Join8Plus2To16_Row(back.data(), blocks.data(), count);
    for (size_t k = 0; k < n; ++k) ASSERT_EQ(back[k], samples[k] & 0xFFC0) << k;
    table().Pack8To8Plus2_SwapPairs_Row(blocks.data(), bytes.data(), count);
    table().Unpack8Plus2To8_SwapPairs_Row(bytesBack.data(), blocks.data(), count);
    EXPECT_EQ(bytesBack, bytes) << count;
  }
}

INSTANTIATE_TEST_SUITE_P(AllLevels, Pack8Plus2Blocks, ::testing::ValuesIn(KernelTestLevels()));

}  // namespace
