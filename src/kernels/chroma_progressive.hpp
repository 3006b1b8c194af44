// Chroma resampling between 4:2:2 and 4:2:0 with the chroma sited on the
// frame (progressive material): horizontally co-sited, vertically centred
// between the two frame rows a 4:2:0 chroma row covers. Routines of the
// kernel layer that stand in no slot of the kernel table; each tier has the
// same set, and the SSE2 routines give the portable bytes for every input.
//
// Values: 8-bit samples as they stand; 16-bit samples hold 10 significant bits
// in bits 6-15, the weights apply to sample >> 6 and results are stored << 6.
//
// Down (4:2:2 -> 4:2:0): the chroma row between frame rows a and b (b at
// +srcPitch) is their mean, (a + b + 1) >> 1 - a box filter centred on the
// chroma position.
//
// Up (4:2:0 -> 4:2:2): chroma row a covers frame rows 2k and 2k + 1, which lie
// a quarter row above and below it; each takes 3:1 of a and the chroma row on
// its side, (3a + p + 2) >> 2 for the upper (p at -srcPitch) and
// (3a + n + 2) >> 2 for the lower (n at +srcPitch), written to dst and
// dst + dstPitch. The edge rows repeat: FirstRow reads no p (the upper row is
// a), LastRow reads no n (the lower row is a). A plane of one chroma row is
// FirstRow or LastRow with srcPitch 0.
//
// Arguments as the two-row chroma kernels of the table: destination rows
// first, a signed byte pitch after each row pointer that has another row, the
// chroma width in samples last; a width below 1 writes nothing.
#pragma once

#include <cstdint>
#include <type_traits>

// The routines: name, shape (Down or Up), sample type, and for Up which
// neighbours the row reads (CentredEdge).
#define TQCS_CHROMA_PROGRESSIVE_ROUTINES(X)                         \
  X(YUV422_2_YUV420_UV_Centred_Row, Down, uint8_t, Interior)        \
  X(YUV422_16_2_YUV420_16_UV_Centred_Row, Down, uint16_t, Interior) \
  X(YUV420_2_YUV422_UV_Centred_FirstRow, Up, uint8_t, First)        \
  X(YUV420_2_YUV422_UV_Centred_LastRow, Up, uint8_t, Last)          \
  X(YUV420_2_YUV422_UV_Centred_Row, Up, uint8_t, Interior)          \
  X(YUV420_16_2_YUV422_16_UV_Centred_FirstRow, Up, uint16_t, First) \
  X(YUV420_16_2_YUV422_16_UV_Centred_LastRow, Up, uint16_t, Last)   \
  X(YUV420_16_2_YUV422_16_UV_Centred_Row, Up, uint16_t, Interior)

namespace tqcs {

// Which neighbours an up row reads; an edge stands in for the missing one.
enum class CentredEdge { First, Last, Interior };

// The two argument shapes.
template <class T>
using CentredDownFn = void (*)(T *dstU, T *dstV, const T *srcU, int64_t srcUPitch, const T *srcV,
                               int64_t srcVPitch, int32_t width);
template <class T>
using CentredUpFn = void (*)(T *dstU, int64_t dstUPitch, T *dstV, int64_t dstVPitch, const T *srcU,
                             int64_t srcUPitch, const T *srcV, int64_t srcVPitch, int32_t width);

// Declares each routine with its shape: a function type declares a function.
#define TQCS_DECLARE_CENTRED(name, shape, T, edge) \
  std::remove_pointer_t<Centred##shape##Fn<T>> name;
namespace portable {
TQCS_CHROMA_PROGRESSIVE_ROUTINES(TQCS_DECLARE_CENTRED)
}
namespace sse2 {
TQCS_CHROMA_PROGRESSIVE_ROUTINES(TQCS_DECLARE_CENTRED)
}
#undef TQCS_DECLARE_CENTRED

// One tier's routines; start-up stores the best set the processor allows in
// g_pProgressiveChroma (base/state.hpp).
struct ProgressiveChroma {
#define TQCS_CENTRED_MEMBER(name, shape, T, edge) Centred##shape##Fn<T> name;
  TQCS_CHROMA_PROGRESSIVE_ROUTINES(TQCS_CENTRED_MEMBER)
#undef TQCS_CENTRED_MEMBER
};
extern const ProgressiveChroma kProgressiveChromaPortable, kProgressiveChromaSSE2;

// Defines every routine of the list in a tier's namespace as a call of the
// tier's templates CentredDown<twin> and CentredUp<twin, edge>, with twin the
// portable routine of the same name (the SIMD tail; the portable tier itself
// ignores it).
#define TQCS_DEFINE_CENTRED_Down(name, T, edge)                                                   \
  void name(T *dstU, T *dstV, const T *srcU, int64_t srcUPitch, const T *srcV, int64_t srcVPitch, \
            int32_t width) {                                                                      \
    CentredDown<&portable::name>(dstU, dstV, srcU, srcUPitch, srcV, srcVPitch, width);            \
  }
#define TQCS_DEFINE_CENTRED_Up(name, T, edge)                                             \
  void name(T *dstU, int64_t dstUPitch, T *dstV, int64_t dstVPitch, const T *srcU,        \
            int64_t srcUPitch, const T *srcV, int64_t srcVPitch, int32_t width) {         \
    CentredUp<&portable::name, CentredEdge::edge>(dstU, dstUPitch, dstV, dstVPitch, srcU, \
                                                  srcUPitch, srcV, srcVPitch, width);     \
  }
#define TQCS_DEFINE_CENTRED(name, shape, T, edge) TQCS_DEFINE_CENTRED_##shape(name, T, edge)

}  // namespace tqcs
