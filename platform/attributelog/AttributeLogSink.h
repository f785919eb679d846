#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/orb/loop/FileDescriptorReactor.h"

namespace Orb {

/// Where an attribute log goes: a file, or a pipe or socket to a reader. Writing never waits: what
/// the descriptor does not take at once is kept and written later, from the loop of the activity
/// manager or with the next bytes. A reader that lets more than a bound pile up, or that goes, is
/// dropped: the descriptor is closed, and everything written after that is lost.
///
/// The process must ignore SIGPIPE.
class AttributeLogSink final : private FileDescriptorReactor {
  public:
    /// Owns the descriptor, which it makes non-blocking. `maxPending` bounds, in bytes, what may
    /// pile up besides the state at the start.
    AttributeLogSink(int descriptor, std::size_t maxPending);
    /// What the descriptor does not take at once is lost.
    ~AttributeLogSink() override;

    /// Why the reader was dropped; empty while it is there.
    const std::string& failure() const { return failure_; }
    bool isOpen() const { return failure_.empty(); }

    void write(std::string_view bytes);

    /// All of the state at the start has been written. Until then nothing counts against the bound.
    void stateIsWritten();

    void drop(std::string failure);

    /// Writes what is pending, waiting for the reader as long as it takes something at least every
    /// `maxWait` seconds.
    void drain(double maxWait);

    std::size_t pending() const { return buffer_.size() - written_; }

  private:
    void onWritable() override { writePending(); }
    void writePending();

    std::string buffer_;
    std::size_t written_ = 0; // of the buffer
    std::size_t nextTry_;     // when so much is pending, a write tries the descriptor
    std::size_t maxPending_;
    std::size_t limit_; // of what may be pending now
    std::string failure_;
};

} // namespace Orb
