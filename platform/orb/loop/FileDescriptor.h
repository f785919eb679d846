#pragma once

#include <unistd.h>
#include <utility>

namespace Orb {

/// Owns one open file descriptor, or none (-1).
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int fd) noexcept : fd_(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~FileDescriptor() {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }

    explicit operator bool() const noexcept { return fd_ >= 0; }
    int get() const noexcept { return fd_; }
    /// Gives it away.
    int release() noexcept { return std::exchange(fd_, -1); }

  private:
    int fd_ = -1;
};

} // namespace Orb
