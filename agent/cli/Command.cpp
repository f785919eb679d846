#include "agent/cli/Command.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace Agent {

std::string Argument::text() const {
    return help + (excludes.empty() ? "." : ". Not with " + excludes + '.');
}

std::string Command::text() const { return description + (description.ends_with('.') ? "" : "."); }

std::string Command::summary() const {
    std::string summary = text();
    for (const std::string_view end : {".", ":", ";", ",", " ("}) {
        summary.resize(std::min(summary.size(), summary.find(end)));
    }
    summary.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(summary.front())));
    return summary;
}

} // namespace Agent
