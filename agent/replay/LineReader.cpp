#include "agent/replay/LineReader.h"

#include "agent/patch/DocumentError.h"

namespace Agent {

std::optional<std::string> LineReader::next() {
    using Traits = std::streambuf::traits_type;
    Traits::int_type byte = in_.sbumpc();
    if (Traits::eq_int_type(byte, Traits::eof())) {
        return std::nullopt;
    }
    ++number_;
    std::string line;
    for (; !Traits::eq_int_type(byte, Traits::eof()) && Traits::to_char_type(byte) != '\n';
         byte = in_.sbumpc()) {
        if (line.size() == maxLength) {
            throw DocumentError("", "line longer than " + std::to_string(maxLength) + " bytes");
        }
        line += Traits::to_char_type(byte);
    }
    return line;
}

} // namespace Agent
