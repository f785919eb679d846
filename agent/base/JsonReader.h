#pragma once

#include <cstdint>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace Agent {

/// A value of a JsonDocument, or none: what is read of it must be of its type. Refers to the
/// document. Reading throws FailureError for a value of another type and for none.
class JsonValue {
  public:
    explicit JsonValue(const nlohmann::json* value) : value_(value) {}

    bool exists() const { return value_ != nullptr; }
    bool isNull() const;
    bool isObject() const;

    /// The member of an object; none if there is none.
    JsonValue member(std::string_view key) const;

    const std::string& string() const;
    bool boolean() const;
    double number() const;
    std::int64_t integer() const;
    std::vector<std::string> strings() const;

  private:
    const nlohmann::json* value_;
};

/// JSON that was received.
class JsonDocument {
  public:
    /// Text that is no JSON makes a document with no value.
    explicit JsonDocument(std::string_view text);
    JsonDocument(JsonDocument&& other) noexcept;
    JsonDocument& operator=(JsonDocument&& other) noexcept;
    ~JsonDocument();

    JsonValue value() const { return JsonValue(json_.get()); }

  private:
    std::unique_ptr<nlohmann::json> json_;
};

} // namespace Agent
