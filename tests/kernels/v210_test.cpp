// V210 row kernels (slots 125-128, 145-148) against a model row of 10-bit
// Y, U, V planes. The expected V210 words are assembled from the six-pixel
// group table (U0 Y0 V0) (Y1 U1 Y2) (V1 Y3 U2) (Y4 V2 Y5), the packed rows
// from the pair layouts, independently of each other.
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

// One row of whole pixel pairs as 10-bit planes.
struct Row10 {
  std::vector<uint32_t> y, u, v;
  int pairs() const { return static_cast<int>(u.size()); }
};

// lowBitsZero: values an 8-bit source can carry (value = byte << 2).
Row10 RandomRow(int pairs, uint32_t seed, bool lowBitsZero) {
  std::mt19937 rng(seed);
  const uint32_t mask = lowBitsZero ? 0x3FC : 0x3FF;
  Row10 row;
  for (int i = 0; i < 2 * pairs; ++i) row.y.push_back(rng() & mask);
  for (int i = 0; i < pairs; ++i) row.u.push_back(rng() & mask);
  for (int i = 0; i < pairs; ++i) row.v.push_back(rng() & mask);
  return row;
}

enum Kind { kY, kU, kV };
struct Field {
  Kind kind;
  int index;  // pixel within the group for Y, pair within the group for U and V
};
constexpr Field kGroup[4][3] = {{{kU, 0}, {kY, 0}, {kV, 0}},
                                {{kY, 1}, {kU, 1}, {kY, 2}},
                                {{kV, 1}, {kY, 3}, {kU, 2}},
                                {{kY, 4}, {kV, 2}, {kY, 5}}};

// The V210 bytes of a row: every word that carries at least one of the row's
// components, absent fields zero.
Bytes V210Bytes(const Row10 &row) {
  Bytes bytes;
  for (int g = 0;; ++g) {
    for (const auto &word : kGroup) {
      uint32_t w = 0;
      bool any = false;
      for (int f = 0; f < 3; ++f) {
        const Field c = word[f];
        const int pixel = 6 * g + c.index, pair = 3 * g + c.index;
        if (c.kind == kY && pixel < 2 * row.pairs()) {
          w |= row.y[pixel] << (10 * f), any = true;
        } else if (c.kind == kU && pair < row.pairs()) {
          w |= row.u[pair] << (10 * f), any = true;
        } else if (c.kind == kV && pair < row.pairs()) {
          w |= row.v[pair] << (10 * f), any = true;
        }
      }
      if (!any) return bytes;
      for (int b = 0; b < 4; ++b) bytes.push_back(static_cast<uint8_t>(w >> (8 * b)));
    }
  }
}

// The packed 4:2:2 bytes of a row: 16-bit samples value << 6 (little-endian),
// 8-bit samples value >> 2.
Bytes PackedBytes(const Row10 &row, bool yuyv, int bits) {
  Bytes out;
  for (int p = 0; p < row.pairs(); ++p) {
    const uint32_t y0 = row.y[2 * p], y1 = row.y[2 * p + 1], u = row.u[p], v = row.v[p];
    for (uint32_t x :
         yuyv ? std::vector<uint32_t>{y0, u, y1, v} : std::vector<uint32_t>{u, y0, v, y1}) {
      if (bits == 16)
        out.insert(out.end(), {static_cast<uint8_t>(x << 6), static_cast<uint8_t>(x >> 2)});
      if (bits == 8) out.push_back(static_cast<uint8_t>(x >> 2));
    }
  }
  return out;
}

// A source that ends exactly at the end of its heap block (so the address
// sanitizer catches any read past it), starting `offset` bytes in.
struct ExactSource {
  ExactSource(const Bytes &content, size_t offset)
      : storage(offset + content.size(), 0xEE), offset(offset) {
    if (!content.empty()) std::memcpy(storage.data() + offset, content.data(), content.size());
  }
  const void *data() const { return storage.data() + offset; }
  Bytes storage;
  size_t offset;
};

