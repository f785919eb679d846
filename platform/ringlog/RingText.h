#pragma once

#include <string>
#include <string_view>

namespace Ringlog {

/// Appends the text of one message: the descriptor's `text` with its placeholders filled from the
/// bytes of `arguments`. Where the arguments end early the text ends with "...". False, with the
/// text so far appended, when the bytes cannot be the arguments of that text.
bool appendRingText(std::string& out, std::string_view text, std::string_view arguments);

} // namespace Ringlog
