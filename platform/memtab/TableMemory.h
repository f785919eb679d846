#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/orb/loop/FileDescriptor.h"
#include "platform/orb/object/Ptr.h"
#include "platform/orb/value/Name.h"
#include "platform/vaultdb/Folder.h"
#include "tables/layout/ChangeRing.h"

namespace OrbMemtab {

/// What a table's memory holds; fixed in its file.
struct TableForm {
    Tables::RecordKind kind;
    std::uint32_t slotBytes;
    std::uint32_t ringEntries; ///< of a shared table; a private one has none
};

/// The memory of one table: header, ring and slots, private or in a file of a store's folder. The
/// one writer of a file holds a lock on it for its life, so it is released however it ends.
///
/// Memory is claimed before it is touched: what the system refuses is an answer, never a signal.
/// Only whoever cuts a file off while it is in use can do harm.
class TableMemory final : private Vaultdb::Folder::Tenant {
  public:
    /// Private memory, without a ring. Throws std::bad_alloc.
    explicit TableMemory(const TableForm& form);

    /// The file of that mount path, which is made if it is not there and taken over if it is. One
    /// that is not such a table, or damaged, is moved aside. Throws TableInUseError when somebody
    /// writes it, FolderError when there is no space or the system refuses.
    TableMemory(Orb::Ptr<Vaultdb::Folder> folder, const Orb::String& path, const TableForm& form);

    TableMemory(const TableMemory&) = delete;
    TableMemory& operator=(const TableMemory&) = delete;
    ~TableMemory();

    Tables::TableHeader& header() const { return *reinterpret_cast<Tables::TableHeader*>(data_); }
    std::byte* slots() const { return slots_; }

    /// Slots that there is memory for.
    std::uint32_t claimed() const { return claimed_; }
    /// Claims memory for more. False when there is none; if it is shared, whoever waits for room is
    /// told when it is worth to try again.
    bool claim();

    /// No slot is in use. Private memory that is not small goes back to the system.
    void discard();

    /// Announces a change and sees to it that the bell is rung. Before the change.
    void announce(const Tables::Change& change) {
        if (folder_ != nullptr) {
            folder_->noteChange(); // may throw, and nothing may between announcing and changing
            Tables::announce(header(), ring(), change);
        }
    }

    /// Sets what a table found cannot be used as aside and begins with an empty one.
    void startAnew(const char* why);

    /// Is told when there may be space again.
    void onSpace(std::function<void()> handler) { onSpace_ = std::move(handler); }

    /// Bytes in use, for accounting.
    std::size_t bytes() const { return size_; }

  private:
    std::uint64_t* ring() const {
        return reinterpret_cast<std::uint64_t*>(data_ + Tables::headerBytes);
    }

    void heardOf(std::uint64_t time) override;
    void spaceAgain() override;

    void openFile();
    void makeFile();
    bool takeOver();
    const char* faultOf(std::size_t fileSize) const;
    void become(std::uint64_t epoch);
    bool lock() const;
    void lockOrRefuse() const;
    std::uint32_t writerPid() const;
    [[noreturn]] void refuse() const;
    void initialize() const;
    void skipIds() const;
    bool claimBytes(std::size_t from, std::size_t to);
    bool claimSpace(std::size_t& size);
    void mapWhole(std::size_t size);
    void mapped(void* data, std::size_t size);
    void release();
    std::string filePath() const;

    TableForm form_;
    Orb::Ptr<Vaultdb::Folder> folder_; // null for private memory
    Orb::String path_;
    std::string name_;
    Orb::FileDescriptor file_;
    std::byte* data_ = nullptr;
    std::byte* slots_ = nullptr;
    std::size_t size_ = 0;
    std::uint32_t claimed_ = 0;
    std::function<void()> onSpace_;
};

} // namespace OrbMemtab
