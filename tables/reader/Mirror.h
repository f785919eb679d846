#pragma once

#include <cstddef>
#include <cstdint>

#include "tables/layout/ChangeRing.h"
#include "tables/layout/Slot.h"
#include "tables/reader/RecordSet.h"
#include "tables/reader/TableFile.h"

namespace Tables {

/// A reader's copy of a table, brought to the present by following the ring, or, when that is not
/// possible, by taking the whole state anew. Changes are told afterwards, in a step of their own,
/// so that several tables can be read before any change is told.
///
/// Between two changes that it tells the copy does not go back and forth: what is told leads from
/// what was told before to what find() and each() see.
template <typename Record>
class Mirror {
  public:
    /// @param path    where the table is mounted; has to outlive the mirror
    /// @param family  of all its records; 0 if they have none
    explicit Mirror(const char* path, std::uint8_t family = 0)
        : spec_{path, recordKindOf<Record>, sizeof(Record), family} {}

    /// Brings the copy to the present, as often as one likes before tell(). The folder has been
    /// looked for just before. A table that is absent stays as it was.
    ///
    /// Refused, with the text of the error, when there is something else than a table in its place,
    /// the table is damaged or changes faster than it can be read, or there is no memory. Then the
    /// copy is as it was, or further on the way, and the next call tries to take the state anew.
    Found bring(const Folder& folder, ErrorText& error);

    /// Tells what has changed since it was called last: `onChange(before, after)`, each a pointer
    /// to a record that is valid during the call, or nullptr for a record that was or is not there.
    template <typename OnChange>
    void tell(OnChange&& onChange) {
        const Settled settled{*this};
        eachChange(onChange);
    }

    /// What tell() will tell, which may be looked at before.
    template <typename OnChange>
    void eachChange(OnChange&& onChange) const;

    /// Both in one.
    template <typename OnChange>
    Found update(const Folder& folder, ErrorText& error, OnChange&& onChange) {
        const Found found = bring(folder, error);
        tell(onChange);
        return found;
    }

    /// Where the copy is among the writer's changes: another number when bring() found some.
    std::uint64_t position() const { return cursor_; }

    std::size_t count() const { return records_.count(); }
    const Record* find(const RecordKey& key) const { return records_.find(key); }
    template <typename F>
    int each(F&& f) const {
        return records_.each(f);
    }

    /// The file that is followed, not open while none has been found.
    const TableFile& file() const { return file_; }
    const TableSpec& spec() const { return spec_; }

  private:
    using Records = RecordSet<Record>;

    enum class Step { done, behind, damaged, noMemory };

    struct Told {
        Record before;
        Record after;
    };

    /// Forgets what was told, also when telling ends with an exception.
    struct Settled {
        Mirror& mirror;
        ~Settled() {
            mirror.told_.clear();
            mirror.before_.clear();
            mirror.isAnew_ = false;
        }
    };

    /// Reads of one slot before it is called damaged: the writer would have to be faster each time.
    /// There is nothing to wait for between them, since one fails only where the writer went on.
    static constexpr unsigned maxReads = 10000;
    /// Starts of taking the state before the writer is called too fast.
    static constexpr unsigned maxStarts = 16;

    bool read(std::uint32_t slot, Record& record) const;
    Step follow(Records& records, std::uint64_t& cursor, bool tells);
    Step followOne(Records& records, const Change& change, bool isLast, bool& waits, bool tells);
    Step takeState();
    Step copySlots(Records& records, std::uint32_t used) const;
    Found refuse(const Folder& folder, Step step, ErrorText& error) const;

    TableSpec spec_;
    TableFile file_;
    Records records_;
    std::uint64_t epoch_ = 0;      ///< of the writer that is followed; 0 to take the state anew
    std::uint64_t generation_ = 0; ///< of the folder when its file was last looked at
    std::uint64_t cursor_ = 0;     ///< the next change of the ring to look at

