#pragma once

#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

#include "platform/orb/attribute/Attribute.h"
#include "platform/orb/attribute/Children.h"
#include "platform/orb/attribute/Collection.h"
#include "platform/orb/attribute/References.h"
#include "platform/orb/attribute/TypeOf.h"

namespace Orb {

/// The declarations of a class as types, for code that is the same for every class.

template <AttributeId id>
using DeclaredId = std::integral_constant<AttributeId, id>;

namespace Detail {

template <typename T, std::size_t... offset>
auto declaredIds(std::index_sequence<offset...>) -> decltype(std::tuple_cat(
    std::conditional_t<Declares<T, firstAttributeId + offset>,
                       std::tuple<DeclaredId<firstAttributeId + offset>>, std::tuple<>>{}...));

} // namespace Detail

/// A tuple of the DeclaredId of every declaration of T, in the order of their numbers; constructor
/// attributes are not among them.
template <typename T>
using DeclaredIds = decltype(Detail::declaredIds<T>(
    std::make_index_sequence<lastAttributeId - firstAttributeId + 1>()));

template <typename T, AttributeId id>
using DeclaredHolder =
    std::remove_reference_t<decltype(std::declval<T&>()
                                     .*T::orbAttribute(AttributeTag<id>{}).holder)>;

/// Calls visit(DeclaredId) for every declaration.
template <typename T, typename Visit>
void forEachDeclared(Visit visit) {
    std::apply([&](auto... id) { (visit(id), ...); }, DeclaredIds<T>());
}

/// Calls visit(DeclaredId) for the declaration of that number; answers whether there is one.
template <typename T, typename Visit>
bool visitDeclared(AttributeId number, Visit visit) {
    const auto visitIf = [&](auto id) {
        if (number != id) {
            return false;
        }
        visit(id);
        return true;
    };
    return std::apply([&](auto... id) { return (visitIf(id) || ...); }, DeclaredIds<T>());
}

template <typename Holder>
inline constexpr bool isPlainAttribute = false;
template <typename T>
inline constexpr bool isPlainAttribute<Attribute<T>> = true;

template <typename Holder>
inline constexpr bool isValueCollection = false;
template <typename Map, typename Key, typename T>
inline constexpr bool isValueCollection<Collection<Map, Key, T>> = true;

template <typename Holder>
inline constexpr bool isChildren = false;
template <typename T>
inline constexpr bool isChildren<Children<T>> = true;

template <typename Holder>
inline constexpr bool isReferences = false;
template <typename T>
inline constexpr bool isReferences<References<T>> = true;

template <typename Holder>
inline constexpr bool isMembers = isChildren<Holder> || isReferences<Holder>;

} // namespace Orb
