#include "platform/orb/value/TextReader.h"

#include <string>

#include "platform/orb/value/Error.h"

namespace Orb {

bool TextReader::tryLiteral(std::string_view expected) {
    if (!rest().starts_with(expected)) {
        return false;
    }
    position_ += expected.size();
    return true;
}

void TextReader::literal(std::string_view expected) {
    if (!tryLiteral(expected)) {
        fail(expected);
    }
}

std::string_view TextReader::run(std::string_view characters) {
    const std::size_t stop = rest().find_first_not_of(characters);
    return take(stop == std::string_view::npos ? rest().size() : stop);
}

std::string_view TextReader::take(std::size_t count) {
    if (count > rest().size()) {
        fail("more text");
    }
    const std::string_view taken = text_.substr(position_, count);
    position_ += count;
    return taken;
}

void TextReader::end() const {
    if (!atEnd()) {
        fail("end of text");
    }
}

void TextReader::fail(std::string_view wanted) const {
    throw ParseError("expected " + std::string(wanted) + " at offset " + std::to_string(position_));
}

} // namespace Orb
