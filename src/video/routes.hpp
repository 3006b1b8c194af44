// The format codes of the dispatcher (slots 0 to 2 and 16 to 18 of the general
// table) and its route table: which operation each pair of codes reaches, and
// with which options. The dispatcher runs these routes; its tests check each
// one against a direct call of the operation it names.
#pragma once

#include <array>
#include <cstdint>

namespace tqcs::video {

// ---------------------------------------------------------------------------
// Format codes 0 to 10.

inline constexpr int32_t kFormatCount = 11;
inline constexpr int32_t kYUV16Swap = 7, kYUV422 = 8, kYUV420 = 9;

// Bytes a pixel of each code (a plane's byte per sample for the planar ones).
inline constexpr int32_t kBytesPerPixel[kFormatCount] = {4, 4, 4, 3, 3, 3, 2, 2, 1, 1, 1};

constexpr bool Known(int32_t code) { return static_cast<uint32_t>(code) < kFormatCount; }
constexpr bool Planar(int32_t code) { return code == kYUV422 || code == kYUV420; }
// Codes 0 and 3 hold B, G, R: the drivers' channel-order flag is set for them.
constexpr bool BlueFirst(int32_t code) { return code == 0 || code == 3; }

// ---------------------------------------------------------------------------
// Routes.

enum class Kind : uint8_t {
  kRefuse,      // Alpha to any other code: result 0, nothing written
  kCopy,        // equal codes: rows copied, plane by plane for 8 and 9
  kFill,        // to Alpha from a source without alpha: 255 everywhere
  kDriver,      // a driver triple: slot n, n + 1 for the split, n + 2 to compose
  kLumaChroma,  // 4:2:2 <-> 4:2:0: luma copied, chroma through the _UV triple
};

// The options a driver takes after width and height, in its order.
enum class Extra : uint8_t {
  kMatrix,        // the caller's matrix selector, unchanged
  kOrderOfSrc,    // channel order of the source: 1 for codes 0 and 3
  kOrderOfDst,    // the same for the destination
  kPackingOfSrc,  // packed 4:2:2 order: 1 for code 7
  kPackingOfDst,
  kSwap,          // 1 when the red/blue orders of the two codes differ
  kNoSwap,        // 0
  kAlpha,         // 255, the alpha of a source that has none
  kAlphaChannel,  // 3, the alpha byte of a 32-bit pixel
};

// The value an option takes for a pair of codes and the caller's matrix.
constexpr int32_t OptionValue(Extra e, int32_t srcCode, int32_t dstCode, int32_t matrix) {
  switch (e) {
    case Extra::kMatrix:
      return matrix;
    case Extra::kOrderOfSrc:
      return BlueFirst(srcCode);
    case Extra::kOrderOfDst:
      return BlueFirst(dstCode);
    case Extra::kPackingOfSrc:
      return srcCode == kYUV16Swap;
    case Extra::kPackingOfDst:
      return dstCode == kYUV16Swap;
    case Extra::kSwap:
      return BlueFirst(srcCode) != BlueFirst(dstCode);
    case Extra::kNoSwap:
      return 0;
    case Extra::kAlpha:
      return 255;
    case Extra::kAlphaChannel:
      return 3;
  }
  return 0;
}

struct Route {
  Kind kind = Kind::kRefuse;
  int8_t table = 0;  // position of the driver's sub-table in the root
  int8_t slot = 0;   // the triple's _Frame slot
  uint8_t extraCount = 0;
  std::array<Extra, 4> extras{};
};

// The table's shorthand.
namespace route_shorthand {

template <class... E>
constexpr Route Drv(int table, int slot, E... extras) {
  return {Kind::kDriver,
          static_cast<int8_t>(table),
          static_cast<int8_t>(slot),
          static_cast<uint8_t>(sizeof...(E)),
          {extras...}};
}
constexpr Route UV(int table) { return {Kind::kLumaChroma, static_cast<int8_t>(table), 18}; }

constexpr Route Cp{Kind::kCopy};
constexpr Route Fl{Kind::kFill};
constexpr Route No{};

// Root positions of the driver sub-tables.
enum : int { kGen = 0, kR32 = 1, kR24 = 2, kYA = 3, kY16 = 4, kY422 = 5, kY420 = 6, kYUV = 7 };

constexpr Extra M = Extra::kMatrix, OS = Extra::kOrderOfSrc, OD = Extra::kOrderOfDst,
                PS = Extra::kPackingOfSrc, PD = Extra::kPackingOfDst, SW = Extra::kSwap,
                NS = Extra::kNoSwap, A = Extra::kAlpha, CH = Extra::kAlphaChannel;

// Source code by row, destination code by column. The empty-stub slots
// (RGB32 to YUV, YUVA to YUV420, YUV422 to YUV) are routed like any driver:
// they write nothing and the call reports success.
// clang-format off
inline constexpr Route kRoutes[kFormatCount][kFormatCount] = {
  /* 0 RGB32 */ {Cp, Drv(kR32, 0), Drv(kR32, 3, M, OS), Drv(kGen, 9, SW), Drv(kGen, 9, SW),
                 Drv(kR32, 15, M, OS), Drv(kR32, 6, M, PD, OS), Drv(kR32, 6, M, PD, OS),
                 Drv(kR32, 9, M, OS), Drv(kR32, 12, M, OS), Drv(kGen, 3, CH)},
  /* 1 RGB32_Swap */ {Drv(kR32, 0), Cp, Drv(kR32, 3, M, OS), Drv(kGen, 9, SW), Drv(kGen, 9, SW),
                 Drv(kR32, 15, M, OS), Drv(kR32, 6, M, PD, OS), Drv(kR32, 6, M, PD, OS),
                 Drv(kR32, 9, M, OS), Drv(kR32, 12, M, OS), Drv(kGen, 3, CH)},
  /* 2 YUVA */  {Drv(kYA, 0, M, OD), Drv(kYA, 0, M, OD), Cp, Drv(kYA, 3, M, OD),
                 Drv(kYA, 3, M, OD), Drv(kGen, 9, NS), Drv(kYA, 6, PD), Drv(kYA, 6, PD),
                 Drv(kYA, 9), Drv(kYA, 12), Drv(kGen, 3, CH)},
  /* 3 RGB24 */ {Drv(kGen, 6, SW, A), Drv(kGen, 6, SW, A), Drv(kR24, 3, M, OS, A), Cp,
                 Drv(kR24, 0), Drv(kR24, 15, M, OS), Drv(kR24, 6, M, PD, OS),
                 Drv(kR24, 6, M, PD, OS), Drv(kR24, 9, M, OS), Drv(kR24, 12, M, OS), Fl},
  /* 4 RGB24_Swap */ {Drv(kGen, 6, SW, A), Drv(kGen, 6, SW, A), Drv(kR24, 3, M, OS, A),
                 Drv(kR24, 0), Cp, Drv(kR24, 15, M, OS), Drv(kR24, 6, M, PD, OS),
                 Drv(kR24, 6, M, PD, OS), Drv(kR24, 9, M, OS), Drv(kR24, 12, M, OS), Fl},
  /* 5 YUV */   {Drv(kYUV, 0, M, OD, A), Drv(kYUV, 0, M, OD, A), Drv(kGen, 6, NS, A),
                 Drv(kYUV, 3, M, OD), Drv(kYUV, 3, M, OD), Cp, Drv(kYUV, 6, PD), Drv(kYUV, 6, PD),
                 Drv(kYUV, 9), Drv(kYUV, 12), Fl},
  /* 6 YUV16 */ {Drv(kY16, 3, M, OD, PS, A), Drv(kY16, 3, M, OD, PS, A), Drv(kY16, 9, PS, A),
                 Drv(kY16, 6, M, OD, PS), Drv(kY16, 6, M, OD, PS), Drv(kY16, 18, PS), Cp,
                 Drv(kY16, 0), Drv(kY16, 12, PS), Drv(kY16, 15, PS), Fl},
  /* 7 YUV16_Swap */ {Drv(kY16, 3, M, OD, PS, A), Drv(kY16, 3, M, OD, PS, A),
                 Drv(kY16, 9, PS, A), Drv(kY16, 6, M, OD, PS), Drv(kY16, 6, M, OD, PS),
                 Drv(kY16, 18, PS), Drv(kY16, 0), Cp, Drv(kY16, 12, PS), Drv(kY16, 15, PS), Fl},
  /* 8 YUV422 */ {Drv(kY422, 0, M, OD, A), Drv(kY422, 0, M, OD, A), Drv(kY422, 6, A),
                 Drv(kY422, 3, M, OD), Drv(kY422, 3, M, OD), Drv(kY422, 15), Drv(kY422, 9, PD),
                 Drv(kY422, 9, PD), Cp, UV(kY422), Fl},
  /* 9 YUV420 */ {Drv(kY420, 0, M, OD, A), Drv(kY420, 0, M, OD, A), Drv(kY420, 6, A),
                 Drv(kY420, 3, M, OD), Drv(kY420, 3, M, OD), Drv(kY420, 15), Drv(kY420, 9, PD),
                 Drv(kY420, 9, PD), UV(kY420), Cp, Fl},
  /* 10 Alpha */ {No, No, No, No, No, No, No, No, No, No, Cp},
};
// clang-format on

}  // namespace route_shorthand

using route_shorthand::kRoutes;

}  // namespace tqcs::video
