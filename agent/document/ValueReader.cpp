#include "agent/document/ValueReader.h"

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>

namespace Agent {

using Vrf::VrfIdMap::VrfId;

const std::string& readString(const nlohmann::json& json, const DocumentPlace& place) {
    if (!json.is_string()) {
        place.refuse("must be a string");
    }
    return json.get_ref<const std::string&>();
}

void checkName(std::string_view name, const DocumentPlace& place) {
    if (name.empty()) {
        place.refuse("must not be the empty name");
    }
    if (name.find('\0') != std::string_view::npos) {
        place.refuse("must not hold a zero byte");
    }
}

void readValue(const nlohmann::json& json, const DocumentPlace& place, bool& value) {
    if (!json.is_boolean()) {
        place.refuse("must be true or false");
    }
    value = json.get<bool>();
}

void readValue(const nlohmann::json& json, const DocumentPlace& place, VrfId& value) {
    constexpr std::uint64_t largest = std::numeric_limits<VrfId::Number>::max();
    if (!json.is_number_unsigned() || json.get<std::uint64_t>() > largest) {
        place.refuse("must be a whole number from 0 to " + std::to_string(largest));
    }
    value = VrfId(json.get<VrfId::Number>());
    if (value == VrfId::invalid()) {
        place.refuse("must not be " + std::to_string(value.value()) + ", which is no VRF's id");
    }
}

} // namespace Agent
