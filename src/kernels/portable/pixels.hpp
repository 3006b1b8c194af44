// Helpers shared by the portable kernels: sample access on unaligned rows,
// byte-offset row steps, clamps and depth shifts, the sample positions of
// packed 4:2:2 pairs with readers and writers for every 4:2:2 layout, alpha
// sources, the 24/32/48/64-bit RGB repack, and the V210 word stream.
//
// Internal to src/kernels/portable: inline functions and templates only, so
// every kernel file may include it. The arithmetic that tells the kernels
// apart (rounding or truncation, which tail is written) stays in the kernel
// files; what lives here is what they all do the same way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace tqcs::portable {

// Sample, pixel and pair indices. Signed, so a count below 1 ends a loop
// before it starts.
using Index = std::ptrdiff_t;

// ---- Sample access ---------------------------------------------------------
// Rows may start at any address, so samples go through memcpy.

template <class T>
inline T Load(const T *row, Index i) {
  T v;
  std::memcpy(&v, reinterpret_cast<const unsigned char *>(row) + i * Index{sizeof(T)}, sizeof v);
  return v;
}

// Stores v as a T with a plain truncating cast: a wider value keeps its low
// bits.
template <class T, class V>
inline void Store(T *row, Index i, V v) {
  static_assert(std::is_integral_v<V>);
  const T s = static_cast<T>(v);
  std::memcpy(reinterpret_cast<unsigned char *>(row) + i * Index{sizeof(T)}, &s, sizeof s);
}

// The row `bytes` away: pitches are byte offsets, for 16-bit samples too.
template <class T>
inline T *Step(T *row, int64_t bytes) {
  using Byte = std::conditional_t<std::is_const_v<T>, const unsigned char, unsigned char>;
  return reinterpret_cast<T *>(reinterpret_cast<Byte *>(row) + bytes);
}

// ---- Values ------------------------------------------------------------------

// v limited to 0..hi.
inline int32_t Clamp(int32_t v, int32_t hi) { return v < 0 ? 0 : (v > hi ? hi : v); }

inline uint8_t Clamp8(int32_t v) { return static_cast<uint8_t>(Clamp(v, 255)); }

// A depth change: left by kShift bits when positive, right when negative.
template <int kShift>
inline uint32_t ShiftBy(uint32_t v) {
  if constexpr (kShift >= 0) {
    return v << kShift;
  } else {
    return v >> -kShift;
  }
}

// The successor of i among n (pairs, groups, samples); the last one has none
// and stands for itself.
inline Index NextOrLast(Index i, Index n) { return i + 1 < n ? i + 1 : i; }

// ---- Packed 4:2:2 pairs ------------------------------------------------------

// Positions of the four samples of a packed pair.
struct YUYV {
  static constexpr int kY0 = 0, kU = 1, kY1 = 2, kV = 3;
};
struct UYVY {
  static constexpr int kY0 = 1, kU = 0, kY1 = 3, kV = 2;
};

// 4:2:2 readers, by pair p: the luma of its two pixels and its chroma.
template <class Order, class T = uint8_t>
struct PackedReader {
  const T *src;
  T Y0(Index p) const { return Load(src, 4 * p + Order::kY0); }
  T Y1(Index p) const { return Load(src, 4 * p + Order::kY1); }
  T U(Index p) const { return Load(src, 4 * p + Order::kU); }
  T V(Index p) const { return Load(src, 4 * p + Order::kV); }
};

template <class T = uint8_t>
struct PlanarReader {
  const T *y, *u, *v;
  T Y0(Index p) const { return Load(y, 2 * p); }
  T Y1(Index p) const { return Load(y, 2 * p + 1); }
  T U(Index p) const { return Load(u, p); }
  T V(Index p) const { return Load(v, p); }
};

template <class T>
PlanarReader(const T *, const T *, const T *) -> PlanarReader<T>;

// Sample c of a reader's row read as one stream of pairs laid out in Order.
template <class Order, class Reader>
inline auto PairSample(const Reader &src, Index c) {
  const Index p = c / 4;
  const int at = static_cast<int>(c % 4);
  if (at == Order::kY0) return src.Y0(p);
  if (at == Order::kU) return src.U(p);
  if (at == Order::kY1) return src.Y1(p);
  return src.V(p);
}

// 4:2:2 writers. Pair stores a whole pair; Tail stores a lone last pixel.
template <class Order, class T = uint8_t>
struct PackedWriter {
  T *dst;
  void Pair(Index p, uint32_t y0, uint32_t u, uint32_t y1, uint32_t v) const {
    Store(dst, 4 * p + Order::kY0, y0);
    Store(dst, 4 * p + Order::kU, u);
    Store(dst, 4 * p + Order::kY1, y1);
    Store(dst, 4 * p + Order::kV, v);
  }
  // A lone last pixel becomes a whole pair carrying its own luma twice.
  void Tail(Index p, uint32_t y, uint32_t u, uint32_t v) const { Pair(p, y, u, y, v); }
};

