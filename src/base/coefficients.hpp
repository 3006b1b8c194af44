// Coefficient tables: the exported ones are declared in the public header;
// this adds the derivation routine and the module-private vectors of the SIMD
// kernels.
#pragma once

#include <TQColorSpace/TQColorSpace.h>

#include <cstdint>

namespace tqcs {

// Q14 of a matrix coefficient: times 16384 in single precision, half away from
// zero, truncated into 16 bits.
int16_t ToQ14(float coefficient);

// Writes every derived vector of the three standards. Runs once at start-up,
// before any kernel slot is filled.
void DeriveCoefficientTables();

// Private vectors per standard, for source order R-first [0] and B-first [1]:
// Y-with-U (Yr, Yg, Yb, 1, Ur, Ug, 8192, 1025) and Y-with-V
// (Yr, Yg, Yb, 1, 8192, Vg, Vb, 1025), their copies with lane 7 = 257, and for
// SD and HD the pairs Bu x4 / Rv x4 and Gu x4 / Gv x4.
struct PrivateVectors {
  alignas(16) int16_t yu[2][8];
  alignas(16) int16_t yv[2][8];
  alignas(16) int16_t yu257[2][8];
  alignas(16) int16_t yv257[2][8];
  alignas(16) int16_t buRv[8];
  alignas(16) int16_t guGv[8];
};
enum Standard { kSD = 0, kHD = 1, kUHD = 2 };
extern PrivateVectors g_private[3];

}  // namespace tqcs
