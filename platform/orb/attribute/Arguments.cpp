#include "platform/orb/attribute/Arguments.h"

namespace Orb {

void throwReinstantiation(std::string_view attribute, const std::string& wanted,
                          const std::string& present) {
    throw NameInUseError("Reinstantiating the pointer interface where constructor parameter "
                         "attribute _"
                         + std::string(attribute) + " has a different value of " + wanted
                         + " than the current value of " + present + " not allowed");
}

} // namespace Orb