template <class T = uint8_t>
struct PlanarWriter {
  T *y, *u, *v;
  void Pair(Index p, uint32_t y0, uint32_t cu, uint32_t y1, uint32_t cv) const {
    Store(y, 2 * p, y0);
    Store(y, 2 * p + 1, y1);
    Store(u, p, cu);
    Store(v, p, cv);
  }
  // The chroma rows hold count / 2 samples: a lone last pixel has its luma only.
  void Tail(Index p, uint32_t luma, uint32_t, uint32_t) const { Store(y, 2 * p, luma); }
};

template <class T>
PlanarWriter(T *, T *, T *) -> PlanarWriter<T>;

// count / 2 whole pairs from one 4:2:2 layout to another, every sample
// shifted by kShift (left when positive) and stored with a truncating cast.
// An odd last pixel is not written. Each pair is read whole before it is
// written.
template <int kShift = 0, class Writer, class Reader>
void MovePairs(Writer dst, Reader src, int32_t count) {
  const Index pairs = count / 2;
  for (Index p = 0; p < pairs; ++p) {
    dst.Pair(p, ShiftBy<kShift>(src.Y0(p)), ShiftBy<kShift>(src.U(p)), ShiftBy<kShift>(src.Y1(p)),
             ShiftBy<kShift>(src.V(p)));
  }
}

struct Chroma {
  uint32_t u, v;
};

// Full-resolution pixels to 4:2:2: luma(i) of every pixel, the chroma(i) of
// each pair's even pixel (the odd pixel's is dropped). With an odd count the
// last pixel goes to the writer's tail.
template <class Writer, class Luma, class ChromaOf>
void PixelsTo422(Writer dst, int32_t count, Luma luma, ChromaOf chroma) {
  if (count < 1) return;
  const Index pairs = count / 2;
  for (Index p = 0; p < pairs; ++p) {
    const Chroma c = chroma(2 * p);
    dst.Pair(p, luma(2 * p), c.u, luma(2 * p + 1), c.v);
  }
  if (count & 1) {
    const Chroma c = chroma(2 * pairs);
    dst.Tail(pairs, luma(2 * pairs), c.u, c.v);
  }
}

// Two 4:2:2 rows to 4:2:0: the luma of both (to dstY and dstY + dstYPitch),
// each sample through Rule::Luma, and one chroma row from the two rows'
// chroma through Rule::Chroma(top, bottom). count / 2 whole pairs: an odd
// last pixel is not written.
template <class Rule, class D, class Reader>
void RowsTo420(D *dstY, int64_t dstYPitch, D *dstU, D *dstV, Reader top, Reader bottom,
               int32_t count) {
  D *dstY2 = Step(dstY, dstYPitch);
  const Index pairs = count / 2;
  for (Index p = 0; p < pairs; ++p) {
    Store(dstY, 2 * p, Rule::Luma(top.Y0(p)));
    Store(dstY, 2 * p + 1, Rule::Luma(top.Y1(p)));
    Store(dstY2, 2 * p, Rule::Luma(bottom.Y0(p)));
    Store(dstY2, 2 * p + 1, Rule::Luma(bottom.Y1(p)));
    Store(dstU, p, Rule::Chroma(top.U(p), bottom.U(p)));
    Store(dstV, p, Rule::Chroma(top.V(p), bottom.V(p)));
  }
}

// The 3:1 rule of two rows: every sample shifted right by kDown first, the
// chroma (3 top + bottom + kRound) >> 2.
template <int kDown, int kRound>
struct Weigh31 {
  static uint32_t Luma(uint32_t s) { return s >> kDown; }
  static uint32_t Chroma(uint32_t a, uint32_t b) {
    return (3 * (a >> kDown) + (b >> kDown) + kRound) >> 2;
  }
};

// ---- Alpha sources -------------------------------------------------------------

struct NoAlpha {};

template <class T>
struct ConstAlpha {
  T value;
  T operator()(Index) const { return value; }
};

template <class T>
ConstAlpha(T) -> ConstAlpha<T>;

// One byte per pixel at a fixed stride: a key plane (1, 0), or byte 3 of
// 4-byte pixels (4, 3).
template <Index kStride = 1, Index kOffset = 0>
struct KeyAlpha {
  const uint8_t *key;
  uint8_t operator()(Index i) const { return key[kStride * i + kOffset]; }
};
KeyAlpha(const uint8_t *)->KeyAlpha<1, 0>;

// ---- RGB ------------------------------------------------------------------------

// Three Q14 weights applied to the first three samples of a pixel, in memory
// order.
struct Weights {
  int32_t w0, w1, w2;
  int32_t Dot(const uint8_t *s) const { return w0 * s[0] + w1 * s[1] + w2 * s[2]; }
};

