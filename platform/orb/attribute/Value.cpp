#include "platform/orb/attribute/Value.h"

namespace Orb {

void rethrowFromDeserializeAttribute(const RangeError& error, std::string_view attribute) {
    throw RangeError(std::string(attribute) + ": " + error.what());
}

} // namespace Orb
