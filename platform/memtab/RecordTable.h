#pragma once

#include <cstddef>
#include <limits>
#include <string>

#include "platform/memtab/Records.h"
#include "platform/orb/value/Error.h"
#include "tables/layout/TablePaths.h"
#include "tables/reader/RecordTraits.h"

namespace OrbMemtab {

/// A bounded table of records, private or shared. `Index` finds the Records that a key belongs to;
/// it is made from the table's slots and has
///
///     Records* find(const Key&) const;   // null while there are none
///     Records& findOrMake(const Key&);
///     void emptied(const Key&);          // the key's records have become empty
template <typename FormType, typename Index>
class RecordTable {
  public:
    using Form = FormType;
    using Record = typename Form::Record;
    using Value = typename Form::Value;
    using Key = typename Form::Key;
    using Records = OrbMemtab::Records<Form>;

    explicit RecordTable(std::uint32_t ringEntries) : slots_(ringEntries), index_(slots_) {}
    RecordTable(const RecordTable&) = delete;
    RecordTable& operator=(const RecordTable&) = delete;

    /// Goes over to a file of the folder, which must happen before the first record comes. Throws
    /// as TableMemory.
    void share(const Orb::Ptr<Vaultdb::Folder>& folder, const Orb::String& path) {
        const auto found = [this, &path](std::uint32_t number, const Record& record) {
            return isSound(path, record) && adopt(number, Form::key(record));
        };
        try {
            slots_.share(folder, path, found);
        } catch (...) {
            index_ = Index(slots_);
            throw;
        }
        if (slots_.size() == 0) {
            index_ = Index(slots_); // what came before a record that could not be used
        }
    }
    void onSpace(std::function<void()> handler) { slots_.onSpace(std::move(handler)); }

    std::size_t size() const { return slots_.size(); }
    std::size_t bytes() const { return slots_.bytes(); }
    void capacityIs(std::size_t capacity) { capacity_ = capacity; }

    /// An id that the table has not given out before.
    std::uint64_t newId() { return slots_.newId(); }

    std::optional<Value> find(const Key& key) const { return find(key, Orb::HashTag::of(key)); }
    std::optional<Value> find(const Key& key, Orb::HashTag tag) const {
        const Records* records = index_.find(key);
        return records == nullptr ? std::nullopt : records->find(key, tag);
    }

    /// Whether so many more records can come; memory is claimed for them.
    bool hasRoom(std::size_t count = 1) {
        return slots_.size() + count <= capacity_ && slots_.hasRoom(count);
    }

    /// Whether a record of that key can be added or replaced.
    bool hasRoomFor(const Key& key) {
        if (hasRoom()) {
            return true;
        }
        const Records* records = index_.find(key);
        return records != nullptr && records->contains(key);
    }

    /// Adds or replaces; answers whether anything changed. Throws RangeError when full or when the
    /// value does not fit a record.
    bool insertOrAssign(const Value& value) {
        const Record record = Form::record(value);
        return insertOrAssignRecord(record, Orb::HashTag::of(Form::key(record)));
    }
    /// The same where the tag of the value's key is at hand.
    bool insertOrAssign(const Value& value, Orb::HashTag tag) {
        return insertOrAssignRecord(Form::record(value), tag);
    }

    bool erase(const Key& key) { return erase(key, Orb::HashTag::of(key)); }
    bool erase(const Key& key, Orb::HashTag tag) {
        Records* records = index_.find(key);
        const auto number = records == nullptr ? std::nullopt : records->take(key, tag);
        if (!number) {
            return false;
        }
        slots_.remove(*number);
        if (records->empty()) {
            index_.emptied(key);
        }
        return true;
    }

  protected:
    Index& index() { return index_; }
    const Index& index() const { return index_; }
    Slots<Record>& slots() { return slots_; }

  private:
    /// Whether the record is one that the table of that path may have.
    static bool isSound(const Orb::String& path, const Record& record) {
        std::uint8_t family = Tables::familyAt(path.c_str());
        if constexpr (requires { record.family; }) {
            family = family == 0 ? record.family : family;
        }
        return Tables::isSound(record, family);
    }

    bool insertOrAssignRecord(const Record& record, Orb::HashTag tag) {
        const Key key = Form::key(record);
        Records& records = index_.findOrMake(key);
        const auto place = records.placeOf(key, tag);
        if (const std::uint32_t* number = records.at(place, key)) {
            const bool changed = !Tables::sameContent(slots_.at(*number), record);
            if (changed) {
                slots_.replace(*number, record);
            }
            return changed;
        }
        try {
            add(records, place, record);
        } catch (...) {
            if (records.empty()) {
                index_.emptied(key);
            }
            throw;
        }
        return true;
    }

    void add(Records& records, const typename Records::Place& place, const Record& record) {
        if (!hasRoom()) {
            throw Orb::RangeError("the table is full: " + std::to_string(size()) + " members");
        }
        const std::uint32_t number = slots_.stage(record);
        try {
            records.insert(number, place);
        } catch (...) {
            slots_.unstage(number);
            throw;
        }
        slots_.publish(number);
    }

    bool adopt(std::uint32_t number, const Key& key) {
        Records& records = index_.findOrMake(key);
        const auto place = records.placeOf(key, Orb::HashTag::of(key));
        if (records.at(place, key) != nullptr) {
            return false; // no table has a key twice
        }
        records.insert(number, place);
        return true;
    }

    Slots<Record> slots_;
    Index index_;
    std::size_t capacity_ = std::numeric_limits<std::size_t>::max();
};

/// All records of a table in one.
template <typename Form>
class OneIndex {
  public:
    using Key = typename Form::Key;

    explicit OneIndex(const Slots<typename Form::Record>& slots) : records_(slots) {}

    const Records<Form>* find(const Key&) const { return &records_; }
    Records<Form>* find(const Key&) { return &records_; }
    Records<Form>& findOrMake(const Key&) { return records_; }
    void emptied(const Key&) {}

    const Records<Form>& all() const { return records_; }

  private:
    Records<Form> records_;
};

/// A table without parts.
template <typename Form>
class FlatTable : public RecordTable<Form, OneIndex<Form>> {
  public:
    using RecordTable<Form, OneIndex<Form>>::RecordTable;

    const Records<Form>& records() const { return this->index().all(); }
};

} // namespace OrbMemtab
