#pragma once

#include <concepts>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/orb/attribute/AttributeAt.h"
#include "platform/orb/attribute/Display.h"
#include "platform/orb/object/AttributeDescription.h"
#include "platform/orb/object/Entity.h"
#include "platform/orb/object/TypeNode.h"

namespace Orb {

template <typename T, AttributeId id>
concept Declares = requires { T::orbAttribute(AttributeTag<id>{}); };

template <typename T>
concept HasArguments = requires { typename T::Arguments; };

template <typename T>
constexpr AttributeId argumentCount() {
    if constexpr (HasArguments<T>) {
        return T::Arguments::orbCount;
    } else {
        return 0;
    }
}

/// The entity that T derives from; T itself where that is none but Entity.
template <typename T>
struct EntityBase {
    using Type = T;
};
template <typename T>
    requires requires { typename T::OrbBase; }
struct EntityBase<T> {
    using Type = typename T::OrbBase;
};

namespace Detail {

/// Converts to a pointer to any class that T derives from, but not by way of its declared base.
template <typename T>
struct UndeclaredBase {
    template <typename Base>
        requires(std::derived_from<T, Base> && !std::same_as<T, Base>
                 && (std::same_as<typename EntityBase<T>::Type, T>
                     || !std::derived_from<typename EntityBase<T>::Type, Base>))
    operator const Base*() const;
};

struct NoBase {};
NoBase orbNamedType(...);

/// Every class with a name is found by an overload of orbNamedType() beside it.
template <typename T>
concept NamesItsBase = requires {
    { orbNamedType(UndeclaredBase<T>()) } -> std::same_as<NoBase>;
};

} // namespace Detail

template <typename T, AttributeId id>
AttributeDescription describeAttribute() {
    static_assert(id >= firstAttributeId + argumentCount<T>(),
                  "the constructor attributes take the first numbers");
    constexpr auto at = T::orbAttribute(AttributeTag<id>{});
    if constexpr (Declares<typename EntityBase<T>::Type, id>) {
        constexpr auto inherited = EntityBase<T>::Type::orbAttribute(AttributeTag<id>{});
        static_assert(std::same_as<decltype(at), decltype(inherited)>,
                      "the number is that of an attribute of the base");
    }
    AttributeDescription description{at.name, id, nullptr, nullptr};
    description.get = [](const Entity& entity) {
        constexpr auto where = T::orbAttribute(AttributeTag<id>{});
        return (static_cast<const T&>(entity).*where.holder).text();
    };
    if constexpr (requires(T& entity) { (entity.*at.holder).textIs(entity, id, ""); }) {
        description.set = [](Entity& entity, std::string_view text) {
            constexpr auto where = T::orbAttribute(AttributeTag<id>{});
            (static_cast<T&>(entity).*where.holder).textIs(entity, id, text);
        };
    }
    return description;
}

/// Lists the constructor attributes of T, which take the first numbers.
template <typename T>
struct ArgumentList {
    std::vector<AttributeDescription>& attributes;

    template <auto member>
    void field(const char* name) {
        const auto id = static_cast<AttributeId>(firstAttributeId + attributes.size());
        attributes.push_back({name, id,
                              [](const Entity& entity) {
                                  return display(static_cast<const T&>(entity).arguments().*member);
                              },
                              nullptr});
    }
};

template <typename T>
std::vector<AttributeDescription> listAttributes() {
    static_assert(Detail::NamesItsBase<T>,
                  "an entity that derives from another is declared with ORB_DERIVED_ENTITY");
    if constexpr (HasArguments<typename EntityBase<T>::Type>) {
        static_assert(std::same_as<typename T::Arguments, typename EntityBase<T>::Type::Arguments>,
                      "a derived entity is made from the constructor attributes of its base");
    }
    std::vector<AttributeDescription> attributes;
    if constexpr (HasArguments<T>) {
        ArgumentList<T> arguments{attributes};
        T::Arguments::visitFields(arguments);
    }
    const auto declared = [&]<std::size_t offset>(std::integral_constant<std::size_t, offset>) {
        constexpr AttributeId id = firstAttributeId + offset;
        if constexpr (Declares<T, id>) {
            attributes.push_back(describeAttribute<T, id>());
        }
    };
    [&]<std::size_t... offset>(std::index_sequence<offset...>) {
        (declared(std::integral_constant<std::size_t, offset>{}), ...);
    }(std::make_index_sequence<lastAttributeId - firstAttributeId + 1>());
    return attributes;
}

/// Every attribute of T, in the order of their numbers; only entities show theirs.
template <typename T>
std::span<const AttributeDescription> attributesOf() {
    if constexpr (std::is_base_of_v<Entity, T>) {
        static const std::vector<AttributeDescription> table = listAttributes<T>();
        return table;
    } else {
        return {};
    }
}

/// How the framework makes a T from a name: from the name itself where T takes one.
template <typename T>
constexpr TypeNode::Create creatorOf() {
    if constexpr (std::is_constructible_v<T, const Name&>) {
        return [](const Name& name) { return Ptr<Entity>(makePtr<T>(name)); };
    } else if constexpr (std::is_default_constructible_v<T> && std::is_base_of_v<Entity, T>) {
        return [](const Name&) { return Ptr<Entity>(makePtr<T>()); };
    } else {
        return nullptr;
    }
}

/// The one node of a type.
template <typename T>
const TypeNode& typeNodeOf() {
    static const TypeNode node(T::orbTypeName, attributesOf<T>(), creatorOf<T>());
    return node;
}

/// The one node of a value type.
template <typename T>
const TypeNode& valueTypeNodeOf() {
    static const TypeNode node(T::valueTypeName(), {}, nullptr);
    return node;
}

} // namespace Orb
