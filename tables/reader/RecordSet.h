#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "tables/layout/Slot.h"
#include "tables/reader/Buffer.h"
#include "tables/reader/RecordTraits.h"

namespace Tables {

/// Records by slot, and by key. No two have the same key: when one comes to a slot while another
/// slot has its key, it has moved, and the other slot is empty from then on.
///
/// The index is a table of (hash, slot) with open addressing, at most half full, and an entry that
/// goes is filled from behind.
template <typename Record>
class RecordSet {
  public:
    static bool isPresent(const Record& record) { return (record.word & Slot::present) != 0; }

    std::size_t count() const { return count_; }
    std::uint32_t slots() const { return static_cast<std::uint32_t>(records_.size()); }
    /// What a slot holds. Without Slot::present in its word it holds nothing.
    const Record& at(std::uint32_t slot) const { return records_[slot]; }

    /// Valid until the next change; nullptr if there is none.
    const Record* find(const RecordKey& key) const {
        if (count_ == 0) {
            return nullptr;
        }
        const std::uint32_t slot = entries_[seek(key, hashOf(key))].slot;
        return slot == 0 ? nullptr : &records_[slot - 1];
    }

    /// Makes room for slots up to that number, so that coming there does not fail.
    bool reserve(std::uint32_t slots) {
        return (slots <= records_.size() || records_.resize(slots)) && makeRoom(slots);
    }

    /// The slot holds this from now on. Tells what changes by it: `told(before, after)`, each a
    /// pointer that is valid during the call or nullptr, returning whether it could be told. False,
    /// with the set in disorder, when there is no memory or something could not be told.
    template <typename Told>
    bool put(std::uint32_t slot, const Record& record, Told&& told) {
        if ((slot >= records_.size() && !records_.resize(slot + 1)) || !makeRoom(count_ + 1)) {
            return false;
        }
        const RecordKey key = keyOf(record);
        const Record before = records_[slot];
        if (isPresent(before) && !(isPresent(record) && keyOf(before) == key)) {
            remove(seek(keyOf(before), hashOf(keyOf(before))));
            if (!told(&before, static_cast<const Record*>(nullptr))) {
                return false;
            }
        }
        if (!isPresent(record)) {
            records_[slot] = record;
            return true;
        }
        return enter(slot, record, key, hashOf(key), told);
    }

    /// Fills slots that hold nothing and that there is room for, `count` from `first` on. The
    /// index is looked up for all of them at once, since each look is a wait for memory.
    void fill(std::uint32_t first, const Record* records, unsigned count) {
        const auto told = [](const Record*, const Record*) { return true; };
        std::uint32_t hashes[fillCount];
        for (unsigned n = 0; n < count; ++n) {
            hashes[n] = hashOf(keyOf(records[n]));
            __builtin_prefetch(&entries_[home(hashes[n])], 1);
        }
        for (unsigned n = 0; n < count; ++n) {
            if (isPresent(records[n])) {
                enter(first + n, records[n], keyOf(records[n]), hashes[n], told);
            } else {
                records_[first + n] = records[n];
            }
        }
    }
    static constexpr unsigned fillCount = 32;

    bool put(std::uint32_t slot, const Record& record) {
        return put(slot, record, [](const Record*, const Record*) { return true; });
    }

    /// Adds a record in a slot of its own, or takes one out, for a set that follows no table.
    bool add(const Record& record) { return put(slots(), record); }
    void take(const RecordKey& key) {
        if (const Record* const record = find(key)) {
            records_[static_cast<std::size_t>(record - records_.begin())].word = 0;
            remove(seek(key, hashOf(key)));
        }
    }

    void clear() {
        records_.clear();
        entries_.clear();
        count_ = 0;
    }

    void swap(RecordSet& other) noexcept {
        records_.swap(other.records_);
        entries_.swap(other.entries_);
        const std::size_t count = count_;
        count_ = other.count_;
        other.count_ = count;
    }

    /// Calls `f(record)` for each, until it returns something else than 0, and returns that.
    template <typename F>
    int each(F&& f) const {
        for (const Record& record : records_) {
            if (isPresent(record)) {
                if (const int ended = f(record)) {
                    return ended;
                }
            }
        }
        return 0;
    }

  private:
    struct Entry {
        std::uint32_t hash;
        std::uint32_t slot; ///< plus one; 0 in an empty entry
    };

    std::size_t mask() const { return entries_.size() - 1; }
    /// Where an entry would best be: by the top bits, as many as the index needs.
    std::size_t home(std::uint32_t hash) const {
        return hash >> (32 - static_cast<unsigned>(std::countr_zero(entries_.size())));
    }

    /// The entry of the key, or the empty one where it would be.
    std::size_t seek(const RecordKey& key, std::uint32_t hash) const {
        std::size_t n = home(hash);
        while (entries_[n].slot != 0
               && !(entries_[n].hash == hash && keyOf(records_[entries_[n].slot - 1]) == key)) {
            n = (n + 1) & mask();
        }
        return n;
    }

    template <typename Told>
    bool enter(std::uint32_t slot, const Record& record, const RecordKey& key, std::uint32_t hash,
               Told& told) {
        Entry& entry = entries_[seek(key, hash)];
        if (entry.slot == 0) {
            entry = {hash, slot + 1};
            ++count_;
            records_[slot] = record;
            return told(static_cast<const Record*>(nullptr), &record);
        }
        const Record before = records_[entry.slot - 1];
        if (entry.slot != slot + 1) {
            records_[entry.slot - 1].word &= ~Slot::present;
            entry.slot = slot + 1;
        }
        records_[slot] = record;
        return sameContent(before, record) || told(&before, &record);
    }

    void remove(std::size_t hole) {
        --count_;
        for (std::size_t n = hole;;) {
            n = (n + 1) & mask();
            if (entries_[n].slot == 0) {
                break;
            }
            // An entry may fill the hole unless its home lies behind the hole.
            if (((n - home(entries_[n].hash)) & mask()) >= ((n - hole) & mask())) {
                entries_[hole] = entries_[n];
                hole = n;
            }
        }
        entries_[hole] = {};
    }

    /// Sees to it that so many records leave half of the index empty.
    bool makeRoom(std::size_t count) {
        static constexpr std::size_t fewest = 16;
        if (count * 2 <= entries_.size()) {
            return true;
        }
        Buffer<Entry> before;
        before.swap(entries_);
        if (!entries_.resize(std::bit_ceil(count < fewest ? fewest : count * 2))) {
            before.swap(entries_);
            return false;
        }
        for (const Entry& entry : before) {
            if (entry.slot != 0) {
                std::size_t n = home(entry.hash);
                while (entries_[n].slot != 0) {
                    n = (n + 1) & mask();
                }
                entries_[n] = entry;
            }
        }
        return true;
    }

    Buffer<Record> records_;
    Buffer<Entry> entries_;
    std::size_t count_ = 0;
};

} // namespace Tables
