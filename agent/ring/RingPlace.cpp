#include "agent/ring/RingPlace.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <unistd.h>

#include "agent/base/StateFolder.h"
#include "platform/ringlog/Ringlog.h"

namespace Agent {

namespace {

namespace fs = std::filesystem;

constexpr const char* variable = "RLFILE";
constexpr std::string_view prefix = "DirectNet-";
constexpr std::string_view suffix = ".rl";

void fileIs(const std::string& name) { ::setenv(variable, name.c_str(), 1); }

/// The process whose ring a file of that name is.
std::optional<pid_t> processOf(std::string_view name) {
    pid_t process = 0;
    if (!name.starts_with(prefix) || !name.ends_with(suffix)) {
        return std::nullopt;
    }
    name.remove_prefix(prefix.size());
    name.remove_suffix(suffix.size());
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), process);
    const bool whole = error == std::errc() && end == name.data() + name.size();
    return whole && process > 0 ? std::optional(process) : std::nullopt;
}

bool isAlive(pid_t process) {
    return process != ::getpid() && (::kill(process, 0) == 0 || errno != ESRCH);
}

/// Removes the rings of dead processes but for the newest, which tells what the last one did.
void removeOldRings(const std::string& folder) {
    std::error_code ignored;
    fs::directory_entry newest;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, ignored)) {
        const auto process = processOf(entry.path().filename().native());
        if (!process || isAlive(*process) || !entry.is_regular_file(ignored)) {
            continue;
        }
        const bool isNewest = newest.path().empty()
                              || entry.last_write_time(ignored) > newest.last_write_time(ignored);
        fs::remove(isNewest ? newest.path() : entry.path(), ignored);
        if (isNewest) {
            newest = entry;
        }
    }
}

} // namespace

void placeRing(const std::string& asked, RingDefault otherwise, const RingReport& report) {
    const char* given = std::getenv(variable);
    if (!asked.empty()) {
        fileIs(asked);
        return;
    }
    if (given != nullptr && *given != '\0') {
        return;
    }
    fileIs(std::string(Ringlog::noFile));
    if (otherwise == RingDefault::stateFolder) {
        try {
            const std::string folder = stateFolder();
            removeOldRings(folder);
            fileIs(folder + '/' + std::string(prefix) + "%d" + std::string(suffix));
        } catch (const std::exception& error) {
            report(std::string(error.what()) + "; there is no ring trace");
        }
    }
}

void reportRing(const RingReport& report) {
    const std::string why(Ringlog::failure());
    if (!why.empty()) {
        Ringlog::close();
        report(why);
    }
}

} // namespace Agent
