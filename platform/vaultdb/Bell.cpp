#include "platform/vaultdb/Bell.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <string>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "platform/orb/value/Error.h"

namespace Vaultdb {

Bell::Bell(Orb::FileDescriptor fifo) : fifo_(std::move(fifo)), orders_(::eventfd(0, EFD_CLOEXEC)) {
    if (!orders_) {
        throw Orb::Error(std::string("bell: ") + std::strerror(errno));
    }
    // A thread begins with the signals blocked that its maker has blocked.
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        ringer_ = std::thread([this] { run(); });
    } catch (const std::system_error& error) {
        ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
        throw Orb::Error(std::string("bell: ") + error.what());
    }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

Bell::~Bell() {
    ends_ = true;
    ring();
    ringer_.join();
}

void Bell::ring() const {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(orders_.get(), &one, sizeof one);
}

void Bell::run() const {
    std::uint64_t rings = 0;
    bool isLast = false;
    while (!isLast && ::read(orders_.get(), &rings, sizeof rings) == sizeof rings) {
        isLast = ends_;
        wakeReaders();
    }
}

// Emptied first: readers are woken by the step from empty to not empty.
void Bell::wakeReaders() const {
    char bytes[64];
    while (::read(fifo_.get(), bytes, sizeof bytes) == static_cast<ssize_t>(sizeof bytes)) {
    }
    const char byte = 0;
    // One that finds no room has been rung already.
    [[maybe_unused]] const ssize_t written = ::write(fifo_.get(), &byte, 1);
}

} // namespace Vaultdb
