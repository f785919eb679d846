#include "agent/document/JsonReader.h"

#include <nlohmann/json.hpp>

#include "agent/base/Errors.h"

namespace Agent {

using nlohmann::json;

namespace {

const json& checked(const json* value, bool (json::*isOfType)() const noexcept) {
    if (value == nullptr || !(value->*isOfType)()) {
        throw FailureError(
            "JSON that cannot be understood: "
            + (value == nullptr ? "a value is missing" : value->dump(-1, ' ', true)));
    }
    return *value;
}

} // namespace

bool JsonValue::isNull() const { return value_ != nullptr && value_->is_null(); }

bool JsonValue::isObject() const { return value_ != nullptr && value_->is_object(); }

JsonValue JsonValue::member(std::string_view key) const {
    const json& object = checked(value_, &json::is_object);
    const auto found = object.find(key);
    return JsonValue(found == object.end() ? nullptr : &*found);
}

const std::string& JsonValue::string() const {
    return checked(value_, &json::is_string).get_ref<const std::string&>();
}

bool JsonValue::boolean() const { return checked(value_, &json::is_boolean).get<bool>(); }

double JsonValue::number() const { return checked(value_, &json::is_number).get<double>(); }

std::int64_t JsonValue::integer() const {
    return checked(value_, &json::is_number_integer).get<std::int64_t>();
}

std::vector<std::string> JsonValue::strings() const {
    std::vector<std::string> strings;
    for (const json& item : checked(value_, &json::is_array)) {
        strings.push_back(JsonValue(&item).string());
    }
    return strings;
}

ParsedJson::ParsedJson(std::string_view text) {
    json parsed = json::parse(text, nullptr, false);
    if (!parsed.is_discarded()) {
        json_ = std::make_unique<json>(std::move(parsed));
    }
}

ParsedJson::ParsedJson(ParsedJson&& other) noexcept = default;
ParsedJson& ParsedJson::operator=(ParsedJson&& other) noexcept = default;
ParsedJson::~ParsedJson() = default;

} // namespace Agent
