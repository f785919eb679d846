#pragma once

#include "platform/orb/object/AttributeDescription.h"

namespace Orb {

/// Names the declaration of number `id` among a class's overloads of orbAttribute().
template <AttributeId id>
struct AttributeTag {};

/// A declared attribute: its name and the member that holds it.
template <typename Class, typename Holder>
struct AttributeAt {
    const char* name;
    Holder Class::*holder;
};
template <typename Class, typename Holder>
AttributeAt(const char*, Holder Class::*) -> AttributeAt<Class, Holder>;

} // namespace Orb
