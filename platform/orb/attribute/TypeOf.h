#pragma once

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
concept HasArguments = requires { T::Arguments::fields(); };

template <typename T>
constexpr std::size_t argumentCount() {
    if constexpr (HasArguments<T>) {
        return std::tuple_size_v<decltype(T::Arguments::fields())>;
    } else {
        return 0;
    }
}

template <typename T, AttributeId id>
AttributeDescription describeAttribute() {
    constexpr auto at = T::orbAttribute(AttributeTag<id>{});
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

template <typename T, std::size_t index>
AttributeDescription describeArgument() {
    constexpr AttributeId id = firstAttributeId + index;
    static_assert(!Declares<T, id>, "the constructor attributes take the first numbers");
    constexpr auto field = std::get<index>(T::Arguments::fields());
    return {field.name, id,
            [](const Entity& entity) {
                constexpr auto where = std::get<index>(T::Arguments::fields());
                return display(static_cast<const T&>(entity).arguments().*where.member);
            },
            nullptr};
}

template <typename T>
std::vector<AttributeDescription> listAttributes() {
    std::vector<AttributeDescription> attributes;
    [&]<std::size_t... index>(std::index_sequence<index...>) {
        (attributes.push_back(describeArgument<T, index>()), ...);
    }(std::make_index_sequence<argumentCount<T>()>());
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
