#pragma once

#include <concepts>
#include <string>
#include <utility>
#include <vector>

#include "agent/patch/DocumentPlace.h"
#include "agent/patch/Merge.h"

namespace Agent {

/// A value of a document that differs from that of another one.
struct DocumentChange {
    std::string pointer; ///< JSON pointer of the value
    std::string before;  ///< as text; empty for a value that was not there
    std::string after;   ///< the same of one that is not there any more
};

namespace Detail {

template <typename T>
std::string valueText(const T& value) {
    if constexpr (std::same_as<T, bool>) {
        return value ? "true" : "false";
    } else if constexpr (std::same_as<T, std::string>) {
        return value;
    } else if constexpr (requires { std::to_string(value.value()); }) {
        return std::to_string(value.value());
    } else {
        std::string text;
        value.appendTo(text);
        return text;
    }
}

template <typename T>
std::string valueText(const Edit<T>& edit) {
    return edit.value() == nullptr ? std::string() : valueText(*edit.value());
}

/// Collects the values by which documents differ.
class ChangeCollector {
  public:
    template <typename T>
    void add(const DocumentPlace& place, const Edit<T>& before, const Edit<T>& after) {
        if constexpr (HasParts<T>) {
            const T none;
            if (before.value() != nullptr || after.value() != nullptr) {
                add(place, before.value() == nullptr ? none : *before.value(),
                    after.value() == nullptr ? none : *after.value());
            }
        } else if (before != after) {
            changes.push_back({place.pointer(), valueText(before), valueText(after)});
        }
    }
    template <HasMembers T>
    void add(const DocumentPlace& place, const T& before, const T& after) {
        forEachMember<T>([&](const auto& member) {
            add(DocumentPlace(place, member.key), before.*member.edit, after.*member.edit);
        });
    }
    template <typename Key, typename T>
    void add(const DocumentPlace& place, const MapPatch<Key, T>& before,
             const MapPatch<Key, T>& after) {
        forEachKey(before, after, [&](const Key& key, const Edit<T>& left, const Edit<T>& right) {
            const std::string step = valueText(key);
            add(DocumentPlace(place, step), left, right);
        });
    }

    std::vector<DocumentChange> changes;
};

} // namespace Detail

/// The values, of no parts, by which one document differs from another.
template <Detail::HasParts T>
std::vector<DocumentChange> changesBetween(const T& before, const T& after) {
    Detail::ChangeCollector collector;
    collector.add(DocumentPlace(), before, after);
    return std::move(collector.changes);
}

} // namespace Agent
