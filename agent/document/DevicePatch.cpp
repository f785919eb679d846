#include "agent/document/DevicePatch.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "agent/document/ValueReader.h"

namespace Agent {

namespace {

using json = nlohmann::json;

template <typename T>
concept HasMembers = requires { T::members(); };

template <HasMembers T>
void readValue(const json& object, const Place& place, T& value);
template <typename Key, typename T>
void readValue(const json& object, const Place& place, MapPatch<Key, T>& value);

template <typename T>
void readChange(const json& value, const Place& place, Change<T>& change) {
    if (value.is_null()) {
        change = Change<T>::removal();
        return;
    }
    T read{};
    readValue(value, place, read);
    change = Change<T>::to(std::move(read));
}

void checkObject(const json& value, const Place& place) {
    if (!value.is_object()) {
        place.refuse("must be an object");
    }
}

/// An object with fixed keys.
template <HasMembers T>
void readValue(const json& object, const Place& place, T& value) {
    checkObject(object, place);
    for (const auto& item : object.items()) {
        const Place at(place, item.key());
        const auto readIfNamed = [&](const auto& member) {
            if (item.key() != member.key) {
                return false;
            }
            readChange(item.value(), at, value.*member.change);
            return true;
        };
        const bool known = std::apply(
            [&](const auto&... members) { return (readIfNamed(members) || ...); }, T::members());
        if (!known) {
            at.refuse("unknown key");
        }
    }
}

/// An object whose keys are names or addresses. Two spellings of one address are one key.
template <typename Key, typename T>
void readValue(const json& object, const Place& place, MapPatch<Key, T>& value) {
    checkObject(object, place);
    value.reserve(object.size());
    for (const auto& item : object.items()) {
        const Place at(place, item.key());
        auto& [key, change] = value.emplace_back(readText<Key>(item.key(), at), Change<T>());
        readChange(item.value(), at, change);
    }
    const auto byKey = [](const auto& a, const auto& b) { return a.first < b.first; };
    std::sort(value.begin(), value.end(), byKey);
    const auto twice =
        std::adjacent_find(value.begin(), value.end(),
                           [](const auto& a, const auto& b) { return a.first == b.first; });
    if (twice != value.end()) {
        std::string text;
        twice->first.appendTo(text);
        Place(place, text).refuse("is given twice, spelled in two ways");
    }
}

} // namespace

DevicePatch readDevicePatch(const json& patch) {
    DevicePatch read;
    readValue(patch, Place(), read);
    return read;
}

} // namespace Agent
