// The general operations besides the dispatcher: channel split, 24/32-bit
// repacking and their field forms, the format-free field split and compose,
// and range scaling. Geometry, pitches, options and flip from the input; every
// buffer exactly as large as its rows.
#include "fuzz/fuzz_support.hpp"

using namespace tqcs::fuzz;

namespace {

struct Image {
  std::unique_ptr<Buffer> buffer;
  int64_t pitch;
};

// `rows` rows of `rowBytes` bytes at a pitch of at least one row.
Image Make(FuzzedDataProvider &in, int64_t rowBytes, int64_t rows) {
  const int64_t pitch = std::max<int64_t>(rowBytes, 1) + in.ConsumeIntegralInRange<int>(0, 7);
  const PlaneLayout plane{0, pitch, rowBytes, rows};
  return {std::make_unique<Buffer>(plane.End(), in), pitch};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider in(data, size);
  const int op = in.ConsumeIntegralInRange<int>(0, 4);
  Form form = static_cast<Form>(in.ConsumeIntegralInRange<int>(0, 2));
  if (op == 3 && form == kFrame) form = kSplit;  // the format-free pair has no frame form
  const int32_t w = in.ConsumeIntegralInRange<int32_t>(1, 70);
  const int32_t h = in.ConsumeIntegralInRange<int32_t>(1, 24);
  const uint8_t flip = in.ConsumeBool(), swap = in.ConsumeBool();
  const TCS_GeneralTable &g = General();
  // Bytes a pixel of the destination and the source of each repacking
  // operation; the format-free field operations take theirs from the input.
  const int32_t channel = in.ConsumeIntegralInRange<int32_t>(-1, 4);
  const int32_t bpp = in.ConsumeIntegralInRange<int32_t>(1, 4);
  int64_t dstBytes = 1, srcBytes = 4;
  if (op == 1) dstBytes = 4, srcBytes = 3;
  if (op == 2) dstBytes = 3, srcBytes = 4;
  if (op == 3) dstBytes = srcBytes = bpp;
  if (op == 4) {
    // Range scaling: a frame of any format code, rows of its bytes a pixel.
    const int32_t format = Code(in);
    const int64_t bytes = RowBytes(format, w);
    Image dst = Make(in, bytes, h), src = Make(in, bytes, h);
    auto scale = in.ConsumeBool() ? g.TCS_RangeExpandFrame : g.TCS_RangeCompressFrame;
    scale(dst.buffer->data(), dst.pitch, src.buffer->data(), src.pitch, format, w, h, flip);
    return 0;
  }
  // Fields of the repackers have room for the odd row ((h + 1) / 2 rows), as
  // those of the format-free operations, which copy h / 2.
  const int64_t field = op == 3 ? h / 2 : (h + 1) / 2;
  const bool split = form == kSplit;
  Image frame = Make(in, (form == kSplit ? srcBytes : dstBytes) * w, h);
  Image f1 = Make(in, (split ? dstBytes : srcBytes) * w, form == kFrame ? h : field);
  Image f2 = Make(in, (split ? dstBytes : srcBytes) * w, op == 3 || !split ? h / 2 : field);
  uint8_t *a = frame.buffer->data(), *b = f1.buffer->data(), *c = f2.buffer->data();
  const int64_t pa = frame.pitch, pb = f1.pitch, pc = f2.pitch;
  switch (op * 3 + form) {
    case 0:
      g.TCS_Cr32_Split_Channel_Frame(a, pa, b, pb, w, h, channel, flip);
      break;
    case 1:
      g.TCS_Cr32_Split_Channel_Split(b, pb, c, pc, a, pa, w, h, channel, flip);
      break;
    case 2:
      g.TCS_Cr32_Split_Channel_Compose(a, pa, b, pb, c, pc, w, h, channel, flip);
      break;
    case 3:
      g.TCS_Cr24_2_Cr32_Frame(a, pa, b, pb, w, h, swap, 255, flip);
      break;
    case 4:
      g.TCS_Cr24_2_Cr32_Split(b, pb, c, pc, a, pa, w, h, swap, 255, flip);
      break;
    case 5:
      g.TCS_Cr24_2_Cr32_Compose(a, pa, b, pb, c, pc, w, h, swap, 255, flip);
      break;
    case 6:
      g.TCS_Cr32_2_Cr24_Frame(a, pa, b, pb, w, h, swap, flip);
      break;
    case 7:
      g.TCS_Cr32_2_Cr24_Split(b, pb, c, pc, a, pa, w, h, swap, flip);
      break;
    case 8:
      g.TCS_Cr32_2_Cr24_Compose(a, pa, b, pb, c, pc, w, h, swap, flip);
      break;
    case 10:
      g.TCS_SplitFrame(b, pb, c, pc, a, pa, w, h, bpp, flip);
      break;
    default:
      g.TCS_ComposeFields(a, pa, b, pb, c, pc, w, h, bpp, flip);
      break;
  }
  return 0;
}
