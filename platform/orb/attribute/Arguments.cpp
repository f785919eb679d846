#include "platform/orb/attribute/Arguments.h"

namespace Orb {

void throwNullInput(std::string_view attribute, std::string_view constructor) {
    const std::string_view type = constructor.substr(0, constructor.find("::Arguments::"));
    throw NullArgumentError("null _" + std::string(attribute) + " parameter to constructor of "
                            + std::string(type) + " not allowed");
}

void throwReinstantiation(std::string_view attribute, const std::string& wanted,
                          const std::string& present) {
    throw NameInUseError("Reinstantiating the pointer interface where constructor parameter "
                         "attribute _"
                         + std::string(attribute) + " has a different value of " + wanted
                         + " than the current value of " + present + " not allowed");
}

} // namespace Orb
