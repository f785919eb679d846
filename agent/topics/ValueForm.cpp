#include "agent/topics/ValueForm.h"

#include "directnet/backlog/RouteKinds.h"

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
    std::string text = std::to_string(static_cast<unsigned>(value));
    if (const std::string_view name = Routing::DirectNet::routeTypeName(value); !name.empty()) {
        text.append(" ").append(name);
    }
    return text;
}

} // namespace Agent
