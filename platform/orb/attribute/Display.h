#pragma once

#include <ostream>
#include <string>

#include "platform/orb/object/Ptr.h"
#include "platform/orb/value/Text.h"

namespace Orb {

template <typename T>
concept Streamable = requires(std::ostream& out, const T& value) { out << value; };

/// What `print` writes of the value, flags as words.
std::string printed(const void* value, void (*print)(std::ostream& out, const void* value));

/// How messages show a value: as it streams, else by its text form.
template <typename T>
std::string display(const T& value) {
    if constexpr (HasTextForm<T> && !Streamable<T>) {
        return valueToStrep(value);
    } else {
        return printed(&value, [](std::ostream& out, const void* shown) {
            out << *static_cast<const T*>(shown);
        });
    }
}

/// Objects show as their type and, since two of a type differ only in identity, their address.
std::string displayObject(const PtrInterface* object);

template <typename T>
std::string display(const Ptr<T>& object) {
    return displayObject(object.get());
}

} // namespace Orb
