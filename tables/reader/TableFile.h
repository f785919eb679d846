#pragma once

#include <cstddef>
#include <cstdint>

#include "tables/layout/FileLayout.h"
#include "tables/reader/Folder.h"

namespace Tables {

/// What a table is to be.
struct TableSpec {
    const char* path; ///< where it is mounted
    RecordKind kind;
    std::uint32_t slotBytes;
    std::uint8_t family; ///< of all its records; 0 if they have none
};

/// A table's file, mapped to read. The mapping grows with the file, which never shrinks; whoever
/// does shrink it ends the process that reads by SIGBUS.
class TableFile {
  public:
    static constexpr std::uint32_t maxRingEntries = 1U << 26U;

    TableFile() = default;
    ~TableFile() { close(); }
    TableFile(const TableFile&) = delete;
    TableFile& operator=(const TableFile&) = delete;

    void swap(TableFile& other) noexcept;

    /// Opens the table in the folder. One that is being made is absent. Only when there is one that
    /// may be read is what was open before let go.
    Found open(const Folder& folder, const TableSpec& spec, ErrorText& error);
    void close();
    bool isOpen() const { return header_ != nullptr; }

    /// Whether the file at the path is still the one that is open; true as well when none is there.
    bool isCurrent(const Folder& folder, const TableSpec& spec) const;

    /// The rest needs an open file.
    const TableHeader& header() const { return *header_; }
    std::uint32_t ringEntries() const { return ringEntries_; }
    const std::uint64_t* ring() const;
    /// A slot that mapThrough() has mapped.
    const void* slot(std::uint32_t number) const {
        return slots_ + std::size_t{number} * slotBytes_;
    }

    /// Sees to it that the first `slots` are mapped. False if the file does not have so many.
    bool mapThrough(std::uint32_t slots) { return slots <= mappedSlots_ || mapAnew(slots); }

    /// Whether some process has the file to write.
    bool writerLives() const;

  private:
    Found check(const Folder& folder, const TableSpec& spec, ErrorText& error);
    bool map(std::size_t bytes);
    bool mapAnew(std::uint32_t slots);

    Descriptor descriptor_;
    FileIdentity identity_;
    const TableHeader* header_ = nullptr; ///< the beginning of the mapping
    const unsigned char* slots_ = nullptr;
    std::size_t mappedBytes_ = 0;
    std::uint32_t mappedSlots_ = 0;
    std::uint32_t slotBytes_ = 0;
    std::uint32_t ringEntries_ = 0;
};

/// The name of a table's file: its path with "." for "/".
struct TableFileName {
    explicit TableFileName(const char* path);
    char text[TableHeader::maxPath + 1] = {};
};

} // namespace Tables
