#pragma once

#include <ostream>

#include "agent/base/Colour.h"
#include "agent/viplog/VipLogReader.h"

namespace Agent {

/// Prints the tables for people, one per VRF and family.
void printVipTables(std::ostream& out, const VipLogReader& tables, Colour colour);

/// Prints them as one JSON document on one line.
void printVipTablesAsJson(std::ostream& out, const VipLogReader& tables);

} // namespace Agent
