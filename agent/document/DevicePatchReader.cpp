#include "agent/document/DevicePatchReader.h"

#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "agent/document/ValueReader.h"

namespace Agent {

namespace {

using json = nlohmann::json;

template <HasMembers T>
void readValue(const json& object, const DocumentPlace& place, T& value);
template <typename Key, typename T>
void readValue(const json& object, const DocumentPlace& place, MapPatch<Key, T>& value);

template <typename T>
void readEdit(const json& value, const DocumentPlace& place, Edit<T>& edit) {
    if (value.is_null()) {
        edit = Edit<T>::removal();
        return;
    }
    T read{};
    readValue(value, place, read);
    edit = Edit<T>::to(std::move(read));
}

void checkObject(const json& value, const DocumentPlace& place) {
    if (!value.is_object()) {
        place.refuse("must be an object");
    }
}

/// An object with fixed keys.
template <HasMembers T>
void readValue(const json& object, const DocumentPlace& place, T& value) {
    checkObject(object, place);
    for (const auto& item : object.items()) {
        const DocumentPlace at(place, item.key());
        const auto readIfNamed = [&](const auto& member) {
            if (item.key() != member.key) {
                return false;
            }
            readEdit(item.value(), at, value.*member.edit);
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
void readValue(const json& object, const DocumentPlace& place, MapPatch<Key, T>& value) {
    checkObject(object, place);
    value.reserve(object.size());
    for (const auto& item : object.items()) {
        const DocumentPlace at(place, item.key());
        readEdit(item.value(), at, value.append(readText<Key>(item.key(), at)));
    }
    if (const Key* twice = value.sort()) {
        std::string text;
        twice->appendTo(text);
        DocumentPlace(place, text).refuse("is given twice, spelled in two ways");
    }
}

} // namespace

DevicePatch readDevicePatch(const json& patch) {
    DevicePatch read;
    readValue(patch, DocumentPlace(), read);
    return read;
}

} // namespace Agent
