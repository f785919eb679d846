#include "agent/server/Request.h"

#include <array>
#include <nlohmann/json.hpp>
#include <utility>

#include "agent/document/JsonText.h"
#include "agent/document/ValueReader.h"
#include "agent/patch/DocumentPlace.h"

namespace Agent {

namespace {

using Kind = Request::Kind;

constexpr std::array<std::pair<std::string_view, Kind>, 6> topics{{{"routes", Kind::routes},
                                                                   {"vrfs", Kind::vrfs},
                                                                   {"vips", Kind::vips},
                                                                   {"leaks", Kind::leaks},
                                                                   {"backlog", Kind::backlog},
                                                                   {"trace", Kind::trace}}};

Kind readTopic(const nlohmann::json& json, const DocumentPlace& place) {
    const std::string& name = readString(json, place);
    for (const auto& [topic, kind] : topics) {
        if (name == topic) {
            return kind;
        }
    }
    place.refuse("unknown topic");
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
            request.kind = readTopic(item.value(), place);
        } else if (item.key() == "watch" && item.value() == true) {
            request.kind = Kind::watch;
        } else if (item.key() == "trace") {
            request.kind = Kind::setTrace;
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
