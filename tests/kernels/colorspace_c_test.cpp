// The 23 operations of the kernel objects, checked against references computed
// here from the formulas, for every kernel object (the SSE2 object is held to
// the same results as the portable one). Operations on two or four rows run
// with rows going down and up in memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "kernels/colorspace.hpp"
#include "support/kernel_harness.hpp"

namespace tqcs {
namespace {

using namespace test;

long Clamp(long v, long hi) { return std::clamp<long>(v, 0, hi); }
// Row sizes: a V210 row, planar 4:2:2 of 8- and 16-bit samples, packed 8-bit
// 4:2:2 read (count / 2 pairs) and written (a lone last pixel as a pair).
Sizes V210Row(int32_t n) { return {V210Bytes(n)}; }
Sizes Planar(int32_t n) { return {size_t(n), size_t(n / 2), size_t(n / 2)}; }
Sizes Planar16(int32_t n) { return {2 * size_t(n), 2 * size_t(n / 2), 2 * size_t(n / 2)}; }
Sizes PackedIn(int32_t n) { return {4 * size_t(n / 2)}; }
Sizes PackedOut(int32_t n) { return {4 * size_t((n + 1) / 2)}; }

std::vector<KernelCase> Cases(ColorSpace &cs) {
  std::vector<KernelCase> c;
  // Each 4:1:1 chroma sample serves two pairs; pixels past the last whole
  // group of four have no chroma and are left alone.
  for (const char *order : {"YUYV", "UYVY"})
    c.push_back({std::string("YUV411_2_") + order,
                 [](int32_t n) {
                   return Sizes{size_t(n), size_t(n / 4), size_t(n / 4)};
                 },
                 PackedOut,
                 [&cs, order](Args a, int32_t n) {
                   (order[0] == 'Y' ? cs.YUV411_2_YUYV(a.out[0], a.in[0], a.in[1], a.in[2], n)
                                    : cs.YUV411_2_UYVY(a.out[0], a.in[0], a.in[1], a.in[2], n));
                 },
                 [order](Rows &out, const Rows &in, int32_t n) {
                   const PairSlots at(order);
                   for (int32_t k = 0; k < n / 4 * 4; k += 2) {
                     out[0][2 * k + at.y0] = in[0][k], out[0][2 * k + at.y1] = in[0][k + 1];
                     out[0][2 * k + at.u] = in[1][k / 4], out[0][2 * k + at.v] = in[2][k / 4];
                   }
                 }});
  // V210 <-> planar 8-bit: the high eight bits of each field, and back << 2
  // with the unused fields of the last word zero.
  c.push_back(
      {"V210_2_YUV422", V210Row, Planar,
       [&cs](Args a, int32_t n) { cs.V210_2_YUV422(a.out[0], a.out[1], a.out[2], a.in[0], n); },
       [](Rows &out, const Rows &in, int32_t n) {
         for (size_t j = 0; j < size_t(n / 2); ++j) {
           out[1][j] = uint8_t(GetV210(in[0].data(), V210Bit('U', j)) >> 2);
           out[2][j] = uint8_t(GetV210(in[0].data(), V210Bit('V', j)) >> 2);
           for (size_t k : {2 * j, 2 * j + 1})
             out[0][k] = uint8_t(GetV210(in[0].data(), V210Bit('Y', k)) >> 2);
         }
       }});
  c.push_back(
      {"YUV422_2_V210", Planar, V210Row,
       [&cs](Args a, int32_t n) { cs.YUV422_2_V210(a.out[0], a.in[0], a.in[1], a.in[2], n); },
       [](Rows &out, const Rows &in, int32_t n) {
         std::fill(out[0].begin(), out[0].end(), 0);
         for (size_t j = 0; j < size_t(n / 2); ++j) {
           PutV210(out[0], V210Bit('U', j), in[1][j] << 2);
           PutV210(out[0], V210Bit('V', j), in[2][j] << 2);
           for (size_t k : {2 * j, 2 * j + 1}) PutV210(out[0], V210Bit('Y', k), in[0][k] << 2);
         }
       }});
  // Op 5: luma of four-byte pixels, elements 2-4 weighing bytes 0-2; op 8:
  // the eight gains repeat along the row. Both round and clamp.
  c.push_back(
      {"RGB_2_YUV_Matrix",
       PerCount({4}, {16}),
       PerCount({1}),
       [&cs](Args a, int32_t n) { cs.RGB_2_YUV_Matrix(a.out[0], a.in[1], a.in[0], n); },
       [](Rows &out, const Rows &in, int32_t n) {
         for (int32_t i = 0; i < n; ++i) {
           const uint8_t *p = &in[1][4 * i];
           out[0][i] = uint8_t(Clamp(
               (Coef(in[0], 2) * p[0] + Coef(in[0], 3) * p[1] + Coef(in[0], 4) * p[2] + 8192) >> 14,
               255));
         }
       },
       {2}});
  c.push_back({"Scale_Q14",
               PerCount({1}, {16}),
               PerCount({1}),
               [&cs](Args a, int32_t n) { cs.Scale_Q14(a.out[0], a.in[1], a.in[0], n); },
               [](Rows &out, const Rows &in, int32_t n) {
                 for (int32_t i = 0; i < n; ++i)
                   out[0][i] = uint8_t(Clamp((in[1][i] * Coef(in[0], i % 8) + 8192) >> 14, 255));
               },
               {2}});
  for (const char *order : {"YUYV", "UYVY"}) {
    const bool yuyv = order[0] == 'Y';
    // Packed 8-bit to planar 16-bit: every sample up eight bits; an odd last
    // pixel is not written.
    c.push_back({std::string(order) + "_2_YUV422_16", PackedIn, Planar16,
                 [&cs, yuyv](Args a, int32_t n) {
                   (yuyv ? cs.YUYV_2_YUV422_16(a.out[0], a.out[1], a.out[2], a.in[0], n)
                         : cs.UYVY_2_YUV422_16(a.out[0], a.out[1], a.out[2], a.in[0], n));
                 },
                 [order](Rows &out, const Rows &in, int32_t n) {
                   const PairSlots at(order);
                   for (size_t p = 0; p < size_t(n / 2); ++p) {
                     const uint8_t *q = &in[0][4 * p];
                     PutSample(out[0], 2 * p, 2, q[at.y0] << 8),
                         PutSample(out[0], 2 * p + 1, 2, q[at.y1] << 8);
                     PutSample(out[1], p, 2, q[at.u] << 8), PutSample(out[2], p, 2, q[at.v] << 8);
                   }
                 }});
    // 16-bit RGB (10 significant bits) to packed 16-bit: luma like the GBR
    // row, U then V; chroma of the even pixel, a lone last pixel's Y twice.
    c.push_back({std::string("RGB48_2_") + order + "16_Matrix",
                 PerCount({6}, {16, 16}),
                 [](int32_t n) { return Sizes{8 * size_t((n + 1) / 2)}; },
                 [&cs, yuyv](Args a, int32_t n) {
                   (yuyv ? cs.RGB48_2_YUYV16_Matrix(a.out[0], a.in[2], a.in[0], a.in[1], n)
                         : cs.RGB48_2_UYVY16_Matrix(a.out[0], a.in[2], a.in[0], a.in[1], n));
                 },
                 [order](Rows &out, const Rows &in, int32_t n) {
                   const PairSlots at(order);
                   const auto dot = [&](const Bytes &w, int e, int32_t i) {
                     long sum = 8192;
                     for (int k = 0; k < 3; ++k)
                       sum += Coef(w, e + k) * long(GetSample(in[2], 3 * i + k, 2) >> 6);
                     return sum >> 14;
                   };
                   for (int32_t i = 0; i < n; i += 2) {
                     const int32_t odd = i + 1 < n ? i + 1 : i;
                     PutSample(out[0], 2 * i + at.y0, 2, Clamp(dot(in[0], 2, i), 1023) << 6);
                     PutSample(out[0], 2 * i + at.y1, 2, Clamp(dot(in[0], 2, odd), 1023) << 6);
                     PutSample(out[0], 2 * i + at.u, 2, Clamp(dot(in[1], 0, i) + 512, 1023) << 6);
                     PutSample(out[0], 2 * i + at.v, 2, Clamp(dot(in[1], 4, i) + 512, 1023) << 6);
                   }
                 },
                 {2, 2}});
  }
  return c;
}

// Calls one of the operations from two packed rows to 4:2:0: luma rows y,
// chroma rows out[1] and out[2], source rows s.
template <auto kOp>
void Call420(ColorSpace &cs, Args a, const Pitched &y, const Pitched &s, int32_t n) {
  (cs.*kOp)(a.out[0] + y.At(0), y.pitch(), a.out[1], a.out[2], a.in[0] + s.At(0), s.pitch(), n);
}

// The operations on rows apart, one set for rows going down in memory and one
// for rows going up (and destination luma rows the other way round).
std::vector<KernelCase> RowCases(ColorSpace &cs, bool up) {
  using C = ColorSpace;
  std::vector<KernelCase> c;
  const std::string dir = up ? "_Up" : "_Down";
  // Two V210 rows to 4:2:0: luma of both, chroma weighed 3:1, (3a + b + 2) >> 2.
  c.push_back({"V210_2_YUV420" + dir,
               [up](int32_t n) {
                 return Sizes{Pitched{2, V210Bytes(n), up}.size()};
               },
               [up](int32_t n) {
                 return Sizes{Pitched{2, size_t(n), !up}.size(), size_t(n / 2), size_t(n / 2)};
               },
               [&cs, up](Args a, int32_t n) {
                 const Pitched s{2, V210Bytes(n), up}, y{2, size_t(n), !up};
                 cs.V210_2_YUV420(a.out[0] + y.At(0), y.pitch(), a.out[1], a.out[2],
                                  a.in[0] + s.At(0), s.pitch(), n);
               },
               [up](Rows &out, const Rows &in, int32_t n) {
                 const Pitched s{2, V210Bytes(n), up}, y{2, size_t(n), !up};
                 const auto field = [&](int r, char comp, size_t i) {
                   return GetV210(in[0].data() + s.At(r), V210Bit(comp, i)) >> 2;
                 };
                 for (size_t j = 0; j < size_t(n / 2); ++j) {
                   for (int r = 0; r < 2; ++r)
                     for (size_t k : {2 * j, 2 * j + 1})
                       out[0][y.At(r) + k] = uint8_t(field(r, 'Y', k));
                   out[1][j] = uint8_t((3 * field(0, 'U', j) + field(1, 'U', j) + 2) >> 2);
                   out[2][j] = uint8_t((3 * field(0, 'V', j) + field(1, 'V', j) + 2) >> 2);
                 }
               }});
  // Chroma rows: the rounded-up mean of two rows, (a + b + 1) >> 1; four
  // rows interpolated midway between the middle two, (9 (b + c) - a - d + 8)
  // >> 4, clamped.
  using Filter = void (ColorSpace::*)(uint8_t *, const uint8_t *, int64_t, int32_t);
  using Filter16 = void (ColorSpace::*)(uint16_t *, const uint16_t *, int64_t, int32_t);
  const std::tuple<const char *, Filter, Filter16, std::vector<long>> filters[] = {
      {"UV_Avg", &C::YUV422_2_YUV420_UV_Avg, &C::YUV422_16_2_YUV420_16_UV_Avg, {1, 1}},
      {"UV_Interpolate_4Tap", &C::UV_Interpolate_4Tap, &C::UV_Interpolate_4Tap_16, {-1, 9, 9, -1}}};
  for (const auto &[name, f8, f16, w] : filters)
    for (int bytes : {1, 2}) {
      const auto rows = [=, taps = int(w.size())](int32_t n) {
        return Pitched{taps, bytes * size_t(n), up};
      };
      c.push_back({name + std::string(bytes == 1 ? "" : "_16") + dir,
                   [=](int32_t n) { return Sizes{rows(n).size()}; }, PerCount({size_t(bytes)}),
                   [=, &cs, f8 = f8, f16 = f16](Args a, int32_t n) {
                     const Pitched s = rows(n);
                     bytes == 1 ? (cs.*f8)(a.out[0], a.in[0] + s.At(0), s.pitch(), n)
                                : (cs.*f16)(a.out[0], a.in[0] + s.At(0), s.pitch(), n);
                   },
                   [=, w = w](Rows &out, const Rows &in, int32_t n) {
                     const int shift = w.size() == 2 ? 1 : 4;
                     for (int32_t i = 0; i < n; ++i) {
                       long sum = 1 << (shift - 1);
                       for (size_t k = 0; k < w.size(); ++k)
                         sum += w[k] * long(GetSample(in[0].data() + rows(n).At(int(k)), i, bytes));
                       PutSample(out[0], i, bytes, Clamp(sum >> shift, bytes == 1 ? 255 : 65535));
                     }
                   }});
    }
  // Ops 15 to 22: two packed rows to 4:2:0. Luma changes depth by a shift;
  // chroma is the rounded mean, then shifted.
  struct To420 {
    const char *order;
    int srcBytes, dstBytes;
    void (*call)(C &, Args, const Pitched &, const Pitched &, int32_t);
  };
  static const To420 k420[] = {
      {"YUYV", 1, 1, Call420<&C::YUYV_2_YUV420_Avg>},
      {"UYVY", 1, 1, Call420<&C::UYVY_2_YUV420_Avg>},
      {"YUYV", 2, 2, Call420<&C::YUYV16_2_YUV420_16_Avg>},
      {"UYVY", 2, 2, Call420<&C::UYVY16_2_YUV420_16_Avg>},
      {"YUYV", 1, 2, Call420<&C::YUYV_2_YUV420_16>},
      {"UYVY", 1, 2, Call420<&C::UYVY_2_YUV420_16>},
      {"YUYV", 2, 1, Call420<&C::YUYV16_2_YUV420>},
      {"UYVY", 2, 1, Call420<&C::UYVY16_2_YUV420>},
  };
  for (const To420 &t : k420) {
    const auto src = [&t, up](int32_t n) { return Pitched{2, t.srcBytes * 4 * size_t(n / 2), up}; };
    const auto y = [&t, up](int32_t n) { return Pitched{2, t.dstBytes * size_t(n), !up}; };
    c.push_back(
        {std::string(t.order) + "_" + std::to_string(8 * t.srcBytes) + "_To420_" +
             std::to_string(8 * t.dstBytes) + dir,
         [=](int32_t n) { return Sizes{src(n).size()}; },
         [=, &t](int32_t n) {
           return Sizes{y(n).size(), t.dstBytes * size_t(n / 2), t.dstBytes * size_t(n / 2)};
         },
         [=, &t, &cs](Args a, int32_t n) { t.call(cs, a, y(n), src(n), n); },
         [=, &t](Rows &out, const Rows &in, int32_t n) {
           const PairSlots at(t.order);
           const auto luma = [&](uint32_t x) {
             return t.srcBytes < t.dstBytes ? x << 8 : t.srcBytes > t.dstBytes ? x >> 8 : x;
           };
           const auto chroma = [&](uint32_t a, uint32_t b) {
             if (t.srcBytes > t.dstBytes) return (a + b + 1) >> 9;
             return ((a + b + 1) >> 1) << (t.srcBytes < t.dstBytes ? 8 : 0);
           };
           const auto get = [&](int r, size_t p, int slot) {
             return GetSample(in[0].data() + src(n).At(r), 4 * p + slot, t.srcBytes);
           };
           for (size_t p = 0; p < size_t(n / 2); ++p) {
             for (int r = 0; r < 2; ++r) {
               uint8_t *row = out[0].data() + y(n).At(r);
               PutSample(row, 2 * p, t.dstBytes, luma(get(r, p, at.y0)));
               PutSample(row, 2 * p + 1, t.dstBytes, luma(get(r, p, at.y1)));
             }
             PutSample(out[1], p, t.dstBytes, chroma(get(0, p, at.u), get(1, p, at.u)));
             PutSample(out[2], p, t.dstBytes, chroma(get(0, p, at.v), get(1, p, at.v)));
           }
         }});
  }
  return c;
}

struct Object {
  const char *name;
  ColorSpace *(*get)();
};
const Object kObjects[] = {{"C", ColorSpaceCInstance}, {"SSE2", ColorSpaceSSE2Instance}};

TQCS_KERNEL_SUITE(
    ColorSpaceOps,
    [] {
      std::vector<KernelCase> all;
      for (const Object &o : kObjects)
        for (auto list : {Cases(*o.get()), RowCases(*o.get(), false), RowCases(*o.get(), true)})
          for (KernelCase &c : list) {
            c.name += std::string("_") + o.name;
            all.push_back(std::move(c));
          }
      return all;
    }(),
    1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 17, 18, 31, 64, 101);

// Hand-worked values: V210 words one way and back; black gives luma 0 and
// white through the SD row 255 (the weights sum to 1.0), weights past 1.0
// or below 0 clamp; four taps overshoot and undershoot.
TEST(ColorSpaceOpsByHand, V210LumaRowAndFourTapCorners) {
  // Cb0 0x200, Y0 0x040, Cr0 0x3FC | Y1 0x3FF, Cb1 0, Y2 0x155.
  const uint8_t v210[8] = {0x00, 0x02, 0xC1, 0x3F, 0xFF, 0x03, 0x50, 0x15};
  const uint8_t back[8] = {0x00, 0x02, 0xC1, 0x3F, 0xFC, 0x03, 0x00, 0x00};
  const int16_t sd[8] = {9618, 1868, 4898, 9618, 1868, -7777, 31000, -31000};
  const int16_t hot[8] = {0, 0, 30000, 20000, 16000}, cold[8] = {0, 0, -9000, 4000, -12000};
  const uint8_t white[4] = {255, 255, 255, 0}, black[4] = {0, 0, 0, 255};
  const uint8_t taps[4][2] = {{0, 255}, {255, 0}, {255, 0}, {0, 255}};  // rows a, b, c, d
  for (const Object &o : kObjects) {
    ColorSpace &cs = *o.get();
    uint8_t y[2], u, v, out[8], luma[4], mid[2];
    cs.V210_2_YUV422(y, &u, &v, v210, 2);
    cs.YUV422_2_V210(out, y, &u, &v, 2);
    EXPECT_EQ(Bytes({y[0], y[1], u, v}), Bytes({0x10, 0xFF, 0x80, 0xFF})) << o.name;
    EXPECT_EQ(Bytes(out, out + 8), Bytes(back, back + 8)) << o.name;
    cs.RGB_2_YUV_Matrix(&luma[0], white, sd, 1), cs.RGB_2_YUV_Matrix(&luma[1], black, sd, 1);
    cs.RGB_2_YUV_Matrix(&luma[2], white, hot, 1), cs.RGB_2_YUV_Matrix(&luma[3], white, cold, 1);
    EXPECT_EQ(Bytes(luma, luma + 4), Bytes({255, 0, 255, 0})) << o.name;
    cs.UV_Interpolate_4Tap(mid, taps[0], 2, 2);
    EXPECT_EQ(Bytes(mid, mid + 2), Bytes({255, 0})) << o.name;
  }
}

}  // namespace
}  // namespace tqcs
