// The coefficient tables: derived Q14 values against the published results,
// lane patterns, the private SIMD vectors and the initialised tables.
#include "base/coefficients.hpp"

#include <TQColorSpace/TQColorSpace.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace tqcs {
namespace {

class Coefficients : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { DeriveCoefficientTables(); }
};

using Lanes = std::array<int16_t, 8>;
Lanes L(const int16_t *v) {
  Lanes out;
  for (int i = 0; i < 8; ++i) out[i] = v[i];
  return out;
}

struct Published {
  const char *name;
  const int16_t *yRgb;  // g_sY_GBR: lanes 2, 3, 4 are Yr, Yg, Yb
  const int16_t *u;     // g_sU_RGB: Ur, Ug
  const int16_t *v;     // g_sV_RGB: Vg, Vb in lanes 1, 2
  const int16_t *rv, *gu, *gv, *bu;
  int16_t Yr, Yg, Yb, Ur, Ug, Vg, Vb, Rv, Gu, Gv, Bu;
};

TEST_F(Coefficients, DerivedValuesMatchThePublishedTable) {
  const Published rows[] = {
      {"SD", g_sY_GBR_SD, g_sU_RGB_SD, g_sV_RGB_SD, g_sR_V_SD, g_sG_U_SD, g_sG_V_SD, g_sB_U_SD,
       4898, 9618, 1868, -2764, -5428, -6860, -1332, 22970, -5638, -11700, 29032},
      {"HD", g_sY_GBR_HD, g_sU_RGB_HD, g_sV_RGB_HD, g_sR_V_HD, g_sG_U_HD, g_sG_V_HD, g_sB_U_HD,
       3484, 11717, 1183, -1877, -6315, -7441, -751, 25800, -3069, -7671, 30402},
      {"UHD", g_sY_GBR_UHD, g_sU_RGB_UHD, g_sV_RGB_UHD, g_sR_V_UHD, g_sG_U_UHD, g_sG_V_UHD,
       g_sB_U_UHD, 4304, 11108, 972, -2288, -5904, -7533, -659, 24160, -2697, -9362, 30825},
  };
  for (const Published &p : rows) {
    SCOPED_TRACE(p.name);
    EXPECT_EQ(L(p.yRgb), (Lanes{p.Yg, p.Yb, p.Yr, p.Yg, p.Yb, p.Yr, p.Yg, p.Yb}));
    EXPECT_EQ(L(p.u), (Lanes{p.Ur, p.Ug, 8192, 0, p.Ur, p.Ug, 8192, 0}));
    EXPECT_EQ(L(p.v), (Lanes{8192, p.Vg, p.Vb, 0, 8192, p.Vg, p.Vb, 0}));
    for (int i = 0; i < 8; ++i) {
      EXPECT_EQ(p.rv[i], p.Rv);
      EXPECT_EQ(p.gu[i], p.Gu);
      EXPECT_EQ(p.gv[i], p.Gv);
      EXPECT_EQ(p.bu[i], p.Bu);
    }
  }
}

TEST_F(Coefficients, RoundsHalfAwayFromZeroInSinglePrecision) {
  EXPECT_EQ(ToQ14(1.574722f), 25800);   // 25800.25
  EXPECT_EQ(ToQ14(-0.168701f), -2764);  // -2764.0 - 0.5 truncated
  EXPECT_EQ(ToQ14(0.5f), 8192);
  EXPECT_EQ(ToQ14(-0.5f), -8192);
  EXPECT_EQ(ToQ14(0.0f), 0);
  // Recomputing from the exported matrices gives the exported vectors.
  EXPECT_EQ(ToQ14(g_matRGBA2YUVA_UHD[0][1]), g_sY_GBR_UHD[0]);
  EXPECT_EQ(ToQ14(g_matYUVA2RGBA_UHD[2][1]), 30825);  // the largest value
}

