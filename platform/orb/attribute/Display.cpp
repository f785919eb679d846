#include "platform/orb/attribute/Display.h"

#include <sstream>

#include "platform/orb/object/TypeNode.h"

namespace Orb {

std::string printed(const void* value, void (*print)(std::ostream& out, const void* value)) {
    std::ostringstream out;
    out << std::boolalpha;
    print(out, value);
    return out.str();
}

std::string displayObject(const PtrInterface* object) {
    if (object == nullptr) {
        return "null";
    }
    std::ostringstream out;
    if (const TypeNode* type = object->fwkTypeNode()) {
        out << type->name() << '@';
    }
    out << static_cast<const void*>(object);
    return out.str();
}

} // namespace Orb