using Call = void (*)(const TCS_KernelTable &, void *, const void *, int32_t);
struct V210Slot {
  const char *name;
  bool toV210;  // writer (packed -> V210) or reader (V210 -> packed)
  int bits;     // sample depth of the packed side
  bool yuyv;    // order of the packed side
  Call call;
};

// clang-format off
#define TQCS_V210_SLOT(name, toV210, bits, yuyv, D, S)                                     \
  V210Slot{#name, toV210, bits, yuyv, [](const TCS_KernelTable &t, void *d, const void *s, \
                                         int32_t n) {                                       \
             t.name(static_cast<D *>(d), static_cast<const S *>(s), n); }}
const V210Slot kSlots[] = {
    TQCS_V210_SLOT(V210_2_YUYV16_Row, false, 16, true, uint16_t, uint8_t),
    TQCS_V210_SLOT(V210_2_UYVY16_Row, false, 16, false, uint16_t, uint8_t),
    TQCS_V210_SLOT(YUYV16_2_V210_Row, true, 16, true, uint8_t, uint16_t),
    TQCS_V210_SLOT(UYVY16_2_V210_Row, true, 16, false, uint8_t, uint16_t),
    TQCS_V210_SLOT(V210_2_YUV8_Row, false, 8, true, uint8_t, uint8_t),
    TQCS_V210_SLOT(V210_2_YUV8_B_Row, false, 8, false, uint8_t, uint8_t),
    TQCS_V210_SLOT(YUV8_2_V210_Row, true, 8, true, uint8_t, uint8_t),
    TQCS_V210_SLOT(YUV8_2_V210_B_Row, true, 8, false, uint8_t, uint8_t),
};
#undef TQCS_V210_SLOT
// clang-format on

class V210Kernels : public ::testing::TestWithParam<std::tuple<uint32_t, V210Slot>> {
 protected:
  const TCS_KernelTable &table() const { return KernelTableForLevel(std::get<0>(GetParam())); }
  const V210Slot &slot() const { return std::get<1>(GetParam()); }
  // 16-bit pointers stay 2-aligned (UBSan), byte pointers go odd.
  size_t Offset(bool sixteenBit, int salt) const { return sixteenBit ? 2 * (salt % 4) : salt % 8; }
};

// Random rows of every length class: whole groups, each partial group size,
// odd counts (the odd last pixel is not converted), and long rows.
TEST_P(V210Kernels, RandomRowsMatchModel) {
  const V210Slot &s = slot();
  int salt = 0;
  for (int32_t count : {2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 16, 18, 47, 48, 50, 1001}) {
    SCOPED_TRACE("count " + std::to_string(count));
    ++salt;
    const Row10 row = RandomRow(count / 2, 1000u + static_cast<uint32_t>(count), s.bits == 8);
    const Bytes v210 = V210Bytes(row), packed = PackedBytes(row, s.yuyv, s.bits);
    const Bytes &expected = s.toV210 ? v210 : packed;
    // Noise the kernels must ignore: bits 30-31 of V210 words, bits 0-5 of 16-bit samples.
    Bytes source = s.toV210 ? packed : v210;
    std::mt19937 rng(static_cast<uint32_t>(count));
    for (size_t i = 3; !s.toV210 && i < source.size(); i += 4) source[i] |= rng() & 0xC0;
    for (size_t i = 0; s.toV210 && s.bits == 16 && i < source.size(); i += 2)
      source[i] |= rng() & 0x3F;
    const ExactSource src(source, Offset(s.toV210 && s.bits == 16, salt));
    GuardedBuffer dst(expected.size(), Offset(!s.toV210 && s.bits == 16, salt + 1));
    dst.Fill(0x5A);
    s.call(table(), dst.data(), src.data(), count);
    ASSERT_EQ(Bytes(dst.data(), dst.data() + dst.size()), expected);
    EXPECT_TRUE(dst.CanariesIntact());
  }
}

