#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Orb {

class Entity;

/// Identifies an attribute within its class. Numbers stand in the declarations and go over the
/// wire of attribute logs, so they never change; the first attribute of a class is 258.
using AttributeId = std::uint32_t;

constexpr AttributeId firstAttributeId = 258;
/// Highest number that a declaration may use.
constexpr AttributeId lastAttributeId = firstAttributeId + 61;

/// One attribute as the generic interface sees it: any attribute can be read as text, a plain
/// value can be set through text.
struct AttributeDescription {
    std::string_view name;
    AttributeId id;
    std::string (*get)(const Entity&);
    /// Null for what can't be set through text. Throws ParseError, RangeError.
    void (*set)(Entity&, std::string_view text);
};

} // namespace Orb
