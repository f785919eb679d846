#include "agent/topics/ValueForm.h"

namespace Agent {

using Routing::Fib::RouteType;

void ValueForm<std::vector<std::string>>::write(JsonWriter& out,
                                                const std::vector<std::string>& values) {
    out.beginArray();
    for (const std::string& value : values) {
        out.value(value);
    }
    out.endArray();
}

std::string ValueForm<std::vector<std::string>>::text(const std::vector<std::string>& values) {
    std::string joined;
    for (const std::string& value : values) {
        joined += (joined.empty() ? "" : ",") + value;
    }
    return joined;
}

void ValueForm<NameOrNull>::write(JsonWriter& out, const NameOrNull& value) {
    if (value.name.empty()) {
        out.null();
    } else {
        out.value(value.name);
    }
}

void ValueForm<Lanx::IntfId>::write(JsonWriter& out, Lanx::IntfId value) {
    if (!value) {
        out.null();
    } else {
        out.value(value.name());
    }
}

std::string ValueForm<RouteType>::text(RouteType value) {
    const std::string number = std::to_string(static_cast<unsigned>(value));
    switch (value) {
    case RouteType::receive:
        return number + " receive";
    case RouteType::attachedHost:
        return number + " attached-host";
    case RouteType::receiveBroadcast:
        return number + " receive-broadcast";
    case RouteType::dropDirectedBroadcast:
        return number + " drop-broadcast";
    case RouteType::connected:
        return number + " connected";
    case RouteType::unset:
        break;
    }
    return number;
}

} // namespace Agent
