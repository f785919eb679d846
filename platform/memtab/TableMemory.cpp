#include "platform/memtab/TableMemory.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <new>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "platform/memtab/WriterProcess.h"
#include "tables/layout/WallTime.h"

namespace OrbMemtab {

using Tables::TableHeader;
using Vaultdb::FolderError;

namespace {

constexpr std::size_t pageBytes = 4096;
constexpr off_t blockBytes = 512; ///< what stat() counts in
constexpr int lockTries = 400;
constexpr long lockPauseNs = 5'000'000;
/// Below that, a table that empties and fills again is not to ask for memory each time.
constexpr std::size_t worthDiscarding = std::size_t{1} << 20;

std::size_t wholePages(std::size_t bytes) { return (bytes + pageBytes - 1) & ~(pageBytes - 1); }

/// Room for an eighth more, so that growing costs little and wastes little.
std::size_t grown(std::size_t slotBytes) { return wholePages(slotBytes + slotBytes / 8 + 1); }

std::string fileName(Orb::String path) {
    std::replace(path.begin(), path.end(), '/', '.');
    return path;
}

} // namespace

TableMemory::TableMemory(const TableForm& form) : form_{form.kind, form.slotBytes, 0} {
    const std::size_t size = Tables::slotsAt(0) + pageBytes;
    void* data = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (data == MAP_FAILED) {
        throw std::bad_alloc();
    }
    mapped(data, size);
}

TableMemory::TableMemory(Orb::Ptr<Vaultdb::Folder> folder, const Orb::String& path,
                         const TableForm& form)
    : form_(form), folder_(std::move(folder)), path_(path), name_(fileName(path)) {
    if (path.size() > TableHeader::maxPath) {
        throw FolderError("table " + path + ": the path is too long");
    }
    try {
        openFile();
    } catch (...) {
        release();
        throw;
    }
    folder_->add(*this);
}

TableMemory::~TableMemory() {
    if (folder_ == nullptr) {
        release();
        return;
    }
    folder_->remove(*this);
    if (data_ != nullptr) { // not when it could not start anew
        Tables::store(header().closedAt, Tables::wallTime());
    }
    release();
    folder_->ring(); // now that the lock is gone, so that who looks sees it
}

void TableMemory::release() {
    if (data_ != nullptr) {
        ::munmap(data_, size_);
        data_ = nullptr;
    }
    file_ = {};
}

std::string TableMemory::filePath() const { return folder_->path() + "/" + name_; }

void TableMemory::openFile() {
    const Vaultdb::Folder::Hold hold(*folder_);
    file_ = Orb::FileDescriptor(::openat(folder_->descriptor(), name_.c_str(),
                                         O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    const bool wasThere = file_ || errno != ENOENT;
    if (!file_ && wasThere) {
        folder_->moveAside(name_, std::strerror(errno));
    }
    if (!file_ || !takeOver()) {
        makeFile();
        if (wasThere) {
            skipIds();
        }
    }
}

// Other tables may still name ids that the one that was there gave out, how many is not known.
void TableMemory::skipIds() const { Tables::store(header().lastId, Tables::wallTime()); }

/// False, with the file moved aside, when it is not this table.
bool TableMemory::takeOver() {
    struct stat status {};
    if (::fstat(file_.get(), &status) != 0 || !S_ISREG(status.st_mode)
        || status.st_uid != ::geteuid()) {
        folder_->moveAside(name_, "is not a file of this user");
        return false;
    }
    lockOrRefuse();
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size < sizeof(TableHeader)) {
        folder_->moveAside(name_, "is cut short");
        return false;
    }
    if (status.st_blocks * blockBytes < status.st_size) {
        folder_->moveAside(name_, "has holes"); // which there may be no memory for
        return false;
    }
    mapWhole(size);
    if (const char* fault = faultOf(size)) {
        folder_->moveAside(name_, fault);
        return false;
    }
    become(header().epoch + 1);
    return true;
}

/// Why the file that is mapped is not this table; null if it is.
const char* TableMemory::faultOf(std::size_t fileSize) const {
    const TableHeader& found = header();
    if (found.magic != Tables::tableMagic) {
        return "is not a table";
    }
    if (found.layoutVersion != Tables::layoutVersion) {
        return "has another layout";
    }
    if (found.check != Tables::checkOf(found)) {
        return "is damaged";
    }
    if (found.recordKind != form_.kind || found.slotBytes != form_.slotBytes
        || found.ringEntries != form_.ringEntries
        || std::strncmp(found.path, path_.c_str(), TableHeader::maxPath) != 0) {
        return "is another table";
    }
    if (found.used > Tables::maxSlots) {
        return "is damaged";
    }
    const std::size_t needed =
        Tables::slotsAt(found.ringEntries) + std::size_t{found.used} * found.slotBytes;
    if (found.epoch == 0 || found.epoch + 1 == 0) {
        return "is damaged";
    }
    if (fileSize < needed) {
        return "is cut short";
    }
    const std::uint64_t last = ring()[(found.changes - 1) & (found.ringEntries - 1)];
    return found.changes != 0 && Tables::unpacked(last).slot >= found.used ? "is damaged" : nullptr;
}

// Made under another name first, so that nobody finds half a table.
void TableMemory::makeFile() {
    release();
    const std::string unfinished = name_ + ".new";
    file_ = folder_->make(unfinished);
    if (!lock()) {
        refuse();
    }
    if (!claimBytes(0, Tables::slotsAt(form_.ringEntries) + pageBytes)) {
        const int error = errno;
        ::unlinkat(folder_->descriptor(), unfinished.c_str(), 0);
        throw FolderError("table " + filePath() + ": " + std::strerror(error));
    }
    mapWhole(Tables::slotsAt(form_.ringEntries) + pageBytes);
    initialize();
    become(1);
    if (::renameat(folder_->descriptor(), unfinished.c_str(), folder_->descriptor(), name_.c_str())
        != 0) {
        throw FolderError("table " + filePath() + ": " + std::strerror(errno));
    }
}

void TableMemory::initialize() const {
    TableHeader& made = header();
    made.magic = Tables::tableMagic;
    made.layoutVersion = Tables::layoutVersion;
    made.recordKind = form_.kind;
    made.slotBytes = form_.slotBytes;
    made.ringEntries = form_.ringEntries;
    path_.copy(made.path, TableHeader::maxPath);
    made.check = Tables::checkOf(made);
}

/// Before anything else is changed: whoever follows the former writer takes the state anew.
void TableMemory::become(std::uint64_t epoch) {
    TableHeader& taken = header();
    Tables::store(taken.epoch, epoch);
    Tables::store(taken.writerPid, static_cast<std::uint32_t>(::getpid()));
    Tables::store(taken.openedAt, Tables::wallTime());
    Tables::store(taken.heardOfAt, Tables::wallTime());
    Tables::store(taken.closedAt, std::uint64_t{0});
}

void TableMemory::startAnew(const char* why) {
    const Vaultdb::Folder::Hold hold(*folder_);
    folder_->moveAside(name_, why);
    makeFile();
    skipIds();
}

bool TableMemory::lock() const {
    struct flock whole {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    return ::fcntl(file_.get(), F_OFD_SETLK, &whole) == 0;
}

// One that was killed a moment ago is waited for: it still holds its lock while its memory goes.
void TableMemory::lockOrRefuse() const {
    for (int tries = 0; !lock(); ++tries) {
        const std::uint32_t pid = writerPid();
        if (tries == lockTries || pid == 0 || !isEnding(pid)) {
            refuse();
        }
        const timespec pause{0, lockPauseNs};
        ::nanosleep(&pause, nullptr);
    }
}

/// Of the file's writer; 0 if it is not known.
std::uint32_t TableMemory::writerPid() const {
    std::uint32_t pid = 0;
    const ssize_t size = ::pread(file_.get(), &pid, sizeof pid, offsetof(TableHeader, writerPid));
    return size == static_cast<ssize_t>(sizeof pid) ? pid : 0;
}

void TableMemory::refuse() const {
    const std::uint32_t pid = writerPid();
    throw Vaultdb::TableInUseError(
        "table " + filePath() + ": in use by "
        + (pid != 0 ? "process " + std::to_string(pid) : std::string("another process")));
}

bool TableMemory::claimBytes(std::size_t from, std::size_t to) {
    int error = EINTR;
    while (error == EINTR) {
        error =
            ::posix_fallocate(file_.get(), static_cast<off_t>(from), static_cast<off_t>(to - from));
    }
    errno = error;
    return error == 0;
}

void TableMemory::mapWhole(std::size_t size) {
    void* data = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file_.get(), 0);
    if (data == MAP_FAILED) {
        throw FolderError("table " + filePath() + ": " + std::strerror(errno));
    }
    mapped(data, size);
}

void TableMemory::mapped(void* data, std::size_t size) {
    data_ = static_cast<std::byte*>(data);
    size_ = size;
    slots_ = data_ + Tables::slotsAt(form_.ringEntries);
    const std::size_t room = size - std::min(size, Tables::slotsAt(form_.ringEntries));
    claimed_ = static_cast<std::uint32_t>(room / form_.slotBytes);
}

bool TableMemory::claim() {
    const std::size_t slotsAt = Tables::slotsAt(form_.ringEntries);
    std::size_t size = slotsAt + grown(size_ - slotsAt);
    void* data = claimSpace(size) ? ::mremap(data_, size_, size, MREMAP_MAYMOVE) : MAP_FAILED;
    if (data == MAP_FAILED) {
        if (folder_ != nullptr) {
            folder_->awaitSpace();
        }
        return false;
    }
    mapped(data, size);
    return true;
}

/// Claims space for the file to have that size, or for one page more than now where that is all
/// that there is. Between two looks for space it answers no at once: asking the system costs as
/// much as there is to be had, and many may ask.
bool TableMemory::claimSpace(std::size_t& size) {
    if (folder_ == nullptr) {
        return true;
    }
    if (folder_->awaitsSpace()) {
        return false;
    }
    if (claimBytes(size_, size)) {
        return true;
    }
    size = size_ + pageBytes;
    return claimBytes(size_, size);
}

// Readers may still look at the slots of a shared table.
void TableMemory::discard() {
    if (folder_ == nullptr && size_ >= worthDiscarding) {
        ::madvise(slots_, size_ - static_cast<std::size_t>(slots_ - data_), MADV_DONTNEED);
        header().used = 0;
    }
}

void TableMemory::heardOf(std::uint64_t time) { Tables::store(header().heardOfAt, time); }

void TableMemory::spaceAgain() {
    if (onSpace_) {
        onSpace_();
    }
}

} // namespace OrbMemtab
