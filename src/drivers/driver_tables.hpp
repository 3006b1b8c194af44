#pragma once

#include "core/api.hpp"

namespace tqcs {

// Stores every driver of sub-tables 0 to 7, the empty stub in the slots that
// offer no operation.
void FillDriverTables(StaticTables &tables);

}  // namespace tqcs
