#include "agent/base/JsonString.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace Agent {

using json = nlohmann::json;

void appendJsonString(std::string& out, std::string_view text) {
    const auto isPlain = [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; };
    if (std::all_of(text.begin(), text.end(), isPlain)) {
        out += '"';
        out += text;
        out += '"';
        return;
    }
    out += json(text).dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string jsonString(std::string_view text) {
    std::string quoted;
    appendJsonString(quoted, text);
    return quoted;
}

std::string jsonSeconds(double seconds) { return json(std::round(seconds * 1e6) / 1e6).dump(); }

} // namespace Agent
