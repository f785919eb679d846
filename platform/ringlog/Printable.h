#pragma once

#include <string>
#include <string_view>

namespace Ringlog {

/// Appends `text` so that it stays on one line and cannot steer a terminal: every byte that is not
/// printable ASCII is written as \xNN.
void appendPrintable(std::string& out, std::string_view text);

} // namespace Ringlog
