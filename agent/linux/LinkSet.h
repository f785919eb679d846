#pragma once

#include <unordered_set>

namespace Agent::Linux {

/// A set of links by index, or all links there are.
class LinkSet {
  public:
    bool isEmpty() const { return !all_ && indexes_.empty(); }
    bool isAll() const { return all_; }
    bool contains(int index) const { return all_ || indexes_.contains(index); }
    /// Empty if the set is of all links.
    const std::unordered_set<int>& indexes() const { return indexes_; }

    void add(int index) {
        if (!all_) {
            indexes_.insert(index);
        }
    }
    void addAll() {
        all_ = true;
        indexes_.clear();
    }
    void add(const LinkSet& other) {
        if (other.all_) {
            addAll();
        } else if (!all_) {
            indexes_.insert(other.indexes_.begin(), other.indexes_.end());
        }
    }

  private:
    bool all_ = false;
    std::unordered_set<int> indexes_;
};

} // namespace Agent::Linux
