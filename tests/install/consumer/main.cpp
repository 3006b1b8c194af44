// A C++ host: one conversion through the dispatcher and one through a typed
// driver slot, checked against each other.
#include <TQColorSpace/TQColorSpace.h>

#include <cstdio>
#include <vector>

int main() {
  const TCS_APIStu *api = TCS_GetAPIStuPtr();
  if (api == nullptr || TCS_CheckAPIStu(api) != TCS_CHECK_OK) return 1;
  const int32_t w = 16, h = 4;
  std::vector<uint8_t> rgb(3 * w * h), viaDispatcher(2 * w * h), viaDriver(2 * w * h);
  for (size_t i = 0; i < rgb.size(); ++i) rgb[i] = static_cast<uint8_t>(i * 13);
  if (api->pGeneral->TCS_ColorConvFrame(viaDispatcher.data(), 2 * w, TCS_FORMAT_YUV16, rgb.data(),
                                        3 * w, TCS_FORMAT_RGB24, TCS_MATRIX_HD, w, h,
                                        0) != TCS_RESULT_OK)
    return 2;
  api->pRGB24->TCS_RGB24_2_YUV16_Frame(viaDriver.data(), 2 * w, rgb.data(), 3 * w, w, h,
                                       TCS_MATRIX_HD, 0, 1, 0);
  std::printf("C++ host: dispatcher and driver %s\n",
              viaDispatcher == viaDriver ? "agree" : "differ");
  return viaDispatcher == viaDriver ? 0 : 3;
}
