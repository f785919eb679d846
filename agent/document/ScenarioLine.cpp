#include "agent/document/ScenarioLine.h"

#include <nlohmann/json.hpp>

#include "agent/document/DevicePatchReader.h"
#include "agent/document/JsonText.h"
#include "agent/document/ValueReader.h"
#include "agent/patch/DocumentPlace.h"

namespace Agent {

namespace {

double readTime(const nlohmann::json& json, const DocumentPlace& place) {
    const double time = json.is_number() ? json.get<double>() : -1;
    if (!(time >= 0 && time <= ScenarioLine::latest)) {
        place.refuse("must be a number of seconds from 0 to 1000000000");
    }
    return time;
}

std::uint64_t readCount(const nlohmann::json& json, const DocumentPlace& place) {
    if (!json.is_number_unsigned() || json.get<std::uint64_t>() == 0) {
        place.refuse("must be a number of changes from 1");
    }
    return json.get<std::uint64_t>();
}

} // namespace

ScenarioLine readScenarioLine(std::string_view text) {
    const nlohmann::json json = parseJson(text);
    const DocumentPlace root;
    if (!json.is_object()) {
        root.refuse("must be an object");
    }
    ScenarioLine line;
    for (const auto& item : json.items()) {
        const DocumentPlace place(root, item.key());
        if (item.key() == "at") {
            line.at = readTime(item.value(), place);
        } else if (item.key() == "during") {
            line.during = readCount(item.value(), place);
        } else if (item.key() == "show") {
            line.show = readString(item.value(), place);
        } else if (item.key() == "set") {
            try {
                line.set = readDevicePatch(item.value());
            } catch (const DocumentError& error) {
                throw error.within("/set");
            }
        } else {
            place.refuse("unknown key");
        }
    }
    if (line.set.has_value() == line.show.has_value()) {
        root.refuse(line.set ? "set and show in one line" : "neither set nor show");
    }
    if (line.during && !line.set) {
        root.refuse("during without set");
    }
    return line;
}

} // namespace Agent
