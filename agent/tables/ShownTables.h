#pragma once

#include <ostream>
#include <string>

#include <directnet/tables.hpp>

#include "agent/base/Colour.h"

namespace Agent {

/// How tables are shown: as JSON or as tables and lines for people.
struct TablesForm {
    bool json = false;
    Colour colour;
};

/// Shows "routes", "vias", "vrfs" or "leaks" of one VRF, or of all if none is named, as the tables
/// are now. Throws FailureError if there is no such VRF and when the output takes no more.
void showTables(std::ostream& out, const directnet::Tables& tables, const std::string& topic,
                const std::string& vrf, const TablesForm& form);

} // namespace Agent
