#pragma once

#include <optional>
#include <string>

#include "agent/topics/ChangeKind.h"
#include "agent/topics/Row.h"

namespace Agent {

/// A value of the configuration that has come, changed or gone as the file was read again.
struct ConfigChangeRow {
    ChangeKind change = ChangeKind::is;
    std::string pointer;              // JSON pointer
    std::optional<std::string> value; // none when it goes

    static void describe(auto& row, auto&& column) {
        column({"change", "CHANGE"}, row.change);
        column({"pointer", "POINTER"}, row.pointer);
        column({"value", "VALUE"}, row.value);
    }
};

} // namespace Agent
