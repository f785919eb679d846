#pragma once

#include <string>
#include <string_view>

namespace Agent {

/// Colours text for a terminal, or leaves it as it is.
class Colour {
  public:
    explicit Colour(bool isOn = false) : isOn_(isOn) {}

    std::string plain(std::string_view text) const { return std::string(text); }
    std::string bold(std::string_view text) const { return with("1", text); }
    std::string red(std::string_view text) const { return with("31", text); }
    std::string green(std::string_view text) const { return with("32", text); }
    std::string yellow(std::string_view text) const { return with("33", text); }

  private:
    std::string with(std::string_view code, std::string_view text) const {
        return isOn_ ? "\033[" + std::string(code) + 'm' + std::string(text) + "\033[0m"
                     : std::string(text);
    }

    bool isOn_;
};

} // namespace Agent
