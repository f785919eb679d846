#include "agent/output/OutputQueue.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

namespace Agent {

namespace {

constexpr std::size_t piece = 4096;
constexpr int piecesAtOnce = 64;
/// What the end of the output may take: milliseconds without any progress, and in all.
constexpr int patience = 500;
constexpr auto longestEnd = std::chrono::seconds(5);

} // namespace

OutputQueue::OutputQueue(const OutputFile& file, std::size_t capacity, OnDropped onDropped)
    : FileDescriptorReactor(file.fd()), file_(file), capacity_(capacity),
      onDropped_(std::move(onDropped)) {
    wantsReadIs(false);
}

void OutputQueue::append(std::string_view line) {
    if (error_ != 0) {
        return;
    }
    if (dropped_ > 0 || waiting().size() + line.size() > capacity_) {
        ++dropped_;
        ++droppedInAll_;
        return;
    }
    lines_ += line;
    wantsWriteIs(true);
}

void OutputQueue::flush() {
    for (int pieces = 0; pieces < piecesAtOnce && !waiting().empty() && writePiece(); ++pieces) {
    }
    if (waiting().empty()) {
        clear();
    } else if (written_ > lines_.size() / 2) {
        lines_.erase(0, std::exchange(written_, 0));
    }
    if (dropped_ > 0 && waiting().size() <= capacity_ / 2) {
        tellDropped();
    }
}

void OutputQueue::finish() {
    const auto deadline = std::chrono::steady_clock::now() + longestEnd;
    while (!waiting().empty() && std::chrono::steady_clock::now() < deadline
           && file_.isWritable(patience)) {
        flush();
    }
    const auto left = waiting();
    dropped_ += static_cast<std::size_t>(std::count(left.begin(), left.end(), '\n'));
    clear();
    if (dropped_ > 0) {
        tellDropped();
    }
}

/// Returns whether more may be taken.
bool OutputQueue::writePiece() {
    const ssize_t size = file_.write(waiting().substr(0, piece));
    if (size < 0) {
        error_ = errno;
        dropped_ = 0;
        clear();
        return false;
    }
    written_ += static_cast<std::size_t>(size);
    return size > 0;
}

void OutputQueue::clear() {
    lines_.clear();
    written_ = 0;
    wantsWriteIs(false);
}

void OutputQueue::tellDropped() { onDropped_(std::exchange(dropped_, 0)); }

} // namespace Agent
