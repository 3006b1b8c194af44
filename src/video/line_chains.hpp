// The row layouts of the descriptor conversions and the kernels that join
// them, as data: a conversion between two layouts is the shortest chain of at
// most four kernels (most through one or two scratch rows) that never drops to
// 8 bits between two deeper ends and changes between YUV and RGB at most once.
// The chains are found here once, for the conversions and for the route
// matrix of docs/formats.md alike.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "base/formats.hpp"

namespace tqcs::video::lines {

// Row layouts, named by memory order. 4:2:0 formats convert row by row as
// their 4:2:2 layout, their chroma widened or merged around the chain.
enum class Line : uint8_t {
  kBGRA8,
  kRGBA8,
  kBGR8,
  kRGB8,
  kBGRA16,
  kRGBA16,
  kBGR16,
  kRGB16,
  kYUYV8,
  kUYVY8,
  kPlanar8,
  kSemi8,
  kYUYV16,
  kUYVY16,
  kV210,
  kPlanar16,
  kSemi16,
  kPlanarLow16,
  k8Plus2,
  kPlanar411,
  kCount
};
inline constexpr int kLineCount = static_cast<int>(Line::kCount);

struct LineInfo {
  Line line;
  int32_t code;  // the format whose rows have this layout (its PlaneRowBytes)
  bool rgb;
  bool deep;  // samples of more than 8 bits
  // A layout a chain may pass through: not the packings that hold only some
  // widths (V210 groups of six pixels, 8+2 runs) or are never written (4:1:1).
  bool between = true;
};

// clang-format off
inline constexpr std::array<LineInfo, kLineCount> kLines{{
    {Line::kBGRA8, TCS_FORMAT_RGB32, true, false},
    {Line::kRGBA8, TCS_FORMAT_RGB32_SWAP, true, false},
    {Line::kBGR8, TCS_FORMAT_RGB24, true, false},
    {Line::kRGB8, TCS_FORMAT_RGB24_SWAP, true, false},
    {Line::kBGRA16, TCS_FORMAT_RGB64, true, true},
    {Line::kRGBA16, TCS_FORMAT_RGB64_SWAP, true, true},
    {Line::kBGR16, TCS_FORMAT_RGB48, true, true},
    {Line::kRGB16, TCS_FORMAT_RGB48_SWAP, true, true},
    {Line::kYUYV8, TCS_FORMAT_YUV16, false, false},
    {Line::kUYVY8, TCS_FORMAT_YUV16_SWAP, false, false},
    {Line::kPlanar8, TCS_FORMAT_YUV422, false, false},
    {Line::kSemi8, TCS_FORMAT_NV16, false, false},
    {Line::kYUYV16, TCS_FORMAT_YUV16_10BIT, false, true},
    {Line::kUYVY16, TCS_FORMAT_YUV16_10BIT_SWAP, false, true},
    {Line::kV210, TCS_FORMAT_V210, false, true, false},
    {Line::kPlanar16, TCS_FORMAT_YUV422_10BIT, false, true},
    {Line::kSemi16, TCS_FORMAT_P210, false, true},
    {Line::kPlanarLow16, TCS_FORMAT_YUV422_10BIT_LOW, false, true},
    {Line::k8Plus2, TCS_FORMAT_YUV16_8PLUS2, false, true, false},
    {Line::kPlanar411, TCS_FORMAT_YUV411, false, false, false},
}};
// clang-format on

constexpr const LineInfo &InfoOf(Line l) { return kLines[static_cast<size_t>(l)]; }

// The format entry whose rows have a layout.
inline constexpr auto kLineFormats = [] {
  std::array<const FormatInfo *, kLineCount> formats{};
  for (size_t i = 0; i < formats.size(); ++i) formats[i] = FindFormat(kLines[i].code);
  return formats;
}();
constexpr const FormatInfo &FormatOf(Line l) { return *kLineFormats[static_cast<size_t>(l)]; }

// The row layout of a format code; none for the codes that only the 8-bit
// dispatcher converts (YUVA, packed 4:4:4, the key plane) and reserved codes.
constexpr std::optional<Line> LineOf(int32_t code) {
  for (const LineInfo &l : kLines)
    if (l.code == code) return l.line;
  switch (code) {
    case TCS_FORMAT_YUV420:
    case TCS_FORMAT_YUV420_FRAME:
      return Line::kPlanar8;
    case TCS_FORMAT_NV12:
    case TCS_FORMAT_NV12_FRAME:
      return Line::kSemi8;
    case TCS_FORMAT_YUV420_10BIT:
    case TCS_FORMAT_YUV420_10BIT_FRAME:
      return Line::kPlanar16;
    case TCS_FORMAT_P010:
    case TCS_FORMAT_P010_FRAME:
      return Line::kSemi16;
    case TCS_FORMAT_YUV420_10BIT_LOW:
    case TCS_FORMAT_YUV420_10BIT_LOW_FRAME:
      return Line::kPlanarLow16;
    default:
      return std::nullopt;
  }
}

// ---------------------------------------------------------------------------
// The kernels that join two layouts, with the coefficient rows a kernel takes
// when it converts between YUV and RGB: the deep kernels' two rows (10-bit
// arithmetic), or the 8-bit kernels' four YUV-to-RGB rows or three RGB-to-YUV
// rows, the layouts the frame drivers pass them.
enum class Coef : uint8_t { kNone, kDeep, kToRgb8, kToYuv8 };

struct Edge {
  Line from, to;
  Coef coef;
  constexpr bool Matrix() const { return coef != Coef::kNone; }
};

namespace edge_coef {
inline constexpr Coef N = Coef::kNone, D = Coef::kDeep, T8 = Coef::kToRgb8, Y8 = Coef::kToYuv8;
}

// The edges, in the order of preference between chains of equal length, each
// with how it runs (line_chains.cpp): K(kernel) calls a kernel slot with the
// row width as its count, K2 with twice the width (samples of a packed 4:2:2
// row), Chroma(kernel) copies luma and calls the kernel on the chroma planes
// with half the width, Each(move) applies a sample move to every plane, and
// Move(move) calls an internal routine like a slot.
// clang-format off
#define TQCS_LINE_EDGES(X)                                                                     \
  /* 8-bit RGB */                                                                              \
  X(kBGRA8, kRGBA8, N, K(RGB32_SwapRB_Row)) X(kRGBA8, kBGRA8, N, K(RGB32_SwapRB_Row))  \
  X(kBGR8, kBGRA8, N, K(RGB24_2_RGB32_Row)) X(kRGB8, kRGBA8, N, K(RGB24_2_RGB32_Row))  \
  X(kBGR8, kRGBA8, N, K(RGB24_2_BGR32_Row)) X(kRGB8, kBGRA8, N, K(RGB24_2_BGR32_Row))  \
  X(kBGRA8, kBGR8, N, K(RGB32_2_RGB24_Row)) X(kRGBA8, kRGB8, N, K(RGB32_2_RGB24_Row))  \
  X(kBGRA8, kRGB8, N, K(RGB32_2_BGR24_Row)) X(kRGBA8, kBGR8, N, K(RGB32_2_BGR24_Row))  \
  X(kBGR8, kRGB8, N, K(RGB24_SwapRB_Row)) X(kRGB8, kBGR8, N, K(RGB24_SwapRB_Row))      \
  /* 16-bit RGB */                                                                             \
  X(kBGRA16, kRGBA16, N, K(RGB64_SwapRB_Row)) X(kRGBA16, kBGRA16, N, K(RGB64_SwapRB_Row)) \
  X(kBGR16, kBGRA16, N, K(RGB48_2_RGB64_Row)) X(kRGB16, kRGBA16, N, K(RGB48_2_RGB64_Row)) \
  X(kBGR16, kRGBA16, N, K(RGB48_2_BGR64_Row)) X(kRGB16, kBGRA16, N, K(RGB48_2_BGR64_Row)) \
  X(kBGRA16, kBGR16, N, Move(DropFourth16<false>))                                         \
  X(kRGBA16, kRGB16, N, Move(DropFourth16<false>))                                         \
  X(kBGRA16, kRGB16, N, Move(DropFourth16<true>))                                          \
  X(kRGBA16, kBGR16, N, Move(DropFourth16<true>))                                          \
  /* RGB depth changes: a byte moves to the top of a sample, a sample keeps its top byte */    \
  X(kRGB8, kRGB16, N, K(RGB24_2_RGB48_Row)) X(kBGR8, kBGR16, N, K(RGB24_2_RGB48_Row))  \
  X(kRGB8, kBGR16, N, K(RGB24_2_BGR48_Row)) X(kBGR8, kRGB16, N, K(RGB24_2_BGR48_Row))  \
  X(kRGB8, kRGBA16, N, K(RGB24_2_RGB64_Row)) X(kBGR8, kBGRA16, N, K(RGB24_2_RGB64_Row)) \
  X(kRGB8, kBGRA16, N, K(RGB24_2_BGR64_Row)) X(kBGR8, kRGBA16, N, K(RGB24_2_BGR64_Row)) \
  X(kBGRA8, kRGBA16, N, K(BGR32_2_RGB64_Row)) X(kRGBA8, kBGRA16, N, K(BGR32_2_RGB64_Row)) \
  X(kRGBA16, kBGRA8, N, K(RGB64_2_BGR32_Row)) X(kBGRA16, kRGBA8, N, K(RGB64_2_BGR32_Row)) \
  X(kRGB16, kBGR8, N, K(RGB48_2_BGR24_Row)) X(kBGR16, kRGB8, N, K(RGB48_2_BGR24_Row))  \
  X(kRGB16, kRGBA8, N, K(RGB48_2_RGB32_Row)) X(kBGR16, kBGRA8, N, K(RGB48_2_RGB32_Row)) \
  X(kRGB16, kBGRA8, N, K(RGB48_2_BGR32_Row)) X(kBGR16, kRGBA8, N, K(RGB48_2_BGR32_Row)) \
  /* 16-bit YUV */                                                                             \
  X(kV210, kYUYV16, N, K(V210_2_YUYV16_Row)) X(kV210, kUYVY16, N, K(V210_2_UYVY16_Row)) \
  X(kYUYV16, kV210, N, K(YUYV16_2_V210_Row)) X(kUYVY16, kV210, N, K(UYVY16_2_V210_Row)) \
  X(kPlanar16, kYUYV16, N, K(YUV422_16_2_YUYV16_Row))                                      \
  X(kPlanar16, kUYVY16, N, K(YUV422_16_2_UYVY16_Row))                                      \
  X(kYUYV16, kPlanar16, N, K(YUYV16_2_YUV422_16_Row))                                      \
  X(kUYVY16, kPlanar16, N, K(UYVY16_2_YUV422_16_Row))                                      \
  X(kPlanar16, kSemi16, N, Chroma(InterleaveUV16))                                         \
  X(kSemi16, kPlanar16, N, Chroma(DeinterleaveUV16))                                       \
  X(kPlanar16, kPlanarLow16, N, Each(TopToLow10))                                          \
  X(kPlanarLow16, kPlanar16, N, Each(LowToHigh10))                                         \
  X(kPlanar16, k8Plus2, N, K(YUV422_16_2_YUYV_8Plus2_Row))                                 \
  X(kYUYV16, k8Plus2, N, K2(Split16To8Plus2_Row))                                          \
  X(k8Plus2, kYUYV16, N, K2(Join8Plus2To16_Row))                                           \
  /* 8-bit YUV */                                                                              \
  X(kPlanar8, kYUYV8, N, K(YUV422_2_YUYV_Row)) X(kPlanar8, kUYVY8, N, K(YUV422_2_UYVY_Row)) \
  X(kYUYV8, kPlanar8, N, K(YUYV_2_YUV422_Row)) X(kUYVY8, kPlanar8, N, K(UYVY_2_YUV422_Row)) \
  X(kPlanar8, kSemi8, N, Chroma(UV_Interleave_Row))                                        \
  X(kSemi8, kPlanar8, N, Chroma(UV_Deinterleave_Row))                                      \
  /* YUV depth changes: 16 to 8 bits keeps the top byte (a 10-bit v becomes v >> 2) */         \
  X(kYUYV16, kYUYV8, N, K(YUYV16_2_YUYV_Row)) X(kYUYV16, kUYVY8, N, K(YUYV16_2_UYVY_Row)) \
  X(kYUYV16, kPlanar8, N, K(YUYV16_2_YUV422_Row))                                          \
  X(kUYVY16, kPlanar8, N, K(UYVY16_2_YUV422_Row))                                          \
  X(kPlanar16, kYUYV8, N, K(YUV422_16_2_YUYV_Row))                                         \
  X(kPlanar16, kUYVY8, N, K(YUV422_16_2_UYVY_Row))                                         \
  X(kPlanar8, kYUYV16, N, K(YUV422_2_YUYV16_Row))                                          \
  X(kPlanar8, kUYVY16, N, K(YUV422_2_UYVY16_Row)) \
  X(kV210, kYUYV8, N, K(V210_2_YUV8_Row)) X(kV210, kUYVY8, N, K(V210_2_YUV8_B_Row))        \
  X(kYUYV8, kV210, N, K(YUV8_2_V210_Row)) X(kUYVY8, kV210, N, K(YUV8_2_V210_B_Row)) \
  /* YUV to RGB, 10-bit arithmetic */                                                          \
  X(kYUYV16, kRGBA16, D, K(YUYV16_2_RGB64_Row)) X(kYUYV16, kBGRA16, D, K(YUYV16_2_BGR64_Row)) \
  X(kUYVY16, kRGBA16, D, K(UYVY16_2_RGB64_Row)) X(kUYVY16, kBGRA16, D, K(UYVY16_2_BGR64_Row)) \
  X(kPlanar16, kRGBA16, D, K(YUV422_10Bit_2_RGB64_Row))                                     \
  X(kPlanar16, kBGRA16, D, K(YUV422_10Bit_2_BGR64_Row))                                     \
  X(kYUYV16, kRGBA8, D, K(YUYV16_2_RGB32_Row)) X(kYUYV16, kBGRA8, D, K(YUYV16_2_BGR32_Row)) \
  X(kUYVY16, kRGBA8, D, K(UYVY16_2_RGB32_Row)) X(kUYVY16, kBGRA8, D, K(UYVY16_2_BGR32_Row)) \
  X(kPlanar16, kRGBA8, D, K(YUV422_10Bit_2_RGB32_Row))                                      \
  X(kPlanar16, kBGRA8, D, K(YUV422_10Bit_2_BGR32_Row))                                      \
  X(kPlanar411, kRGBA8, D, K(YUV411_2_RGB32_Row))                                           \
  X(kPlanar411, kBGRA8, D, K(YUV411_2_BGR32_Row))                                           \
  /* RGB to YUV (the coefficient rows follow the source's channel order) */                    \
  X(kRGB16, kYUYV16, D, K(RGB48_2_YUYV16_Row)) X(kBGR16, kYUYV16, D, K(RGB48_2_YUYV16_Row)) \
  X(kRGB16, kUYVY16, D, K(RGB48_2_UYVY16_Row)) X(kBGR16, kUYVY16, D, K(RGB48_2_UYVY16_Row)) \
  X(kRGB16, kPlanar16, D, K(RGB48_2_YUV422_16_Row))                                         \
  X(kBGR16, kPlanar16, D, K(RGB48_2_YUV422_16_Row))                                         \
  X(kRGBA8, kYUYV16, D, K(RGB32_2_YUYV16_Row)) X(kBGRA8, kYUYV16, D, K(RGB32_2_YUYV16_Row)) \
  X(kRGBA8, kUYVY16, D, K(RGB32_2_UYVY16_Row)) X(kBGRA8, kUYVY16, D, K(RGB32_2_UYVY16_Row)) \
  X(kRGB8, kYUYV16, D, K(RGB24_2_YUYV16_Row)) X(kBGR8, kYUYV16, D, K(RGB24_2_YUYV16_Row)) \
  X(kRGB8, kUYVY16, D, K(RGB24_2_UYVY16_Row)) X(kBGR8, kUYVY16, D, K(RGB24_2_UYVY16_Row)) \
  /* 8-bit YUV to and from 8-bit RGB, 8-bit arithmetic as the frame drivers' */ \
  X(kPlanar8, kRGBA8, T8, K(YUV422_2_RGB32_Row)) X(kPlanar8, kBGRA8, T8, K(YUV422_2_BGR32_Row)) \
  X(kPlanar8, kRGB8, T8, K(YUV422_2_RGB24_Row)) X(kPlanar8, kBGR8, T8, K(YUV422_2_BGR24_Row)) \
  X(kYUYV8, kRGBA8, T8, K(YUYV_2_RGB32_Row)) X(kYUYV8, kBGRA8, T8, K(YUYV_2_BGR32_Row))     \
  X(kYUYV8, kRGB8, T8, K(YUYV_2_RGB24_Row)) X(kYUYV8, kBGR8, T8, K(YUYV_2_BGR24_Row))       \
  X(kUYVY8, kRGBA8, T8, K(UYVY_2_RGB32_Row)) X(kUYVY8, kBGRA8, T8, K(UYVY_2_BGR32_Row))     \
  X(kUYVY8, kRGB8, T8, K(UYVY_2_RGB24_Row)) X(kUYVY8, kBGR8, T8, K(UYVY_2_BGR24_Row))       \
  X(kRGBA8, kPlanar8, Y8, K(RGB32_2_YUV422_Row)) X(kBGRA8, kPlanar8, Y8, K(RGB32_2_YUV422_Row)) \
  X(kRGB8, kPlanar8, Y8, K(RGB24_2_YUV422_Row)) X(kBGR8, kPlanar8, Y8, K(RGB24_2_YUV422_Row))
// clang-format on

#define TQCS_LINE_EDGE_DATA(a, b, c, run) Edge{Line::a, Line::b, edge_coef::c},
inline constexpr Edge kEdges[] = {TQCS_LINE_EDGES(TQCS_LINE_EDGE_DATA)};
#undef TQCS_LINE_EDGE_DATA
inline constexpr int kEdgeCount = static_cast<int>(std::size(kEdges));

// A chain: up to four edges, by index into kEdges; no edges for equal
// layouts (the rows are copied).
inline constexpr int kMaxChain = 4;
struct Chain {
  std::array<int16_t, kMaxChain> edges{};
  int8_t length = 0;
  bool matrix = false;
};

namespace detail {

// Whether a chain from `from` to `to` may pass through `mid`: a layout that
// holds every width, no drop to 8 bits between two deeper ends, and no detour through the other
// colour model when both ends share one.
constexpr bool MayPass(Line from, Line to, Line mid) {
  const LineInfo &a = InfoOf(from), &b = InfoOf(to), &m = InfoOf(mid);
  if (!m.between || (a.deep && b.deep && !m.deep)) return false;
  return !(a.rgb == b.rgb && m.rgb != a.rgb);
}

// Breadth first from `from`, edges tried in table order: the shortest chain,
// the earlier edges preferred between chains of one length.
constexpr std::optional<Chain> Search(Line from, Line to) {
  if (from == to) return Chain{};
  std::array<int, kLineCount> via{}, depth{};
  via.fill(-1);
  depth.fill(-1);
  std::array<Line, kLineCount> queue{};
  int head = 0, tail = 0;
  queue[tail++] = from;
  depth[static_cast<size_t>(from)] = 0;
  while (head < tail) {
    const Line at = queue[head++];
    const int d = depth[static_cast<size_t>(at)];
    if (d == kMaxChain) continue;
    for (int i = 0; i < kEdgeCount; ++i) {
      const Edge &e = kEdges[i];
      const auto next = static_cast<size_t>(e.to);
      if (e.from != at || depth[next] >= 0 || (e.to != to && !MayPass(from, to, e.to))) continue;
      // A matrix works at the depth of the deeper end (4:1:1, which only
      // 8-bit matrices read, keeps the one way it has).
      if (e.Matrix() && e.from != Line::kPlanar411 &&
          ((InfoOf(to).deep && !InfoOf(e.to).deep) || (InfoOf(from).deep && !InfoOf(e.from).deep)))
        continue;
      depth[next] = d + 1;
      via[next] = i;
      queue[tail++] = e.to;
    }
  }
  int length = depth[static_cast<size_t>(to)];
  if (length < 0) return std::nullopt;
  Chain c;
  c.length = static_cast<int8_t>(length);
  for (Line at = to; at != from;) {
    const int i = via[static_cast<size_t>(at)];
    c.edges[static_cast<size_t>(--length)] = static_cast<int16_t>(i);
    c.matrix = c.matrix || kEdges[i].Matrix();
    at = kEdges[i].from;
  }
  return c;
}

}  // namespace detail

// The chain between two layouts, found once.
inline const std::optional<Chain> &ChainOf(Line from, Line to) {
  static const auto all = [] {
    std::array<std::array<std::optional<Chain>, kLineCount>, kLineCount> chains{};
    for (int a = 0; a < kLineCount; ++a)
      for (int b = 0; b < kLineCount; ++b)
        chains[a][b] = detail::Search(static_cast<Line>(a), static_cast<Line>(b));
    return chains;
  }();
  return all[static_cast<size_t>(from)][static_cast<size_t>(to)];
}

// The chain that converts rows of format `srcCode` to rows of `dstCode`, or
// none: a code without a row layout (reserved, or one only the 8-bit
// dispatcher converts), a destination that is read only, or layouts no chain
// joins.
inline const std::optional<Chain> &ChainOfCodes(int32_t srcCode, int32_t dstCode) {
  static const std::optional<Chain> kNone;
  const FormatInfo *d = FindFormat(dstCode);
  const auto from = LineOf(srcCode), to = LineOf(dstCode);
  if (!from || !to || d->sourceOnly) return kNone;
  return ChainOf(*from, *to);
}

// The 4:1:1 layout is read, never written, and converts to RGB only.
static_assert(!detail::Search(Line::kBGRA8, Line::kPlanar411));
static_assert(!detail::Search(Line::kPlanar411, Line::kPlanar8));
// Deep ends never meet through 8 bits.
static_assert(detail::Search(Line::kV210, Line::kRGB16)->length == 3);

}  // namespace tqcs::video::lines
