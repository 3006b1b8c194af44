// Chroma resampling: 4:2:0 <-> 4:2:2 row kernels, packed 4:2:2 rows to 4:2:0,
// and the whole-plane routines, against models written from the stated
// weights. Rows of a plane lie apart with gaps the kernels must leave alone,
// going down or up in memory.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "base/state.hpp"
#include "startup/api.hpp"
#include "support/kernel_harness.hpp"

namespace {

using namespace tqcs::test;
using T = TCS_KernelTable;

// The stated weightings: 8-bit values, and 10-bit values in bits 6-15.
uint32_t W8(int wa, uint32_t a, int wb, uint32_t b) { return (wa * a + wb * b + 4) >> 3; }
uint32_t W10(int wa, uint32_t a, int wb, uint32_t b) { return W8(wa, a >> 6, wb, b >> 6) << 6; }
uint32_t M8(uint32_t a, uint32_t b) { return (3 * a + b + 2) >> 2; }
uint32_t M10(uint32_t a, uint32_t b) { return M8(a >> 6, b >> 6) << 6; }

// Sample i of row r of a pitched plane held in `plane`.
uint32_t Get(const Bytes &plane, const Pitched &p, int r, int64_t i, int bytes) {
  return GetSample(plane.data() + p.At(r), i, bytes);
}
void Put(Bytes &plane, const Pitched &p, int r, int64_t i, int bytes, uint32_t v) {
  PutSample(plane.data() + p.At(r), i, bytes, v);
}

// ---- 4:2:0 -> 4:2:2 rows: row a with p at -pitch and n at +pitch ----------
using Pair = std::pair<uint32_t, uint32_t>;
Pair First8(uint32_t a, uint32_t, uint32_t n) { return {a, W8(5, a, 3, n)}; }
Pair Last8(uint32_t a, uint32_t, uint32_t n) { return {a, W8(7, a, 1, n)}; }
Pair Inner8(uint32_t a, uint32_t p, uint32_t n) { return {W8(7, a, 1, p), W8(5, a, 3, n)}; }
Pair First10(uint32_t a, uint32_t, uint32_t n) { return {a >> 6 << 6, W10(5, a, 3, n)}; }
Pair Last10(uint32_t a, uint32_t, uint32_t n) { return {a >> 6 << 6, W10(7, a, 1, n)}; }
Pair Inner10(uint32_t a, uint32_t p, uint32_t n) { return {W10(7, a, 1, p), W10(5, a, 3, n)}; }
// Kept for compatibility: raw samples shifted by 5, low byte stored.
Pair Raw16To8(uint32_t a, uint32_t p, uint32_t n) {
  return {((7 * a + p + 16) >> 5) & 255, ((5 * a + 3 * n + 16) >> 5) & 255};
}
// Destinations U, V; sources U, V: each a row pointer and pitch.
template <auto M>
void Up(const T &t, Args a, const Pitched &d, const Pitched &s, int64_t sp, int32_t w) {
  const int mid = s.rows / 2;
  (t.*M)(a.out[0] + d.At(0), d.pitch(), a.out[1] + d.At(0), d.pitch(), a.in[0] + s.At(mid), sp,
         a.in[1] + s.At(mid), sp, w);
}
struct UpKind {
  const char *name;
  int srcBytes, dstBytes;
  void (*call)(const T &, Args, const Pitched &, const Pitched &, int64_t, int32_t);
  Pair (*model)(uint32_t a, uint32_t p, uint32_t n);
};
const UpKind kUp[] = {
    {"First", 1, 1, Up<&T::YUV420_2_YUV422_UV_FirstRow>, First8},
    {"Last", 1, 1, Up<&T::YUV420_2_YUV422_UV_LastRow>, Last8},
    {"Interior", 1, 1, Up<&T::YUV420_2_YUV422_UV_Row>, Inner8},
    {"First16", 2, 2, Up<&T::YUV420_16_2_YUV422_16_UV_FirstRow>, First10},
    {"Last16", 2, 2, Up<&T::YUV420_16_2_YUV422_16_UV_LastRow>, Last10},
    {"Interior16", 2, 2, Up<&T::YUV420_16_2_YUV422_16_UV_Row>, Inner10},
    {"Raw16To8", 2, 1, Up<&T::YUV420_10Bit_2_YUV422_UV_Row>, Raw16To8},
    {"Raw16", 2, 2, Up<&T::YUV420_10Bit_2_YUV422_10Bit_UV_Row>, Inner8},
};

// ---- 4:2:2 -> 4:2:0 rows: (3a + b + 2) >> 2 -------------------------------
template <auto M>
void Down(const T &t, Args a, const Pitched &s, int64_t sp, int32_t w) {
  (t.*M)(a.out[0], a.out[1], a.in[0] + s.At(0), sp, a.in[1] + s.At(0), sp, w);
}
struct DownKind {
  const char *name;
  int bytes;
  void (*call)(const T &, Args, const Pitched &, int64_t, int32_t);
  uint32_t (*model)(uint32_t a, uint32_t b);
};
const DownKind kDown[] = {{"Bytes", 1, Down<&T::YUV422_2_YUV420_UV_Row>, M8},
                          {"TenBit", 2, Down<&T::YUV422_16_2_YUV420_16_UV_Row>, M10}};

// ---- two packed 4:2:2 rows -> 4:2:0 ----------------------------------------
template <auto M>
void Pack(const T &t, Args a, const Pitched &y, const Pitched &s, int32_t n) {
  (t.*M)(a.out[0] + y.At(0), y.pitch(), a.out[1], a.out[2], a.in[0] + s.At(0), s.pitch(), n);
}
struct PackKind {
  const char *name;
  int srcBytes, dstBytes;
  const char *order;
  int down, round;
  void (*call)(const T &, Args, const Pitched &, const Pitched &, int32_t);
};
const PackKind kPack[] = {
    {"YUYV", 1, 1, "YUYV", 0, 2, Pack<&T::YUYV_2_YUV420_UV_Row>},
    {"UYVY", 1, 1, "UYVY", 0, 2, Pack<&T::UYVY_2_YUV420_UV_Row>},
    {"YUYV16to8", 2, 1, "YUYV", 8, 0, Pack<&T::YUYV16_2_YUV420_Row>},
    {"UYVY16to8", 2, 1, "UYVY", 8, 0, Pack<&T::UYVY16_2_YUV420_Row>},
    {"UYVY16", 2, 2, "UYVY", 0, 0, Pack<&T::UYVY16_2_YUV420_16_Row>},
    {"YUYV16", 2, 2, "YUYV", 0, 0, Pack<&T::YUYV16_2_YUV420_16_Row>},
};

// Source rows go down (sign 1), up (-1), or are one row at pitch 0.
std::vector<KernelCase> RowCases(const T &t) {
  std::vector<KernelCase> cases;
  const std::string dirs[3] = {"_Flat", "_Down", "_Up"};
  for (int sign : {1, -1, 0}) {
    const std::string dir = dirs[sign < 0 ? 2 : sign];
    const auto src = [sign](int bytes, int rows) {
      return [=](int32_t w) { return Pitched{sign ? rows : 1, size_t(w) * bytes, sign < 0}; };
    };
    for (const UpKind &k : kUp) {
      const auto s = src(k.srcBytes, 3);
      const auto d = [&k, sign](int32_t w) {
        return Pitched{2, size_t(w) * k.dstBytes, sign != 1};
      };
      cases.push_back(
          {std::string("Up") + k.name + dir, [=](int32_t w) { return Sizes(2, s(w).size()); },
           [=](int32_t w) { return Sizes(2, d(w).size()); },
           [=, &t, &k](Args a, int32_t w) { k.call(t, a, d(w), s(w), sign ? s(w).pitch() : 0, w); },
           [=, &k](Rows &out, const Rows &in, int32_t w) {
             const int mid = s(w).rows / 2, lo = mid - (sign != 0), hi = mid + (sign != 0);
             for (int c = 0; c < 2; ++c)
               for (int32_t i = 0; i < w; ++i) {
                 const auto at = [&](int r) { return Get(in[c], s(w), r, i, k.srcBytes); };
                 const Pair r = k.model(at(mid), at(lo), at(hi));
                 Put(out[c], d(w), 0, i, k.dstBytes, r.first);
                 Put(out[c], d(w), 1, i, k.dstBytes, r.second);
               }
           }});
    }
    for (const DownKind &k : kDown) {
      const auto s = src(k.bytes, 2);
      cases.push_back(
          {std::string("Down") + k.name + dir, [=](int32_t w) { return Sizes(2, s(w).size()); },
           [&k](int32_t w) { return Sizes(2, size_t(w) * k.bytes); },
           [=, &t, &k](Args a, int32_t w) { k.call(t, a, s(w), sign ? s(w).pitch() : 0, w); },
           [=, &k](Rows &out, const Rows &in, int32_t w) {
             for (int c = 0; c < 2; ++c)
               for (int32_t i = 0; i < w; ++i)
                 PutSample(out[c], i, k.bytes,
                           k.model(Get(in[c], s(w), 0, i, k.bytes),
                                   Get(in[c], s(w), sign != 0, i, k.bytes)));
           }});
    }
    if (sign == 0) continue;
    // Source row r lands in luma row r; the luma rows go the other way.
    for (const PackKind &k : kPack) {
      const auto s = [&k, sign](int32_t n) {
        return Pitched{2, 4 * size_t(n / 2) * k.srcBytes, sign < 0};
      };
      const auto y = [&k, sign](int32_t n) { return Pitched{2, size_t(n) * k.dstBytes, sign > 0}; };
      cases.push_back({std::string("Packed") + k.name + dir,
                       [=](int32_t n) { return Sizes{s(n).size()}; },
                       [=, &k](int32_t n) {
                         const size_t c = size_t(n / 2) * k.dstBytes;
                         return Sizes{y(n).size(), c, c};
                       },
                       [=, &t, &k](Args a, int32_t n) { k.call(t, a, y(n), s(n), n); },
                       [=, &k](Rows &out, const Rows &in, int32_t n) {
                         const PairSlots slot(k.order);
                         const auto at = [&](int r, int64_t p, int which) {
                           return Get(in[0], s(n), r, 4 * p + which, k.srcBytes) >> k.down;
                         };
                         for (int64_t p = 0; p < n / 2; ++p) {
                           for (int r = 0; r < 2; ++r) {
                             Put(out[0], y(n), r, 2 * p, k.dstBytes, at(r, p, slot.y0));
                             Put(out[0], y(n), r, 2 * p + 1, k.dstBytes, at(r, p, slot.y1));
                           }
                           PutSample(out[1], p, k.dstBytes,
                                     (3 * at(0, p, slot.u) + at(1, p, slot.u) + k.round) >> 2);
                           PutSample(out[2], p, k.dstBytes,
                                     (3 * at(0, p, slot.v) + at(1, p, slot.v) + k.round) >> 2);
                         }
                       }});
    }
  }
  return cases;
}

TQCS_KERNEL_SUITE(ChromaRows, OnEveryLevel(RowCases), 1, 2, 3, 5, 6, 8, 16, 31, 33);

// ---- whole planes ----------------------------------------------------------
// The progressive up rule over chroma rows F(0..n-1): destination row j of 2n.
uint32_t UpRule(const std::function<uint32_t(int64_t)> &F, int64_t n, int64_t j, bool ten) {
  const int64_t c = j / 2;
  const bool even = j % 2 == 0;
  if (even ? c == 0 : c == n - 1) return ten ? F(c) >> 6 << 6 : F(c);
  auto w = ten ? W10 : W8;
  return even ? w(7, F(c), 1, F(c - 1)) : w(5, F(c), 3, F(c + 1));
}

// One case per depth, direction, field mode, flip and width; the count is the
// height. Chroma rows hold width / 2 samples.
std::vector<KernelCase> FrameCases() {
  tqcs::BuildColorSpaceAPI();
  std::vector<KernelCase> cases;
  for (int bytes : {1, 2})
    for (bool up : {false, true})
      for (bool interlaced : {false, true})
        for (bool flip : {false, true})
          for (int32_t width : {1, 2, 7, 12}) {
            const size_t cw = size_t(width / 2) * bytes;
            const auto src = [=](int32_t h) { return Pitched{up ? h / 2 : h, cw}; };
            const auto dst = [=](int32_t h) { return Pitched{up ? h : h / 2, cw, flip}; };
            cases.push_back(
                {std::string(up ? "Up" : "Down") + (bytes == 2 ? "16" : "8") +
                     (interlaced ? "_Fields" : "_Frame") + (flip ? "_Flip" : "") + "_W" +
                     std::to_string(width),
                 [=](int32_t h) { return Sizes(2, src(h).size()); },
                 [=](int32_t h) { return Sizes(2, dst(h).size()); },
                 [=](Args a, int32_t h) {
                   const T &t = tqcs::Kernels();
                   const int64_t sp = src(h).pitch(), dp = Pitched{dst(h).rows, cw}.pitch();
                   if (bytes == 1)
                     (up ? t.YUV420_2_YUV422_UV_Frame : t.YUV422_2_YUV420_UV_Frame)(
                         a.out[0], dp, a.out[1], dp, a.in[0], sp, a.in[1], sp, width, h, interlaced,
                         flip);
                   else
                     (up ? t.YUV420_16_2_YUV422_16_UV_Frame : t.YUV422_16_2_YUV420_16_UV_Frame)(
                         a.out[0], dp, a.out[1], dp, a.in[0], sp, a.in[1], sp, width, h, interlaced,
                         flip);
                 },
                 [=](Rows &out, const Rows &in, int32_t h) {
                   const bool ten = bytes == 2;
                   for (int k = 0; k < 2; ++k)
                     for (int64_t i = 0; i < width / 2; ++i) {
                       const auto S = [&](int64_t r) {
                         return Get(in[k], src(h), int(r), i, bytes);
                       };
                       const auto M = [&](int64_t a, int64_t b) {
                         return ten ? M10(S(a), S(b)) : M8(S(a), S(b));
                       };
                       // Destination row r as the routine sees it: flipped planes are walked from
                       // their last row.
                       const auto put = [&](int64_t r, uint32_t v) {
                         Put(out[k], dst(h), int(r), i, bytes, v);
                       };
                       const int64_t g = h >> 2;
                       if (up && !interlaced) {
                         for (int64_t r = 0; r < 2 * (h / 2); ++r) put(r, UpRule(S, h / 2, r, ten));
                       } else if (up) {
                         // Top field: rows 2i of the 4:2:0 plane; bottom field: rows 2i + 1,
                         // upsampled as the top field turned upside down.
                         for (int64_t r = 0; r < 4 * g; ++r)
                           put(r, r % 2
                                      ? UpRule([&](int64_t f) { return S(2 * (g - 1 - f) + 1); }, g,
                                               2 * g - 1 - r / 2, ten)
                                      : UpRule([&](int64_t f) { return S(2 * f); }, g, r / 2, ten));
                         for (int64_t r = 4 * g; (h & 2) && r < 4 * g + 2; ++r)
                           put(r, ten ? S(2 * g) >> 6 << 6 : S(2 * g));
                       } else if (!interlaced) {
                         for (int64_t c = 0; c < h / 2; ++c) put(c, M(2 * c, 2 * c + 1));
                       } else {
                         for (int64_t q = 0; q < g; ++q)
                           put(2 * q, M(4 * q, 4 * q + 2)), put(2 * q + 1, M(4 * q + 3, 4 * q + 1));
                         if (h & 2) put(2 * g, M(4 * g, 4 * g + 1));
                       }
                     }
                 }});
          }
  return cases;
}

TQCS_KERNEL_SUITE(ChromaFrames, FrameCases(), 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 14, 18);

}  // namespace
