#include "tables/reader/TableFile.h"

#include <bit>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/mman.h>

#include "tables/layout/Atomic.h"

namespace Tables {

TableFileName::TableFileName(const char* path) {
    for (std::size_t i = 0; i + 1 < sizeof text && path[i] != '\0'; ++i) {
        text[i] = path[i] == '/' ? '.' : path[i];
    }
}

namespace {

template <typename T>
void exchange(T& left, T& right) {
    T kept = static_cast<T&&>(left);
    left = static_cast<T&&>(right);
    right = static_cast<T&&>(kept);
}

/// What is wrong with what a file says that it is; nullptr if nothing.
const char* faultOf(const TableHeader& header, const TableSpec& spec) {
    if (header.check != checkOf(header)) {
        return "is damaged: its head does not add up";
    }
    if (std::strncmp(header.path, spec.path, sizeof header.path) != 0) {
        return "is damaged: it is the table of another path";
    }
    if (header.recordKind != spec.kind || header.slotBytes != spec.slotBytes) {
        return "is damaged: it has other records";
    }
    if (!std::has_single_bit(header.ringEntries) || header.ringEntries < 2
        || header.ringEntries > TableFile::maxRingEntries) {
        return "is damaged: its ring has an impossible size";
    }
    return nullptr;
}

} // namespace

void TableFile::swap(TableFile& other) noexcept {
    exchange(descriptor_, other.descriptor_);
    exchange(identity_, other.identity_);
    exchange(header_, other.header_);
    exchange(slots_, other.slots_);
    exchange(mappedBytes_, other.mappedBytes_);
    exchange(mappedSlots_, other.mappedSlots_);
    exchange(slotBytes_, other.slotBytes_);
    exchange(ringEntries_, other.ringEntries_);
}

Found TableFile::open(const Folder& folder, const TableSpec& spec, ErrorText& error) {
    const TableFileName name(spec.path);
    // Not to wait where the name is that of a FIFO.
    const int flags = O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
    TableFile found;
    found.descriptor_.reset(::openat(folder.descriptor(), name.text, flags));
    if (!found.descriptor_) {
        if (errno == ENOENT) {
            return Found::absent;
        }
        error.set("%s/%s: %s", folder.path(), name.text,
                  errno == ELOOP ? "is a symbolic link" : std::strerror(errno));
        return Found::refused;
    }
    const Found result = found.check(folder, spec, error);
    if (result == Found::here) {
        swap(found);
    }
    return result;
}

Found TableFile::check(const Folder& folder, const TableSpec& spec, ErrorText& error) {
    const auto refuse = [&](const char* cause) {
        error.set("%s/%s: %s", folder.path(), TableFileName(spec.path).text, cause);
        return Found::refused;
    };
    struct stat status {};
    if (::fstat(descriptor_.get(), &status) != 0) {
        return refuse(std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        return refuse("is no regular file");
    }
    if (status.st_uid != folder.owner()) {
        return refuse("belongs to another user than the folder");
    }
    if (status.st_size == 0) {
        return Found::absent;
    }
    if (status.st_size < static_cast<off_t>(headerBytes)) {
        return refuse("is cut short");
    }
    if (!map(static_cast<std::size_t>(status.st_size))) {
        return refuse(std::strerror(errno));
    }
    if (load(header_->epoch) == 0 && (header_->magic == 0 || header_->magic == tableMagic)) {
        return Found::absent;
    }
    if (header_->magic != tableMagic) {
        return refuse("is no table");
    }
    if (header_->layoutVersion != layoutVersion) {
        error.set("%s/%s: has layout %u; this program reads layout %u", folder.path(),
                  TableFileName(spec.path).text, header_->layoutVersion, layoutVersion);
        return Found::refused;
    }
    if (const char* fault = faultOf(*header_, spec)) {
        return refuse(fault);
    }
    identity_ = FileIdentity::of(status);
    slotBytes_ = spec.slotBytes;
    ringEntries_ = header_->ringEntries;
    if (mappedBytes_ < slotsAt(ringEntries_) || !mapThrough(load(header_->used))) {
        return refuse("is cut short");
    }
    return Found::here;
}

/// Maps the file, again if need be, in that size.
bool TableFile::map(std::size_t bytes) {
    auto* const before = const_cast<TableHeader*>(header_);
    void* const mapping =
        before == nullptr
            ? ::mmap(nullptr, bytes, PROT_READ, MAP_SHARED, descriptor_.get(), 0)
            : ::mremap(static_cast<void*>(before), mappedBytes_, bytes, MREMAP_MAYMOVE);
    if (mapping == MAP_FAILED) {
        return false;
    }
    header_ = static_cast<const TableHeader*>(mapping);
    mappedBytes_ = bytes;
    return true;
}

bool TableFile::mapAnew(std::uint32_t slots) {
    struct stat status {};
    if (slots > maxSlots || ::fstat(descriptor_.get(), &status) != 0) {
        return false;
    }
    const auto bytes = static_cast<std::size_t>(status.st_size);
    const std::size_t head = slotsAt(ringEntries_);
    if (bytes < head + std::size_t{slots} * slotBytes_ || (bytes > mappedBytes_ && !map(bytes))) {
        return false;
    }
    slots_ = reinterpret_cast<const unsigned char*>(header_) + head;
    const std::size_t mapped = (mappedBytes_ - head) / slotBytes_;
    mappedSlots_ = mapped < maxSlots ? static_cast<std::uint32_t>(mapped) : maxSlots;
    return slots <= mappedSlots_;
}

void TableFile::close() {
    if (header_ != nullptr) {
        ::munmap(static_cast<void*>(const_cast<TableHeader*>(header_)), mappedBytes_);
    }
    header_ = nullptr;
    slots_ = nullptr;
    mappedBytes_ = 0;
    mappedSlots_ = 0;
    descriptor_.reset();
}

bool TableFile::isCurrent(const Folder& folder, const TableSpec& spec) const {
    struct stat status {};
    const TableFileName name(spec.path);
    return ::fstatat(folder.descriptor(), name.text, &status, AT_SYMLINK_NOFOLLOW) != 0
           || FileIdentity::of(status) == identity_;
}

const std::uint64_t* TableFile::ring() const {
    return reinterpret_cast<const std::uint64_t*>(reinterpret_cast<const unsigned char*>(header_)
                                                  + headerBytes);
}

bool TableFile::writerLives() const {
    struct flock lock {};
    lock.l_type = F_RDLCK;
    lock.l_whence = SEEK_SET;
    return ::fcntl(descriptor_.get(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

} // namespace Tables
