#include "agent/viplog/VipTablesPrinter.h"

#include <algorithm>
#include <string>
#include <vector>

#include "agent/viplog/VirtualIpText.h"

namespace Agent {

namespace {

/// The members of a collection in the order of their keys.
template <typename Map>
auto sorted(const Map& map) {
    std::vector<const typename Map::Entry::Element*> members;
    for (const auto& member : map) {
        members.push_back(member.get());
    }
    std::ranges::sort(members,
                      [](const auto* a, const auto* b) { return a->fwkKey() < b->fwkKey(); });
    return members;
}

template <typename Tables>
void printFamily(std::ostream& out, const char* family, const Tables& tables, Colour colour) {
    for (const auto* table : sorted(tables.vrfVirtualIpStatus())) {
        out << colour.bold("VRF " + printable(table->name().value())) << "  " << family << ", "
            << subnetRoutesText(table->subnetRouteEnabled()) << '\n';
        const auto virtualIps = sorted(table->virtualIp());
        std::size_t width = 0;
        for (const auto* virtualIp : virtualIps) {
            width = std::max(width, addressText(virtualIp->fwkKey()).size());
        }
        for (const auto* virtualIp : virtualIps) {
            std::string line = addressText(virtualIp->fwkKey());
            line.resize(width, ' ');
            line += interfacesText(*virtualIp);
            out << "  " << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
        }
    }
}

template <typename Tables>
void writeFamily(JsonWriter& out, const char* family, const Tables& tables) {
    out.key(family);
    out.beginObject();
    for (const auto* table : sorted(tables.vrfVirtualIpStatus())) {
        out.key(table->name().value());
        out.beginObject();
        out.member("subnetRoutes", table->subnetRouteEnabled());
        out.key("virtualIps");
        out.beginObject();
        for (const auto* virtualIp : sorted(table->virtualIp())) {
            out.key(addressText(virtualIp->fwkKey()));
            writeInterfaces(out, *virtualIp);
        }
        out.endObject();
        out.endObject();
    }
    out.endObject();
}

} // namespace

void printVipTables(std::ostream& out, const VipLogReader& tables, Colour colour) {
    printFamily(out, "ipv4", tables.tables4(), colour);
    printFamily(out, "ipv6", tables.tables6(), colour);
}

void printVipTablesAsJson(std::ostream& out, const VipLogReader& tables) {
    std::string document;
    JsonWriter writer(document);
    writer.beginObject();
    writeFamily(writer, "ipv4", tables.tables4());
    writeFamily(writer, "ipv6", tables.tables6());
    writer.endObject();
    out << document << '\n';
}

} // namespace Agent
