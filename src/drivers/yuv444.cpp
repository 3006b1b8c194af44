// Drivers of the packed YUV 4:4:4 source (root sub-table 7): every slot is a
// name only and answers "Not Implemented".
#include "drivers/driver_kit.hpp"
#include "drivers/driver_tables.hpp"

namespace tqcs::drivers {
namespace {

TQCS_NAME_ONLY(YUV_2_RGB32, Packed<3>, Packed<4>);
TQCS_NAME_ONLY(YUV_2_RGB24, Packed<3>, Packed<3>);
TQCS_NAME_ONLY(YUV_2_YUV16, Packed<3>, PackedYUV16);
TQCS_NAME_ONLY(YUV_2_YUV422, Packed<3>, Planar422<1>);
TQCS_NAME_ONLY(YUV_2_YUV420, Packed<3>, Planar420<1>);

const auto kTable = TableOf({
    TQCS_NOT_IMPLEMENTED(TCS_YUVTable, YUV_2_RGB32),
    TQCS_NOT_IMPLEMENTED(TCS_YUVTable, YUV_2_RGB24),
    TQCS_NOT_IMPLEMENTED(TCS_YUVTable, YUV_2_YUV16),
    TQCS_NOT_IMPLEMENTED(TCS_YUVTable, YUV_2_YUV422),
    TQCS_NOT_IMPLEMENTED(TCS_YUVTable, YUV_2_YUV420),
});

}  // namespace

std::span<const SlotEntry> YUVDrivers() { return kTable.entries; }
std::span<const SlotLayout> YUVLayouts() { return kTable.layouts; }

}  // namespace tqcs::drivers
