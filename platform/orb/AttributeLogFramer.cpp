#include "platform/orb/AttributeLogFramer.h"

#include "platform/orb/AttributeLogForm.h"
#include "platform/orb/AttributeLogFormat.h"
#include "platform/orb/Crc32c.h"
#include "platform/orb/Error.h"

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
