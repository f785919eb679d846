#pragma once

#include <utility>

#include "agent/patch/MapPatch.h"
#include "agent/patch/Member.h"

/// Operations on patches of any part of the document. A patch that removes nothing is a document.
namespace Agent {

namespace Detail {

template <typename T>
inline constexpr bool isMap = false;
template <typename Key, typename T>
inline constexpr bool isMap<MapPatch<Key, T>> = true;

/// Has members that a patch may change one by one.
template <typename T>
concept HasParts = HasMembers<T> || isMap<T>;

/// Calls `visit` with each key of either map and what each says of it, by rising key.
template <typename Key, typename T, typename Visit>
void forEachKey(const MapPatch<Key, T>& left, const MapPatch<Key, T>& right, const Visit& visit) {
    const Edit<T> nothing;
    auto l = left.begin();
    auto r = right.begin();
    while (l != left.end() || r != right.end()) {
        const bool isLeft = r == right.end() || (l != left.end() && l->first <= r->first);
        const bool isRight = l == left.end() || (r != right.end() && r->first <= l->first);
        visit(isLeft ? l->first : r->first, isLeft ? l->second : nothing,
              isRight ? r->second : nothing);
        l += isLeft ? 1 : 0;
        r += isRight ? 1 : 0;
    }
}

/// What `combine` makes of two patches, member by member.
template <HasMembers T, typename Combine>
T combined(const T& left, const T& right, const Combine& combine) {
    T result;
    forEachMember<T>([&](const auto& member) {
        result.*member.edit = combine(left.*member.edit, right.*member.edit);
    });
    return result;
}
template <typename Key, typename T, typename Combine>
MapPatch<Key, T> combined(const MapPatch<Key, T>& left, const MapPatch<Key, T>& right,
                          const Combine& combine) {
    MapPatch<Key, T> result;
    forEachKey(left, right, [&](const Key& key, const Edit<T>& before, const Edit<T>& after) {
        if (Edit<T> edit = combine(before, after); edit.isGiven()) {
            result.append(key) = std::move(edit);
        }
    });
    return result;
}

} // namespace Detail

/// Whether a patch says nothing.
template <typename Key, typename T>
bool isEmpty(const MapPatch<Key, T>& patch) {
    return patch.empty();
}
template <HasMembers T>
bool isEmpty(const T& patch) {
    bool empty = true;
    forEachMember<T>([&](const auto& member) { empty = empty && !(patch.*member.edit).isGiven(); });
    return empty;
}

/// What a document says after a patch.
template <typename T>
Edit<T> merged(const Edit<T>& document, const Edit<T>& patch) {
    if (patch.value() == nullptr) {
        return patch.isRemoval() ? Edit<T>() : document;
    }
    if constexpr (Detail::HasParts<T>) {
        return Edit<T>::to(
            merged(document.value() == nullptr ? T() : *document.value(), *patch.value()));
    } else {
        return patch;
    }
}
template <Detail::HasParts T>
T merged(const T& document, const T& patch) {
    return Detail::combined(document, patch, [](const auto& before, const auto& change) {
        return merged(before, change);
    });
}

/// The patch that leads from one document to another; to an empty one, it withdraws what there is.
template <typename T>
Edit<T> difference(const Edit<T>& from, const Edit<T>& to) {
    if (from.value() == nullptr || to.value() == nullptr) {
        return from.value() == nullptr ? to : Edit<T>::removal();
    }
    if constexpr (Detail::HasParts<T>) {
        T inner = difference(*from.value(), *to.value());
        return isEmpty(inner) ? Edit<T>() : Edit<T>::to(std::move(inner));
    } else {
        return *from.value() == *to.value() ? Edit<T>() : to;
    }
}
template <Detail::HasParts T>
T difference(const T& from, const T& to) {
    return Detail::combined(
        from, to, [](const auto& before, const auto& after) { return difference(before, after); });
}

} // namespace Agent
