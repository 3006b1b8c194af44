#include "drivers/driver_kit.hpp"

#include <TQCPUBase.h>

#include <cstdlib>

namespace tqcs::drivers {
namespace {

struct Standard {
  const int16_t *yGbr, *uRgb, *vRgb, *yGrb, *uBgr, *vBgr;  // per-component layout
  const int16_t *yRb, *yBr, *yuvG, *uvRb, *uvBr;           // component-pair layout
  const int16_t *rv, *gu, *gv, *bu;
};

// clang-format off
#define TQCS_STANDARD(std) \
  Standard{g_sY_GBR_##std, g_sU_RGB_##std, g_sV_RGB_##std, g_sY_GRB_##std, g_sU_BGR_##std, \
           g_sV_BGR_##std, g_sY_RB_##std, g_sY_BR_##std, g_sYUV_G_##std, g_sUV_RB_##std, \
           g_sUV_BR_##std, g_sR_V_##std, g_sG_U_##std, g_sG_V_##std, g_sB_U_##std}
// clang-format on

// The set a selector names: 0 HD, 1 SD, 3 UHD; none for any other value.
const Standard *SetOf(int32_t matrix) {
  static const Standard hd = TQCS_STANDARD(HD), sd = TQCS_STANDARD(SD), uhd = TQCS_STANDARD(UHD);
  switch (matrix) {
    case TCS_MATRIX_HD:
      return &hd;
    case TCS_MATRIX_SD:
      return &sd;
    case TCS_MATRIX_UHD:
      return &uhd;
    default:
      return nullptr;
  }
}

}  // namespace

bool NamesASet(int32_t matrix) { return SetOf(matrix) != nullptr; }

RgbToYuvRows RgbToYuv(int32_t matrix, uint8_t bgrOrder) {
  const Standard *s = SetOf(matrix);
  if (!s) return {};
  return bgrOrder ? RgbToYuvRows{s->yGrb, s->uBgr, s->vBgr}
                  : RgbToYuvRows{s->yGbr, s->uRgb, s->vRgb};
}

RgbToYuvRows RgbToYuvHdSd(int32_t matrix, uint8_t bgrOrder) {
  return matrix == TCS_MATRIX_HD || matrix == TCS_MATRIX_SD ? RgbToYuv(matrix, bgrOrder)
                                                            : RgbToYuvRows{};
}

RgbToYuvRows RgbToYuvPairs(int32_t matrix, uint8_t bgrOrder) {
  const Standard *s = SetOf(matrix);
  if (!s) return {};
  return bgrOrder ? RgbToYuvRows{s->yBr, s->yuvG, s->uvBr} : RgbToYuvRows{s->yRb, s->yuvG, s->uvRb};
}

YuvToRgbRows YuvToRgb(int32_t matrix) {
  const Standard *s = SetOf(matrix);
  if (!s) return {};
  return {s->rv, s->gu, s->gv, s->bu};
}

void WriteRecord(log::Level level, const char16_t *unit, const char16_t *function,
                 const char16_t *message) {
  log::Write(level, {unit, function}, message);
}

}  // namespace tqcs::drivers
