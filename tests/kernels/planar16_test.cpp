// 16-bit pack, unpack, repack and depth-shift kernels against one model: each
// pixel pair's Y0, Y1, U, V is located through the layout tables below (planar
// 4:2:2, YUYV = Y0 U Y1 V, UYVY = U Y0 V Y1) and passed through the stated
// shift. Kept for compatibility: the 10-bit-to-byte shifts store the low 8
// bits of the shifted sample.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "support/kernel_harness.hpp"

namespace {

using namespace tqcs::test;
using T = TCS_KernelTable;

enum Layout { kPlanar, kYuyv, kUyvy, kPlane };

// Plane and sample index of component c (Y0, Y1, U, V) of pair k.
std::pair<int, int64_t> Where(Layout l, int c, int64_t k) {
  static constexpr int kPacked[2][4] = {{0, 2, 1, 3}, {1, 3, 0, 2}};
  if (l == kPlanar) return c < 2 ? std::pair{0, 2 * k + c} : std::pair{c - 1, k};
  return {0, 4 * k + kPacked[l == kUyvy][c]};
}

// Samples of plane p for `count` pixels: what a source row holds, or what a
// destination row may receive (whole pairs only).
int64_t Extent(Layout l, int p, int64_t count, int perPixel, bool written) {
  if (l == kPlane) return perPixel * count;
  if (l == kPlanar) return p == 0 ? (written ? count / 2 * 2 : count) : count / 2;
  return 4 * (written ? count / 2 : (count + 1) / 2);
}

template <auto M>
void ToPacked(const T &t, Args a, int32_t n) {
  (t.*M)(a.out[0], a.in[0], a.in[1], a.in[2], n);
}
template <auto M>
void ToPlanar(const T &t, Args a, int32_t n) {
  (t.*M)(a.out[0], a.out[1], a.out[2], a.in[0], n);
}
template <auto M>
void OnePlane(const T &t, Args a, int32_t n) {
  (t.*M)(a.out[0], a.in[0], n);
}

struct Case {
  const char *name;
  Layout src;
  int srcBytes;
  Layout dst;
  int dstBytes;
  int perPixel;  // samples per pixel of a single-plane row
  uint32_t (*conv)(uint32_t);
  void (*call)(const T &, Args, int32_t);
};
uint32_t Same(uint32_t s) { return s; }
uint32_t Up8(uint32_t s) { return s << 8; }
uint32_t Down8(uint32_t s) { return s >> 8; }
uint32_t Down2Low(uint32_t s) { return (s >> 2) & 0xFF; }
uint32_t Down6(uint32_t s) { return s >> 6; }
uint32_t Down6Low(uint32_t s) { return (s >> 6) & 0xFF; }
uint32_t Up6(uint32_t s) { return s << 6; }

const Case kCases[] = {
    {"10BitToYUYV", kPlanar, 2, kYuyv, 1, 0, Down2Low, ToPacked<&T::YUV422_10Bit_2_YUYV_Row>},
    {"10BitToUYVY", kPlanar, 2, kUyvy, 1, 0, Down2Low, ToPacked<&T::YUV422_10Bit_2_UYVY_Row>},
    {"P16ToYUYV", kPlanar, 2, kYuyv, 1, 0, Down8, ToPacked<&T::YUV422_16_2_YUYV_Row>},
    {"P16ToUYVY", kPlanar, 2, kUyvy, 1, 0, Down8, ToPacked<&T::YUV422_16_2_UYVY_Row>},
    {"P16ToYUYV16", kPlanar, 2, kYuyv, 2, 0, Same, ToPacked<&T::YUV422_16_2_YUYV16_Row>},
    {"P16ToUYVY16", kPlanar, 2, kUyvy, 2, 0, Same, ToPacked<&T::YUV422_16_2_UYVY16_Row>},
    {"P8ToYUYV16", kPlanar, 1, kYuyv, 2, 0, Up8, ToPacked<&T::YUV422_2_YUYV16_Row>},
    {"P8ToUYVY16", kPlanar, 1, kUyvy, 2, 0, Up8, ToPacked<&T::YUV422_2_UYVY16_Row>},
    {"YUYV16ToP8", kYuyv, 2, kPlanar, 1, 0, Down8, ToPlanar<&T::YUYV16_2_YUV422_Row>},
    {"UYVY16ToP8", kUyvy, 2, kPlanar, 1, 0, Down8, ToPlanar<&T::UYVY16_2_YUV422_Row>},
    {"UYVY16ToP16", kUyvy, 2, kPlanar, 2, 0, Same, ToPlanar<&T::UYVY16_2_YUV422_16_Row>},
    {"YUYV16ToP16", kYuyv, 2, kPlanar, 2, 0, Same, ToPlanar<&T::YUYV16_2_YUV422_16_Row>},
    {"YUYV16ToYUYV", kYuyv, 2, kYuyv, 1, 0, Down8, OnePlane<&T::YUYV16_2_YUYV_Row>},
    {"YUYV16ToUYVY", kYuyv, 2, kUyvy, 1, 0, Down8, OnePlane<&T::YUYV16_2_UYVY_Row>},
    {"Y10ToY8", kPlane, 2, kPlane, 1, 1, Down6Low, OnePlane<&T::Y10Bit_2_Y8_Row>},
    {"Y16ToY10", kPlane, 2, kPlane, 2, 1, Down6, OnePlane<&T::Y16_2_Y10_Row>},
    {"Y8ToY16", kPlane, 1, kPlane, 2, 1, Up6, OnePlane<&T::Y8_2_Y16_Row>},
    {"Y16ToY10Pairs", kPlane, 2, kPlane, 2, 2, Down6, OnePlane<&T::Y16_2_Y10_Pairs_Row>},
};

// Bytes of every plane of a layout for a count.
auto SizesOf(Layout l, int bytes, int perPixel, bool written) {
  return [=](int32_t n) {
    Sizes s;
    for (int p = 0; p < (l == kPlanar ? 3 : 1); ++p)
      s.push_back(size_t(Extent(l, p, n, perPixel, written)) * bytes);
    return s;
  };
}

KernelCase Make(const T &t, const Case &c) {
  return {c.name, SizesOf(c.src, c.srcBytes, c.perPixel, false),
          SizesOf(c.dst, c.dstBytes, c.perPixel, true),
          [&t, &c](Args a, int32_t n) { c.call(t, a, n); },
          [&c](Rows &out, const Rows &in, int32_t n) {
            auto move = [&](int sp, int64_t si, int dp, int64_t di) {
              PutSample(out[dp], di, c.dstBytes, c.conv(GetSample(in[sp], si, c.srcBytes)));
            };
            if (c.src == kPlane) {
              for (int64_t i = 0; i < Extent(kPlane, 0, n, c.perPixel, true); ++i) move(0, i, 0, i);
              return;
            }
            for (int64_t k = 0; k < n / 2; ++k)
              for (int comp = 0; comp < 4; ++comp) {
                const auto [sp, si] = Where(c.src, comp, k);
                const auto [dp, di] = Where(c.dst, comp, k);
                move(sp, si, dp, di);
              }
          }};
}

TQCS_KERNEL_SUITE(Planar16, OnEveryLevel(kCases, Make), 1, 2, 3, 8, 31);

}  // namespace
