#pragma once

#include <concepts>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "agent/document/JsonReader.h"
#include "agent/document/JsonWriter.h"
#include "platform/lanx/IntfId.h"
#include "platform/lanx/IpGenPrefix.h"
#include "platform/routing/RouteType.h"

namespace Agent {

/// How a value of a row is written as JSON and as the text of a table, and read from JSON: one
/// specialization per type. `read` throws FailureError for JSON of another type.
template <typename T>
struct ValueForm;

/// Whether the row's object has no such member at all.
template <typename T>
bool isAbsent(const T&) {
    return false;
}
template <typename T>
bool isAbsent(const std::optional<T>& value) {
    return !value;
}

template <>
struct ValueForm<bool> {
    static void write(JsonWriter& out, bool value) { out.value(value); }
    static std::string text(bool value) { return value ? "true" : "false"; }
    static bool read(const JsonValue& json) { return json.boolean(); }
};

template <std::integral Number>
struct ValueForm<Number> {
    static void write(JsonWriter& out, Number value) { out.value(value); }
    static std::string text(Number value) { return std::to_string(value); }
    static Number read(const JsonValue& json) { return static_cast<Number>(json.integer()); }
};

template <>
struct ValueForm<std::string> {
    static void write(JsonWriter& out, const std::string& value) { out.value(value); }
    static std::string text(const std::string& value) { return value; }
    static std::string read(const JsonValue& json) { return json.string(); }
};

template <>
struct ValueForm<std::vector<std::string>> {
    static void write(JsonWriter& out, const std::vector<std::string>& values);
    /// With commas in between.
    static std::string text(const std::vector<std::string>& values);
    static std::vector<std::string> read(const JsonValue& json) { return json.strings(); }
};

/// A member that may be absent.
template <typename T>
struct ValueForm<std::optional<T>> {
    static void write(JsonWriter& out, const std::optional<T>& value) {
        ValueForm<T>::write(out, *value);
    }
    static std::string text(const std::optional<T>& value) {
        return value ? ValueForm<T>::text(*value) : std::string();
    }
    static std::optional<T> read(const JsonValue& json) { return ValueForm<T>::read(json); }
};

/// A name, or null where there is none.
struct NameOrNull {
    std::string name; // empty for null
};

template <>
struct ValueForm<NameOrNull> {
    static void write(JsonWriter& out, const NameOrNull& value);
    static std::string text(const NameOrNull& value) {
        return value.name.empty() ? "-" : value.name;
    }
    static NameOrNull read(const JsonValue& json) {
        return {json.isNull() ? std::string() : json.string()};
    }
};

/// The interface's name, null for the empty one.
template <>
struct ValueForm<Lanx::IntfId> {
    static void write(JsonWriter& out, Lanx::IntfId value);
    static std::string text(Lanx::IntfId value) { return !value ? "-" : std::string(value.name()); }
    static Lanx::IntfId read(const JsonValue& json) {
        return json.isNull() ? Lanx::IntfId() : Lanx::IntfId(json.string());
    }
};

template <>
struct ValueForm<Lanx::IpGenPrefix> {
    static void write(JsonWriter& out, const Lanx::IpGenPrefix& value) { out.plainText(value); }
    static std::string text(const Lanx::IpGenPrefix& value) { return value.toString(); }
    static Lanx::IpGenPrefix read(const JsonValue& json) {
        return Lanx::IpGenPrefix::fromString(json.string());
    }
};

/// A number in JSON; for people with its name: "11 connected".
template <>
struct ValueForm<Routing::Fib::RouteType> {
    using RouteType = Routing::Fib::RouteType;

    static void write(JsonWriter& out, RouteType value) { out.value(static_cast<unsigned>(value)); }
    static std::string text(RouteType value);
    static RouteType read(const JsonValue& json) { return static_cast<RouteType>(json.integer()); }
};

/// Seconds of the agent's clock.
struct ClockTime {
    double seconds = 0;
};

template <>
struct ValueForm<ClockTime> {
    static void write(JsonWriter& out, ClockTime value) { out.seconds(value.seconds); }
    static std::string text(ClockTime value) { return secondsText(value.seconds); }
    static ClockTime read(const JsonValue& json) { return {json.number()}; }
};

} // namespace Agent