TEST_F(Coefficients, LanePatternsFollowTheirNames) {
  const int16_t Yr = 3484, Yg = 11717, Yb = 1183, Ur = -1877, Ug = -6315, Vg = -7441, Vb = -751;
  const int16_t H = 8192;
  EXPECT_EQ(L(g_sY_RB_HD), (Lanes{Yr, Yb, Yr, Yb, Yr, Yb, Yr, Yb}));
  EXPECT_EQ(L(g_sY_BR_HD), (Lanes{Yb, Yr, Yb, Yr, Yb, Yr, Yb, Yr}));
  EXPECT_EQ(L(g_sYUV_G_HD), (Lanes{Ug, Yg, Vg, Yg, Ug, Yg, Vg, Yg}));
  EXPECT_EQ(L(g_sYV_G_HD), (Lanes{Yg, Vg, Yg, Vg, Yg, Vg, Yg, Vg}));
  EXPECT_EQ(L(g_sU_G_HD), (Lanes{Ug, Ug, Ug, Ug, Ug, Ug, Ug, Ug}));
  EXPECT_EQ(L(g_sU_RB_HD), (Lanes{Ur, H, Ur, H, Ur, H, Ur, H}));
  EXPECT_EQ(L(g_sU_BR_HD), (Lanes{H, Ur, H, Ur, H, Ur, H, Ur}));
  EXPECT_EQ(L(g_sV_RB_HD), (Lanes{H, Vb, H, Vb, H, Vb, H, Vb}));
  EXPECT_EQ(L(g_sV_BR_HD), (Lanes{Vb, H, Vb, H, Vb, H, Vb, H}));
  EXPECT_EQ(L(g_sUV_RB_HD), (Lanes{Ur, H, H, Vb, Ur, H, H, Vb}));
  EXPECT_EQ(L(g_sUV_BR_HD), (Lanes{H, Ur, Vb, H, H, Ur, Vb, H}));
  EXPECT_EQ(L(g_sY_RBG_HD), (Lanes{Yr, Yb, Yg, Yr, Yb, Yg, Yr, Yb}));
  EXPECT_EQ(L(g_sY_GRB_HD), (Lanes{Yg, Yr, Yb, Yg, Yr, Yb, Yg, Yr}));
  EXPECT_EQ(L(g_sY_BRG_HD), (Lanes{Yb, Yr, Yg, Yb, Yr, Yg, Yb, Yr}));
  EXPECT_EQ(L(g_sU_BGR_HD), (Lanes{H, Ug, Ur, 0, H, Ug, Ur, 0}));
  EXPECT_EQ(L(g_sV_BGR_HD), (Lanes{Vb, Vg, H, 0, Vb, Vg, H, 0}));
}

TEST_F(Coefficients, PrivateVectorsCarryTheConstantLanes) {
  const PrivateVectors &sd = g_private[kSD];
  EXPECT_EQ(L(sd.yu[0]), (Lanes{4898, 9618, 1868, 1, -2764, -5428, 8192, 1025}));
  EXPECT_EQ(L(sd.yu[1]), (Lanes{1868, 9618, 4898, 1, 8192, -5428, -2764, 1025}));
  EXPECT_EQ(L(sd.yv[0]), (Lanes{4898, 9618, 1868, 1, 8192, -6860, -1332, 1025}));
  EXPECT_EQ(L(sd.yv[1]), (Lanes{1868, 9618, 4898, 1, -1332, -6860, 8192, 1025}));
  for (const PrivateVectors &p : g_private)
    for (int order = 0; order < 2; ++order) {
      for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(p.yu257[order][i], p.yu[order][i]);
        EXPECT_EQ(p.yv257[order][i], p.yv[order][i]);
      }
      EXPECT_EQ(p.yu257[order][7], 257);
      EXPECT_EQ(p.yv257[order][7], 257);
    }
  EXPECT_EQ(L(g_private[kHD].buRv),
            (Lanes{30402, 30402, 30402, 30402, 25800, 25800, 25800, 25800}));
  EXPECT_EQ(L(g_private[kHD].guGv),
            (Lanes{-3069, -3069, -3069, -3069, -7671, -7671, -7671, -7671}));
}

