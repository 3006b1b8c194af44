// Drivers of the packed YUV 4:4:4 source (root sub-table 7): every slot is a
// name only and answers "Not Implemented".
#include "drivers/driver_kit.hpp"
#include "drivers/driver_tables.hpp"

namespace tqcs::drivers {
namespace {

TQCS_NAMES_OF(YUV_2_RGB32);
TQCS_NAMES_OF(YUV_2_RGB24);
TQCS_NAMES_OF(YUV_2_YUV16);
TQCS_NAMES_OF(YUV_2_YUV422);
TQCS_NAMES_OF(YUV_2_YUV420);

const SlotEntry kEntries[] = {
    TQCS_NOT_IMPLEMENTED(TCS_YUVTable, YUV_2_RGB32),
    TQCS_NOT_IMPLEMENTED(TCS_YUVTable, YUV_2_RGB24),
    TQCS_NOT_IMPLEMENTED(TCS_YUVTable, YUV_2_YUV16),
    TQCS_NOT_IMPLEMENTED(TCS_YUVTable, YUV_2_YUV422),
    TQCS_NOT_IMPLEMENTED(TCS_YUVTable, YUV_2_YUV420),
};

}  // namespace

std::span<const SlotEntry> YUVDrivers() { return kEntries; }

}  // namespace tqcs::drivers
