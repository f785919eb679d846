#pragma once

#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace Agent {

/// A value in a ParsedJson, to which it refers, or no value. The functions that return its contents
/// throw FailureError for a value of another type and for no value.
class JsonValue {
  public:
    explicit JsonValue(const nlohmann::json* value) : value_(value) {}

    bool exists() const { return value_ != nullptr; }
    bool isNull() const;
    bool isObject() const;

    /// The member of an object; no value if the object has no such member.
    JsonValue member(std::string_view key) const;

    const std::string& string() const;
    bool boolean() const;
    double number() const;
    std::int64_t integer() const;
    std::vector<std::string> strings() const;

  private:
    const nlohmann::json* value_;
};

/// A JSON text, parsed, for whoever does not include the JSON library.
class ParsedJson {
  public:
    /// Has no value if the text is not valid JSON.
    explicit ParsedJson(std::string_view text);
    ParsedJson(ParsedJson&& other) noexcept;
    ParsedJson& operator=(ParsedJson&& other) noexcept;
    ~ParsedJson();

    JsonValue value() const { return JsonValue(json_.get()); }

  private:
    std::unique_ptr<nlohmann::json> json_;
};

} // namespace Agent
