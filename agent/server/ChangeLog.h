#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

namespace Agent {

/// The latest changes as text, shared by all clients that watch: written once, read by each at its
/// own pace from a position of its own. Keeps the last `capacity` bytes; a client whose position
/// lies before begin() has missed changes.
class ChangeLog {
  public:
    using Position = std::uint64_t;

    static constexpr std::size_t capacity = std::size_t{32} << 20U;

    /// `line` ends with its line end.
    void append(std::string_view line);

    Position begin() const { return begin_; }
    Position end() const { return end_; }

    /// The text from the position on, as much as lies in one piece; empty at the end. The position
    /// must not lie before begin().
    std::string_view at(Position position) const;

    /// Forgets the text before the position, in whole pieces.
    void dropBefore(Position position);

  private:
    static constexpr std::size_t pieceSize = std::size_t{64} << 10U;

    std::deque<std::string> pieces_; // all but the last are of pieceSize bytes
    Position begin_ = 0;
    Position end_ = 0;
};

} // namespace Agent
