// Deep-colour RGB repacks, portable tier: between 8-bit and 16-bit RGB
// layouts of three and four components, with depth changes and swaps of the
// first and third component.
//
// Working values: an 8-bit sample is used as it is; a 16-bit sample holds a
// 10-bit value in bits 6-15 (value = sample >> 6, stored back as value << 6).
// 16-bit samples are read and written through memcpy, so no pointer needs any
// alignment.
#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs::portable {
namespace {

// The key plane's bytes moved to 16 bits like the colour samples.
struct Key16 {
  const uint8_t *key;
  uint32_t operator()(Index i) const { return ShiftBy<8>(key[i]); }
};

}  // namespace

// ---------------------------------------------------------------- repacks
// RepackRgb<source samples, destination samples, shift, swap>: 16 to 8 bits
// keeps the top byte, 8 to 16 bits moves a byte up, 16 to 10 bits keeps the
// 10 significant bits.

void RGB64_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<4, 4, -8, true>(dst, src, count);
}

void BGR32_2_RGB64_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  RepackRgb<4, 4, 8, true>(dst, src, count);
}

void RGB64_SwapRB_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<4, 4, 0, true>(dst, src, count);
}

// The three components copied; the added alpha is fully opaque (0xFFFF).
void RGB48_2_RGB64_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 4, 0, false>(dst, src, count, ConstAlpha<uint16_t>{0xFFFF});
}

void RGB48_2_BGR64_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 4, 0, true>(dst, src, count, ConstAlpha<uint16_t>{0xFFFF});
}

void RGB24_2_RGB48_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  RepackRgb<3, 3, 8, false>(dst, src, count);
}

void RGB24_2_BGR48_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  RepackRgb<3, 3, 8, true>(dst, src, count);
}

void RGB24_2_RGB64_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  RepackRgb<3, 4, 8, false>(dst, src, count, ConstAlpha<uint16_t>{0xFFA0});
}

void RGB24_2_BGR64_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  RepackRgb<3, 4, 8, true>(dst, src, count, ConstAlpha<uint16_t>{0xFFA0});
}

void RGB24_Key_2_RGB64_Row(uint16_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  RepackRgb<3, 4, 8, false>(dst, src, count, Key16{key});
}

void RGB24_Key_2_BGR64_Row(uint16_t *dst, const uint8_t *src, const uint8_t *key, int32_t count) {
  RepackRgb<3, 4, 8, true>(dst, src, count, Key16{key});
}

// The result of RGB24_2_RGB48_Row, nine samples (three pixels) per step and
// the remaining pixels one at a time.
void RGB24_2_RGB48_Expand_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  const Index n = count;
  Index i = 0;
  for (; i + 3 <= n; i += 3) {
    for (Index k = 3 * i; k < 3 * i + 9; ++k) Store(dst, k, ShiftBy<8>(Load(src, k)));
  }
  for (; i < n; ++i) RepackPixel<3, 3, 8, false>(dst, src, i, NoAlpha{});
}

// Each component reduced to its 10 significant bits, order kept.
void RGB48_2_RGB30_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 3, -6, false>(dst, src, count);
}

void RGB48_2_BGR24_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 3, -8, true>(dst, src, count);
}

void RGB48_2_RGB32_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 4, -8, false>(dst, src, count, ConstAlpha<uint8_t>{255});
}

void RGB48_2_BGR32_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 4, -8, true>(dst, src, count, ConstAlpha<uint8_t>{255});
}

void RGB48_2_RGB64_Opaque_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 4, 0, false>(dst, src, count, ConstAlpha<uint16_t>{0xFFA0});
}

void RGB48_2_BGR64_Opaque_Row(uint16_t *dst, const uint16_t *src, int32_t count) {
  RepackRgb<3, 4, 0, true>(dst, src, count, ConstAlpha<uint16_t>{0xFFA0});
}

}  // namespace tqcs::portable
