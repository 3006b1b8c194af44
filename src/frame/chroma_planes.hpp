// The whole-plane chroma routines of kernel slots 133 to 136: the chroma
// planes of a frame resampled between 4:2:0 and 4:2:2, walked progressively
// or field by field with the two-row kernels of the table in use. Each has
// exactly the signature of its slot.
#pragma once

#include <type_traits>

#include "kernels/kernel_slots.hpp"

namespace tqcs::frame {

template <K kSlot>
using SlotRoutine = std::remove_pointer_t<typename SlotFn<kSlot>::Type>;

SlotRoutine<K::YUV420_2_YUV422_UV_Frame> YUV420_2_YUV422_UV_Frame;
SlotRoutine<K::YUV420_16_2_YUV422_16_UV_Frame> YUV420_16_2_YUV422_16_UV_Frame;
SlotRoutine<K::YUV422_2_YUV420_UV_Frame> YUV422_2_YUV420_UV_Frame;
SlotRoutine<K::YUV422_16_2_YUV420_16_UV_Frame> YUV422_16_2_YUV420_16_UV_Frame;

}  // namespace tqcs::frame
