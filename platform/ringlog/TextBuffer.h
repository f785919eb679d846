#pragma once

#include <array>
#include <streambuf>
#include <string>
#include <string_view>

namespace Ringlog {

/// Collects the text of one message, on the stack as long as it is short. What does not fit is
/// moved to the heap or dropped, as the maker says.
class TextBuffer final : public std::streambuf {
  public:
    enum class WhenFull { grow, drop };

    explicit TextBuffer(WhenFull whenFull);

    std::string_view text() const;

  protected:
    int_type overflow(int_type c) override;

  private:
    WhenFull whenFull_;
    std::array<char, 512> inline_; // not initialised: only what was written is read
    std::string grown_;
};

} // namespace Ringlog
