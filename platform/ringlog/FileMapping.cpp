#include "platform/ringlog/FileMapping.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace Ringlog {
namespace {

/// Null on failure.
std::byte* mapWhole(int fd, std::size_t size, bool reserve) {
    auto length = static_cast<off_t>(size);
    if ((reserve ? ::posix_fallocate(fd, 0, length) : ::ftruncate(fd, length)) != 0) {
        return nullptr;
    }
    void* data = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    return data == MAP_FAILED ? nullptr : static_cast<std::byte*>(data);
}

} // namespace

FileMapping::FileMapping(const std::string& path, std::size_t size, bool reserve) {
    int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0) {
        return;
    }
    data_ = mapWhole(fd, size, reserve);
    size_ = size;
    if (data_ == nullptr) {
        ::unlink(path.c_str());
    }
    ::close(fd);
}

FileMapping::~FileMapping() {
    if (data_ != nullptr) {
        ::munmap(data_, size_);
    }
}

} // namespace Ringlog
