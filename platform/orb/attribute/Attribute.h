#pragma once

#include <concepts>
#include <type_traits>
#include <utility>

#include "platform/orb/attribute/Display.h"
#include "platform/orb/object/AttributeDescription.h"
#include "platform/orb/object/Entity.h"
#include "platform/orb/value/Text.h"

namespace Orb {

/// What a collection or attribute may hold: values that can be told apart, since a mutator that
/// changes nothing must tell nobody.
template <typename T>
concept AttributeValue = std::equality_comparable<T>;

/// How a value is handed in and out: small ones by value, so that a caller never holds a reference
/// into state that its own call changes.
template <typename T>
using Read = std::conditional_t<std::is_trivially_copyable_v<T> && sizeof(T) <= 2 * sizeof(void*),
                                T, const T&>;

/// One value of an entity.
template <AttributeValue T>
class Attribute {
  public:
    using Value = T;

    Attribute() = default;
    explicit Attribute(T value) : value_(std::move(value)) {}

    Read<T> value() const { return value_; }

    /// Stores the value and tells the owner's reactors, unless it is the present one.
    void valueIs(const Entity& owner, AttributeId id, Read<T> value) {
        if (value_ == value) {
            return;
        }
        value_ = value;
        owner.notify(id);
    }

    std::string text() const { return display(value_); }

    void textIs(const Entity& owner, AttributeId id, std::string_view text)
        requires HasTextForm<T>
    {
        valueIs(owner, id, valueFromStrep<T>(text));
    }

  private:
    T value_{};
};

} // namespace Orb
