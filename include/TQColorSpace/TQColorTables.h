/* TQColorSpace: exported colour matrices and coefficient tables.
 *
 * The float matrices are the source of truth. The Q14 vectors (1.0 = 16384) are
 * derived from them when the library loads, rounding half away from zero; the
 * two coefficients equal to 0.5 are stored as 8192. Lane patterns follow the
 * byte order of the pixels the kernels multiply against.
 *
 * Every table is read-only to a host: the kernels use these very vectors, so
 * a write would change every later conversion. They are declared const here;
 * only the library's own units, which derive the Q14 vectors once at load
 * (TQCOLORSPACE_BUILDING), see those writable. Const is not part of a C data
 * symbol, on ELF or in a DLL's import table, so both views name one object.
 *
 * Legal-range tables: lanes 0-3 compress full range to legal range, lanes 4-7
 * expand; gains in Q14, offsets in units of 1/32. Standard-to-standard tables:
 * the increments that U and V add to Y, U and V (float, and Q15 in int16).
 */
#ifndef TQCOLORSPACE_TABLES_H
#define TQCOLORSPACE_TABLES_H

#include <stdint.h>

#include "TQExport.h"

#ifdef __cplusplus
extern "C" {
#endif

/* clang-format off */
#define TCS_STANDARDS(X) X(SD) X(HD) X(UHD)

/* Q14 vectors derived per standard: g_s<name>_<std>. */
#define TCS_Q14_VECTORS(X, std) \
  X(Y_RB_##std) X(Y_BR_##std) X(YUV_G_##std) X(YV_G_##std) X(U_G_##std) \
  X(U_RB_##std) X(U_BR_##std) X(V_RB_##std) X(V_BR_##std) X(UV_RB_##std) X(UV_BR_##std) \
  X(Y_RBG_##std) X(Y_GRB_##std) X(Y_BRG_##std) X(Y_GBR_##std) \
  X(U_RGB_##std) X(U_BGR_##std) X(V_RGB_##std) X(V_BGR_##std) \
  X(R_V_##std) X(G_U_##std) X(G_V_##std) X(B_U_##std)

#define TCS_MATRICES(X) \
  X(RGBA2YUVA_SD) X(YUVA2RGBA_SD) X(RGBA2YUVA_HD) X(YUVA2RGBA_HD) X(RGBA2YUVA_UHD) X(YUVA2RGBA_UHD) \
  X(RGBA2LUVA) X(LUVA2RGBA) X(YUVA_HD2SD) X(YUVA_SD2HD) X(YUVA_UHD2HD) X(YUVA_HD2UHD) \
  X(YUVA_UHD2SD) X(YUVA_SD2UHD)

#define TCS_DIRECTIONS(X) X(HD2SD) X(SD2HD) X(UHD2SD) X(SD2UHD) X(UHD2HD) X(HD2UHD)

#define TCS_SAFE_VECTORS(X) \
  X(Gain) X(Gain_YUV) X(Gain_YUYV) X(Gain_UYVY) X(Offset_KEY) X(Offset_YUV) X(Offset_YUYV) X(Offset_UYVY)

#define TCS_DECLARE_MATRIX(name) TCS_API extern const float g_mat##name[4][4];
#ifdef TQCOLORSPACE_BUILDING
#define TCS_LOADED_CONST
#else
#define TCS_LOADED_CONST const
#endif
#define TCS_DECLARE_Q14(name) TCS_API extern TCS_LOADED_CONST int16_t g_s##name[8];
#define TCS_DECLARE_Q14_STD(std) TCS_Q14_VECTORS(TCS_DECLARE_Q14, std)
#define TCS_DECLARE_SAFE(name) TCS_API extern const int16_t g_sSafe_##name[8];
#define TCS_DECLARE_DIRECTION(dir) \
  TCS_API extern const float g_fYUVA_##dir##_U[4]; TCS_API extern const float g_fYUVA_##dir##_V[4]; \
  TCS_API extern const float g_fYUYV_##dir##_U[4]; TCS_API extern const float g_fYUYV_##dir##_V[4]; \
  TCS_API extern const float g_fUYVY_##dir##_U[4]; TCS_API extern const float g_fUYVY_##dir##_V[4]; \
  TCS_API extern const int16_t g_sYUVA_##dir##_UV[8]; TCS_API extern const int16_t g_yuyv_##dir##_uv[8]; \
  TCS_API extern const int16_t g_uyvy_##dir##_uv[8];
/* clang-format on */

TCS_MATRICES(TCS_DECLARE_MATRIX)
TCS_STANDARDS(TCS_DECLARE_Q14_STD)
TCS_SAFE_VECTORS(TCS_DECLARE_SAFE)
TCS_DIRECTIONS(TCS_DECLARE_DIRECTION)

#ifdef __cplusplus
}
#endif

#endif
