#pragma once

#include <cstddef>
#include <cstdint>

#include "tables/layout/Records.h"

namespace Tables {

/// A table's file: a header of one page, the ring of changes, then the slots, as many as memory was
/// claimed for.
///
///     0                 TableHeader
///     headerBytes       std::uint64_t ring[ringEntries]
///     slotsAt(ring)     Record slots[...] to the end of the file
///
/// The first fields say what the file is and never change. The others are the writer's to change;
/// each is loaded and stored by itself, see Atomic.h.
struct TableHeader {
    static constexpr unsigned maxPath = 80;
    static constexpr unsigned maxRecordWords = 16;

    std::uint64_t magic;
    std::uint32_t layoutVersion;
    RecordKind recordKind;
    std::uint32_t slotBytes;
    std::uint32_t ringEntries; ///< a power of two
    char path[maxPath];        ///< where the table is mounted; zeros follow
    std::uint64_t check;       ///< of all the above, see checkOf()

    /// Counts the writers, from 1. Whoever reads takes the whole state anew when it has changed. 0
    /// while the first writer makes the file.
    std::uint64_t epoch;
    /// Changes announced in the ring since the file was made. It goes on over writers.
    std::uint64_t changes;
    /// Slots that have held a record; all behind them are to be ignored.
    std::uint32_t used;
    std::uint32_t writerPid;
    /// The highest id that the table has given out.
    std::uint64_t lastId;
    /// Nanoseconds since 1970, each 0 while it has not come to pass: when the writer came, when it
    /// was heard of last, and when it left in good order.
    std::uint64_t openedAt;
    std::uint64_t heardOfAt;
    std::uint64_t closedAt;

    /// The record that is being replaced, as it was, see Slot.h.
    std::uint32_t replacedSlot;
    std::uint32_t unused;
    std::uint64_t replaced[maxRecordWords];
};

inline constexpr std::uint64_t tableMagic = 0x0A454C4241544E44; // "DNTABLE\n"
inline constexpr std::uint32_t layoutVersion = 1;

inline constexpr std::size_t headerBytes = 4096;
static_assert(sizeof(TableHeader) <= headerBytes);

/// More slots than any table has; so many are a sign of damage.
inline constexpr std::uint32_t maxSlots = 1U << 26U;

/// Where the slots begin.
constexpr std::size_t slotsAt(std::uint32_t ringEntries) {
    return headerBytes + std::size_t{ringEntries} * sizeof(std::uint64_t);
}

/// A sum over what a file says that it is, so that a damaged one is not taken for another.
inline std::uint64_t checkOf(const TableHeader& header) {
    std::uint64_t sum = 0xcbf29ce484222325;
    const auto* byte = reinterpret_cast<const unsigned char*>(&header);
    for (std::size_t i = 0; i < offsetof(TableHeader, check); ++i) {
        sum = (sum ^ byte[i]) * 0x100000001b3;
    }
    return sum;
}

/// The name of a table's file in its folder: the mount path with "." for "/".
///
/// Besides the tables a folder has the bell: a FIFO into which a writer puts a byte after it has
/// changed something. Nobody takes the byte out but the next writer; readers watch for the edge.
inline constexpr const char* bellName = "bell";

} // namespace Tables
