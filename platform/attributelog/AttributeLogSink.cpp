#include "platform/attributelog/AttributeLogSink.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace Orb {

namespace {

constexpr std::size_t pieceSize = std::size_t{64} * 1024;

} // namespace

AttributeLogSink::AttributeLogSink(int descriptor, std::size_t maxPending)
    : FileDescriptorReactor(descriptor), nextTry_(pieceSize), maxPending_(maxPending),
      limit_(std::numeric_limits<std::size_t>::max()) {
    wantsReadIs(false);
    ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
}

AttributeLogSink::~AttributeLogSink() {
    writePending();
    if (isOpen()) {
        ::close(descriptor());
    }
}

void AttributeLogSink::drop(std::string failure) {
    if (!isOpen()) {
        return;
    }
    failure_ = std::move(failure);
    wantsWriteIs(false);
    ::close(descriptor());
    buffer_ = {};
    written_ = 0;
}

void AttributeLogSink::write(std::string_view bytes) {
    if (!isOpen()) {
        return;
    }
    buffer_ += bytes;
    wantsWriteIs(true);
    if (pending() >= nextTry_) {
        writePending();
    }
    if (pending() > limit_) {
        drop("the reader is too slow");
    }
}

void AttributeLogSink::stateIsWritten() { limit_ = pending() + maxPending_; }

void AttributeLogSink::writePending() {
    while (pending() > 0) {
        const ssize_t count = ::write(descriptor(), buffer_.data() + written_, pending());
        if (count >= 0) {
            written_ += static_cast<std::size_t>(count);
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            break;
        } else if (errno != EINTR) {
            drop(std::strerror(errno));
            return;
        }
    }
    // The front is cut off when it is half of the buffer, so that no byte is moved often.
    if (written_ >= buffer_.size() - written_) {
        buffer_.erase(0, std::exchange(written_, 0));
    }
    wantsWriteIs(pending() > 0);
    nextTry_ = pending() + pieceSize;
    if (limit_ != std::numeric_limits<std::size_t>::max()) {
        limit_ = std::min(limit_, pending() + maxPending_);
    }
}

void AttributeLogSink::drain(double maxWait) {
    writePending();
    while (isOpen() && pending() > 0) {
        pollfd waited{descriptor(), POLLOUT, 0};
        const int ready = ::poll(&waited, 1, static_cast<int>(maxWait * 1000));
        if (ready == 0) {
            drop("the reader is too slow");
        } else if (ready > 0) {
            writePending();
        } else if (errno != EINTR) {
            drop(std::strerror(errno));
        }
    }
}

} // namespace Orb
