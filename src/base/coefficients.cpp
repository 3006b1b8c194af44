#include "base/coefficients.hpp"

#include <cstring>

extern "C" {

// clang-format off
alignas(16) const float g_matRGBA2YUVA_SD[4][4] = {{0.29895f, 0.587036f, 0.114014f, 0}, {-0.168701f, -0.331299f, 0.5f, 0}, {0.5f, -0.418701f, -0.081299f, 0}, {0, 0, 0, 1}};
alignas(16) const float g_matYUVA2RGBA_SD[4][4] = {{1, 0, 1.401978f, 0}, {1, -0.344116f, -0.714111f, 0}, {1, 1.771973f, 0, 0}, {0, 0, 0, 1}};
alignas(16) const float g_matRGBA2YUVA_HD[4][4] = {{0.212639f, 0.715169f, 0.072192f, 0}, {-0.114592f, -0.385409f, 0.5f, 0}, {0.5f, -0.454156f, -0.045844f, 0}, {0, 0, 0, 1}};
alignas(16) const float g_matYUVA2RGBA_HD[4][4] = {{1, 0, 1.574722f, 0}, {1, -0.187314f, -0.468207f, 0}, {1, 1.855615f, 0, 0}, {0, 0, 0, 1}};
alignas(16) const float g_matRGBA2YUVA_UHD[4][4] = {{0.2627f, 0.678f, 0.0593f, 0}, {-0.13963f, -0.36037f, 0.5f, 0}, {0.5f, -0.459786f, -0.040214f, 0}, {0, 0, 0, 1}};
alignas(16) const float g_matYUVA2RGBA_UHD[4][4] = {{1, 0, 1.4746f, 0}, {1, -0.1646f, -0.5714f, 0}, {1, 1.8814f, 0, 0}, {0, 0, 0, 1}};
alignas(16) const float g_matRGBA2LUVA[4][4] = {{0.2988f, 0.5868f, 0.1144f, 0}, {-0.161082f, -0.316239f, 0.477321f, 0}, {0.477321f, -0.399697f, -0.077624f, 0}, {0, 0, 0, 1}};
alignas(16) const float g_matLUVA2RGBA[4][4] = {{1, 0, 1.468613f, 0}, {1, -0.360487f, -0.748067f, 0}, {1, 1.856193f, 0, 0}, {0, 0, 0, 1}};
alignas(16) const float g_matYUVA_HD2SD[4][4] = {{1, 0.101606f, 0.195909f, 0}, {0, 0.989865f, -0.110541f, 0}, {0, -0.072431f, 0.9834f, 0}, {0, 0, 0, 1}};
alignas(16) const float g_matYUVA_SD2HD[4][4] = {{1, -0.118178f, -0.212595f, 0}, {0, 1.018612f, 0.114568f, 0}, {0, 0.075047f, 1.025306f, 0}, {0, 0, 0, 1}};
alignas(16) const float g_matYUVA_UHD2HD[4][4] = {{1, 0.0181f, -0.0951f, 0}, {0, 1.0041f, 0.0512f, 0}, {0, -0.0115f, 0.9968f, 0}, {0, 0, 0, 1}};
alignas(16) const float g_matYUVA_HD2UHD[4][4] = {{1, -0.017f, 0.0962f, 0}, {0, 0.9953f, -0.0512f, 0}, {0, 0.0115f, 1.0026f, 0}, {0, 0, 0, 1}};
alignas(16) const float g_matYUVA_UHD2SD[4][4] = {{1, 0.1179f, 0.1054f, 0}, {0, 0.9952f, -0.0595f, 0}, {0, -0.0841f, 0.9765f, 0}, {0, 0, 0, 1}};
alignas(16) const float g_matYUVA_SD2UHD[4][4] = {{1, -0.1282f, -0.1159f, 0}, {0, 1.01f, 0.0616f, 0}, {0, 0.087f, 1.0293f, 0}, {0, 0, 0, 1}};

#define TQCS_DEFINE_Q14(name) alignas(16) int16_t g_s##name[8];
#define TQCS_DEFINE_Q14_STD(std) TCS_Q14_VECTORS(TQCS_DEFINE_Q14, std)
TCS_STANDARDS(TQCS_DEFINE_Q14_STD)

alignas(16) const int16_t g_sSafe_Gain[8] = {14071, 14071, 14071, 14071, 19077, 19077, 19077, 19077};
alignas(16) const int16_t g_sSafe_Gain_YUV[8] = {14071, 14392, 14392, 14071, 19077, 18651, 18651, 19077};
alignas(16) const int16_t g_sSafe_Gain_YUYV[8] = {14071, 14392, 14071, 14392, 19077, 18651, 19077, 18651};
alignas(16) const int16_t g_sSafe_Gain_UYVY[8] = {14392, 14071, 14392, 14071, 18651, 19077, 18651, 19077};
alignas(16) const int16_t g_sSafe_Offset_KEY[8] = {512, 512, 512, 512, -596, -596, -596, -596};
alignas(16) const int16_t g_sSafe_Offset_YUV[8] = {512, 498, 498, 512, -596, -567, -567, -596};
alignas(16) const int16_t g_sSafe_Offset_YUYV[8] = {512, 498, 512, 498, -596, -567, -596, -567};
alignas(16) const int16_t g_sSafe_Offset_UYVY[8] = {498, 512, 498, 512, -567, -596, -567, -596};

// Standard-to-standard increments. The float tables follow the matrices; the
// Q15 tables are stored as published, with the U-to-V entries of HD2SD and
// UHD2SD positive although the matrices have them negative, and SD2HD's
// V-to-U entry 3574 where the matrix gives 3754: kept so, clients read these.
#define TQCS_DEFINE_DIRECTION(dir, uy, uu, uv, vy, vu, vv) \
  alignas(16) const float g_fYUVA_##dir##_U[4] = {g_matYUVA_##dir[0][1], g_matYUVA_##dir[1][1] - 1.0f, g_matYUVA_##dir[2][1], 0}; \
  alignas(16) const float g_fYUVA_##dir##_V[4] = {g_matYUVA_##dir[0][2], g_matYUVA_##dir[1][2], g_matYUVA_##dir[2][2] - 1.0f, 0}; \
  alignas(16) const float g_fYUYV_##dir##_U[4] = {g_fYUVA_##dir##_U[0], g_fYUVA_##dir##_U[1], g_fYUVA_##dir##_U[0], g_fYUVA_##dir##_U[2]}; \
  alignas(16) const float g_fYUYV_##dir##_V[4] = {g_fYUVA_##dir##_V[0], g_fYUVA_##dir##_V[1], g_fYUVA_##dir##_V[0], g_fYUVA_##dir##_V[2]}; \
  alignas(16) const float g_fUYVY_##dir##_U[4] = {g_fYUVA_##dir##_U[1], g_fYUVA_##dir##_U[0], g_fYUVA_##dir##_U[2], g_fYUVA_##dir##_U[0]}; \
  alignas(16) const float g_fUYVY_##dir##_V[4] = {g_fYUVA_##dir##_V[1], g_fYUVA_##dir##_V[0], g_fYUVA_##dir##_V[2], g_fYUVA_##dir##_V[0]}; \
  alignas(16) const int16_t g_sYUVA_##dir##_UV[8] = {uy, uu, uv, 0, vy, vu, vv, 0}; \
  alignas(16) const int16_t g_yuyv_##dir##_uv[8] = {uy, uu, uy, uv, vy, vu, vy, vv}; \
  alignas(16) const int16_t g_uyvy_##dir##_uv[8] = {uu, uy, uv, uy, vu, vy, vv, vy};

TQCS_DEFINE_DIRECTION(HD2SD, 3329, -332, 2373, 6420, -3622, -544)
TQCS_DEFINE_DIRECTION(SD2HD, -3872, 610, 2459, -6966, 3574, 829)
TQCS_DEFINE_DIRECTION(UHD2SD, 3863, -157, 2756, 3454, -1950, -770)
TQCS_DEFINE_DIRECTION(SD2UHD, -4201, 328, 2851, -3798, 2019, 960)
TQCS_DEFINE_DIRECTION(UHD2HD, 593, 134, -377, -3116, 1678, -105)
TQCS_DEFINE_DIRECTION(HD2UHD, -557, -154, 377, 3152, -1678, 85)
// clang-format on

}  // extern "C"