TEST_F(Coefficients, StandardConversionTablesKeepTheirPublishedSigns) {
  EXPECT_EQ(L(g_sYUVA_HD2SD_UV), (Lanes{3329, -332, 2373, 0, 6420, -3622, -544, 0}));
  EXPECT_EQ(L(g_sYUVA_UHD2SD_UV), (Lanes{3863, -157, 2756, 0, 3454, -1950, -770, 0}));
  EXPECT_EQ(L(g_yuyv_SD2HD_uv), (Lanes{-3872, 610, -3872, 2459, -6966, 3574, -6966, 829}));
  EXPECT_EQ(L(g_uyvy_HD2UHD_uv), (Lanes{-154, -557, 377, -557, -1678, 3152, 85, 3152}));
  // The float increments are the matrix columns less the identity.
  EXPECT_FLOAT_EQ(g_fYUVA_HD2SD_U[0], 0.101606f);
  EXPECT_FLOAT_EQ(g_fYUVA_HD2SD_U[1], 0.989865f - 1.0f);
  EXPECT_FLOAT_EQ(g_fYUVA_HD2SD_U[2], -0.072431f);
  EXPECT_FLOAT_EQ(g_fYUVA_SD2UHD_V[2], 1.0293f - 1.0f);
  EXPECT_FLOAT_EQ(g_fYUYV_UHD2HD_V[2], g_fYUVA_UHD2HD_V[0]);
  EXPECT_FLOAT_EQ(g_fUYVY_UHD2HD_V[0], g_fYUVA_UHD2HD_V[1]);
  // Q15 of the float increments, except the two deliberately positive entries.
  EXPECT_EQ(std::lround(g_fYUVA_SD2HD_V[2] * 32768), g_sYUVA_SD2HD_UV[6]);
  // SD2HD V-to-U is stored as published, 3574, although the matrix gives 3754.
  EXPECT_EQ(g_sYUVA_SD2HD_UV[5], 3574);
  EXPECT_EQ(std::lround(g_fYUVA_HD2SD_U[2] * 32768), -g_sYUVA_HD2SD_UV[2]);
}

TEST_F(Coefficients, RangeTablesEncodeTheirRules) {
  // legal = full x 219/255 + 16 for luma, x 224/255 + 128 x 31/255 for chroma.
  EXPECT_EQ(g_sSafe_Gain[0], std::lround(219.0 / 255 * 16384));
  EXPECT_EQ(g_sSafe_Gain_YUV[1], std::lround(224.0 / 255 * 16384));
  EXPECT_EQ(g_sSafe_Gain[4], std::lround(255.0 / 219 * 16384));
  EXPECT_EQ(g_sSafe_Gain_YUV[5], std::lround(255.0 / 224 * 16384));
  EXPECT_EQ(g_sSafe_Offset_KEY[0], 16 * 32);
  EXPECT_EQ(g_sSafe_Offset_YUV[1], std::lround(128 * (1 - 224.0 / 255) * 32));
  EXPECT_EQ(g_sSafe_Offset_KEY[4], std::lround(-16 * 255.0 / 219 * 32));
  EXPECT_EQ(g_sSafe_Offset_YUV[5], std::lround(-128 * (255.0 / 224 - 1) * 32));
  EXPECT_EQ(L(g_sSafe_Gain_YUYV), (Lanes{14071, 14392, 14071, 14392, 19077, 18651, 19077, 18651}));
  EXPECT_EQ(L(g_sSafe_Offset_UYVY), (Lanes{498, 512, 498, 512, -567, -596, -567, -596}));
}

}  // namespace
}  // namespace tqcs
