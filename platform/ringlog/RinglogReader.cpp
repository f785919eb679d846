#include "platform/ringlog/RinglogReader.h"

#include <algorithm>

#include "platform/orb/value/Error.h"
#include "platform/ringlog/ByteReader.h"
#include "platform/ringlog/Printable.h"
#include "platform/ringlog/RingLayout.h"
#include "platform/ringlog/RingText.h"

namespace Ringlog {
namespace {

Layout::FileHeader readHeader(std::string_view file) {
    auto header = ByteReader(file).take<Layout::FileHeader>();
    if (!header) {
        throw Orb::ParseError("not a ring trace file: it is too short");
    }
    if (header->magic != Layout::magic) {
        throw Orb::ParseError("not a ring trace file: it does not begin like one");
    }
    if (header->byteOrder != Layout::byteOrder || header->blockSize != Layout::blockSize) {
        throw Orb::ParseError("a ring trace file of another kind of machine or version");
    }
    return *header;
}

/// The part of `file` in a range that may lie partly or wholly behind its end.
std::string_view part(std::string_view file, std::uint64_t begin, std::uint64_t size) {
    if (begin >= file.size()) {
        return {};
    }
    return file.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(size));
}

std::string seconds(std::uint64_t nanoseconds) {
    constexpr std::uint64_t perSecond = 1'000'000'000;
    std::string fraction = std::to_string(nanoseconds % perSecond);
    return std::to_string(nanoseconds / perSecond) + '.' + std::string(9 - fraction.size(), '0')
           + fraction;
}

} // namespace

RinglogReader::RinglogReader(std::string_view file) {
    Layout::FileHeader header = readHeader(file);
    processId_ = header.processId;
    std::uint64_t tableSize = header.tableSize;
    readDescriptors(part(file, Layout::pageSize, std::min(header.tableUsed, header.tableSize)));
    readBlocks(part(file, Layout::pageSize + tableSize,
                    std::uint64_t{header.blockCount} * Layout::blockSize));
}

void RinglogReader::readDescriptors(std::string_view table) {
    ByteReader reader(table);
    while (auto entry = reader.take<Layout::DescriptorHeader>()) {
        auto unit = reader.takeBytes(entry->unitSize);
        auto function = reader.takeBytes(entry->functionSize);
        auto text = reader.takeBytes(entry->textSize);
        if (!unit || !function || !text || text->size() > Layout::maxText) {
            return;
        }
        descriptors_.push_back({entry->line, *unit, *function, *text});
    }
}

void RinglogReader::readBlocks(std::string_view blocks) {
    while (!blocks.empty()) {
        ByteReader reader(blocks.substr(0, Layout::blockSize));
        blocks.remove_prefix(std::min<std::size_t>(Layout::blockSize, blocks.size()));
        auto header = reader.take<Layout::BlockHeader>();
        if (!header || header->sequence == 0) {
            continue;
        }
        std::string_view room = reader.rest();
        blocks_.push_back(
            {header->sequence, room.substr(0, header->used), header->used > room.size()});
    }
    std::stable_sort(blocks_.begin(), blocks_.end(), [](const Block& left, const Block& right) {
        return left.sequence < right.sequence;
    });
    if (!blocks_.empty()) {
        messages_ = blocks_.front().messages;
    }
}

std::optional<std::string> RinglogReader::next() {
    while (block_ < blocks_.size()) {
        std::string line;
        if (!messages_.empty() && readMessage(line)) {
            return line;
        }
        if (!messages_.empty() || blocks_[block_].cutOff) {
            ++damagedBlocks_;
        }
        ++block_;
        messages_ = block_ < blocks_.size() ? blocks_[block_].messages : std::string_view();
    }
    return std::nullopt;
}

bool RinglogReader::readMessage(std::string& line) {
    ByteReader reader(messages_);
    auto header = reader.take<Layout::MessageHeader>();
    if (!header || header->size < sizeof(*header) || header->descriptor >= descriptors_.size()) {
        return false;
    }
    auto arguments = reader.takeBytes(header->size - sizeof(*header));
    if (!arguments) {
        return false;
    }
    const Descriptor& descriptor = descriptors_[header->descriptor];
    line = seconds(header->time) + ' ';
    appendPrintable(line, descriptor.unit);
    line += ':' + std::to_string(descriptor.line) + " [";
    appendPrintable(line, descriptor.function);
    line += "] ";
    if (!appendRingText(line, descriptor.text, *arguments)) {
        return false;
    }
    messages_ = reader.rest();
    return true;
}

} // namespace Ringlog
