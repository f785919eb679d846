#include "tables/reader/ErrorText.h"

#include <cstdarg>
#include <cstdio>

namespace Tables {

void ErrorText::set(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text_, sizeof text_, format, arguments);
    va_end(arguments);
}

} // namespace Tables
