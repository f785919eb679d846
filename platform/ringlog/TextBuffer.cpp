#include "platform/ringlog/TextBuffer.h"

namespace Ringlog {

// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init)
TextBuffer::TextBuffer(WhenFull whenFull) : whenFull_(whenFull) {
    setp(inline_.data(), inline_.data() + inline_.size());
}

std::string_view TextBuffer::text() const {
    return {pbase(), static_cast<std::size_t>(pptr() - pbase())};
}

TextBuffer::int_type TextBuffer::overflow(int_type c) {
    if (whenFull_ == WhenFull::drop || traits_type::eq_int_type(c, traits_type::eof())) {
        return traits_type::eof();
    }
    std::string_view before = text();
    std::string larger(before);
    larger += traits_type::to_char_type(c);
    std::size_t used = larger.size();
    larger.resize(2 * used);
    grown_ = std::move(larger);
    setp(grown_.data(), grown_.data() + grown_.size());
    pbump(static_cast<int>(used));
    return c;
}

} // namespace Ringlog
