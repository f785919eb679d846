#include "platform/routing/PerVrfTable.h"

namespace Routing::Rib {

void throwUnknownCollection(std::string_view table, std::string_view collection) {
    throw Orb::RangeError(std::string(table) + " has no collection " + std::string(collection));
}

} // namespace Routing::Rib
