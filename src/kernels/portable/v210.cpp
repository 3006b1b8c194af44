// V210 row kernels: packed 4:2:2 with three 10-bit components per 32-bit
// little-endian word (bits 0-9, 10-19, 20-29; bits 30-31 zero).
//
// A group of six pixels fills four words: (U0 Y0 V0) (Y1 U1 Y2) (V1 Y3 U2)
// (Y4 V2 Y5). Read as one stream of components that is simply U Y V Y order,
// three to a word, so component c of the row sits in word c / 3, field c % 3.
// The YUYV order is the same stream with the two bytes/samples of every pair
// of components exchanged (c ^ 1), which is all that tells the two packed
// orders apart here.
//
// Row extent: these kernels work on pixel pairs. count / 2 pairs are
// converted (a count below 2 does nothing; the odd last pixel is not
// converted, as for every packed 4:2:2 reader). Those pairs carry
// 4 * (count / 2) components, i.e. ceil(4 * (count / 2) / 3) words: a writer
// stores exactly those words, with the unused fields of the last one zero, and
// leaves the rest of a partial six-pixel group untouched; a reader reads no
// word beyond them.
#include "kernels/kernel_slots.hpp"

namespace tqcs::portable {
namespace {

// The packed order of the non-V210 side: UYVY matches the V210 stream.
enum class Order : uint32_t { YUYV = 1, UYVY = 0 };

uint32_t LoadWord(const uint8_t *p) {
  return uint32_t{p[0]} | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16 | uint32_t{p[3]} << 24;
}

void StoreWord(uint8_t *p, uint32_t w) {
  p[0] = static_cast<uint8_t>(w);
  p[1] = static_cast<uint8_t>(w >> 8);
  p[2] = static_cast<uint8_t>(w >> 16);
  p[3] = static_cast<uint8_t>(w >> 24);
}

// 16-bit samples hold the 10-bit value in bits 6-15; 8-bit samples hold its
// upper eight bits (the two low bits are truncated on the way down).
uint32_t To10(uint16_t s) { return uint32_t{s} >> 6; }
uint32_t To10(uint8_t s) { return uint32_t{s} << 2; }
template <class Sample>
Sample From10(uint32_t v);
template <>
uint16_t From10<uint16_t>(uint32_t v) {
  return static_cast<uint16_t>(v << 6);
}
template <>
uint8_t From10<uint8_t>(uint32_t v) {
  return static_cast<uint8_t>(v >> 2);
}

// Number of components the row's whole pairs carry (64-bit: a whole image may
// be one row).
int64_t Components(int32_t count) { return count < 2 ? 0 : int64_t{count / 2} * 4; }

template <class Sample, Order order>
void V210ToPacked(Sample *dst, const uint8_t *src, int32_t count) {
  const int64_t swap = static_cast<int64_t>(order);
  const int64_t components = Components(count);
  for (int64_t c = 0; c < components; c += 3, src += 4) {
    const uint32_t w = LoadWord(src);
    const int fields = components - c < 3 ? static_cast<int>(components - c) : 3;
    for (int f = 0; f < fields; ++f) {
      const int64_t k = (c + f) ^ swap;
      dst[k] = From10<Sample>((w >> (10 * f)) & 0x3FF);
    }
  }
}

template <class Sample, Order order>
void PackedToV210(uint8_t *dst, const Sample *src, int32_t count) {
  const int64_t swap = static_cast<int64_t>(order);
  const int64_t components = Components(count);
  for (int64_t c = 0; c < components; c += 3, dst += 4) {
    const int fields = components - c < 3 ? static_cast<int>(components - c) : 3;
    uint32_t w = 0;
    for (int f = 0; f < fields; ++f) {
      const int64_t k = (c + f) ^ swap;
      w |= (To10(src[k]) & 0x3FF) << (10 * f);
    }
    StoreWord(dst, w);
  }
}

}  // namespace

void V210_2_YUYV16_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  V210ToPacked<uint16_t, Order::YUYV>(dst, src, count);
}
void V210_2_UYVY16_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  V210ToPacked<uint16_t, Order::UYVY>(dst, src, count);
}
void YUYV16_2_V210_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  PackedToV210<uint16_t, Order::YUYV>(dst, src, count);
}
void UYVY16_2_V210_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  PackedToV210<uint16_t, Order::UYVY>(dst, src, count);
}

// The 8-bit pair: the plain form speaks YUYV, the B form UYVY.
void V210_2_YUV8_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  V210ToPacked<uint8_t, Order::YUYV>(dst, src, count);
}
void V210_2_YUV8_B_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  V210ToPacked<uint8_t, Order::UYVY>(dst, src, count);
}
void YUV8_2_V210_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  PackedToV210<uint8_t, Order::YUYV>(dst, src, count);
}
void YUV8_2_V210_B_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  PackedToV210<uint8_t, Order::UYVY>(dst, src, count);
}

}  // namespace tqcs::portable
