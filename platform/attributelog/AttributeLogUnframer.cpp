#include "platform/attributelog/AttributeLogUnframer.h"

#include "platform/attributelog/AttributeLogFormat.h"
#include "platform/attributelog/Crc32c.h"
#include "platform/orb/value/Error.h"

namespace Orb {

using namespace AttributeLogFormat;

void AttributeLogUnframer::feed(std::string_view bytes) {
    if (refused_) {
        throwBadLog(offset_, "refused before");
    }
    refused_ = true; // unless all goes well
    buffer_ += bytes;
    std::string_view rest = buffer_;
    while (const std::size_t taken = takeFrame(rest)) {
        rest.remove_prefix(taken);
        offset_ += taken;
    }
    buffer_.erase(0, buffer_.size() - rest.size());
    refused_ = false;
}

/// How many bytes were taken: none while there is no whole frame.
std::size_t AttributeLogUnframer::takeFrame(std::string_view bytes) {
    if (!headRead_) {
        if (bytes.substr(0, head.size()) != head.substr(0, bytes.size())) {
            throwBadLog(offset_, "not an attribute log of version 1");
        }
        headRead_ = bytes.size() >= head.size();
        return headRead_ ? head.size() : 0;
    }
    if (bytes.size() < frameHeadSize) {
        return 0;
    }
    AttributeLogInput frameHead(bytes.substr(0, frameHeadSize), offset_);
    const auto length = frameHead.number<std::uint32_t>();
    const auto crc = frameHead.number<std::uint32_t>();
    if (length > maxBodySize) {
        throwBadLog(offset_, "a record is too long");
    }
    if (bytes.size() - frameHeadSize < length) {
        return 0;
    }
    const std::string_view body = bytes.substr(frameHeadSize, length);
    crc_ = crc32c(body, crc32c(bytes.substr(0, 4), crc_));
    if (crc != crc_) {
        throwBadLog(offset_, "a record is damaged");
    }
    receive(body);
    return frameHeadSize + length;
}

void AttributeLogUnframer::receive(std::string_view body) {
    AttributeLogInput in(body, offset_ + frameHeadSize);
    try {
        receive_(in);
    } catch (const RangeError& error) {
        in.fail(error.what());
    }
}

} // namespace Orb
