// The routine sets of the frame-sited chroma routines, one per tier.
#include "kernels/chroma_progressive.hpp"

namespace tqcs {

#define TQCS_CENTRED_PORTABLE(name, shape, T, edge) &portable::name,
#define TQCS_CENTRED_SSE2(name, shape, T, edge) &sse2::name,
const ProgressiveChroma kProgressiveChromaPortable{
    TQCS_CHROMA_PROGRESSIVE_ROUTINES(TQCS_CENTRED_PORTABLE)};
const ProgressiveChroma kProgressiveChromaSSE2{TQCS_CHROMA_PROGRESSIVE_ROUTINES(TQCS_CENTRED_SSE2)};
#undef TQCS_CENTRED_PORTABLE
#undef TQCS_CENTRED_SSE2

}  // namespace tqcs
