#include "platform/orb/attribute/TypeRegistry.h"

#include <algorithm>
#include <tuple>

namespace Orb {

TypeRegistry& TypeRegistry::instance() {
    static TypeRegistry registry;
    return registry;
}

void TypeRegistry::typeNodeIs(const TypeNode& node) {
    if (byName_.emplace(node.name(), &node).second) {
        nodes_.push_back(&node);
    }
}

const TypeNode* TypeRegistry::typeNode(std::string_view name) {
    registerHandedIn();
    const auto found = byName_.find(name);
    return found == byName_.end() ? nullptr : found->second;
}

std::span<const TypeNode* const> TypeRegistry::typeNodes() {
    registerHandedIn();
    return nodes_;
}

void TypeRegistry::registerHandedIn() {
    std::stable_sort(handedIn_.begin(), handedIn_.end(), [](const HandedIn& a, const HandedIn& b) {
        return std::tie(a.unit, a.position) < std::tie(b.unit, b.position);
    });
    for (const HandedIn& handedIn : handedIn_) {
        typeNodeIs(*handedIn.node);
    }
    handedIn_.clear();
}

TypeRegistration::TypeRegistration(int unit, int position, const TypeNode& node) {
    TypeRegistry::instance().handedIn_.push_back({unit, position, &node});
}

} // namespace Orb
