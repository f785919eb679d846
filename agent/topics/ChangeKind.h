#pragma once

#include <string>
#include <string_view>

#include "agent/base/Colour.h"
#include "agent/topics/ValueForm.h"

namespace Agent {

/// What happens to something that is followed; `is` for what is there at first.
enum class ChangeKind { is, comes, changes, goes };

/// "comes", as JSON has it.
std::string_view changeName(ChangeKind kind);

/// "+", as lines for people begin.
std::string changeSign(ChangeKind kind, Colour colour);

template <>
struct ValueForm<ChangeKind> {
    static void write(JsonWriter& out, ChangeKind value) { out.value(changeName(value)); }
    static ChangeKind read(const JsonValue& json);
};

} // namespace Agent
