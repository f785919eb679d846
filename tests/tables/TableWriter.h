#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tables/layout/ChangeRing.h"
#include "tables/layout/Slot.h"
#include "tables/reader/RecordTraits.h"

namespace TablesTest {

/// A folder for the files of a test, removed with its owner.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

/// The file of a table in a folder.
std::string tableFile(const std::string& folder, const char* path);

/// Puts a byte into the bell of a folder, and makes the bell if need be.
class Bell {
  public:
    explicit Bell(const std::string& folder);
    ~Bell() { ::close(fd_); }
    Bell(const Bell&) = delete;
    Bell& operator=(const Bell&) = delete;
    void ring() const;

  private:
    int fd_;
};

/// The plainest writer of a table: it does what the layout says, slots and all being the caller's
/// choice. It takes over a file that is there.
template <typename Record>
class TableWriter {
  public:
    TableWriter(const std::string& folder, const char* path, std::uint32_t ringEntries = 8,
                std::uint32_t slots = 4)
        : fd_(::open(tableFile(folder, path).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0640)) {
        struct stat status {};
        ::fstat(fd_, &status);
        if (status.st_size != 0) {
            map(static_cast<std::size_t>(status.st_size));
        } else {
            map(Tables::slotsAt(ringEntries) + slots * sizeof(Record));
            make(path, ringEntries);
        }
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        ::fcntl(fd_, F_OFD_SETLK, &lock);
        header().writerPid = static_cast<std::uint32_t>(::getpid());
        Tables::store(header().openedAt, std::uint64_t{1000});
        Tables::store(header().closedAt, std::uint64_t{0});
        nextEpoch();
    }
    ~TableWriter() {
        ::munmap(memory_, bytes_);
        ::close(fd_);
    }
    TableWriter(const TableWriter&) = delete;
    TableWriter& operator=(const TableWriter&) = delete;

    Tables::TableHeader& header() { return *static_cast<Tables::TableHeader*>(memory_); }
    void nextEpoch() { Tables::store(header().epoch, header().epoch + 1); }
    void sign() { header().check = checkOf(header()); }

    /// The slot has this record, or none, from now on.
    void put(std::uint32_t number, const Record& record) { change(number, &record); }
    void clear(std::uint32_t number) { change(number, nullptr); }

    /// Announces a change and leaves it undone, as a writer that is killed between the two does.
    void announceOnly(std::uint32_t number) {
        grow(number);
        announce(header(), ring(), {number, Tables::Slot::next(slot(number).word, true)});
    }

    Tables::Slot::Bytes<Record>& slot(std::uint32_t number) {
        auto* const slots =
            static_cast<unsigned char*>(memory_) + Tables::slotsAt(header().ringEntries);
        return *reinterpret_cast<Tables::Slot::Bytes<Record>*>(slots + number * sizeof(Record));
    }

  private:
    void make(const char* path, std::uint32_t ringEntries) {
        header().magic = Tables::tableMagic;
        header().layoutVersion = Tables::layoutVersion;
        header().recordKind = Tables::recordKindOf<Record>;
        header().slotBytes = sizeof(Record);
        header().ringEntries = ringEntries;
        std::strncpy(header().path, path, sizeof header().path - 1);
        sign();
    }

    void map(std::size_t bytes) {
        [[maybe_unused]] const int grown = ::ftruncate(fd_, static_cast<off_t>(bytes));
        memory_ = memory_ == nullptr
                      ? ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd_, 0)
                      : ::mremap(memory_, bytes_, bytes, MREMAP_MAYMOVE);
        bytes_ = bytes;
    }

    void grow(std::uint32_t number) {
        const std::size_t needed =
            Tables::slotsAt(header().ringEntries) + (number + std::size_t{1}) * sizeof(Record);
        if (needed > bytes_) {
            map(needed + 3 * sizeof(Record));
        }
        if (number >= header().used) {
            Tables::store(header().used, number + 1);
        }
    }

    std::uint64_t* ring() {
        return reinterpret_cast<std::uint64_t*>(static_cast<unsigned char*>(memory_)
                                                + Tables::headerBytes);
    }

    void change(std::uint32_t number, const Record* record) {
        grow(number);
        auto& bytes = slot(number);
        const bool replaces = (bytes.word & Tables::Slot::present) != 0 && record != nullptr;
        const std::uint32_t word = Tables::Slot::next(bytes.word, record != nullptr);
        announce(header(), ring(), {number, word});
        if (record == nullptr) {
            Tables::Slot::clear(bytes, word);
        } else if (replaces) {
            Tables::Slot::replace(bytes, number, *record, word, header());
        } else {
            Tables::Slot::put(bytes, *record, word);
        }
    }

    int fd_;
    void* memory_ = nullptr;
    std::size_t bytes_ = 0;
};

/// 10.0.NUMBER.0/24 in VRF 0. The fields say `value` in different ways.
Tables::RouteRecord routeOf(std::uint8_t number, std::uint32_t value);

} // namespace TablesTest
