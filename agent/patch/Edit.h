#pragma once

#include <optional>
#include <utility>

namespace Agent {

/// What a patch says of one value of the document: nothing, that it goes, or what comes. For a
/// value with members of its own, T says in turn what changes within it.
template <typename T>
class Edit {
  public:
    using Value = T;

    static Edit removal() {
        Edit edit;
        edit.removed_ = true;
        return edit;
    }
    static Edit to(T value) {
        Edit edit;
        edit.value_ = std::move(value);
        return edit;
    }

    bool isGiven() const { return removed_ || value_.has_value(); }
    bool isRemoval() const { return removed_; }
    /// What comes; null when nothing is said and for a removal.
    const T* value() const { return value_ ? &*value_ : nullptr; }

    /// What comes, to be filled in; made empty if none has been given yet.
    T& make() {
        removed_ = false;
        return value_ ? *value_ : value_.emplace();
    }

    friend bool operator==(const Edit&, const Edit&) = default;

  private:
    bool removed_ = false;
    std::optional<T> value_;
};

} // namespace Agent
