#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Agent {

/// Whether `text` is well-formed UTF-8, and so may stand in a document.
bool isUtf8(std::string_view text);

/// The text with U+FFFD in the place of every byte that belongs to no character.
std::string withReplacements(std::string_view text);

/// The name as it stands in documents, UTF-8 and different for different names. Mostly that is the
/// name itself. The kernel lets almost any byte into a name: in one that is not UTF-8, or that
/// holds "\x" and so looks escaped, every backslash and every byte from 0x80 on becomes "\xHH".
std::string documentName(std::string_view text);

/// `text` so that it stays on one line and cannot steer a terminal. Characters of UTF-8 stay as
/// they are, but for those that control something (also the order in which others are shown); these
/// and every byte that belongs to no character are written as \xHH.
std::string printable(std::string_view text);

/// How many columns a terminal takes for such text.
std::size_t columnsOf(std::string_view text);

} // namespace Agent
