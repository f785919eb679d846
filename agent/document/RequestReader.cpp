#include "agent/document/RequestReader.h"

#include <nlohmann/json.hpp>

#include "agent/document/JsonText.h"
#include "agent/document/ValueReader.h"

namespace Agent {

namespace {

int readTraceLevel(const nlohmann::json& json, const DocumentPlace& place) {
    if (!json.is_number_integer() || json < -1 || json > 9) {
        place.refuse("must be a number from -1 to 9");
    }
    return json.get<int>();
}

std::vector<L3::VrfName> readNames(const nlohmann::json& json, const DocumentPlace& place) {
    if (!json.is_array()) {
        place.refuse("must be an array of names of VRFs");
    }
    std::vector<L3::VrfName> names;
    for (const auto& name : json) {
        names.push_back(readText<L3::VrfName>(readString(name, place), place));
    }
    return names;
}

} // namespace

RequestDocument readRequestDocument(std::string_view line) {
    const nlohmann::json json = parseJson(line);
    const DocumentPlace root;
    if (!json.is_object()) {
        root.refuse("must be an object");
    }
    RequestDocument request;
    int kinds = 0;
    for (const auto& item : json.items()) {
        const DocumentPlace place(root, item.key());
        if (item.key() == "vrf") {
            request.vrf = readText<L3::VrfName>(readString(item.value(), place), place);
            continue;
        }
        if (item.key() == "prefix") {
            request.prefix = readText<Lanx::IpGenPrefix>(readString(item.value(), place), place);
            if (!*request.prefix) {
                place.refuse("must be a prefix");
            }
            continue;
        }
        if (item.key() == "intf") {
            request.intf = readText<Lanx::IntfId>(readString(item.value(), place), place);
            continue;
        }
        ++kinds;
        if (item.key() == "show") {
            request.topic = readString(item.value(), place);
        } else if (item.key() == "trace") {
            request.traceLevel = readTraceLevel(item.value(), place);
        } else if (item.key() == "wait") {
            request.waitedFor = readNames(item.value(), place);
        } else if (item.key() == "reload" && item.value() == true) {
            request.reload = true;
        } else if (item.key() != "watch" || item.value() != true) {
            place.refuse("unknown key or value");
        }
    }
    if (kinds != 1) {
        root.refuse("must have one of show, watch, trace, reload and wait");
    }
    return request;
}

} // namespace Agent
