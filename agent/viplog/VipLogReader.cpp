#include "agent/viplog/VipLogReader.h"

#include <algorithm>
#include <utility>

#include "agent/base/Errors.h"
#include "platform/attributelog/AttributeLogFormat.h"
#include "platform/orb/value/Error.h"

namespace Agent {

VipLogReader::VipLogReader(std::string name)
    : name_(std::move(name)), replay_(tables4_, tables6_) {}

void VipLogReader::feed(std::string_view bytes) {
    try {
        replay_.feed(bytes);
    } catch (const Orb::ParseError& error) {
        throw BadInputError(name_ + ": " + error.what());
    }
}

std::string_view VipLogReader::feedToState(std::string_view bytes) {
    // No frame is shorter, so none that follows on the state is complete with it.
    constexpr std::size_t step = Orb::AttributeLogFormat::frameHeadSize + 1;
    while (!hasState() && !bytes.empty()) {
        feed(bytes.substr(0, step));
        bytes.remove_prefix(std::min(step, bytes.size()));
    }
    return bytes;
}

void VipLogReader::finish() const {
    try {
        replay_.finish();
    } catch (const Orb::ParseError& error) {
        throw BadInputError(name_ + ": " + error.what());
    }
}

bool VipLogReader::hasAnything() const {
    return hasState() || !tables4_->vrfVirtualIpStatus().empty()
           || !tables6_->vrfVirtualIpStatus().empty();
}

} // namespace Agent
