#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "platform/memtab/Table.h"
#include "platform/orb/container/HashMap.h"
#include "platform/orb/container/HashMap2018.h"
#include "platform/orb/value/Error.h"
#include "platform/vrf/VrfId.h"

namespace Routing::Rib {

/// Records of one collection, kept VRF by VRF so that a VRF is cleared at the cost of what it
/// holds. A record has `key()`, and its key `vrfId()`. An absent record reads as the default one.
template <typename Record>
class PerVrfTable {
  public:
    struct KeyOf {
        decltype(auto) operator()(const Record& record) const { return record.key(); }
    };
    using VrfId = Vrf::VrfIdMap::VrfId;
    using Key = std::remove_cvref_t<decltype(std::declval<const Record&>().key())>;
    using Records = Orb::HashMap2018<Record, KeyOf>;

    std::size_t size() const { return size_; }
    void capacityIs(std::size_t capacity) { capacity_ = capacity; }

    /// The VRF's records; null while there is none.
    const Records* records(VrfId vrfId) const {
        const std::unique_ptr<Records>* found = byVrf_.find(vrfId);
        return found == nullptr ? nullptr : found->get();
    }

    const Record* find(const Key& key) const {
        const Records* vrf = records(key.vrfId());
        return vrf == nullptr ? nullptr : vrf->find(key);
    }

    /// Fetches what a search for the key will read first, for a caller that has work until then.
    void prefetch(const Key& key) const {
        if (const Records* vrf = records(key.vrfId())) {
            vrf->prefetch(key);
        }
    }

    /// Whether a record of that key can be added or replaced.
    bool hasRoomFor(const Key& key) const { return size_ < capacity_ || find(key) != nullptr; }

    /// Adds or replaces; answers whether anything changed. Throws RangeError when full.
    bool insertOrAssign(const Record& record) {
        if (!hasRoomFor(record.key())) {
            throw Orb::RangeError("the table is full: " + std::to_string(capacity_) + " members");
        }
        const auto [present, added] = recordsOf(record.key().vrfId()).tryInsert(record);
        if (added) {
            ++size_;
            return true;
        }
        const bool changed = !(*present == record);
        *present = record;
        return changed;
    }

    bool erase(const Key& key) {
        std::unique_ptr<Records>* vrf = byVrf_.find(key.vrfId());
        if (vrf == nullptr || !(*vrf)->erase(key)) {
            return false;
        }
        --size_;
        if ((*vrf)->empty()) {
            byVrf_.erase(key.vrfId());
        }
        return true;
    }

    /// Takes all records of a VRF out; null where it has none.
    std::unique_ptr<Records> take(VrfId vrfId) {
        auto taken = byVrf_.take(vrfId);
        if (!taken) {
            return nullptr;
        }
        std::unique_ptr<Records> records = std::move(taken->value());
        size_ -= records->size();
        return records;
    }

  private:
    Records& recordsOf(VrfId vrfId) {
        std::unique_ptr<Records>& records = *byVrf_.tryInsert(vrfId).first;
        if (records == nullptr) {
            records = std::make_unique<Records>();
        }
        return *records;
    }

    Orb::HashMap<VrfId, std::unique_ptr<Records>> byVrf_;
    std::size_t size_ = 0;
    std::size_t capacity_ = std::numeric_limits<std::size_t>::max();
};

/// Refuses a capacity for a collection that a table does not have.
[[noreturn]] void throwUnknownCollection(std::string_view table, std::string_view collection);

} // namespace Routing::Rib
