#include "agent/topics/StateRows.h"

namespace Agent {

void ValueForm<Readiness>::write(JsonWriter& out, const Readiness& value) {
    out.beginObject();
    out.member("ipv4", value.ipv4);
    out.member("ipv6", value.ipv6);
    out.endObject();
}

void ValueForm<std::optional<RibWait>>::write(JsonWriter& out,
                                              const std::optional<RibWait>& value) {
    out.beginObject();
    out.member("ready", value->ready);
    out.key("readyTime");
    out.seconds(value->readyTime.seconds);
    out.endObject();
}

std::string ValueForm<std::optional<RibWait>>::text(const std::optional<RibWait>& value) {
    if (!value) {
        return "-";
    }
    return value->ready ? "ready at " + secondsText(value->readyTime.seconds) : "waiting";
}

} // namespace Agent
