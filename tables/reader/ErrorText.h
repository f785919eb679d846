#pragma once

namespace Tables {

/// Why something failed, as a line for people. Empty as long as nothing has.
class ErrorText {
  public:
    /// Composes the text as printf does; what is too long is cut.
    [[gnu::format(printf, 2, 3)]] void set(const char* format, ...);
    void clear() { text_[0] = '\0'; }

    bool empty() const { return text_[0] == '\0'; }
    const char* text() const { return text_; }

  private:
    char text_[512] = {};
};

} // namespace Tables
