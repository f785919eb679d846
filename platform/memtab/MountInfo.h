#pragma once

#include <cstddef>
#include <map>

#include "platform/orb/value/Name.h"

namespace OrbMemtab {

/// How a table is mounted: its mount type and, for a table that is written, how many members each
/// of its collections may hold.
class MountInfo {
  public:
    /// Mount types: 0 writes the table, 3 reads it.
    enum class Type { write = 0, read = 3 };

    explicit MountInfo(Type type) : type_(type) {}

    Type type() const { return type_; }
    const std::map<Orb::String, std::size_t>& collectionInfo() const { return collections_; }

    void collectionInfoIs(const Orb::String& collection, std::size_t capacity) {
        collections_[collection] = capacity;
    }

  private:
    Type type_;
    std::map<Orb::String, std::size_t> collections_;
};

} // namespace OrbMemtab
