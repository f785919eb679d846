#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace Agent {

/// A document is refused: `what()` says why, `pointer()` is the JSON pointer of the value at fault,
/// empty for the document as a whole. Both may hold any bytes of the document.
class DocumentError : public std::runtime_error {
  public:
    /// `byte` counts from 1; for what is no JSON.
    DocumentError(std::string pointer, const std::string& what,
                  std::optional<std::size_t> byte = std::nullopt)
        : std::runtime_error(what), pointer_(std::move(pointer)), byte_(byte) {}

    const std::string& pointer() const { return pointer_; }
    std::optional<std::size_t> byte() const { return byte_; }

    /// The same error of the document that holds this one at `pointer`.
    DocumentError within(const std::string& pointer) const {
        return {pointer + pointer_, what(), byte_};
    }

  private:
    std::string pointer_;
    std::optional<std::size_t> byte_;
};

} // namespace Agent
