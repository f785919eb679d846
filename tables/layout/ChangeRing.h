#pragma once

#include <cstdint>

#include "tables/layout/Slot.h"

namespace Tables {

/// How readers follow a table. The ring has the latest changes in the writer's order, each as the
/// slot's number and its word after the change. The writer announces a change before it makes it:
/// entry, then the header's count, then the slot. So nobody misses a change, wherever the writer is
/// killed, and a reader that finds an entry whose slot is not that far yet waits with it.
///
/// A slot may have changed again since an entry was written. Then a later entry tells of it, and
/// the reader passes the earlier one over: it sees the changes in order, those left out that were
/// overtaken before it came.
struct Change {
    std::uint32_t slot;
    std::uint32_t word;
};

constexpr std::uint64_t packed(const Change& change) {
    return std::uint64_t{change.word} << 32 | change.slot;
}

constexpr Change unpacked(std::uint64_t entry) {
    return {static_cast<std::uint32_t>(entry), static_cast<std::uint32_t>(entry >> 32)};
}

/// Announces a change of the writer's.
inline void announce(TableHeader& header, std::uint64_t* ring, const Change& change) {
    const std::uint64_t count = header.changes;
    store(ring[count & (header.ringEntries - 1)], packed(change));
    store(header.changes, count + 1);
}

/// Whether the entry of change `index`, loaded before `changes` was, is that change's: the writer
/// may have begun to write the entry that comes ringEntries later.
constexpr bool isIntact(std::uint64_t index, std::uint64_t changes, std::uint32_t ringEntries) {
    return index < changes && changes - index < ringEntries;
}

} // namespace Tables