namespace tqcs {

PrivateVectors g_private[3];

int16_t ToQ14(float coefficient) {
  float scaled = coefficient * 16384.0f;
  if (coefficient > 0) scaled += 0.5f;
  if (coefficient < 0) scaled -= 0.5f;
  return static_cast<int16_t>(static_cast<int32_t>(scaled));
}

namespace {

using Vec = int16_t[8];

void Put(Vec &v, int16_t a, int16_t b, int16_t c, int16_t d, int16_t e, int16_t f, int16_t g,
         int16_t h) {
  const int16_t lanes[8] = {a, b, c, d, e, f, g, h};
  std::memcpy(v, lanes, sizeof lanes);
}

// The exported vectors of one standard, by name.
struct StandardVectors {
#define TQCS_MEMBER(name) Vec &name;
  TCS_Q14_VECTORS(TQCS_MEMBER, X)
#undef TQCS_MEMBER
};

void DeriveStandard(const float (&toYuv)[4][4], const float (&toRgb)[4][4],
                    const StandardVectors &s, PrivateVectors &p, bool withPairs) {
  constexpr int16_t H = 8192;  // the two coefficients of 0.5, written, not computed
  const int16_t Yr = ToQ14(toYuv[0][0]), Yg = ToQ14(toYuv[0][1]), Yb = ToQ14(toYuv[0][2]);
  const int16_t Ur = ToQ14(toYuv[1][0]), Ug = ToQ14(toYuv[1][1]);
  const int16_t Vg = ToQ14(toYuv[2][1]), Vb = ToQ14(toYuv[2][2]);
  const int16_t Rv = ToQ14(toRgb[0][2]), Gu = ToQ14(toRgb[1][1]), Gv = ToQ14(toRgb[1][2]);
  const int16_t Bu = ToQ14(toRgb[2][1]);

  Put(s.Y_RB_X, Yr, Yb, Yr, Yb, Yr, Yb, Yr, Yb);
  Put(s.Y_BR_X, Yb, Yr, Yb, Yr, Yb, Yr, Yb, Yr);
  Put(s.YUV_G_X, Ug, Yg, Vg, Yg, Ug, Yg, Vg, Yg);
  Put(s.YV_G_X, Yg, Vg, Yg, Vg, Yg, Vg, Yg, Vg);
  Put(s.U_G_X, Ug, Ug, Ug, Ug, Ug, Ug, Ug, Ug);
  Put(s.U_RB_X, Ur, H, Ur, H, Ur, H, Ur, H);
  Put(s.U_BR_X, H, Ur, H, Ur, H, Ur, H, Ur);
  Put(s.V_RB_X, H, Vb, H, Vb, H, Vb, H, Vb);
  Put(s.V_BR_X, Vb, H, Vb, H, Vb, H, Vb, H);
  Put(s.UV_RB_X, Ur, H, H, Vb, Ur, H, H, Vb);
  Put(s.UV_BR_X, H, Ur, Vb, H, H, Ur, Vb, H);
  Put(s.Y_RBG_X, Yr, Yb, Yg, Yr, Yb, Yg, Yr, Yb);
  Put(s.Y_GRB_X, Yg, Yr, Yb, Yg, Yr, Yb, Yg, Yr);
  Put(s.Y_BRG_X, Yb, Yr, Yg, Yb, Yr, Yg, Yb, Yr);
  Put(s.Y_GBR_X, Yg, Yb, Yr, Yg, Yb, Yr, Yg, Yb);
  Put(s.U_RGB_X, Ur, Ug, H, 0, Ur, Ug, H, 0);
  Put(s.U_BGR_X, H, Ug, Ur, 0, H, Ug, Ur, 0);
  Put(s.V_RGB_X, H, Vg, Vb, 0, H, Vg, Vb, 0);
  Put(s.V_BGR_X, Vb, Vg, H, 0, Vb, Vg, H, 0);
  Put(s.R_V_X, Rv, Rv, Rv, Rv, Rv, Rv, Rv, Rv);
  Put(s.G_U_X, Gu, Gu, Gu, Gu, Gu, Gu, Gu, Gu);
  Put(s.G_V_X, Gv, Gv, Gv, Gv, Gv, Gv, Gv, Gv);
  Put(s.B_U_X, Bu, Bu, Bu, Bu, Bu, Bu, Bu, Bu);

  Put(p.yu[0], Yr, Yg, Yb, 1, Ur, Ug, H, 1025);
  Put(p.yu[1], Yb, Yg, Yr, 1, H, Ug, Ur, 1025);
  Put(p.yv[0], Yr, Yg, Yb, 1, H, Vg, Vb, 1025);
  Put(p.yv[1], Yb, Yg, Yr, 1, Vb, Vg, H, 1025);
  std::memcpy(p.yu257, p.yu, sizeof p.yu);
  std::memcpy(p.yv257, p.yv, sizeof p.yv);
  p.yu257[0][7] = p.yu257[1][7] = p.yv257[0][7] = p.yv257[1][7] = 257;
  if (withPairs) {
    Put(p.buRv, Bu, Bu, Bu, Bu, Rv, Rv, Rv, Rv);
    Put(p.guGv, Gu, Gu, Gu, Gu, Gv, Gv, Gv, Gv);
  }
}

}  // namespace

void DeriveCoefficientTables() {
#define TQCS_REF(name) g_s##name,
#define TQCS_STANDARD_VECTORS(std) StandardVectors{TCS_Q14_VECTORS(TQCS_REF, std)}
  DeriveStandard(g_matRGBA2YUVA_SD, g_matYUVA2RGBA_SD, TQCS_STANDARD_VECTORS(SD), g_private[kSD],
                 true);
  DeriveStandard(g_matRGBA2YUVA_HD, g_matYUVA2RGBA_HD, TQCS_STANDARD_VECTORS(HD), g_private[kHD],
                 true);
  DeriveStandard(g_matRGBA2YUVA_UHD, g_matYUVA2RGBA_UHD, TQCS_STANDARD_VECTORS(UHD),
                 g_private[kUHD], false);
#undef TQCS_STANDARD_VECTORS
#undef TQCS_REF
}

}  // namespace tqcs
