#pragma once

#include <cstddef>
#include <optional>
#include <streambuf>
#include <string>

namespace Agent {

/// Reads a stream line by line in memory bounded by the longest line it allows.
class LineReader {
  public:
    static constexpr std::size_t maxLength = std::size_t{256} << 20U;

    explicit LineReader(std::streambuf& in) : in_(in) {}

    /// The next line, without its end and whether it has one or not; nothing at the end of the
    /// stream. Throws DocumentError for a line longer than maxLength.
    std::optional<std::string> next();

    /// The number of the line read last, from 1.
    std::size_t number() const { return number_; }

  private:
    std::streambuf& in_;
    std::size_t number_ = 0;
};

} // namespace Agent