// Counts that cover no whole pair write nothing at all.
TEST_P(V210Kernels, CountsBelowTwoWriteNothing) {
  const ExactSource src(Bytes(64, 0x77), 0);
  for (int32_t count : {1, 0, -1, -2, -6, INT32_MIN}) {
    SCOPED_TRACE("count " + std::to_string(count));
    GuardedBuffer dst(0);
    slot().call(table(), dst.data(), src.data(), count);
    EXPECT_TRUE(dst.CanariesIntact());
  }
}

std::string SlotName(const ::testing::TestParamInfo<std::tuple<uint32_t, V210Slot>> &info) {
  return std::string(std::get<1>(info.param).name) + "_L" + std::to_string(std::get<0>(info.param));
}

INSTANTIATE_TEST_SUITE_P(AllLevels, V210Kernels,
                         ::testing::Combine(::testing::ValuesIn(KernelTestLevels()),
                                            ::testing::ValuesIn(kSlots)),
                         SlotName);

class V210Words : public ::testing::TestWithParam<uint32_t> {
 protected:
  const TCS_KernelTable &table() const { return KernelTableForLevel(GetParam()); }
};

uint32_t WordAt(const uint8_t *p, int i) {
  p += 4 * i;
  return uint32_t{p[0]} | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24;
}

// One group worked by hand: YUYV16 Y = 0x040.. 0x045, U = 0x200, 0x3FF, 0x001,
// V = 0x3AC, 0x000, 0x155.
TEST_P(V210Words, HandPackedGroup) {
  const uint16_t yuyv[12] = {0x040 << 6, 0x200 << 6, 0x041 << 6, 0x3AC << 6,
                             0x042 << 6, 0x3FF << 6, 0x043 << 6, 0x000 << 6,
                             0x044 << 6, 0x001 << 6, 0x045 << 6, 0x155 << 6};
  GuardedBuffer dst(16);
  table().YUYV16_2_V210_Row(dst.data(), yuyv, 6);
  EXPECT_EQ(WordAt(dst.data(), 0), 0x3AC10200u);  // V0 Y0 U0
  EXPECT_EQ(WordAt(dst.data(), 1), 0x042FFC41u);  // Y2 U1 Y1
  EXPECT_EQ(WordAt(dst.data(), 2), 0x00110C00u);  // U2 Y3 V1
  EXPECT_EQ(WordAt(dst.data(), 3), 0x04555444u);  // Y5 V2 Y4
  EXPECT_TRUE(dst.CanariesIntact());

  uint16_t back[12];
  table().V210_2_YUYV16_Row(back, dst.data(), 6);
  EXPECT_EQ(0, std::memcmp(back, yuyv, sizeof back));
}

// V210 -> 16-bit -> V210 reproduces any words with bits 30-31 clear, in
// either order; 8-bit -> V210 -> 8-bit reproduces any bytes.
TEST_P(V210Words, RoundTrips) {
  for (int32_t count : {6, 96, 768}) {
    const size_t n = static_cast<size_t>(count);
    Bytes v210 = tqcs::test::RandomBytes(8 * n / 3, 7u + count), back(v210.size());
    for (size_t i = 3; i < v210.size(); i += 4) v210[i] &= 0x3F;
    std::vector<uint16_t> mid(2 * n);
    table().V210_2_YUYV16_Row(mid.data(), v210.data(), count);
    table().YUYV16_2_V210_Row(back.data(), mid.data(), count);
    EXPECT_EQ(back, v210) << count;
    table().V210_2_UYVY16_Row(mid.data(), v210.data(), count);
    table().UYVY16_2_V210_Row(back.data(), mid.data(), count);
    EXPECT_EQ(back, v210) << count;

    const Bytes bytes = tqcs::test::RandomBytes(2 * n, 9u);
    Bytes bytesBack(bytes.size());
    table().YUV8_2_V210_B_Row(back.data(), bytes.data(), count);
    table().V210_2_YUV8_B_Row(bytesBack.data(), back.data(), count);
    EXPECT_EQ(bytesBack, bytes) << count;
  }
}

INSTANTIATE_TEST_SUITE_P(AllLevels, V210Words, ::testing::ValuesIn(KernelTestLevels()));

}  // namespace
