#pragma once

#include <string_view>

#include "platform/ringlog/RingFile.h"

namespace Ringlog {

/// Who writes to the ring. Only the agent thread does.
enum class ThreadingMode { single = 0 };

/// Opens the ring trace file of the process and closes the one that was open.
///
/// `fileName`        where the file is made; each "%d" stands for the process id. A regular file
///                   of that name is replaced, anything else is left alone and refused.
/// `sizeSpec`        size of the message ring, "256K" or "4M"; empty for `blockCount` blocks.
/// `secondFileName`  where a file that is replaced is moved to first; empty to let it go.
/// `clock`           the clock that stamps messages, a clockid_t; 0 is real time.
/// `tablePages`      pages of 4 KiB for the table of message descriptors.
/// `reserve`         take the disk space now, so that a full disk cannot hurt later.
/// `blockCount`      size of the message ring in blocks of 1 KiB, at least 2.
///
/// Never fails the caller: when the file cannot be made or an argument makes no sense, none is
/// open afterwards.
void initialize(std::string_view fileName, std::string_view sizeSpec,
                std::string_view secondFileName, int clock, int tablePages, ThreadingMode threading,
                bool reserve, unsigned blockCount) noexcept;

/// Closes the ring trace file; the file stays.
void close() noexcept;

namespace Detail {
inline constinit RingFile* openFile = nullptr;
}

/// The ring trace file that is open; null when none is.
inline RingFile* defaultRinglogFile() { return Detail::openFile; }

} // namespace Ringlog
