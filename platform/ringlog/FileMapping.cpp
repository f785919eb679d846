#include "platform/ringlog/FileMapping.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>

namespace Ringlog {
namespace {

/// Leaves nothing to others: a trace names interfaces and addresses.
constexpr mode_t mode = 0640;

/// The mapping that recover() looks after; a handler of signals can reach it nowhere else.
struct Guarded {
    std::atomic<std::byte*> data;
    std::atomic<std::size_t> size;
    std::atomic<bool> recovered;

    void watch(std::byte* newData, std::size_t newSize) {
        data = nullptr; // so that no moment has the one's address and the other's size
        size = newSize;
        recovered = false;
        data = newData;
    }
};
constinit Guarded guarded{};
static_assert(std::atomic<std::byte*>::is_always_lock_free);

/// Growing a file beyond the limit would raise SIGXFSZ, which ends the process.
bool isWithinLimit(std::size_t size) {
    rlimit limit{};
    return ::getrlimit(RLIMIT_FSIZE, &limit) != 0 || size <= limit.rlim_cur;
}

/// An error number, 0 for none.
int resize(int fd, std::size_t size, bool reserve) {
    if (!isWithinLimit(size)) {
        return EFBIG;
    }
    auto length = static_cast<off_t>(size);
    if (!reserve) {
        return ::ftruncate(fd, length) == 0 ? 0 : errno;
    }
    int error = EINTR;
    while (error == EINTR) {
        error = ::posix_fallocate(fd, 0, length);
    }
    return error;
}

/// Null on failure, with errno set.
std::byte* mapWhole(int fd, std::size_t size, bool reserve) {
    if (int error = resize(fd, size, reserve); error != 0) {
        errno = error;
        return nullptr;
    }
    void* data = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    return data == MAP_FAILED ? nullptr : static_cast<std::byte*>(data);
}

} // namespace

FileMapping::FileMapping(const std::string& path, std::size_t size, bool reserve) {
    int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (fd < 0) {
        return;
    }
    data_ = mapWhole(fd, size, reserve);
    size_ = size;
    int error = errno;
    if (data_ == nullptr) {
        ::unlink(path.c_str());
    } else {
        guarded.watch(data_, size_);
    }
    ::close(fd);
    errno = error;
}

FileMapping::~FileMapping() {
    if (data_ == nullptr) {
        return;
    }
    if (guarded.data == data_) {
        guarded.watch(nullptr, 0);
    }
    ::munmap(data_, size_);
}

bool FileMapping::recover(const void* address) noexcept {
    std::byte* data = guarded.data;
    auto offset =
        reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(data);
    if (data == nullptr || offset >= guarded.size) {
        return false;
    }
    int error = errno;
    void* at = ::mmap(data, guarded.size, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
    errno = error;
    guarded.recovered = at != MAP_FAILED;
    return guarded.recovered;
}

bool FileMapping::isRecovered() noexcept { return guarded.recovered; }

} // namespace Ringlog
