#include "agent/server/LeakAnswer.h"

#include <algorithm>

#include "agent/base/JsonString.h"

namespace Agent {

LeakAnswer::LeakAnswer(const AgentView& view, const std::optional<L3::VrfName>& vrf) : view_(view) {
    if (vrf) {
        only_ = view.root.containerSm(*vrf)->vrfId();
    }
    begin();
}

const Routing::DirectNetLeakLocalStatus& LeakAnswer::status() const {
    return ipv6_ ? *view_.root.ipv6CrLeakLocalStatus() : *view_.root.ipv4CrLeakLocalStatus();
}

void LeakAnswer::begin() {
    for (const auto& source : status().leakedRouteBySourceVrf()) {
        if (!only_ || *only_ == source->sourceVrfId()) {
            sources_.push_back(source->sourceVrfId());
        }
    }
    std::sort(sources_.begin(), sources_.end(), std::greater<>());
}

bool LeakAnswer::appendNext(std::string& out) {
    if (sources_.empty()) {
        if (ipv6_) {
            return false;
        }
        ipv6_ = true;
        begin();
        return true;
    }
    const VrfId source = sources_.back();
    if (const auto* leaks = status().leakedRouteBySourceVrf(source)) {
        const auto& prefixes = leaks->destVrfId();
        if (const auto* entry = last_ ? prefixes.after(*last_) : prefixes.first()) {
            last_ = entry->key();
            for (const auto& destination : entry->value()) {
                append(out, source, *last_, destination.key());
            }
            return true;
        }
    }
    last_.reset();
    sources_.pop_back();
    return true;
}

void LeakAnswer::append(std::string& out, VrfId source, const Lanx::IpGenPrefix& prefix,
                        VrfId destination) const {
    out += "{\"vrf\":";
    appendVrf(out, source);
    out += ",\"prefix\":\"";
    prefix.appendTo(out);
    out += "\",\"to\":";
    appendVrf(out, destination);
    out += "}\n";
}

void LeakAnswer::appendVrf(std::string& out, VrfId id) const {
    const L3::VrfName* name = view_.inputs.vrfs().name(id);
    appendJsonString(out, name == nullptr ? std::to_string(id.value()) : name->value());
}

} // namespace Agent
