#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "agent/output/OutputFile.h"
#include "platform/orb/loop/FileDescriptorReactor.h"

namespace Agent {

/// Lines on their way out through a file that may be slow, written as the file takes them. Lines
/// that find no room in the queue are dropped and counted; once half of the queue is free, the
/// count is told and lines enter again.
///
/// One agent thread, no locks.
class OutputQueue : private Orb::FileDescriptorReactor {
  public:
    /// Tells how many lines were dropped, at the place where they are missing.
    using OnDropped = std::function<void(std::size_t lines)>;

    /// At most `capacity` bytes wait. The file must outlive the queue.
    OutputQueue(const OutputFile& file, std::size_t capacity, OnDropped onDropped);

    /// A line with its line end.
    void append(std::string_view line);

    /// Writes what the file takes at once.
    void flush();

    /// Writes what waits for as long as the file goes on taking it, within bounds. What is left
    /// then counts as dropped.
    void finish();

    /// The error number of the write that failed, 0 if none did. What waited then is lost, and
    /// nothing more enters.
    int error() const { return error_; }

    /// How many lines were dropped, ever.
    std::size_t droppedInAll() const { return droppedInAll_; }

    /// Lets lines enter again after an error.
    void forgiveError() { error_ = 0; }

  private:
    void onWritable() override { flush(); }
    std::string_view waiting() const { return std::string_view(lines_).substr(written_); }
    bool writePiece();
    void clear();
    void tellDropped();

    const OutputFile& file_;
    std::size_t capacity_;
    OnDropped onDropped_;
    std::string lines_;
    std::size_t written_ = 0; // of lines_
    std::size_t dropped_ = 0; // lines, since the count was told
    std::size_t droppedInAll_ = 0;
    int error_ = 0;
};

} // namespace Agent
