// Deduction guides for the portable kernels' helper aggregates, for compilers
// without class template argument deduction for aggregates (clang 14). The
// clang presets force-include this header ahead of every unit; it declares the
// templates (the definitions in kernels/portable/pixels.hpp add the default
// arguments) and how to deduce them from their members. It can go once
// pixels.hpp carries these guides itself.
#pragma once
#if __cplusplus >= 201703L

#include <cstddef>
#include <cstdint>

namespace tqcs::portable {

template <class T>
struct PlanarReader;
template <class T>
PlanarReader(const T *, const T *, const T *) -> PlanarReader<T>;

template <class T>
struct PlanarWriter;
template <class T>
PlanarWriter(T *, T *, T *) -> PlanarWriter<T>;

template <class T>
struct ConstAlpha;
template <class T>
ConstAlpha(T) -> ConstAlpha<T>;

template <std::ptrdiff_t kStride, std::ptrdiff_t kOffset>
struct KeyAlpha;
KeyAlpha(const uint8_t *)->KeyAlpha<1, 0>;

}  // namespace tqcs::portable

#endif
