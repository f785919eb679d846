#pragma once

#include <concepts>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "agent/patch/DocumentPlace.h"
#include "platform/lanx/IntfId.h"
#include "platform/lanx/NamespaceName.h"
#include "platform/orb/value/Error.h"
#include "platform/vrf/VrfId.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// The values of the device document, out of JSON or out of the text of a key. All throw
/// DocumentError at `place`.

/// The string of a JSON string.
const std::string& readString(const nlohmann::json& json, const DocumentPlace& place);

/// Refuses what no name may be: nothing, or with a zero byte in it.
void checkName(std::string_view name, const DocumentPlace& place);

/// The names and addresses that a text stands for.
template <typename T>
T readText(std::string_view text, const DocumentPlace& place) {
    if constexpr (std::same_as<T, Lanx::IntfId> || std::same_as<T, Lanx::NamespaceName>
                  || std::same_as<T, L3::VrfName>) {
        checkName(text, place);
    }
    try {
        return T::fromString(text);
    } catch (const Orb::Error& error) {
        place.refuse(error.what());
    }
}

inline void readValue(const nlohmann::json& json, const DocumentPlace& place, std::string& value) {
    value = readString(json, place);
}
void readValue(const nlohmann::json& json, const DocumentPlace& place, bool& value);
void readValue(const nlohmann::json& json, const DocumentPlace& place, Vrf::VrfIdMap::VrfId& value);

template <typename T>
    requires requires(std::string_view text) {
        { T::fromString(text) } -> std::same_as<T>;
    }
void readValue(const nlohmann::json& json, const DocumentPlace& place, T& value) {
    value = readText<T>(readString(json, place), place);
}

} // namespace Agent
