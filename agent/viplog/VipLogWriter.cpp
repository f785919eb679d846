#include "agent/viplog/VipLogWriter.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "agent/base/Errors.h"
#include "agent/base/FileDescriptor.h"
#include "agent/viplog/VipLogLock.h"

namespace Agent {

namespace {

constexpr std::size_t maxPending = std::size_t{64} * 1024 * 1024;
constexpr double maxWait = 10; // seconds

[[noreturn]] void fail(const std::string& file, int error) {
    throw FailureError(file + ": " + std::strerror(error));
}

int openLog(const std::string& file) {
    constexpr int flags = O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC;
    FileDescriptor opened(::open(file.c_str(), flags, 0666));
    if (!opened) {
        fail(file, errno);
    }
    struct stat status {};
    if (::fstat(opened.get(), &status) == 0 && S_ISREG(status.st_mode)) {
        if (!lockVipLog(opened.get())) {
            throw FailureError(file + ": is being written by another agent");
        }
        if (::ftruncate(opened.get(), 0) != 0) {
            fail(file, errno);
        }
    }
    return opened.release();
}

} // namespace

VipLogWriter::VipLogWriter(std::string file)
    : file_(std::move(file)), sink_(openLog(file_), maxPending) {}

void VipLogWriter::attach(const Orb::Ptr<Tables4>& tables4, const Orb::Ptr<Tables6>& tables6) {
    writer_.emplace(sink_, tables4, tables6);
}

void VipLogWriter::finish() {
    if (writer_) {
        writer_->finish();
    }
    sink_.drain(maxWait);
    if (!sink_.isOpen()) {
        throw FailureError(failure());
    }
}

std::string VipLogWriter::failure() const {
    return sink_.isOpen() ? std::string() : file_ + ": " + sink_.failure();
}

} // namespace Agent
