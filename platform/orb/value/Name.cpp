#include "platform/orb/value/Name.h"

#include <cstdarg>
#include <cstdio>

#include "platform/orb/value/Hash.h"

namespace Orb {

String format(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    const int size = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    String text(size < 0 ? 0 : static_cast<std::size_t>(size), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    va_end(again);
    return text;
}

std::uint64_t Name::hash(std::uint64_t seed) const { return hashOf(value_, seed); }

} // namespace Orb
