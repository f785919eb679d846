#include "platform/orb/object/TypeNode.h"

#include "platform/orb/object/Entity.h"

namespace Orb {

const AttributeDescription* TypeNode::attribute(std::string_view name) const {
    for (const AttributeDescription& attribute : attributes_) {
        if (attribute.name == name) {
            return &attribute;
        }
    }
    return nullptr;
}

Ptr<Entity> TypeNode::create(const Name& name) const {
    return create_ == nullptr ? Ptr<Entity>() : create_(name);
}

} // namespace Orb