    Buffer<Told> told_;   ///< changes that are to be told
    Records before_;      ///< if isAnew_, what was there behind those
    bool isAnew_ = false; ///< from before_ on, changes are found by comparing
};

template <typename Record>
Found Mirror<Record>::bring(const Folder& folder, ErrorText& error) {
    const bool isKnown = file_.isOpen() && generation_ == folder.generation();
    if (!isKnown && (!file_.isOpen() || !file_.isCurrent(folder, spec_))) {
        const Found found = file_.open(folder, spec_, error);
        if (found == Found::refused || !file_.isOpen()) {
            return found;
        }
        if (found == Found::absent) {
            generation_ = 0; // the old one is followed, and a new one is about to come
        } else {
            epoch_ = 0;
            generation_ = folder.generation();
        }
    } else {
        generation_ = folder.generation();
    }
    Step step = Step::behind;
    if (epoch_ != 0 && load(file_.header().epoch) == epoch_) {
        step = follow(records_, cursor_, !isAnew_);
    }
    for (unsigned starts = 0; step == Step::behind && starts < maxStarts; ++starts) {
        step = takeState();
    }
    if (step == Step::done) {
        return Found::here;
    }
    epoch_ = 0;
    return refuse(folder, step, error);
}

template <typename Record>
Found Mirror<Record>::refuse(const Folder& folder, Step step, ErrorText& error) const {
    const char* cause = "is damaged: a record or change of it is impossible";
    if (step == Step::behind) {
        cause = "changes faster than it can be read";
    } else if (step == Step::noMemory) {
        cause = "there is no memory for a copy";
    }
    error.set("%s/%s: %s", folder.path(), TableFileName(spec_.path).text, cause);
    return Found::refused;
}

template <typename Record>
template <typename OnChange>
void Mirror<Record>::eachChange(OnChange&& onChange) const {
    for (const Told& told : told_) {
        const auto given = [](const Record& record) {
            return Records::isPresent(record) ? &record : nullptr;
        };
        onChange(given(told.before), given(told.after));
    }
    if (!isAnew_) {
        return;
    }
    before_.each([&](const Record& record) {
        if (records_.find(keyOf(record)) == nullptr) {
            onChange(&record, static_cast<const Record*>(nullptr));
        }
        return 0;
    });
    records_.each([&](const Record& record) {
        const Record* const before = before_.find(keyOf(record));
        if (before == nullptr || !sameContent(*before, record)) {
            onChange(before, &record);
        }
        return 0;
    });
}

template <typename Record>
bool Mirror<Record>::read(std::uint32_t slot, Record& record) const {
    const auto& bytes = *static_cast<const Slot::Bytes<Record>*>(file_.slot(slot));
    for (unsigned reads = 0; !Slot::tryRead(bytes, slot, file_.header(), record); ++reads) {
        if (reads == maxReads) {
            return false;
        }
    }
    return !Records::isPresent(record) || isSound(record, spec_.family);
}

/// Takes the state as it is now. The changes before the count that is noted first have all been
/// made, but for the last: it may be announced only. So the copy goes on with that one.
template <typename Record>
typename Mirror<Record>::Step Mirror<Record>::takeState() {
    const TableHeader& header = file_.header();
    const std::uint64_t epoch = load(header.epoch);
    const std::uint64_t changes = load(header.changes);
    std::uint64_t cursor = changes == 0 ? 0 : changes - 1;
    const std::uint32_t used = load(header.used);
    if (!file_.mapThrough(used)) {
        return Step::damaged;
    }
    Records records;
    Step step = copySlots(records, used);
    if (step == Step::done) {
        step = follow(records, cursor, false);
    }
    if (step == Step::done && (epoch == 0 || load(file_.header().epoch) != epoch)) {
        step = Step::behind;
    }
    if (step != Step::done) {
        return step;
    }
    if (!isAnew_) {
        before_.swap(records_);
        isAnew_ = true;
    }
    records_.swap(records);
    epoch_ = epoch;
    cursor_ = cursor;
    return step;
}

template <typename Record>
typename Mirror<Record>::Step Mirror<Record>::copySlots(Records& records,
                                                        std::uint32_t used) const {
    if (!records.reserve(used)) {
        return Step::noMemory;
    }
    Record block[Records::fillCount];
    for (std::uint32_t first = 0; first < used; first += Records::fillCount) {
        const std::uint32_t left = used - first;
        const unsigned count = left < Records::fillCount ? left : Records::fillCount;
        for (unsigned n = 0; n < count; ++n) {
            if (!read(first + n, block[n])) {
                return Step::damaged;
            }
        }
        records.fill(first, block, count);
    }
    return Step::done;
}

/// Follows the ring until there is nothing more, or for twice the ring at a writer that does not
/// stop.
template <typename Record>
typename Mirror<Record>::Step Mirror<Record>::follow(Records& records, std::uint64_t& cursor,
                                                     bool tells) {
    const std::uint32_t ringEntries = file_.ringEntries();
    for (std::uint64_t budget = std::uint64_t{2} * ringEntries; budget != 0; --budget) {
        const std::uint64_t changes = load(file_.header().changes);
        if (changes == cursor) {
            return Step::done;
        }
        const std::uint64_t entry = load(file_.ring()[cursor & (ringEntries - 1)]);
        if (!isIntact(cursor, load(file_.header().changes), ringEntries)) {
            return Step::behind;
        }
        bool waits = false;
        const Step step = followOne(records, unpacked(entry), changes == cursor + 1, waits, tells);
        if (step != Step::done || waits) {
            return step;
        }
        ++cursor;
    }
    return Step::done;
}

/// Takes over one change. It waits if it is announced and not made; only the last change can be,
/// as long as its writer is there: another writer makes it no more, or announces it again.
template <typename Record>
typename Mirror<Record>::Step Mirror<Record>::followOne(Records& records, const Change& change,
                                                        bool isLast, bool& waits, bool tells) {
    const auto [slot, word] = change;
    if (slot < records.slots() && Slot::changesSince(records.at(slot).word, word) <= 0) {
        return Step::done;
    }
    if (slot >= maxSlots || !file_.mapThrough(slot + 1)) {
        return Step::damaged;
    }
    Record record;
    if (!read(slot, record)) {
        return Step::damaged;
    }
    const std::int32_t ahead = Slot::changesSince(word, record.word);
    waits = ahead < 0 && isLast;
    if (ahead != 0) {
        return Step::done;
    }
    bool memory = true;
    const auto told = [&](const Record* before, const Record* after) {
        static constexpr Record none{};
        memory =
            !tells
            || told_.append({before == nullptr ? none : *before, after == nullptr ? none : *after});
        return memory;
    };
    return records.put(slot, record, told) ? Step::done : Step::noMemory;
}

} // namespace Tables
