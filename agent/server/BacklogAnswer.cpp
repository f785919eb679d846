#include "agent/server/BacklogAnswer.h"

#include "agent/base/JsonString.h"

namespace Agent {

bool BacklogAnswer::appendNext(std::string& out) {
    if (const auto* vrf = vrfs_.vrf()) {
        const auto& backlog = vrf->intfBacklog()->backlog();
        if (const auto* entry = last_ ? backlog.after(*last_) : backlog.first()) {
            last_ = entry->key();
            out += "{\"vrf\":";
            appendJsonString(out, vrf->vrfName().value());
            out += ",\"intf\":";
            appendJsonString(out, last_->intfId().name());
            out += ",\"prefix\":\"";
            last_->genPrefix().appendTo(out);
            out += "\"}\n";
            return true;
        }
    }
    last_.reset();
    return vrfs_.advance();
}

} // namespace Agent
