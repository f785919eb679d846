#include "agent/base/WallTime.h"

#include <array>
#include <chrono>
#include <ctime>

namespace Agent {

std::string wallTimeText(std::uint64_t nanoseconds) {
    const auto seconds = static_cast<std::time_t>(nanoseconds / 1'000'000'000);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    std::array<char, 64> text{};
    std::string result(text.data(),
                       std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S%z", &local));
    constexpr std::size_t zoneMinutes = 2; // behind the colon that is missing
    if (result.size() > zoneMinutes) {
        result.insert(result.size() - zoneMinutes, ":");
    }
    return result;
}

std::string stamped(std::string_view line, bool isJson) {
    const std::uint64_t now = wallNow();
    std::string time = wallTimeText(now);
    const std::string fraction = std::to_string(1'000'000 + now / 1000 % 1'000'000);
    constexpr std::size_t zone = 6; // "+00:00"
    time.insert(time.size() - zone, '.' + fraction.substr(1));
    if (!isJson) {
        return time + ' ' + std::string(line);
    }
    return "{\"date\":\"" + time + "\"," + std::string(line.substr(1));
}

std::uint64_t wallNow() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(now).count());
}

} // namespace Agent
