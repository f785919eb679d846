#include "agent/run/OutputQueue.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace Agent {

namespace {

/// A pipe that is writable takes that much at once, whatever its mode.
constexpr std::size_t piece = PIPE_BUF;
constexpr int piecesAtOnce = 64;
/// Milliseconds that the end of the output may take without any progress.
constexpr int patience = 500;

bool isWritable(int descriptor, int timeout) {
    pollfd polled{descriptor, POLLOUT, 0};
    return ::poll(&polled, 1, timeout) > 0;
}

} // namespace

OutputQueue::OutputQueue(int descriptor) : FileDescriptorReactor(descriptor) { wantsReadIs(false); }

void OutputQueue::append(std::string_view text) {
    if (!failure_.empty()) {
        return;
    }
    if (waiting_.size() - written_ + text.size() > capacity) {
        fail("nobody reads it");
        return;
    }
    waiting_ += text;
    wantsWriteIs(true);
}

void OutputQueue::finish() {
    while (written_ < waiting_.size() && isWritable(descriptor(), patience) && writePiece()) {
    }
}

void OutputQueue::onWritable() {
    int pieces = 0;
    do {
        if (!writePiece()) {
            return;
        }
    } while (written_ < waiting_.size() && ++pieces < piecesAtOnce && isWritable(descriptor(), 0));
    if (written_ == waiting_.size()) {
        waiting_.clear();
        written_ = 0;
        wantsWriteIs(false);
    } else if (written_ > waiting_.size() / 2) {
        waiting_.erase(0, written_);
        written_ = 0;
    }
}

/// Returns whether more can be written. Does not wait if the descriptor is writable.
bool OutputQueue::writePiece() {
    const std::size_t size = std::min(piece, waiting_.size() - written_);
    const ssize_t done = ::write(descriptor(), waiting_.data() + written_, size);
    if (done < 0) {
        if (errno != EINTR && errno != EAGAIN) {
            fail(std::strerror(errno));
        }
        return false;
    }
    written_ += static_cast<std::size_t>(done);
    return true;
}

void OutputQueue::fail(std::string why) {
    failure_ = std::move(why);
    waiting_.clear();
    written_ = 0;
    wantsWriteIs(false);
}

} // namespace Agent
