// V210 row kernels (slots 125-128, 145-148) against two models built on the
// six-pixel group table (U0 Y0 V0) (Y1 U1 Y2) (V1 Y3 U2) (Y4 V2 Y5): one
// reads the 10-bit components out of V210 words, the other assembles the
// words; the packed rows come from the pair layouts. Random sources carry the
// bits the kernels must ignore (bits 30-31 of words, bits 0-5 of 16-bit
// samples).
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <vector>

#include "support/kernel_harness.hpp"

namespace {

using namespace tqcs::test;

// Component kinds of a group: Y by pixel, U and V by pair.
enum Kind { kY, kU, kV };
struct Field {
  Kind kind;
  int index;  // pixel within the group for Y, pair within the group for U and V
};
constexpr Field kGroup[4][3] = {{{kU, 0}, {kY, 0}, {kV, 0}},
                                {{kY, 1}, {kU, 1}, {kY, 2}},
                                {{kV, 1}, {kY, 3}, {kU, 2}},
                                {{kY, 4}, {kV, 2}, {kY, 5}}};

// Where field f of word w sits among a row's components: kind, and index in
// 4:2:2 order (Y0 U Y1 V per pair), or -1 past the row's `pairs` pairs.
int64_t ComponentOf(size_t w, int f, int64_t pairs) {
  const Field c = kGroup[w % 4][f];
  const int64_t g = int64_t(w / 4);
  const int64_t pair = c.kind == kY ? 3 * g + c.index / 2 : 3 * g + c.index;
  if (pair >= pairs) return -1;
  return 4 * pair + (c.kind == kY ? 2 * (c.index % 2) : c.kind == kU ? 1 : 3);
}

// Little-endian word w of a row.
uint32_t Word(const Bytes &row, size_t w) {
  return GetSample(row, 2 * w, 2) | GetSample(row, 2 * w + 1, 2) << 16;
}

// Words that carry the count / 2 pairs of a row.
size_t Words(int32_t n) { return (4 * size_t(n / 2) + 2) / 3; }

// Sample i (Y0 U Y1 V order) of a packed row stored in YUYV or UYVY order.
size_t Slot(size_t i, bool yuyv) { return yuyv ? i : (i & ~size_t{3}) | ((i & 3) ^ 1); }

struct V210Slot {
  const char *name;
  bool toV210;  // writer (packed -> V210) or reader (V210 -> packed)
  int bytes;    // sample size of the packed side
  bool yuyv;    // order of the packed side
  void (*call)(const TCS_KernelTable &, Args, int32_t);
};
#define TQCS_V210(fn, toV210, bytes, yuyv)                                              \
  {                                                                                     \
#fn, toV210, bytes, yuyv,                                                           \
        [](const TCS_KernelTable &t, Args a, int32_t n) { t.fn(a.out[0], a.in[0], n); } \
  }
const V210Slot kSlots[] = {
    TQCS_V210(V210_2_YUYV16_Row, false, 2, true), TQCS_V210(V210_2_UYVY16_Row, false, 2, false),
    TQCS_V210(YUYV16_2_V210_Row, true, 2, true),  TQCS_V210(UYVY16_2_V210_Row, true, 2, false),
    TQCS_V210(V210_2_YUV8_Row, false, 1, true),   TQCS_V210(V210_2_YUV8_B_Row, false, 1, false),
    TQCS_V210(YUV8_2_V210_Row, true, 1, true),    TQCS_V210(YUV8_2_V210_B_Row, true, 1, false),
};

// The 10-bit value of a packed sample, and back: 16-bit samples hold it in
// bits 6-15, bytes its upper eight bits.
uint32_t To10(uint32_t s, int bytes) { return bytes == 2 ? s >> 6 : s << 2; }
uint32_t From10(uint32_t v, int bytes) { return bytes == 2 ? v << 6 : v >> 2; }

KernelCase Make(const TCS_KernelTable &t, const V210Slot &s) {
  const std::function<Sizes(int32_t)> v210 = [](int32_t n) { return Sizes{4 * Words(n)}; },
                                      packed = [&s](int32_t n) {
                                        return Sizes{4 * size_t(n / 2) * s.bytes};
                                      };
  return {s.name,
          s.toV210 ? packed : v210,
          s.toV210 ? v210 : packed,
          [&t, &s](Args a, int32_t n) { s.call(t, a, n); },
          [&s](Rows &out, const Rows &in, int32_t n) {
            for (size_t w = 0; w < Words(n); ++w) {
              uint32_t word = 0;
              for (int f = 0; f < 3; ++f) {
                const int64_t i = ComponentOf(w, f, n / 2);
                if (i < 0) continue;
                const size_t at = Slot(size_t(i), s.yuyv);
                if (s.toV210)
                  word |= To10(GetSample(in[0], at, s.bytes), s.bytes) << (10 * f);
                else
                  PutSample(out[0], at, s.bytes,
                            From10(Word(in[0], w) >> (10 * f) & 0x3FF, s.bytes));
              }
              for (int b = 0; s.toV210 && b < 4; ++b) out[0][4 * w + b] = uint8_t(word >> (8 * b));
            }
          },
          {},
          2};
}

// Whole groups, each partial group size, odd counts (the odd last pixel is
// not converted), and long rows.
TQCS_KERNEL_SUITE(V210Kernels, OnEveryLevel(kSlots, Make), 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13,
                  14, 16, 18, 47, 48, 50, 1001);

// One group worked by hand: YUYV16 Y = 0x040 .. 0x045, U = 0x200, 0x3FF,
// 0x001, V = 0x3AC, 0x000, 0x155; and back.
TEST(V210Words, HandPackedGroup) {
  const uint16_t yuyv[12] = {0x040 << 6, 0x200 << 6, 0x041 << 6, 0x3AC << 6,
                             0x042 << 6, 0x3FF << 6, 0x043 << 6, 0x000 << 6,
                             0x044 << 6, 0x001 << 6, 0x045 << 6, 0x155 << 6};
  const uint32_t words[4] = {0x3AC10200u, 0x042FFC41u, 0x00110C00u, 0x04555444u};
  Bytes want(16), got(16);
  for (size_t b = 0; b < 16; ++b) want[b] = uint8_t(words[b / 4] >> (8 * (b % 4)));
  for (uint32_t level : KernelTestLevels()) {
    const TCS_KernelTable &t = KernelTableForLevel(level);
    uint16_t back[12];
    t.YUYV16_2_V210_Row(got.data(), yuyv, 6);
    t.V210_2_YUYV16_Row(back, want.data(), 6);
    EXPECT_EQ(got, want) << "level " << level;
    EXPECT_EQ(0, std::memcmp(back, yuyv, sizeof back)) << "level " << level;
  }
}

}  // namespace
