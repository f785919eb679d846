#pragma once

#include <string>
#include <string_view>

namespace Agent::Linux {

/// Whether `text` is well-formed UTF-8, and so may stand in a document.
bool isUtf8(std::string_view text);

/// `text` if it is UTF-8. The kernel lets almost any byte into a name; in a name that is not UTF-8
/// every byte from 0x80 on becomes "\xHH".
std::string documentName(std::string_view text);

} // namespace Agent::Linux
