#pragma once

#include "platform/orb/attribute/TypeOf.h"
#include "platform/orb/attribute/TypeRegistry.h"

/// What the source of a declared class has, once: the one place where the class's type node, with
/// all that describes its attributes, is compiled. `Class` is declared with ORB_ENTITY or ORB_TYPE.
#define ORB_DEFINE_TYPE(Class)                                                                     \
    const Orb::TypeNode& Class::fwkType() { return Orb::typeNodeOf<Class>(); }                     \
    const Orb::TypeNode* Class::fwkTypeNode() const { return &fwkType(); }

/// Registers a class when the program loads. It stands beside ORB_DEFINE_TYPE: whoever makes an
/// object of the class, or asks for its type, has it registered, also out of a static library.
/// `label` is unique within the source.
#define ORB_REGISTER(label, Class, unit, position)                                                 \
    static const Orb::TypeRegistration orbRegistered##label(unit, position, Class::fwkType());

/// The same of a value type, which has no attributes and no node of its own.
#define ORB_REGISTER_VALUE(label, Class, unit, position)                                           \
    static const Orb::TypeRegistration orbRegistered##label(unit, position,                        \
                                                            Orb::valueTypeNodeOf<Class>());
