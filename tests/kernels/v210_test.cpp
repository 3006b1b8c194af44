// V210 row kernels (slots 125-128, 145-148) against two models built on the
// six-pixel group table (U0 Y0 V0) (Y1 U1 Y2) (V1 Y3 U2) (Y4 V2 Y5): one
// reads the 10-bit components out of V210 words, the other assembles the
// words; the packed rows come from the pair layouts. Random sources carry the
// bits the kernels must ignore (bits 30-31 of words, bits 0-5 of 16-bit
// samples).
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <tuple>
#include <vector>

#include "support/kernel_harness.hpp"

namespace {

using namespace tqcs::test;

struct V210Slot {
  const char *name;
  bool toV210;  // writer (packed -> V210) or reader (V210 -> packed)
  int bytes;    // sample size of the packed side
  bool yuyv;    // order of the packed side
  void (*call)(const TCS_KernelTable &, Args, int32_t);
};
#define TQCS_V210(fn, toV210, bytes, yuyv)                                              \
  V210Slot {                                                                            \
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
  const std::function<Sizes(int32_t)> v210 = [](int32_t n) { return Sizes{V210Bytes(n)}; },
                                      packed = [&s](int32_t n) {
                                        return Sizes{4 * size_t(n / 2) * s.bytes};
                                      };
  return {s.name,
          s.toV210 ? packed : v210,
          s.toV210 ? v210 : packed,
          [&t, &s](Args a, int32_t n) { s.call(t, a, n); },
          [&s](Rows &out, const Rows &in, int32_t n) {
            const PairSlots at(s.yuyv ? "YUYV" : "UYVY");
            if (s.toV210) std::fill(out[0].begin(), out[0].end(), 0);
            for (size_t p = 0; p < size_t(n / 2); ++p)
              for (const auto &[comp, index, slot] : {std::tuple{'Y', 2 * p, at.y0},
                                                      {'Y', 2 * p + 1, at.y1},
                                                      {'U', p, at.u},
                                                      {'V', p, at.v}}) {
                const size_t bit = V210Bit(comp, index), i = 4 * p + size_t(slot);
                if (s.toV210)
                  PutV210(out[0], bit, To10(GetSample(in[0], i, s.bytes), s.bytes));
                else
                  PutSample(out[0], i, s.bytes, From10(GetV210(in[0].data(), bit), s.bytes));
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
