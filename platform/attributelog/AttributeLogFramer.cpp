#include "platform/attributelog/AttributeLogFramer.h"

#include "platform/attributelog/AttributeLogForm.h"
#include "platform/attributelog/AttributeLogFormat.h"
#include "platform/attributelog/Crc32c.h"
#include "platform/orb/value/Error.h"

namespace Orb {

void AttributeLogFramer::appendHead(std::string& out) { out += AttributeLogFormat::head; }

void AttributeLogFramer::append(std::string& out, std::string_view body) {
    if (body.size() > AttributeLogFormat::maxBodySize) {
        throw RangeError("AttributeLog::bodySize > maxBodySize not allowed");
    }
    std::string length;
    appendBigEndian(length, static_cast<std::uint32_t>(body.size()));
    crc_ = crc32c(body, crc32c(length, crc_));
    out += length;
    appendBigEndian(out, crc_);
    out += body;
}

} // namespace Orb
