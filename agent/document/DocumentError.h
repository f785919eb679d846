#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace Agent {

/// A document is refused: `what()` says why, `pointer()` is the JSON pointer of the value at fault,
/// empty for the document as a whole. Both may hold any bytes of the document.
class DocumentError : public std::runtime_error {
  public:
    DocumentError(std::string pointer, const std::string& what)
        : std::runtime_error(what), pointer_(std::move(pointer)) {}

    const std::string& pointer() const { return pointer_; }

    /// The same error of the document that holds this one at `pointer`.
    DocumentError within(const std::string& pointer) const { return {pointer + pointer_, what()}; }

  private:
    std::string pointer_;
};

} // namespace Agent
