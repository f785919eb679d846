#include "platform/memtab/WriterProcess.h"

#include <csignal>
#include <fstream>
#include <string>

namespace OrbMemtab {

namespace {

/// Whether a line of a process's status says that SIGKILL is on its way to it.
bool saysKilled(const std::string& line) {
    if (!line.starts_with("SigPnd:") && !line.starts_with("ShdPnd:")) {
        return false;
    }
    constexpr int hexadecimal = 16;
    const std::uint64_t pending =
        std::stoull(line.substr(line.find(':') + 1), nullptr, hexadecimal);
    return (pending >> (SIGKILL - 1) & 1U) != 0;
}

} // namespace

bool isEnding(std::uint32_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    if (!status) {
        return true;
    }
    bool hasMemory = false;
    for (std::string line; std::getline(status, line);) {
        if (saysKilled(line)) {
            return true;
        }
        hasMemory = hasMemory || line.starts_with("VmSize:");
    }
    return !hasMemory; // a process gives that up first
}

} // namespace OrbMemtab
