#pragma once

#include <string_view>

#include "platform/ringlog/RingFile.h"

namespace Ringlog {

/// The name that stands for no file.
inline constexpr std::string_view noFile = "/dev/null";

/// Who writes to the ring. Only the agent thread does.
enum class ThreadingMode { single = 0 };

/// Opens the ring trace file of the process and closes the one that was open.
///
/// `fileName`        where the file is made; each "%d" stands for the process id. A ring trace
///                   file of that name is replaced, anything else is left alone and refused.
///                   With noFile none is opened, which is no failure.
/// `sizeSpec`        size of the message ring, "256K" or "4M"; empty for `blockCount` blocks.
/// `secondFileName`  where a file that is replaced is moved to first; empty to let it go.
/// `clock`           the clock that stamps messages, a clockid_t; 0 is real time.
/// `tablePages`      pages of 4 KiB for the table of message descriptors.
/// `reserve`         take the disk space now, so that a full disk cannot hurt later.
/// `blockCount`      size of the message ring in blocks of 1 KiB, at least 2.
///
/// Never fails the caller: when the file cannot be made or an argument makes no sense, none is
/// open afterwards, and failure() says why.
void initialize(std::string_view fileName, std::string_view sizeSpec,
                std::string_view secondFileName, int clock, int tablePages, ThreadingMode threading,
                bool reserve, unsigned blockCount) noexcept;

/// Closes the ring trace file; the file stays. Takes back what failure() says.
void close() noexcept;

/// Why the last initialize() has opened no file, or why the file that is open gets no messages any
/// more, as one line; empty while all is well. Valid until the next call of a function of this
/// header.
std::string_view failure();

/// For the host's handler of SIGBUS, which is raised when somebody cuts the ring trace file off or
/// its disk is full. Whether `address`, that of the fault, lies in the ring; the handler can then
/// return: the file gets no messages any more, and writing goes on to nowhere. Async-signal-safe.
/// The handler is the host's, since a process has one only; without, the process ends.
bool recoverFromFault(const void* address) noexcept;

namespace Detail {
inline constinit RingFile* openFile = nullptr;
}

/// The ring trace file that is open; null when none is.
inline RingFile* defaultRinglogFile() { return Detail::openFile; }

} // namespace Ringlog
