// The descriptor forms (slots 16 to 18): every plane of an image in a buffer
// of its own, with a pitch of its own, each buffer exactly as large as its
// plane. Codes 0 to 10 take the dispatcher's layouts; about half the inputs
// pick codes of the whole extended space instead, at widths most layouts take,
// with the planes the format table gives.
#include "base/formats.hpp"
#include "fuzz/fuzz_support.hpp"

using namespace tqcs::fuzz;

namespace {

// Any entry of the format table (reserved ones included), or any code.
int32_t ExtendedCode(FuzzedDataProvider &in) {
  const auto pick = in.ConsumeIntegralInRange<size_t>(0, tqcs::kFormats.size());
  return pick < tqcs::kFormats.size() ? tqcs::kFormats[pick].code : in.ConsumeIntegral<int32_t>();
}

// The planes of an image in the extended space: the table's planes, rows and
// row bytes (field buffers hold height / 2 rows); one plane of 4 bytes a
// pixel for a code without a layout.
std::vector<PlaneLayout> ExtendedLayout(int32_t code, int64_t w, int64_t rows,
                                        FuzzedDataProvider &in) {
  const tqcs::FormatInfo *f = tqcs::FindFormat(code);
  if (!f || f->packing == tqcs::Packing::Reserved) return {{0, 4 * w, 4 * w, rows}};
  std::vector<PlaneLayout> planes;
  for (int k = 0; k < f->planes; ++k) {
    const int64_t bytes = tqcs::PlaneRowBytes(*f, k, w);
    planes.push_back({0, std::max<int64_t>(bytes, 1) + in.ConsumeIntegralInRange<int>(0, 9), bytes,
                      tqcs::PlaneRows(*f, k, rows)});
  }
  return planes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider in(data, size);
  Call c = ReadCall(in);
  const bool extended = in.ConsumeBool();
  if (extended) {
    c.src = ExtendedCode(in);
    c.dst = ExtendedCode(in);
    if (in.ConsumeBool()) c.w = 12 * in.ConsumeIntegralInRange<int32_t>(1, 6);
  }
  // A pair of codes 0 to 10 goes to the dispatcher's routes and layouts.
  auto eightBit = [](int32_t code) { return code >= 0 && code <= 10; };
  const bool tableLayout = extended && !(eightBit(c.src) && eightBit(c.dst));
  std::vector<std::unique_ptr<Buffer>> buffers;
  TCS_FrameDesc desc[3] = {};
  for (int i = 0; i < c.Images(); ++i) {
    const int32_t code = c.CodeOf(i);
    std::vector<PlaneLayout> planes;
    if (tableLayout) {
      planes = ExtendedLayout(code, c.w, IsField(c.form, i) ? c.h / 2 : c.h, in);
    } else {
      const int64_t pitch =
          std::max<int64_t>(RowBytes(code, c.w), 1) + in.ConsumeIntegralInRange<int>(0, 9);
      const int64_t chromaPitch =
          std::max<int64_t>(c.w / 2, 1) + in.ConsumeIntegralInRange<int>(0, 5);
      planes = Layout(code, c.w, c.Rows(i), pitch, chromaPitch, true);
    }
    desc[i].format = code;
    for (size_t k = 0; k < planes.size(); ++k) {
      buffers.push_back(std::make_unique<Buffer>(planes[k].End(), in));
      desc[i].plane[k] = {buffers.back()->data(), planes[k].pitch};
    }
  }
  const TCS_GeneralTable &g = General();
  if (c.form == kFrame)
    g.TCS_ColorConvFrameEx(&desc[0], &desc[1], c.matrix, c.w, c.h, c.flip);
  else if (c.form == kSplit)
    g.TCS_ColorConvSplitEx(&desc[0], &desc[1], &desc[2], c.matrix, c.w, c.h, c.flip);
  else
    g.TCS_ColorConvComposeEx(&desc[0], &desc[1], &desc[2], c.matrix, c.w, c.h, c.flip);
  return 0;
}
