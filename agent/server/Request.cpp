#include "agent/server/Request.h"

#include <nlohmann/json.hpp>

#include "agent/document/JsonText.h"
#include "agent/document/ValueReader.h"
#include "agent/topics/Topics.h"

namespace Agent {

namespace {

const Topic* readTopic(const nlohmann::json& json, const DocumentPlace& place) {
    const Topic* topic = findTopic(readString(json, place));
    if (topic == nullptr) {
        place.refuse("unknown topic");
    }
    return topic;
}

int readLevel(const nlohmann::json& json, const DocumentPlace& place) {
    if (!json.is_number_integer() || json < -1 || json > 9) {
        place.refuse("must be a number from -1 to 9");
    }
    return json.get<int>();
}

} // namespace

Request readRequest(std::string_view line) {
    const nlohmann::json json = parseJson(line);
    const DocumentPlace root;
    if (!json.is_object()) {
        root.refuse("must be an object");
    }
    Request request;
    int kinds = 0;
    for (const auto& item : json.items()) {
        const DocumentPlace place(root, item.key());
        if (item.key() == "vrf") {
            request.vrf = readText<L3::VrfName>(readString(item.value(), place), place);
            continue;
        }
        ++kinds;
        if (item.key() == "show") {
            request.topic = readTopic(item.value(), place);
        } else if (item.key() == "watch" && item.value() == true) {
            request.topic = nullptr;
        } else if (item.key() == "trace") {
            request.topic = &traceTopic;
            request.traceLevel = readLevel(item.value(), place);
        } else {
            place.refuse("unknown key or value");
        }
    }
    if (kinds != 1) {
        root.refuse("must have one of show, watch and trace");
    }
    return request;
}

} // namespace Agent
