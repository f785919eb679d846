#include "agent/viplog/VipTablesPrinter.h"

#include <algorithm>
#include <string>
#include <utility>
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
void printFamily(std::ostream& out, const char* family, const Tables& tables) {
    for (const auto* table : sorted(tables.vrfVirtualIpStatus())) {
        out << "VRF " << printable(table->name().value()) << "  " << family << ", subnet routes "
            << (table->subnetRouteEnabled() ? "on" : "off") << '\n';
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
void printFamilyAsJson(std::ostream& out, const Tables& tables) {
    const char* nextTable = "{";
    for (const auto* table : sorted(tables.vrfVirtualIpStatus())) {
        out << std::exchange(nextTable, ",") << jsonString(table->name().value())
            << ":{\"subnetRoutes\":" << jsonBoolean(table->subnetRouteEnabled())
            << ",\"virtualIps\":";
        const char* nextIp = "{";
        for (const auto* virtualIp : sorted(table->virtualIp())) {
            out << std::exchange(nextIp, ",") << jsonString(addressText(virtualIp->fwkKey())) << ":"
                << interfacesJson(*virtualIp);
        }
        out << (*nextIp == '{' ? "{}}" : "}}");
    }
    out << (*nextTable == '{' ? "{}" : "}");
}

} // namespace

void printVipTables(std::ostream& out, const VipLogReader& tables) {
    printFamily(out, "ipv4", tables.tables4());
    printFamily(out, "ipv6", tables.tables6());
}

void printVipTablesAsJson(std::ostream& out, const VipLogReader& tables) {
    out << "{\"ipv4\":";
    printFamilyAsJson(out, tables.tables4());
    out << ",\"ipv6\":";
    printFamilyAsJson(out, tables.tables6());
    out << "}\n";
}

} // namespace Agent
