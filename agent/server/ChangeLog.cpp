#include "agent/server/ChangeLog.h"

#include <algorithm>

namespace Agent {

void ChangeLog::append(std::string_view line) {
    while (!line.empty()) {
        if (pieces_.empty() || pieces_.back().size() == pieceSize) {
            pieces_.emplace_back().reserve(pieceSize);
        }
        std::string& last = pieces_.back();
        const std::size_t fits = std::min(line.size(), pieceSize - last.size());
        last += line.substr(0, fits);
        end_ += fits;
        line.remove_prefix(fits);
    }
    while (end_ - begin_ > capacity) {
        begin_ += pieces_.front().size();
        pieces_.pop_front();
    }
}

std::string_view ChangeLog::at(Position position) const {
    const Position offset = position - begin_;
    const std::size_t piece = static_cast<std::size_t>(offset / pieceSize);
    if (piece >= pieces_.size()) {
        return {};
    }
    return std::string_view(pieces_[piece]).substr(static_cast<std::size_t>(offset % pieceSize));
}

void ChangeLog::dropBefore(Position position) {
    while (!pieces_.empty() && begin_ + pieces_.front().size() <= position) {
        begin_ += pieces_.front().size();
        pieces_.pop_front();
    }
}

} // namespace Agent
