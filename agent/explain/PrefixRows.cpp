#include "agent/explain/PrefixRows.h"

namespace Agent {

void ValueForm<WrittenRoute>::write(JsonWriter& out, const WrittenRoute& value) {
    if (!value.row) {
        out.null();
        return;
    }
    out.beginObject();
    RouteRow::describeTarget(*value.row, JsonColumns(out));
    out.endObject();
}

WrittenRoute ValueForm<WrittenRoute>::read(const JsonValue& json) {
    WrittenRoute route;
    if (!json.isNull()) {
        RouteRow::describeTarget(route.row.emplace(), ReadColumns(json));
    }
    return route;
}

} // namespace Agent
