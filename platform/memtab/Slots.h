#pragma once

#include <bit>
#include <cstdint>
#include <limits>
#include <memory>

#include "platform/memtab/TableMemory.h"

namespace OrbMemtab {

/// The records of one table by slot. A record comes in two steps: stage() stores it where nobody
/// sees it yet, publish() makes it part of the table; in between its owner makes room for its key.
///
/// Private memory is made with the first record. Freed slots are used again, the last one first;
/// once the table is empty, slots are given out from the front again, so that records that come
/// together lie together.
template <typename Record>
class Slots {
  public:
    using Number = std::uint32_t;

    explicit Slots(std::uint32_t ringEntries)
        : form_{Tables::recordKindOf<Record>, sizeof(Record), ringEntries} {}

    /// Goes over to a file of the folder, in place of private memory, which must be empty. Its
    /// records are told, each with its slot: `found(number, record)` answers whether it can be
    /// used; where one cannot, the file is moved aside and the table is empty. Throws what
    /// TableMemory does, and then nothing has changed.
    template <typename Found>
    void share(const Orb::Ptr<Vaultdb::Folder>& folder, const Orb::String& path, Found&& found);

    void onSpace(std::function<void()> handler) { memory_->onSpace(std::move(handler)); }

    std::uint32_t size() const { return size_; }

    /// Whether so many more records can come; memory is claimed for them.
    bool hasRoom(std::size_t count) {
        while (claimed() - size_ < count) {
            if (!claim()) {
                return false;
            }
        }
        return true;
    }

    /// Stores a record for which there is room.
    Number stage(const Record& record);
    /// Makes a staged record part of the table.
    void publish(Number number);
    /// Forgets the staged record.
    void unstage(Number number) { release(number); }

    void replace(Number number, const Record& record);
    void remove(Number number);

    /// The record of a slot.
    Record at(Number number) const { return std::bit_cast<Record>(slot(number)); }
    void prefetch(Number number) const { __builtin_prefetch(&slot(number)); }

    /// An id that the table, of whichever run, has not given out before.
    std::uint64_t newId() {
        const std::uint64_t id = header().lastId + 1;
        Tables::store(header().lastId, id);
        return id;
    }

    /// Bytes in use, for accounting.
    std::size_t bytes() const { return memory_ == nullptr ? 0 : memory_->bytes(); }

  private:
    using Slot = Tables::Slot::Bytes<Record>;
    static constexpr Number none = std::numeric_limits<Number>::max();

    TableMemory& memory() {
        if (memory_ == nullptr) {
            memory_ = std::make_unique<TableMemory>(form_);
        }
        return *memory_;
    }
    Tables::TableHeader& header() { return memory().header(); }
    Slot& slot(Number number) const { return reinterpret_cast<Slot*>(memory_->slots())[number]; }
    std::uint32_t claimed() const { return memory_ == nullptr ? 0 : memory_->claimed(); }
    bool claim() { return memory_ == nullptr ? memory().claimed() > 0 : memory_->claim(); }

    template <typename Found>
    bool takeOver(Found&& found);
    void repair(Number number);
    void forgetRecords();
    void forgetFreeSlots();
    void release(Number number);
    /// What the slot's word will be; announced.
    std::uint32_t announced(Number number, bool leavesRecord);

    TableForm form_;
    std::unique_ptr<TableMemory> memory_;
    std::uint32_t size_ = 0;
    Number free_ = none; // the first of the free slots, each of which names the next
    Number fresh_ = 0;   // from here on none was given out since the table was empty
};

template <typename Record>
typename Slots<Record>::Number Slots<Record>::stage(const Record& record) {
    Number number = free_;
    if (number != none) {
        free_ = slot(number).head;
    } else {
        number = fresh_++;
        if (number == header().used) {
            Tables::store(header().used, number + 1);
        }
    }
    Tables::Slot::storeBytes(slot(number), record);
    return number;
}

template <typename Record>
std::uint32_t Slots<Record>::announced(Number number, bool leavesRecord) {
    const std::uint32_t word = Tables::Slot::next(slot(number).word, leavesRecord);
    memory_->announce({number, word});
    return word;
}

template <typename Record>
void Slots<Record>::publish(Number number) {
    Tables::store(slot(number).word, announced(number, true));
    ++size_;
}

template <typename Record>
void Slots<Record>::replace(Number number, const Record& record) {
    Tables::Slot::replace(slot(number), number, record, announced(number, true), header());
}

template <typename Record>
void Slots<Record>::remove(Number number) {
    Tables::Slot::clear(slot(number), announced(number, false));
    --size_;
    if (size_ == 0) {
        forgetFreeSlots();
    } else {
        release(number);
    }
}

template <typename Record>
void Slots<Record>::release(Number number) {
    Tables::store(slot(number).head, free_);
    free_ = number;
}

template <typename Record>
void Slots<Record>::forgetRecords() {
    size_ = 0;
    forgetFreeSlots();
}

template <typename Record>
void Slots<Record>::forgetFreeSlots() {
    free_ = none;
    fresh_ = 0;
    memory_->discard();
}

template <typename Record>
template <typename Found>
void Slots<Record>::share(const Orb::Ptr<Vaultdb::Folder>& folder, const Orb::String& path,
                          Found&& found) {
    memory_ = std::make_unique<TableMemory>(folder, path, form_);
    try {
        if (!takeOver(found)) {
            memory_->startAnew("is damaged");
            forgetRecords();
        }
    } catch (...) {
        forgetRecords();
        memory_.reset();
        throw;
    }
}

template <typename Record>
template <typename Found>
bool Slots<Record>::takeOver(Found&& found) {
    fresh_ = header().used;
    for (Number number = 0; number < fresh_; ++number) {
        repair(number);
        if ((slot(number).word & Tables::Slot::present) == 0) {
            release(number);
        } else if (found(number, at(number))) {
            ++size_;
        } else {
            return false;
        }
    }
    if (size_ == 0) {
        forgetFreeSlots();
    }
    return true;
}

/// Gives a record that the former writer was about to replace its old bytes back. That is a change
/// of its own, as a reader may have met it halfway.
template <typename Record>
void Slots<Record>::repair(Number number) {
    Slot& broken = slot(number);
    if ((broken.word & Tables::Slot::replacing) == 0) {
        return;
    }
    const std::uint32_t word = Tables::Slot::next(broken.word, true);
    if (header().replacedSlot == number) {
        Tables::Slot::restore(broken, header());
        Tables::store(broken.word, word);
    } else {
        Tables::store(broken.word, Tables::Slot::next(broken.word, false));
    }
}

} // namespace OrbMemtab
