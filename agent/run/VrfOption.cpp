#include "agent/run/VrfOption.h"

#include <algorithm>

#include "agent/base/Errors.h"
#include "agent/base/Utf8.h"
#include "platform/orb/value/Error.h"

namespace Agent {

namespace {

[[noreturn]] void refuseOption(const std::string& text, const std::string& what) {
    throw BadInputError("--vrf " + text + ": " + what);
}

VrfOption readOne(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) {
        refuseOption(text, "must be NAME=NETNS");
    }
    const std::string vrf = text.substr(0, equals);
    const std::string netns = text.substr(equals + 1);
    if (netns.find('/') != std::string::npos || netns == "." || netns == "..") {
        refuseOption(text, "no name of a namespace");
    }
    if (!isUtf8(text)) {
        refuseOption(text, "must be UTF-8");
    }
    if (vrf == L3::VrfName::defaultVrf().value()
        || netns == Lanx::NamespaceName::defaultNamespace().value()) {
        refuseOption(text, "default is where the agent runs");
    }
    try {
        return {L3::VrfName(vrf), Lanx::NamespaceName(netns)};
    } catch (const Orb::Error& error) {
        refuseOption(text, error.what());
    }
}

} // namespace

std::vector<VrfOption> readVrfOptions(const std::vector<std::string>& texts) {
    std::vector<VrfOption> options;
    for (const std::string& text : texts) {
        const VrfOption option = readOne(text);
        for (const VrfOption& other : options) {
            if (other.vrf == option.vrf) {
                refuseOption(text, "VRF " + option.vrf.value() + " is given twice");
            }
            if (other.netns == option.netns) {
                refuseOption(text, "namespace " + option.netns.value() + " is given twice");
            }
        }
        options.push_back(option);
    }
    return options;
}

} // namespace Agent