// One luma byte per kBytes-byte pixel: elements 2, 3, 4 of the coefficient row
// weigh bytes 0, 1, 2, rounded (+8192 before >> 14) and clamped.
template <int kBytes>
void LumaRow(uint8_t *dst, const uint8_t *src, const int16_t *coef, int32_t count) {
  const Weights y{coef[2], coef[3], coef[4]};
  for (Index i = 0; i < count; ++i) dst[i] = Clamp8((y.Dot(src + kBytes * i) + 8192) >> 14);
}

// The chroma weights of a YUV to RGB matrix: R from V, G from U, G from V, B
// from U (Q14).
struct ChromaWeights {
  int32_t rv, gu, gv, bu;
};

// What each colour adds to Y for centred chroma u, v (or sums of two centred
// samples with a shift one larger). `add` is 8192 to round at a shift of 14,
// 0 to truncate.
struct Deltas {
  int32_t r, g, b;
};
inline Deltas ChromaDeltas(const ChromaWeights &k, int32_t u, int32_t v, int shift, int32_t add) {
  return {(k.rv * v + add) >> shift, (k.gu * u + k.gv * v + add) >> shift,
          (k.bu * u + add) >> shift};
}

// One pixel of kIn samples to kOut samples, every sample shifted by kShift
// (left when positive), samples 0 and 2 exchanged when kSwap. A fourth output
// sample is the source's own, shifted the same way, when the source has four;
// otherwise alpha(i) as it stands. The pixel is read whole before it is
// written, so a same-size repack may run in place.
template <int kIn, int kOut, int kShift, bool kSwap, class Out, class In, class Alpha>
inline void RepackPixel(Out *dst, const In *src, Index i, Alpha alpha) {
  const In *s = src + kIn * i;
  uint32_t c[4] = {ShiftBy<kShift>(Load(s, 0)), ShiftBy<kShift>(Load(s, 1)),
                   ShiftBy<kShift>(Load(s, 2)), 0};
  if constexpr (kOut == 4) {
    if constexpr (kIn == 4) {
      c[3] = ShiftBy<kShift>(Load(s, 3));
    } else {
      c[3] = alpha(i);
    }
  }
  Out *d = dst + kOut * i;
  Store(d, 0, c[kSwap ? 2 : 0]);
  Store(d, 1, c[1]);
  Store(d, 2, c[kSwap ? 0 : 2]);
  if constexpr (kOut == 4) Store(d, 3, c[3]);
}

template <int kIn, int kOut, int kShift, bool kSwap, class Out, class In, class Alpha = NoAlpha>
void RepackRgb(Out *dst, const In *src, int32_t count, Alpha alpha = {}) {
  for (Index i = 0; i < count; ++i) RepackPixel<kIn, kOut, kShift, kSwap>(dst, src, i, alpha);
}

// ---- V210 ---------------------------------------------------------------------
// Three 10-bit fields per little-endian 32-bit word (bits 0-9, 10-19, 20-29;
// bits 30-31 zero). Read as one stream, the fields of a row are its pairs in
// UYVY order, three to a word: component c is field c % 3 of word c / 3. A
// row of count / 2 pairs fills ceil(4 * (count / 2) / 3) words.

inline uint32_t LoadLE32(const uint8_t *p) {
  return uint32_t{p[0]} | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24;
}

inline void StoreLE32(uint8_t *p, uint32_t w) {
  p[0] = static_cast<uint8_t>(w);
  p[1] = static_cast<uint8_t>(w >> 8);
  p[2] = static_cast<uint8_t>(w >> 16);
  p[3] = static_cast<uint8_t>(w >> 24);
}

// A V210 row as a 4:2:2 reader of 10-bit values.
struct V210Reader {
  const uint8_t *src;
  uint32_t Field(Index c) const { return (LoadLE32(src + 4 * (c / 3)) >> (10 * (c % 3))) & 0x3FF; }
  uint32_t Y0(Index p) const { return Field(4 * p + UYVY::kY0); }
  uint32_t Y1(Index p) const { return Field(4 * p + UYVY::kY1); }
  uint32_t U(Index p) const { return Field(4 * p + UYVY::kU); }
  uint32_t V(Index p) const { return Field(4 * p + UYVY::kV); }
};

// Writes the words that carry the count / 2 pairs of src, every sample taken
// to its 10-bit value by kShift; the fields of the last word past the row's
// samples are zero, and no word beyond it is written.
template <int kShift, class Reader>
void WriteV210(uint8_t *dst, Reader src, int32_t count) {
  const Index components = 4 * Index{count / 2};
  for (Index c = 0; c < components; c += 3, dst += 4) {
    uint32_t w = 0;
    for (Index f = 0; f < 3 && c + f < components; ++f)
      w |= (ShiftBy<kShift>(PairSample<UYVY>(src, c + f)) & 0x3FF) << (10 * f);
    StoreLE32(dst, w);
  }
}

}  // namespace tqcs::portable
