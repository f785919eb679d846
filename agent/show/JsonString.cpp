#include "agent/show/JsonString.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace Agent {

void appendJsonString(std::string& out, std::string_view text) {
    const auto isPlain = [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; };
    if (std::all_of(text.begin(), text.end(), isPlain)) {
        out += '"';
        out += text;
        out += '"';
        return;
    }
    using json = nlohmann::json;
    out += json(text).dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace Agent
