#include "tests/library/DeviceModel.h"

namespace Routing::DirectNet {

namespace {

using Lanx::AddressFamily;

Lanx::IpGenAddrWithMask parsed(const std::string& address) {
    const bool virtual6 = address.find('/') == std::string::npos;
    return Lanx::IpGenAddrWithMask::fromString(virtual6 ? address + "/128" : address);
}

/// The member's value, or an empty one.
template <typename Map>
typename Map::mapped_type valueAt(const Map& map, const typename Map::key_type& key) {
    const auto found = map.find(key);
    return found == map.end() ? typename Map::mapped_type() : found->second;
}

} // namespace

bool DeviceModel::hasContainer(const Vrf& vrf) const {
    return ids.contains(vrf) && (vrf == "default" || valueAt(statuses, vrf).active);
}

std::vector<DeviceModel::Vrf> DeviceModel::vrfsWithContainer() const {
    std::vector<Vrf> vrfs;
    for (const auto& [vrf, id] : ids) {
        if (hasContainer(vrf)) {
            vrfs.push_back(vrf);
        }
    }
    return vrfs;
}

std::set<DeviceModel::Intf> DeviceModel::interfaces(const Vrf& vrf) const {
    std::set<Intf> intfs;
    for (const auto& [intf, status] : valueAt(ipv4, vrf)) {
        intfs.insert(intf);
    }
    for (const auto& [intf, addresses] : valueAt(ipv6, vrf)) {
        intfs.insert(intf);
    }
    return intfs;
}

// The addresses that make an interface contribute: none while its device is not there and running.
std::vector<DeviceModel::Address> DeviceModel::ownAddresses(const Vrf& vrf,
                                                            const Intf& intf) const {
    const std::string netns = vrf == "default" ? "default" : statuses.at(vrf).netns;
    if (!valueAt(valueAt(devices, netns), intf)) {
        return {};
    }
    std::vector<std::string> texts;
    const Ipv4 status = valueAt(valueAt(ipv4, vrf), intf);
    if (!status.primary.empty()) {
        texts.push_back(status.primary);
    }
    for (const auto& listed : {status.secondaries, valueAt(valueAt(ipv6, vrf), intf)}) {
        for (const auto& [address, inUse] : listed) {
            if (inUse) {
                texts.push_back(address);
            }
        }
    }
    std::vector<Address> addresses;
    for (const std::string& text : texts) {
        const Address address = parsed(text);
        const bool linkLocal6 = address.af() == AddressFamily::ipv6 && address.isLinkLocal();
        if (!address.isZero() && !linkLocal6) {
            addresses.push_back(address);
        }
    }
    return addresses;
}

DeviceModel::Contributors DeviceModel::localContributors(const Vrf& vrf) const {
    Contributors contributors;
    const auto add = [&](const Lanx::IpGenPrefix& prefix, const Intf& intf, const Address& address,
                         bool isVirtual, unsigned type) {
        if (prefix.len() != 0) {
            contributors[prefix].insert({intf, address, local, isVirtual, type});
        }
    };
    for (const Intf& intf : interfaces(vrf)) {
        for (const Address& address : ownAddresses(vrf, intf)) {
            const bool host = address.len() == address.addr().bits();
            if (!host) {
                add(address.subnet(), intf, address, false, 11);
            }
            add(address.hostPrefix(), intf, address, false, host ? 2 : 1);
            if (address.af() == AddressFamily::ipv4 && address.len() <= 30) {
                const auto v4 = Lanx::IpAddrWithMask::fromString(address.toString());
                add(Lanx::IpPrefix::host(v4.networkAddr()), intf, address, false, 3);
                add(Lanx::IpPrefix::host(v4.broadcastAddr()), intf, address, false, 4);
            }
        }
    }
    for (const auto& [key, intfs] : virtualIps) {
        const Address address = parsed(key.second);
        if (key.first != vrf || address.isZero() || address.isLinkLocal()) {
            continue;
        }
        for (const auto& [intf, carried] : intfs) {
            if (carried) {
                add(address.hostPrefix(), intf, address, true, 1);
                if (subnetRoutes && address.af() == AddressFamily::ipv4 && address.len() < 32) {
                    add(address.subnet(), intf, address, true, 11);
                }
            }
        }
    }
    return contributors;
}

bool DeviceModel::countsForLeaks(const Vrf& source, const Contributor& contributor) const {
    if (contributor.type != 11) {
        return false;
    }
    for (const Address& own : ownAddresses(source, contributor.intf)) {
        if (own.af() == contributor.address.af()) {
            return true;
        }
    }
    return false;
}

void DeviceModel::addLeaked(const Vrf& vrf, Contributors& contributors) const {
    for (const auto& [sourceId, prefix, destId] : leaks) {
        if (destId != ids.at(vrf)) {
            continue;
        }
        for (const auto& [source, id] : ids) {
            if (id != sourceId || !hasContainer(source)) {
                continue;
            }
            for (const Contributor& contributor :
                 valueAt(localContributors(source), Lanx::IpGenPrefix::fromString(prefix))) {
                if (countsForLeaks(source, contributor)) {
                    contributors[contributor.address.hostPrefix()].insert(
                        {contributor.intf, contributor.address, sourceId, false, 1});
                }
            }
        }
    }
}

DeviceModel::Contributors DeviceModel::contributors(const Vrf& vrf) const {
    Contributors contributors = localContributors(vrf);
    addLeaked(vrf, contributors);
    return contributors;
}

std::vector<RouteRow> DeviceModel::routes(const Vrf& vrf) const {
    std::vector<RouteRow> rows;
    for (const auto& [prefix, ofPrefix] : contributors(vrf)) {
        const Contributor& winner = *ofPrefix.begin();
        rows.push_back({prefix.toString(), winner.type, winner.intf,
                        RouteRow::usualVia(winner.type) + (winner.isVirtual ? "-virtual" : ""),
                        winner.sourceVrf == local ? "" : std::to_string(winner.sourceVrf)});
    }
    return rows;
}

// An interface's own addresses and its virtual ones have via sets apart. A route that passes from
// the one to the other keeps the first.
DeviceModel::ViaSetHolders DeviceModel::viaSetHolders() const {
    ViaSetHolders holders;
    for (const Vrf& vrf : vrfsWithContainer()) {
        for (const auto& [prefix, ofPrefix] : localContributors(vrf)) {
            for (const Contributor& contributor : ofPrefix) {
                const ViaSetHolder own{vrf, contributor.intf, prefix.af(), false};
                const ViaSetHolder holder{vrf, contributor.intf, prefix.af(),
                                          contributor.isVirtual};
                holders.certain.insert(holder);
                holders.possible.insert({own, holder});
            }
        }
    }
    return holders;
}

} // namespace Routing::DirectNet
