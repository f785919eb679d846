#include "platform/ringlog/Ringlog.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <exception>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "platform/orb/value/Error.h"

namespace Ringlog {
namespace {

constexpr std::uint32_t maxBlocks = 1U << 20U; // 1 GiB
constexpr int maxTablePages = 1024;

std::string expandProcessId(std::string_view name) {
    constexpr std::string_view placeholder = "%d";
    std::string out(name);
    std::string id = std::to_string(::getpid());
    for (std::size_t at = 0; (at = out.find(placeholder, at)) != std::string::npos;) {
        out.replace(at, placeholder.size(), id);
        at += id.size();
    }
    return out;
}

/// The number of blocks, or none when the request makes no sense.
std::optional<std::uint32_t> ringBlocks(std::string_view sizeSpec, unsigned blockCount) {
    std::uint64_t blocks = blockCount;
    if (!sizeSpec.empty()) {
        const char* end = sizeSpec.data() + sizeSpec.size();
        std::uint32_t count = 0;
        auto [unit, error] = std::from_chars(sizeSpec.data(), end, count);
        if (error != std::errc() || unit + 1 != end || (*unit != 'K' && *unit != 'M')) {
            return std::nullopt;
        }
        std::uint64_t kibibytes = *unit == 'M' ? std::uint64_t{count} * 1024 : count;
        blocks = kibibytes * 1024 / Layout::blockSize;
    }
    if (blocks < 2 || blocks > maxBlocks) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(blocks);
}

[[noreturn]] void refuse(const std::string& name, const std::string& why) {
    throw Orb::Error("ring trace file " + name + ": " + why);
}

[[noreturn]] void refuse(const std::string& name, int error) {
    refuse(name, std::generic_category().message(error));
}

bool startsWithMagic(const std::string& name) {
    int fd = ::open(name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        refuse(name, errno);
    }
    decltype(Layout::FileHeader::magic) start{};
    bool whole = ::read(fd, start.data(), start.size()) == std::ssize(start);
    ::close(fd);
    return whole && start == Layout::magic;
}

/// Whether a ring trace file has the name. Throws when anything else has it.
bool isTakenByRing(const std::string& name) {
    struct stat found {};
    if (::lstat(name.c_str(), &found) != 0) {
        if (errno != ENOENT) {
            refuse(name, errno);
        }
        return false;
    }
    if (!S_ISREG(found.st_mode)) {
        refuse(name, "there is something that is no regular file");
    }
    if (!startsWithMagic(name)) {
        refuse(name, "there is a file that is no ring trace");
    }
    return true;
}

/// Frees the name. The old file is not written over: another process may still have it mapped.
void makeWay(const std::string& name, std::string_view secondName) {
    if (!isTakenByRing(name)) {
        return;
    }
    if (secondName.empty()) {
        if (::unlink(name.c_str()) != 0) {
            refuse(name, errno);
        }
        return;
    }
    std::string second = expandProcessId(secondName);
    isTakenByRing(second); // anything else stays
    if (std::rename(name.c_str(), second.c_str()) != 0) {
        refuse(second, errno);
    }
}

std::unique_ptr<RingFile> makeFile(const std::string& name, std::string_view sizeSpec,
                                   std::string_view secondFileName, int clock, int tablePages,
                                   bool reserve, unsigned blockCount) {
    std::optional<std::uint32_t> blocks = ringBlocks(sizeSpec, blockCount);
    timespec now{};
    if (!blocks || tablePages < 1 || tablePages > maxTablePages
        || ::clock_gettime(clock, &now) != 0) {
        refuse(name, "asked for with a size or clock that makes no sense");
    }
    makeWay(name, secondFileName);
    auto pages = static_cast<std::uint32_t>(tablePages);
    FileMapping mapping(name, RingFile::fileSize(pages, *blocks), reserve);
    if (!mapping) {
        refuse(name, errno);
    }
    return std::make_unique<RingFile>(std::move(mapping), pages, *blocks, clock);
}

/// What became of the file that was asked for last.
struct Outcome {
    std::string name;
    std::string failure;
};
Outcome& outcome() {
    // Never destroyed: destructors of other static objects may still ask.
    static auto& outcome = *new Outcome;
    return outcome;
}

} // namespace

void initialize(std::string_view fileName, std::string_view sizeSpec,
                std::string_view secondFileName, int clock, int tablePages, ThreadingMode threading,
                bool reserve, unsigned blockCount) noexcept {
    close();
    if (threading != ThreadingMode::single || fileName == noFile) {
        return;
    }
    try {
        outcome().name = expandProcessId(fileName);
        Detail::openFile = makeFile(outcome().name, sizeSpec, secondFileName, clock, tablePages,
                                    reserve, blockCount)
                               .release();
    } catch (const std::exception& error) {
        outcome().failure = error.what();
    }
}

void close() noexcept {
    delete Detail::openFile;
    Detail::openFile = nullptr;
    outcome().failure.clear();
}

std::string_view failure() {
    Outcome& last = outcome();
    if (last.failure.empty() && FileMapping::isRecovered()) {
        last.failure = "ring trace file " + last.name
                       + ": somebody has cut it off, or the disk is full; no longer written";
    }
    return last.failure;
}

bool recoverFromFault(const void* address) noexcept { return FileMapping::recover(address); }

} // namespace Ringlog
