#pragma once

#include <string>
#include <string_view>

#include "agent/patch/DocumentError.h"

namespace Agent {

/// A place in a document, as the way there: it lives on the stack of whoever walks the document and
/// costs nothing until an error asks for its text.
class DocumentPlace {
  public:
    DocumentPlace() = default;
    DocumentPlace(const DocumentPlace& parent, std::string_view key)
        : parent_(&parent), key_(key) {}
    /// A parent outlives the places in it.
    DocumentPlace(const DocumentPlace&& parent, std::string_view key) = delete;

    /// The JSON pointer of the place.
    std::string pointer() const;

    [[noreturn]] void refuse(const std::string& what) const {
        throw DocumentError(pointer(), what);
    }

  private:
    const DocumentPlace* parent_ = nullptr;
    std::string_view key_;
};

/// Appends one step of a JSON pointer.
void appendPointerStep(std::string& pointer, std::string_view key);

} // namespace Agent
