#include "platform/orb/attribute/References.h"

#include "platform/orb/value/Error.h"

namespace Orb {

void throwNullArgument(std::string_view attribute, std::string_view type) {
    const std::string name(attribute);
    throw NullArgumentError("null _" + name + " parameter to mutator for " + std::string(type)
                            + "::" + name + " not allowed\"");
}

} // namespace Orb
