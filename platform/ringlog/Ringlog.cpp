#include "platform/ringlog/Ringlog.h"

#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

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

/// Frees the name. The old file is not written over: another process may still have it mapped.
bool makeWay(const std::string& name, std::string_view secondName) {
    struct stat found {};
    if (::lstat(name.c_str(), &found) != 0) {
        return true;
    }
    if (!S_ISREG(found.st_mode)) {
        return false;
    }
    if (!secondName.empty()) {
        return std::rename(name.c_str(), expandProcessId(secondName).c_str()) == 0;
    }
    return ::unlink(name.c_str()) == 0;
}

std::unique_ptr<RingFile> makeFile(std::string_view fileName, std::string_view sizeSpec,
                                   std::string_view secondFileName, int clock, int tablePages,
                                   bool reserve, unsigned blockCount) {
    std::optional<std::uint32_t> blocks = ringBlocks(sizeSpec, blockCount);
    std::string name = expandProcessId(fileName);
    timespec now{};
    if (!blocks || tablePages < 1 || tablePages > maxTablePages || ::clock_gettime(clock, &now) != 0
        || !makeWay(name, secondFileName)) {
        return nullptr;
    }
    auto pages = static_cast<std::uint32_t>(tablePages);
    FileMapping mapping(name, RingFile::fileSize(pages, *blocks), reserve);
    if (!mapping) {
        return nullptr;
    }
    return std::make_unique<RingFile>(std::move(mapping), pages, *blocks, clock);
}

} // namespace

void initialize(std::string_view fileName, std::string_view sizeSpec,
                std::string_view secondFileName, int clock, int tablePages, ThreadingMode threading,
                bool reserve, unsigned blockCount) noexcept {
    close();
    if (threading != ThreadingMode::single) {
        return;
    }
    try {
        Detail::openFile =
            makeFile(fileName, sizeSpec, secondFileName, clock, tablePages, reserve, blockCount)
                .release();
    } catch (...) { // NOLINT(bugprone-empty-catch): out of memory leaves the ring trace closed
    }
}

void close() noexcept {
    delete Detail::openFile;
    Detail::openFile = nullptr;
}

} // namespace Ringlog
