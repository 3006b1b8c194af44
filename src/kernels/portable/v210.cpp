// V210 row kernels: packed 4:2:2 with three 10-bit components per 32-bit
// little-endian word (bits 0-9, 10-19, 20-29; bits 30-31 zero).
//
// A group of six pixels fills four words: (U0 Y0 V0) (Y1 U1 Y2) (V1 Y3 U2)
// (Y4 V2 Y5). Read as one stream of components that is simply U Y V Y order,
// three to a word, so component c of the row sits in word c / 3, field c % 3.
// The packed side is read and written by pair, in either order.
//
// Row extent: these kernels work on pixel pairs. count / 2 pairs are
// converted (a count below 2 does nothing; the odd last pixel is not
// converted, as for every packed 4:2:2 reader). Those pairs carry
// 4 * (count / 2) components, i.e. ceil(4 * (count / 2) / 3) words: a writer
// stores exactly those words, with the unused fields of the last one zero, and
// leaves the rest of a partial six-pixel group untouched; a reader reads no
// word beyond them.
#include "kernels/kernel_slots.hpp"
#include "kernels/portable/pixels.hpp"

namespace tqcs::portable {
namespace {

// 16-bit samples hold the 10-bit value in bits 6-15; 8-bit samples hold its
// upper eight bits (the two low bits are truncated on the way down). kFrom10
// moves a 10-bit value into a Sample, kTo10 a Sample to its 10-bit value.
template <class Sample>
constexpr int kFrom10 = sizeof(Sample) == 2 ? 6 : -2;
template <class Sample>
constexpr int kTo10 = -kFrom10<Sample>;

template <class Sample, class Order>
void V210ToPacked(Sample *dst, const uint8_t *src, int32_t count) {
  MovePairs<kFrom10<Sample>>(PackedWriter<Order, Sample>{dst}, V210Reader{src}, count);
}

template <class Sample, class Order>
void PackedToV210(uint8_t *dst, const Sample *src, int32_t count) {
  WriteV210<kTo10<Sample>>(dst, PackedReader<Order, Sample>{src}, count);
}

}  // namespace

void V210_2_YUYV16_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  V210ToPacked<uint16_t, YUYV>(dst, src, count);
}
void V210_2_UYVY16_Row(uint16_t *dst, const uint8_t *src, int32_t count) {
  V210ToPacked<uint16_t, UYVY>(dst, src, count);
}
void YUYV16_2_V210_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  PackedToV210<uint16_t, YUYV>(dst, src, count);
}
void UYVY16_2_V210_Row(uint8_t *dst, const uint16_t *src, int32_t count) {
  PackedToV210<uint16_t, UYVY>(dst, src, count);
}

// The 8-bit pair: the plain form speaks YUYV, the B form UYVY.
void V210_2_YUV8_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  V210ToPacked<uint8_t, YUYV>(dst, src, count);
}
void V210_2_YUV8_B_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  V210ToPacked<uint8_t, UYVY>(dst, src, count);
}
void YUV8_2_V210_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  PackedToV210<uint8_t, YUYV>(dst, src, count);
}
void YUV8_2_V210_B_Row(uint8_t *dst, const uint8_t *src, int32_t count) {
  PackedToV210<uint8_t, UYVY>(dst, src, count);
}

}  // namespace tqcs::portable
