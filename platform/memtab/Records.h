#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>

#include "platform/memtab/Slots.h"
#include "platform/orb/container/HashTable.h"

namespace OrbMemtab {

/// The key of a slot's record.
template <typename Form>
struct SlotKey {
    const Slots<typename Form::Record>* slots = nullptr;

    typename Form::Key operator()(std::uint32_t number) const {
        return Form::key(slots->at(number));
    }
};

/// Records of a table by key, walked in the order of their keys' hashes; a walk is resumed at a key
/// after any change, see HashTable. It knows slots only, so it costs eight bytes a record and some
/// air. What it hands out are copies.
///
/// A form says how a table's records look:
///
///     using Record = ...; using Value = ...; using Key = ...;
///     static Record record(const Value& value);   // throws RangeError for what does not fit
///     static Value value(const Record& record);
///     static Key key(const Record& record);
template <typename Form>
class Records : private Orb::HashTable<std::uint32_t, SlotKey<Form>> {
    using Table = Orb::HashTable<std::uint32_t, SlotKey<Form>>;

  public:
    using Key = typename Form::Key;
    using Value = typename Form::Value;
    using Number = std::uint32_t;
    using typename Table::Place;

    class iterator {
      public:
        using iterator_category = std::input_iterator_tag;
        using value_type = Value;
        using difference_type = std::ptrdiff_t;
        using pointer = void;
        using reference = Value;

        iterator() = default;
        iterator(typename Table::const_iterator at, const Records* records)
            : at_(at), records_(records) {}

        Value operator*() const { return records_->valueAt(*at_); }
        iterator& operator++() {
            ++at_;
            return *this;
        }
        iterator operator++(int) {
            iterator before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const iterator& a, const iterator& b) { return a.at_ == b.at_; }

      private:
        typename Table::const_iterator at_;
        const Records* records_ = nullptr;
    };

    explicit Records(const Slots<typename Form::Record>& slots)
        : Table(SlotKey<Form>{&slots}), slots_(&slots) {}

    using Table::allocatedBytes;
    using Table::contains;
    using Table::empty;
    using Table::size;

    /// The record of that key; none where there is none.
    template <typename... Tag>
    std::optional<Value> find(const Key& key, Tag... tag) const {
        return valueOf(Table::findEntry(key, tag...));
    }

    /// Walking by position, see HashTable.
    std::optional<Value> first() const { return valueOf(Table::first()); }
    std::optional<Value> after(const Key& key) const { return valueOf(Table::after(key)); }
    std::optional<Value> atOrAfter(const Key& key) const { return valueOf(Table::atOrAfter(key)); }

    iterator begin() const { return {Table::begin(), this}; }
    iterator end() const { return {Table::end(), this}; }

    /// Fetches what a search for the key of that tag will read first, and then what it will read
    /// next.
    using Table::prefetch;
    void prefetchRecord(Orb::HashTag tag) const {
        if (const Number* number = Table::likely(tag)) {
            slots_->prefetch(*number);
        }
    }

    // For the table that owns the records.

    Place placeOf(const Key& key, Orb::HashTag tag) const { return Table::placeOf(key, tag); }
    const Number* at(const Place& place, const Key& key) { return Table::entryAt(place, key); }
    const Number* numberOf(const Key& key) const { return Table::findEntry(key); }
    void insert(Number number, const Place& place) { Table::insertNew(number, place); }
    std::optional<Number> take(const Key& key, Orb::HashTag tag) { return Table::take(key, tag); }
    template <typename F>
    void forEachNumber(F&& function) const {
        for (const Number number : static_cast<const Table&>(*this)) {
            function(number);
        }
    }

  private:
    Value valueAt(Number number) const { return Form::value(slots_->at(number)); }
    std::optional<Value> valueOf(const Number* number) const {
        return number == nullptr ? std::nullopt : std::optional<Value>(valueAt(*number));
    }

    const Slots<typename Form::Record>* slots_;
};

} // namespace OrbMemtab
