// The format-code dispatcher (slots 0 to 2): codes, geometry, pitches, matrix
// and flip from the input; every buffer exactly as large as its layout.
#include "fuzz/fuzz_support.hpp"

using namespace tqcs::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider in(data, size);
  const Call c = ReadCall(in);
  std::vector<std::unique_ptr<Buffer>> buffers;
  std::vector<int64_t> pitches;
  for (int i = 0; i < c.Images(); ++i) {
    const int64_t pitch =
        std::max<int64_t>(RowBytes(c.CodeOf(i), c.w), 1) + in.ConsumeIntegralInRange<int>(0, 9);
    const auto planes = Layout(c.CodeOf(i), c.w, c.Rows(i), pitch, pitch >> 1, false);
    buffers.push_back(std::make_unique<Buffer>(Extent(planes), in));
    pitches.push_back(pitch);
  }
  const TCS_GeneralTable &g = General();
  auto p = [&](int i) { return buffers[i]->data(); };
  if (c.form == kFrame)
    g.TCS_ColorConvFrame(p(0), pitches[0], c.dst, p(1), pitches[1], c.src, c.matrix, c.w, c.h,
                         c.flip);
  else if (c.form == kSplit)
    g.TCS_ColorConvSplit(p(0), pitches[0], p(1), pitches[1], c.dst, p(2), pitches[2], c.src,
                         c.matrix, c.w, c.h, c.flip);
  else
    g.TCS_ColorConvCompose(p(0), pitches[0], c.dst, p(1), pitches[1], p(2), pitches[2], c.src,
                           c.matrix, c.w, c.h, c.flip);
  return 0;
}
