#pragma once

#include <cstddef>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

#include "agent/patch/Edit.h"

namespace Agent {

/// One member of an object of the document: its key, where a patch holds what is said of it, what
/// it is where nothing is said, and what it means, in one line for people.
template <typename Owner, typename T, typename Default>
struct Member {
    const char* key;
    Edit<T> Owner::*edit;
    Default absent;
    const char* help;
};
template <typename Owner, typename T, typename Default>
Member(const char*, Edit<T> Owner::*, Default, const char*) -> Member<Owner, T, Default>;

/// Of a member that is not there by default, or has members of its own.
struct NoDefault {};
/// Of a member whose default depends on where it stands; says how.
struct DerivedDefault {
    const char* text;
};

/// An object with fixed keys: `members()` is the tuple of its Member descriptions.
template <typename T>
concept HasMembers = requires { T::members(); };

/// Calls `visit` with each of T's member descriptions.
template <HasMembers T, typename Visit>
void forEachMember(const Visit& visit) {
    std::apply([&](const auto&... members) { (visit(members), ...); }, T::members());
}

/// The object and the type of a member.
template <auto edit>
struct MemberTypes;
template <typename O, typename T, Edit<T> O::*edit>
struct MemberTypes<edit> {
    using Owner = O;
    using Value = T;
};
template <auto edit>
using OwnerOf = typename MemberTypes<edit>::Owner;
template <auto edit>
using ValueOf = typename MemberTypes<edit>::Value;

/// The description of a member.
template <auto edit, std::size_t at = 0>
constexpr auto describe() {
    constexpr auto members = OwnerOf<edit>::members();
    static_assert(at < std::tuple_size_v<decltype(members)>, "the object does not name the member");
    constexpr auto candidate = std::get<at>(members);
    if constexpr (std::is_same_v<decltype(candidate.edit), decltype(edit)>) {
        if constexpr (candidate.edit == edit) {
            return candidate;
        } else {
            return describe<edit, at + 1>();
        }
    } else {
        return describe<edit, at + 1>();
    }
}

/// What a patch on an object says of one of its members: what goes with the object goes too.
template <auto edit>
const Edit<ValueOf<edit>>& memberOf(const Edit<OwnerOf<edit>>& object) {
    static const auto removal = Edit<ValueOf<edit>>::removal();
    static const Edit<ValueOf<edit>> nothing;
    if (object.isRemoval()) {
        return removal;
    }
    return object.value() == nullptr ? nothing : object.value()->*edit;
}

/// What a member is where nothing is said of it.
template <auto edit>
ValueOf<edit> absent() {
    constexpr auto member = describe<edit>();
    using Default = decltype(member.absent);
    static_assert(!std::is_same_v<Default, DerivedDefault>, "who asks knows the default");
    if constexpr (std::is_same_v<Default, NoDefault>) {
        return {};
    } else {
        return member.absent;
    }
}

namespace Detail {
template <typename T>
T after(const Edit<T>& member, std::optional<T> present, T absent) {
    if (member.value() != nullptr) {
        return *member.value();
    }
    return present && !member.isRemoval() ? *std::move(present) : std::move(absent);
}
} // namespace Detail

/// What a member is after a patch on its object, where it was `present`; nothing is present where
/// the object was not there. `absent` is what it is where nothing is said of it.
template <auto edit>
ValueOf<edit> after(const OwnerOf<edit>& object, std::optional<ValueOf<edit>> present,
                    ValueOf<edit> absent = Agent::absent<edit>()) {
    return Detail::after(object.*edit, std::move(present), std::move(absent));
}

/// The same of a patch that may remove the object.
template <auto edit>
ValueOf<edit> after(const Edit<OwnerOf<edit>>& object, std::optional<ValueOf<edit>> present) {
    return Detail::after(memberOf<edit>(object), std::move(present), absent<edit>());
}

} // namespace Agent
