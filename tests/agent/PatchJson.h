#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "agent/patch/DevicePatch.h"

namespace TestSupport {

/// A patch as the JSON that it could have been read from.
struct PatchJson {
    using json = nlohmann::json;

    static json of(bool value) { return value; }
    static json of(const std::string& value) { return value; }
    static json of(Vrf::VrfIdMap::VrfId value) { return value.value(); }

    template <typename T>
        requires requires(const T& value, std::string& out) { value.appendTo(out); }
    static json of(const T& value) {
        return textOf(value);
    }

    template <Agent::HasMembers T>
    static json of(const T& object) {
        json all = json::object();
        Agent::forEachMember<T>(
            [&](const auto& member) { add(all, member.key, object.*member.edit); });
        return all;
    }

    template <typename Key, typename T>
    static json of(const Agent::MapPatch<Key, T>& map) {
        json all = json::object();
        for (const auto& [key, edit] : map) {
            add(all, textOf(key), edit);
        }
        return all;
    }

  private:
    template <typename T>
    static std::string textOf(const T& value) {
        std::string text;
        value.appendTo(text);
        return text;
    }

    template <typename T>
    static void add(json& all, const std::string& key, const Agent::Edit<T>& edit) {
        if (edit.isGiven()) {
            all[key] = edit.isRemoval() ? json() : of(*edit.value());
        }
    }
};

} // namespace TestSupport
