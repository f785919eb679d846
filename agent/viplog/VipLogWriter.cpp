#include "agent/viplog/VipLogWriter.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <utility>

#include "agent/Errors.h"

namespace Agent {

namespace {

constexpr std::size_t maxPending = std::size_t{64} * 1024 * 1024;
constexpr double maxWait = 10; // seconds

int openFile(const std::string& file) {
    constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC;
    const int descriptor = ::open(file.c_str(), flags, 0666);
    if (descriptor < 0) {
        throw FailureError(file + ": " + std::strerror(errno));
    }
    return descriptor;
}

} // namespace

VipLogWriter::VipLogWriter(std::string file)
    : file_(std::move(file)), sink_(openFile(file_), maxPending) {}

void VipLogWriter::attach(const Orb::Ptr<Tables4>& tables4, const Orb::Ptr<Tables6>& tables6) {
    writer_.emplace(sink_, tables4, tables6);
}

void VipLogWriter::finish() {
    if (writer_) {
        writer_->finish();
    }
    sink_.drain(maxWait);
    if (!sink_.isOpen()) {
        throw FailureError(file_ + ": " + sink_.failure());
    }
}

} // namespace Agent
