#pragma once

#include <string>
#include <string_view>

#include "agent/document/DocumentError.h"

namespace Agent {

/// A place in a document, as the way there: it lives on the stack of whoever walks the document and
/// costs nothing until an error asks for its text.
class Place {
  public:
    Place() = default;
    Place(const Place& parent, std::string_view key) : parent_(&parent), key_(key) {}
    /// A parent outlives the places in it.
    Place(const Place&& parent, std::string_view key) = delete;

    /// The JSON pointer of the place.
    std::string pointer() const;

    [[noreturn]] void refuse(const std::string& what) const {
        throw DocumentError(pointer(), what);
    }

  private:
    const Place* parent_ = nullptr;
    std::string_view key_;
};

/// Appends one step of a JSON pointer.
void appendPointerStep(std::string& pointer, std::string_view key);

} // namespace Agent
