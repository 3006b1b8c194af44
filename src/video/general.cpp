// The entries of root sub-table 0.
#include "video/general.hpp"

namespace tqcs::video {

std::span<const SlotEntry> GeneralOperations() {
#define TQCS_VIDEO_ENTRY(n, name, ret, params) SlotEntry{n, Erase(&name)},
  static const SlotEntry entries[] = {TCS_GENERAL_SLOTS(TQCS_VIDEO_ENTRY)};
#undef TQCS_VIDEO_ENTRY
  return entries;
}

}  // namespace tqcs::video
