#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "agent/patch/Edit.h"

namespace Agent {

/// What a patch says of the members of a map: by rising key, none twice.
template <typename Key, typename T>
class MapPatch {
  public:
    using Value = T;
    using Member = std::pair<Key, Edit<T>>;

    auto begin() const { return members_.begin(); }
    auto end() const { return members_.end(); }
    std::size_t size() const { return members_.size(); }
    bool empty() const { return members_.empty(); }

    /// What is said of the member; null for nothing.
    const Edit<T>* find(const Key& key) const {
        const auto found = std::lower_bound(members_.begin(), members_.end(), key, isBefore);
        return found != members_.end() && found->first == key ? &found->second : nullptr;
    }

    /// What is said of the member, which is added if it lacks. Costs what there is; many members
    /// are added by append().
    Edit<T>& operator[](const Key& key) {
        auto found = std::lower_bound(members_.begin(), members_.end(), key, isBefore);
        if (found == members_.end() || found->first != key) {
            found = members_.emplace(found, key, Edit<T>());
        }
        return found->second;
    }

    void reserve(std::size_t count) { members_.reserve(count); }

    /// Adds a member that is not there yet. Unless they come by rising key, sort() must follow
    /// before anything else.
    Edit<T>& append(Key key) { return members_.emplace_back(std::move(key), Edit<T>()).second; }

    /// Returns a key that was appended twice, null if there is none.
    const Key* sort() {
        std::sort(members_.begin(), members_.end(),
                  [](const Member& a, const Member& b) { return a.first < b.first; });
        const auto twice =
            std::adjacent_find(members_.begin(), members_.end(),
                               [](const Member& a, const Member& b) { return a.first == b.first; });
        return twice == members_.end() ? nullptr : &twice->first;
    }

    friend bool operator==(const MapPatch&, const MapPatch&) = default;

  private:
    static bool isBefore(const Member& member, const Key& key) { return member.first < key; }

    std::vector<Member> members_;
};

} // namespace Agent
