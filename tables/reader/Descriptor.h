#pragma once

#include <unistd.h>

namespace Tables {

/// A descriptor that is closed with its owner; -1 for none.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor() { reset(); }
    Descriptor(Descriptor&& other) noexcept : fd_(other.fd_) { other.fd_ = -1; }
    Descriptor& operator=(Descriptor&& other) noexcept {
        const int fd = other.fd_;
        other.fd_ = -1;
        reset(fd);
        return *this;
    }

    void reset(int fd = -1) {
        if (fd_ >= 0) {
            ::close(fd_);
        }
        fd_ = fd;
    }

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }

  private:
    int fd_ = -1;
};

} // namespace Tables
