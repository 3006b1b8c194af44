// SSE2 chroma resampling with the chroma sited on the frame (see
// kernels/chroma_progressive.hpp for the filters and arguments).
//
// (a + b + 1) >> 1 is the unsigned rounding average. In bytes,
// (3a + b + 2) >> 2 == rd(a, fl(a, b)) with fl the floor average, which is the
// rounding average on complements: fl(a, b) == ~rd(~a, ~b). 10-bit samples
// are weighed as sample >> 6 in 16-bit lanes and shifted back.
#include "kernels/chroma_progressive.hpp"

#include "kernels/x86/in_blocks_of.hpp"
#include "kernels/x86/row.hpp"

namespace tqcs::sse2 {
namespace {

using x86::Advance;

// Samples of a block: one vector of each row.
template <class T>
constexpr int kBlock = 16 / sizeof(T);

template <class T>
struct Lanes;
template <>
struct Lanes<uint8_t> {
  static __m128i Read(const uint8_t *p) { return x86::Load(p); }
  static void Write(uint8_t *p, __m128i v) { x86::Store(p, v); }
  static __m128i Avg(__m128i a, __m128i b) { return _mm_avg_epu8(a, b); }
};
template <>
struct Lanes<uint16_t> {
  static __m128i Read(const uint16_t *p) { return x86::ShiftWords<-6>(x86::Load(p)); }
  static void Write(uint16_t *p, __m128i v) { x86::Store(p, x86::ShiftWords<6>(v)); }
  static __m128i Avg(__m128i a, __m128i b) { return _mm_avg_epu16(a, b); }
};

inline __m128i Not(__m128i x) { return _mm_xor_si128(x, _mm_set1_epi32(-1)); }

// (3a + b + 2) >> 2. Byte lanes have no room for the sum: a chain of
// averages. 10-bit values in 16-bit lanes have (4 * 1023 + 2 < 2^16): the sum.
template <class T>
inline __m128i Merge31(__m128i a, __m128i b) {
  if constexpr (sizeof(T) == 1) {
    return _mm_avg_epu8(a, Not(_mm_avg_epu8(Not(a), Not(b))));
  } else {
    const __m128i a3b = _mm_add_epi16(_mm_add_epi16(a, _mm_add_epi16(a, a)), b);
    return _mm_srli_epi16(_mm_add_epi16(a3b, _mm_set1_epi16(2)), 2);
  }
}

template <auto kTwin, class T>
void CentredDown(T *dstU, T *dstV, const T *srcU, int64_t srcUPitch, const T *srcV,
                 int64_t srcVPitch, int32_t width) {
  using L = Lanes<T>;
  const auto mean = [](const T *row, int64_t pitch) {
    return L::Avg(L::Read(row), L::Read(Advance(row, pitch)));
  };
  x86::InBlocksOf<kTwin, kBlock<T>>(
      [=](T *u, T *v, const T *su, const T *sv) {
        L::Write(u, mean(su, srcUPitch));
        L::Write(v, mean(sv, srcVPitch));
      },
      dstU, dstV, srcU, srcUPitch, srcV, srcVPitch, width);
}

// Both destination rows of one block, written after every source row is read.
template <CentredEdge E, class T>
inline void UpBlock(T *dst, int64_t dstPitch, const T *src, int64_t srcPitch) {
  using L = Lanes<T>;
  const __m128i a = L::Read(src);
  const __m128i p = E == CentredEdge::First ? a : L::Read(Advance(src, -srcPitch));
  const __m128i n = E == CentredEdge::Last ? a : L::Read(Advance(src, srcPitch));
  const __m128i upper = Merge31<T>(a, p), lower = Merge31<T>(a, n);
  L::Write(dst, upper);
  L::Write(Advance(dst, dstPitch), lower);
}

template <auto kTwin, CentredEdge E, class T>
void CentredUp(T *dstU, int64_t dstUPitch, T *dstV, int64_t dstVPitch, const T *srcU,
               int64_t srcUPitch, const T *srcV, int64_t srcVPitch, int32_t width) {
  x86::InBlocksOf<kTwin, kBlock<T>>(
      [=](T *u, T *v, const T *su, const T *sv) {
        UpBlock<E>(u, dstUPitch, su, srcUPitch);
        UpBlock<E>(v, dstVPitch, sv, srcVPitch);
      },
      dstU, dstUPitch, dstV, dstVPitch, srcU, srcUPitch, srcV, srcVPitch, width);
}

}  // namespace

TQCS_CHROMA_PROGRESSIVE_ROUTINES(TQCS_DEFINE_CENTRED)

}  // namespace tqcs::sse2
