#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/memtab/Following.h"
#include "platform/memtab/RecordTable.h"
#include "platform/memtab/Table.h"
#include "platform/orb/value/Error.h"

namespace OrbMemtab {

/// A table entity with one collection, a RecordTable.
template <typename Records>
class TableEntity : public Table {
  public:
    using Value = typename Records::Value;
    using Key = typename Records::Key;

    std::size_t size() const { return table_.size(); }

    /// Bytes that the records take, for accounting.
    std::size_t recordBytes() const { return table_.bytes(); }

    /// Whether a member of that key can be added or replaced. Memory for it is claimed.
    bool hasRoomFor(const Key& key) { return table_.hasRoomFor(key); }

    void collectionCapacityIs(std::string_view collection, std::size_t capacity) override {
        if (collection != collection_) {
            throw Orb::RangeError("a table of " + std::string(collection_) + " has no collection "
                                  + std::string(collection));
        }
        table_.capacityIs(capacity);
    }

    Bond share(const Orb::Ptr<Vaultdb::Folder>& folder, const Orb::String& path) override {
        table_.share(folder, path);
        table_.onSpace([this] { noteRoom(); });
        return nullptr;
    }

    Bond follow(const Orb::Ptr<Vaultdb::Folder>& folder, const Orb::String& path) override {
        using Form = typename Records::Form;
        using Record = typename Records::Record;
        return Orb::makePtr<Following<Record>>(folder, path,
                                               [this](const Record* before, const Record* after) {
                                                   if (after != nullptr) {
                                                       memberIs(Form::value(*after));
                                                   } else {
                                                       memberDel(Form::key(*before));
                                                   }
                                               });
    }

  protected:
    /// Adds or replaces a member, or removes it, on behalf of a table that is followed.
    virtual void memberIs(const Value& value) = 0;
    virtual void memberDel(const Key& key) = 0;

    /// `collection` is what its capacity is declared by. `ringEntries`, a power of two, says how
    /// many changes a reader may be behind.
    TableEntity(std::string_view collection, std::uint32_t ringEntries)
        : table_(ringEntries), collection_(collection) {}

    /// Tells of a member that has changed, when that is so. Answers whether it is.
    bool tellIf(bool changed, Orb::AttributeId id, const Key& key) const {
        if (changed && this->hasReactors()) {
            const Key stable = key; // may be a part of what somebody changes now
            notify(id, &stable);
        }
        return changed;
    }

    Records table_;

  private:
    std::string_view collection_;
};

} // namespace OrbMemtab
