#pragma once

#include <optional>
#include <utility>
#include <vector>

namespace Agent {

/// What a patch says of one place in the document: nothing, that what is there goes, or what comes.
/// For a part with members of its own, T says in turn what changes within it.
template <typename T>
class Change {
  public:
    using Value = T;

    static Change removal() {
        Change change;
        change.removed_ = true;
        return change;
    }
    static Change to(T value) {
        Change change;
        change.value_ = std::move(value);
        return change;
    }

    bool isGiven() const { return removed_ || value_.has_value(); }
    bool isRemoval() const { return removed_; }
    /// What comes; null when nothing is said and for a removal.
    const T* value() const { return value_ ? &*value_ : nullptr; }

    /// What stands afterwards where `present` stood; `absent` stands for nothing.
    T after(T present, T absent) const {
        return value_ ? *value_ : removed_ ? std::move(absent) : std::move(present);
    }

  private:
    bool removed_ = false;
    std::optional<T> value_;
};

/// What a patch says of the members of a map: by rising key, none twice.
template <typename Key, typename T>
using MapPatch = std::vector<std::pair<Key, Change<T>>>;

} // namespace Agent
