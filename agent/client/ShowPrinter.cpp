#include "agent/client/ShowPrinter.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "agent/base/TextTable.h"
#include "agent/show/RouteText.h"
#include "platform/lanx/IpGenPrefix.h"

namespace Agent {

namespace {

using Json = AgentConnection::Json;
using Lanx::AddressFamily;

/// Text as it is, lists joined, other values as JSON writes them.
std::string cell(const Json& value) {
    if (value.is_string()) {
        return value.get<std::string>();
    }
    if (!value.is_array()) {
        return value.is_null() ? "-" : value.dump();
    }
    std::string joined;
    for (const Json& item : value) {
        joined += (joined.empty() ? "" : ",") + cell(item);
    }
    return joined;
}

struct Route {
    Lanx::IpGenPrefix prefix;
    Json members;
};

/// One VRF of the answer.
struct VrfGroup {
    Json vrf;
    std::vector<Route> routes;

    /// The routes of one family are next to each other.
    void sort() {
        std::sort(routes.begin(), routes.end(),
                  [](const Route& a, const Route& b) { return a.prefix < b.prefix; });
    }
};

/// Takes the answer apart into VRFs.
class GroupReader {
  public:
    explicit GroupReader(AgentConnection& answer) : answer_(answer), line_(answer.next()) {}

    /// The line that is next, unless it is of a VRF.
    std::optional<Json> other() {
        if (!line_ || line_->contains("vrf")) {
            return std::nullopt;
        }
        return std::exchange(line_, answer_.next());
    }

    std::optional<VrfGroup> next() {
        if (!line_ || !line_->contains("vrf")) {
            return std::nullopt;
        }
        VrfGroup group{std::move(*line_), {}};
        for (line_ = answer_.next(); line_ && line_->contains("prefix"); line_ = answer_.next()) {
            const auto prefix =
                Lanx::IpGenPrefix::fromString(line_->at("prefix").get<std::string>());
            line_->erase("prefix");
            group.routes.push_back({prefix, std::move(*line_)});
        }
        group.sort();
        return group;
    }

  private:
    AgentConnection& answer_;
    std::optional<Json> line_;
};

void printFamilyAsJson(std::ostream& out, const VrfGroup& group, AddressFamily af) {
    out << ",\"" << Lanx::familyName(af) << "\":{";
    const char* separator = "";
    for (const Route& route : group.routes) {
        if (route.prefix.af() == af) {
            out << separator << '"' << route.prefix << "\":" << route.members.dump();
            separator = ",";
        }
    }
    out << '}';
}

/// The members of an object, without its braces.
std::string inside(const Json& object) {
    const std::string text = object.dump();
    return text.substr(1, text.size() - 2);
}

void printAsJson(std::ostream& out, GroupReader& reader) {
    out << '{' << inside(reader.other().value_or(Json::object())) << ",\"vrfs\":{";
    const char* separator = "";
    while (auto group = reader.next()) {
        const Json name = group->vrf.at("vrf");
        group->vrf.erase("vrf");
        group->vrf.erase("routes");
        out << separator << name.dump() << ":{" << inside(group->vrf);
        printFamilyAsJson(out, *group, AddressFamily::ipv4);
        printFamilyAsJson(out, *group, AddressFamily::ipv6);
        out << '}';
        separator = ",";
    }
    out << "}," << inside(reader.other().value_or(Json::object())) << "}\n";
}

void printFamily(std::ostream& out, const VrfGroup& group, AddressFamily af) {
    const auto isOfFamily = [af](const Route& route) { return route.prefix.af() == af; };
    const auto isLeaked = [&](const Route& route) {
        return isOfFamily(route) && route.members.contains("sourceVrf");
    };
    if (std::ranges::none_of(group.routes, isOfFamily)) {
        return;
    }
    TextTable table = routeTable(af, std::ranges::any_of(group.routes, isLeaked));
    for (const Route& route : group.routes) {
        if (isOfFamily(route)) {
            const auto type =
                static_cast<Routing::Fib::RouteType>(route.members.at("type").get<int>());
            table.rowIs({route.prefix.toString(), routeTypeText(type),
                         cell(route.members.at("intf")), cell(route.members.at("via")),
                         isLeaked(route) ? cell(route.members.at("sourceVrf")) : ""});
        }
    }
    table.print(out, "  ");
}

void printAsTables(std::ostream& out, GroupReader& reader) {
    const Json time = reader.other().value_or(Json::object());
    out << "time " << cell(time.value("time", Json())) << '\n';
    while (const auto group = reader.next()) {
        TextTable title({"VRF " + cell(group->vrf.at("vrf")), "id " + cell(group->vrf.at("id")),
                         "backlog " + cell(group->vrf.at("backlog"))});
        title.print(out, "");
        printFamily(out, *group, AddressFamily::ipv4);
        printFamily(out, *group, AddressFamily::ipv6);
    }
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return text;
}

} // namespace

void printRoutes(std::ostream& out, AgentConnection& answer, bool json) {
    GroupReader reader(answer);
    if (json) {
        printAsJson(out, reader);
    } else {
        printAsTables(out, reader);
    }
}

void printVrfs(std::ostream& out, AgentConnection& answer) {
    TextTable table({"VRF", "ID", "READY", "RIB", "BACKLOG", "IPv4 ROUTES", "IPv6 ROUTES"});
    while (const auto line = answer.next()) {
        if (!line->contains("vrf")) {
            continue;
        }
        const auto at = [&](const char* pointer) {
            return cell(line->value(Json::json_pointer(pointer), Json()));
        };
        const bool ready = at("/ready/ipv4") == "true" && at("/ready/ipv6") == "true";
        const std::string rib = at("/rib/ready");
        table.rowIs({at("/vrf"), at("/id"), ready ? "yes" : "no",
                     rib == "-"      ? "-"
                     : rib == "true" ? "ready at " + at("/rib/readyTime")
                                     : "waiting",
                     at("/backlog"), at("/routes/ipv4"), at("/routes/ipv6")});
    }
    table.print(out, "");
}

void printTopic(std::ostream& out, AgentConnection& answer, bool json) {
    std::optional<TextTable> table;
    while (const auto line = answer.next()) {
        if (json) {
            out << line->dump() << '\n';
            continue;
        }
        TextTable::Row header;
        TextTable::Row row;
        for (const auto& item : line->items()) {
            header.push_back(upper(item.key()));
            row.push_back(cell(item.value()));
        }
        if (!table) {
            table.emplace(std::move(header));
        }
        table->rowIs(std::move(row));
    }
    if (table) {
        table->print(out, "");
    }
}

} // namespace Agent
