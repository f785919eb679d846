#pragma once

#include <cstddef>
#include <string_view>

#include "agent/patch/DocumentError.h"

namespace Agent {

/// Where a text stands, both numbers from 1; the column counts characters.
struct TextPlace {
    std::size_t line = 1;
    std::size_t column = 1;
};

/// Where a JSON text is wrong: at the byte that the error names, or else where the value of its
/// pointer begins: for a member of an object its key. If the value is not there, it is the nearest
/// value around it that is.
TextPlace placeOf(std::string_view text, const DocumentError& error);

} // namespace Agent
