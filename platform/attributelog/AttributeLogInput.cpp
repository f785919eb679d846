#include "platform/attributelog/AttributeLogInput.h"

#include "platform/orb/value/Error.h"

namespace Orb {

std::string_view AttributeLogInput::bytes(std::size_t size) {
    if (size > rest_.size()) {
        fail("a record ends in the middle of a value");
    }
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    offset_ += size;
    return taken;
}

void AttributeLogInput::expectEnd() const {
    if (!rest_.empty()) {
        fail("a record is longer than what it says");
    }
}

void AttributeLogInput::fail(std::string_view what) const { throwBadLog(offset_, what); }

void throwBadLog(std::uint64_t offset, std::string_view what) {
    throw ParseError("attribute log, byte " + std::to_string(offset) + ": " + std::string(what));
}

} // namespace Orb
