#pragma once

#include <atomic>
#include <thread>

#include "platform/orb/loop/FileDescriptor.h"

namespace Vaultdb {

/// A FIFO that readers of tables wait on. To wake them costs by their number, so a thread of its
/// own does it: whoever rings pays for waking that one, however many readers there are, and never
/// waits. Rings that come while it is at work are rung once, after it.
///
/// The thread touches nothing but the bell, and gets no signals.
class Bell {
  public:
    /// Throws Error when the system refuses.
    explicit Bell(Orb::FileDescriptor fifo);
    Bell(const Bell&) = delete;
    Bell& operator=(const Bell&) = delete;
    /// What was to be rung has been.
    ~Bell();

    void ring() const;

  private:
    void run() const;
    void wakeReaders() const;

    Orb::FileDescriptor fifo_;
    Orb::FileDescriptor orders_;
    std::atomic<bool> ends_ = false;
    std::thread ringer_;
};

} // namespace Vaultdb
