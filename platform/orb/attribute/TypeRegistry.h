#pragma once

#include <map>
#include <span>
#include <string_view>
#include <vector>

#include "platform/orb/object/TypeNode.h"

namespace Orb {

/// The types that the process knows by name, in the order of their registration.
///
/// Classes hand themselves in while the program loads, in whatever order the linker picked. They
/// are registered, by unit and by position within the unit, when the registry is first asked.
class TypeRegistry {
  public:
    static TypeRegistry& instance();

    /// Registers a type; a second time has no effect.
    void typeNodeIs(const TypeNode& node);

    /// The type of that name, or null.
    const TypeNode* typeNode(std::string_view name);

    std::span<const TypeNode* const> typeNodes();

  private:
    friend class TypeRegistration;

    struct HandedIn {
        int unit;
        int position;
        const TypeNode* node;
    };

    void registerHandedIn();

    std::vector<HandedIn> handedIn_;
    std::vector<const TypeNode*> nodes_;
    std::map<std::string_view, const TypeNode*> byName_;
};

/// Hands a type in at load.
class TypeRegistration {
  public:
    TypeRegistration(int unit, int position, const TypeNode& node);
};

} // namespace Orb
