#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "tables/layout/Atomic.h"
#include "tables/layout/FileLayout.h"

namespace Tables {

/// How one writer changes records while any number of processes read them, without locks.
///
/// A slot's word counts the changes of the slot and says what it holds:
///
///     bit 0       the record is being replaced; its old bytes are in the header
///     bit 1       there is a record
///     bits 2-31   changes so far, modulo 2^30
///
/// - **A record comes** into a slot without one: its bytes are stored, then the word.
/// - **A record goes**: the word is stored.
/// - **A record is replaced**: its old bytes and its slot's number are stored in the header, bit 0
///   in the word, the new bytes, and the new word.
///
/// A reader loads the word, then the bytes - the old ones from the header while bit 0 is set - and
/// then the word again. If it is still the same, no change of the slot has begun meanwhile: every
/// store comes after those before it and every load sees what was stored before the value it finds,
/// so a reader that had seen a byte of a later change would also see the word that was stored
/// before that byte. For a slot without a record the word alone counts. In the header the same
/// holds: it is written to again only after the slot's word has changed. So what is read is a
/// record as it was between two changes, whatever the writer does, and wherever it was stopped or
/// killed.
///
/// The word comes round after 2^30 changes of one slot during one read, which nobody is that slow
/// for. A reader tries again only when the writer was faster than itself.
namespace Slot {

inline constexpr std::uint32_t replacing = 1;
inline constexpr std::uint32_t present = 2;
inline constexpr std::uint32_t oneChange = 4;

/// The word after the next change, which leaves a record in the slot or not.
constexpr std::uint32_t next(std::uint32_t word, bool leavesRecord) {
    return ((word & ~std::uint32_t{oneChange - 1}) + oneChange) | (leavesRecord ? present : 0);
}

/// The word of the last change that is finished.
constexpr std::uint32_t finished(std::uint32_t word) { return word & ~replacing; }

/// How many changes lie between two words of one slot; negative when `word` is the earlier one.
constexpr std::int32_t changesSince(std::uint32_t earlier, std::uint32_t word) {
    return static_cast<std::int32_t>((word & ~std::uint32_t{3}) - (earlier & ~std::uint32_t{3}))
           / static_cast<std::int32_t>(oneChange);
}

/// A record as it lies in shared memory: the word, then another number of 32 bits, then words of
/// 64. Always accessed in these sizes.
template <typename Record>
struct Bytes {
    static constexpr std::size_t bodyWords = sizeof(Record) / 8 - 1;
    static_assert(sizeof(Record) % 8 == 0 && sizeof(Record) / 8 <= TableHeader::maxRecordWords);

    std::uint32_t word;
    std::uint32_t head;
    std::array<std::uint64_t, bodyWords> body;
};

/// Stores all of a record but its word.
template <typename Record>
void storeBytes(Bytes<Record>& slot, const Record& record) {
    const auto bytes = std::bit_cast<Bytes<Record>>(record);
    store(slot.head, bytes.head);
    for (std::size_t i = 0; i < Bytes<Record>::bodyWords; ++i) {
        store(slot.body[i], bytes.body[i]);
    }
}

/// Puts a record into a slot that has none.
template <typename Record>
void put(Bytes<Record>& slot, const Record& record, std::uint32_t word) {
    storeBytes(slot, record);
    store(slot.word, word);
}

/// Stores the old bytes of the record that was about to be replaced.
template <typename Record>
void restore(Bytes<Record>& slot, const TableHeader& header) {
    store(slot.head, static_cast<std::uint32_t>(header.replaced[0]));
    for (std::size_t i = 0; i < Bytes<Record>::bodyWords; ++i) {
        store(slot.body[i], header.replaced[i + 1]);
    }
}

/// Takes the record out of a slot.
template <typename Record>
void clear(Bytes<Record>& slot, std::uint32_t word) {
    store(slot.word, word);
}

/// Replaces the record of the slot with that number.
template <typename Record>
void replace(Bytes<Record>& slot, std::uint32_t number, const Record& record, std::uint32_t word,
             TableHeader& header) {
    store(header.replaced[0], std::uint64_t{slot.head});
    for (std::size_t i = 0; i < Bytes<Record>::bodyWords; ++i) {
        store(header.replaced[i + 1], slot.body[i]);
    }
    store(header.replacedSlot, number);
    store(slot.word, slot.word | replacing);
    storeBytes(slot, record);
    store(slot.word, word);
}

/// Reads the slot with that number. The record's word has no bit 0; without `present` the rest
/// means nothing. False when it changed while it was read: try again.
template <typename Record>
bool tryRead(const Bytes<Record>& slot, std::uint32_t number, const TableHeader& header,
             Record& record) {
    const std::uint32_t word = load(slot.word);
    Bytes<Record> bytes;
    bytes.word = finished(word);
    if ((word & replacing) != 0) {
        if (load(header.replacedSlot) != number) {
            return false;
        }
        bytes.head = static_cast<std::uint32_t>(load(header.replaced[0]));
        for (std::size_t i = 0; i < Bytes<Record>::bodyWords; ++i) {
            bytes.body[i] = load(header.replaced[i + 1]);
        }
    } else {
        bytes.head = load(slot.head);
        for (std::size_t i = 0; i < Bytes<Record>::bodyWords; ++i) {
            bytes.body[i] = load(slot.body[i]);
        }
    }
    record = std::bit_cast<Record>(bytes);
    return load(slot.word) == word;
}

} // namespace Slot

} // namespace Tables
