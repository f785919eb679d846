#include "platform/ringlog/RingFile.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <string>

#include "platform/ringlog/FunctionName.h"

namespace Ringlog {
namespace {

std::uint32_t nextSerial() {
    static std::uint32_t last = 0;
    return ++last;
}

/// Publishes a count after the bytes it counts, for readers of the file while it is written.
void publish(std::uint32_t& count, std::uint32_t value) {
    std::atomic_ref(count).store(value, std::memory_order_release);
}

} // namespace

RingFile::RingFile(FileMapping mapping, std::uint32_t tablePages, std::uint32_t blockCount,
                   clockid_t clock)
    : mapping_(std::move(mapping)), clock_(clock), serial_(nextSerial()),
      tableSize_(tablePages * Layout::pageSize), blockCount_(blockCount) {
    Layout::FileHeader& start = header();
    start.byteOrder = Layout::byteOrder;
    start.processId = static_cast<std::uint32_t>(::getpid());
    start.tableSize = tableSize_;
    start.blockSize = Layout::blockSize;
    start.blockCount = blockCount_;
    start.magic = Layout::magic;
    beginBlock();
}

std::size_t RingFile::fileSize(std::uint32_t tablePages, std::uint32_t blockCount) {
    return Layout::pageSize * (std::size_t{1} + tablePages)
           + std::size_t{Layout::blockSize} * blockCount;
}

void RingFile::describe(MessageDescriptor& descriptor, std::string_view text) {
    const CallSite& site = descriptor.site();
    std::string_view unit = site.unit;
    std::string function = functionName(site.signature);
    descriptor.file_ = serial_;
    descriptor.id_ = skipped;
    std::size_t size =
        sizeof(Layout::DescriptorHeader) + unit.size() + function.size() + text.size();
    if (text.size() > Layout::maxText || size > tableSize_ - tableUsed_
        || descriptors_ == Layout::maxDescriptors) {
        return;
    }
    Layout::DescriptorHeader entry{
        static_cast<std::uint32_t>(site.line), static_cast<std::uint16_t>(unit.size()),
        static_cast<std::uint16_t>(function.size()), static_cast<std::uint16_t>(text.size()), 0};
    std::byte* at = mapping_.data() + Layout::pageSize + tableUsed_;
    std::memcpy(at, &entry, sizeof(entry));
    at += sizeof(entry);
    for (std::string_view part : {unit, std::string_view(function), text}) {
        std::memcpy(at, part.data(), part.size());
        at += part.size();
    }
    tableUsed_ += static_cast<std::uint32_t>(size);
    publish(header().tableUsed, tableUsed_);
    descriptor.id_ = descriptors_++;
}

void RingFile::put(std::string_view text) {
    std::uint16_t size = 0;
    std::size_t most = std::min(maxString, room() - std::min(room(), sizeof(size)));
    size = static_cast<std::uint16_t>(std::min(text.size(), most));
    putBytes(&size, sizeof(size));
    if (size != 0) { // an empty text may have no address
        putBytes(text.data(), size);
    }
}

void RingFile::endMsg() {
    auto size = static_cast<std::uint32_t>(cursor_ - message_.data());
    if (size > Layout::blockRoom - blockUsed_) {
        beginBlock();
    }
    timespec now{};
    ::clock_gettime(clock_, &now);
    Layout::MessageHeader start{static_cast<std::uint64_t>(now.tv_sec) * 1'000'000'000U
                                    + static_cast<std::uint64_t>(now.tv_nsec),
                                static_cast<std::uint16_t>(size), descriptor_, 0};
    std::memcpy(message_.data(), &start, sizeof(start));
    std::memcpy(block_ + sizeof(Layout::BlockHeader) + blockUsed_, message_.data(), size);
    blockUsed_ += size;
    publish(reinterpret_cast<Layout::BlockHeader*>(block_)->used, blockUsed_);
}

Layout::FileHeader& RingFile::header() {
    return *reinterpret_cast<Layout::FileHeader*>(mapping_.data());
}

void RingFile::beginBlock() {
    std::uint64_t index = sequence_ % blockCount_;
    ++sequence_;
    blockUsed_ = 0;
    block_ = mapping_.data() + Layout::pageSize + tableSize_ + index * Layout::blockSize;
    auto* start = reinterpret_cast<Layout::BlockHeader*>(block_);
    // In this order: a process killed in between leaves an empty block, not an old one renamed.
    publish(start->used, 0);
    std::atomic_ref(start->sequence).store(sequence_, std::memory_order_release);
}

} // namespace Ringlog
