#include "agent/server/ChangeFilter.h"

#include "agent/document/JsonReader.h"

namespace Agent {

void ChangeFilter::append(std::string& out, std::string_view piece) {
    if (!vrf_ && !routes_.isGiven()) {
        out += piece;
        return;
    }
    for (std::size_t end = 0; (end = piece.find('\n')) != std::string_view::npos;
         piece.remove_prefix(end + 1)) {
        begun_ += piece.substr(0, end + 1);
        if (admits(begun_)) {
            out += begun_;
        }
        begun_.clear();
    }
    begun_ += piece;
}

bool ChangeFilter::admits(std::string_view line) const {
    const ParsedJson parsed(line);
    const JsonValue change = parsed.value();
    return (!vrf_ || change.member("vrf").string() == vrf_->value())
           && routes_.admits(Lanx::IpGenPrefix::fromString(change.member("prefix").string()));
}

} // namespace Agent
