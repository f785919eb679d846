#pragma once

#include <string_view>

namespace Orb {

/// A cursor over a text that is being parsed. Every parser of a text form takes one and leaves it
/// behind what it read; on bad text it throws ParseError and says what it wanted and where.
class TextReader {
  public:
    explicit TextReader(std::string_view text) : text_(text) {}

    bool atEnd() const { return position_ == text_.size(); }
    std::string_view rest() const { return text_.substr(position_); }

    /// Takes `expected` if it is next; otherwise takes nothing and answers false.
    bool tryLiteral(std::string_view expected);

    /// Takes `expected`, which must be next. Throws ParseError.
    void literal(std::string_view expected);

    /// Takes the longest run of characters that are all in `characters` (may be empty).
    std::string_view run(std::string_view characters);

    /// Takes exactly `count` characters. Throws ParseError when fewer are left.
    std::string_view take(std::size_t count);

    /// Throws ParseError unless everything was taken.
    void end() const;

    [[noreturn]] void fail(std::string_view wanted) const;

  private:
    std::string_view text_;
    std::size_t position_ = 0;
};

} // namespace Orb
