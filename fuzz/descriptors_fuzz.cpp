// The descriptor forms of the dispatcher (slots 16 to 18): every plane of a
// planar image in a buffer of its own, with a pitch of its own, each buffer
// exactly as large as its plane.
#include "fuzz/fuzz_support.hpp"

using namespace tqcs::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider in(data, size);
  const Call c = ReadCall(in);
  std::vector<std::unique_ptr<Buffer>> buffers;
  TCS_FrameDesc desc[3] = {};
  for (int i = 0; i < c.Images(); ++i) {
    const int32_t code = c.CodeOf(i);
    const int64_t pitch =
        std::max<int64_t>(RowBytes(code, c.w), 1) + in.ConsumeIntegralInRange<int>(0, 9);
    const int64_t chromaPitch =
        std::max<int64_t>(c.w / 2, 1) + in.ConsumeIntegralInRange<int>(0, 5);
    const auto planes = Layout(code, c.w, c.Rows(i), pitch, chromaPitch, true);
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
