#include "tests/library/RandomDevice.h"

#include <utility>

namespace Routing::DirectNet {

namespace {

using Texts = std::vector<std::string>;

constexpr unsigned ids = 6;
const Texts vrfs{"default", "A", "B", "C"};
const Texts intfs{"Et1", "Et10", "Et2", "Lo0", "Vl5"};
const Texts namespaces{"default", "ns1", "ns2"};
const Texts ipv4Addresses{"10.0.0.1/24",    "10.0.0.2/24", "10.0.0.1/25", "10.0.0.1/16",
                          "10.0.0.0/31",    "10.0.0.1/31", "10.0.0.1/32", "10.0.0.6/32",
                          "10.0.0.5/30",    "10.0.0.6/30", "10.0.0.4/30", "10.0.0.255/24",
                          "169.254.1.1/24", "10.0.0.9/0",  "0.0.0.0/24"};
const Texts ipv6Addresses{"2001:db8::1/64",     "2001:db8::2/64", "2001:db8::1/128",
                          "2001:db8::1/127",    "fe80::1/64",     "::/64",
                          "2001:db8:0:1::1/48", "2001:db8::2/0"};
const Texts virtualAddresses{
    "10.0.0.1/24", "10.0.0.2/24", "10.0.0.100/24",  "10.0.0.1/32", "10.0.0.6/30", "10.0.0.0/31",
    "10.0.0.7/0",  "0.0.0.0/24",  "169.254.1.1/24", "2001:db8::1", "2001:db8::9", "fe80::9",
    "::"};
const Texts leakedPrefixes{"10.0.0.0/24",    "10.0.0.0/24",   "10.0.0.0/25",   "10.0.0.0/16",
                           "10.0.0.0/31",    "10.0.0.4/30",   "10.0.0.1/32",   "169.254.1.0/24",
                           "2001:db8::/64",  "2001:db8::/64", "2001:db8::/48", "2001:db8::/127",
                           "2001:db8::1/128"};

} // namespace

const std::string& RandomDevice::oneOf(const Texts& texts) {
    return texts[below(static_cast<std::uint32_t>(texts.size()))];
}

std::string RandomDevice::vrf() { return oneOf(vrfs); }

std::string RandomDevice::intf() { return oneOf(intfs); }

const std::vector<RandomDevice::Change>& RandomDevice::changes() {
    static const std::vector<Change> changes{
        {&RandomDevice::changeVrfId, 10, Topic::vrfs},
        {&RandomDevice::changeVrfStatus, 10, Topic::vrfs},
        {&RandomDevice::replaceVrfMap, 1, Topic::vrfs},
        {&RandomDevice::changeDevice, 16, Topic::devices},
        {&RandomDevice::changePrimary, 22, Topic::addresses},
        {&RandomDevice::changeSecondary, 18, Topic::addresses},
        {&RandomDevice::promoteSecondary, 4, Topic::addresses},
        {&RandomDevice::changeIpv6, 16, Topic::addresses},
        {&RandomDevice::removeInterfaces, 5, Topic::addresses},
        {&RandomDevice::changeSubnetRoutes, 2, Topic::virtualIps},
        {&RandomDevice::changeVirtualIp, 16, Topic::virtualIps},
        {&RandomDevice::removeVirtualIp, 4, Topic::virtualIps},
        {&RandomDevice::changeLeak, 22, Topic::leaks},
        {&RandomDevice::removeLeaks, 1, Topic::leaks},
        {&RandomDevice::changeRibWaits, 4, Topic::ribWaits},
        {&RandomDevice::restart, 1, Topic::restart}};
    return changes;
}

const RandomDevice::Change& RandomDevice::oneOfChanges() {
    static const std::vector<const Change*> weighted = [] {
        std::vector<const Change*> all;
        for (const Change& change : changes()) {
            all.insert(all.end(), change.weight, &change);
        }
        return all;
    }();
    return *weighted[below(static_cast<std::uint32_t>(weighted.size()))];
}

void RandomDevice::step() {
    struct Ending {
        Topic& underWay;
        ~Ending() { underWay = Topic::none; }
    };
    const Change& change = oneOfChanges();
    {
        const Ending ending{underWay_};
        underWay_ = change.topic;
        (this->*change.make)();
    }
    letTimePass();
}

void RandomDevice::interject() {
    const Change* change = &oneOfChanges();
    while (change->topic == underWay_ || change->topic == Topic::restart) {
        change = &oneOfChanges();
    }
    note("in the middle:");
    (this->*change->make)();
    letTimePass();
}

void RandomDevice::changeVrfId() {
    const std::string name = vrf();
    if (model_.ids.erase(name) != 0) {
        note("vrfIdDel " + name);
        harness_.vrfIdDel(name);
    }
    if (oneIn(4)) {
        return;
    }
    unsigned id = 1 + below(ids);
    for (const auto& [other, taken] : model_.ids) {
        if (taken == id) {
            return;
        }
    }
    note("vrfId " + name + " " + std::to_string(id));
    model_.ids[name] = id;
    harness_.vrfId(name, id);
}

void RandomDevice::changeVrfStatus() {
    const std::string name = vrf();
    const std::string netns = oneOf(namespaces);
    const auto present = model_.statuses.find(name);
    if (present != model_.statuses.end() && (oneIn(4) || present->second.netns != netns)) {
        note("vrfStatusDel " + name);
        model_.statuses.erase(name);
        harness_.vrfStatusDel(name);
        if (oneIn(2)) {
            return;
        }
    }
    const bool active = !oneIn(4);
    note("vrfStatus " + name + (active ? " active " : " inactive ") + netns);
    model_.statuses[name] = {active, netns};
    harness_.vrfStatus(name, active, netns);
}

// The map may be replaced by one that lacks a VRF.
void RandomDevice::replaceVrfMap() {
    const std::string lacking = vrf();
    note("replaceVrfMap without " + lacking);
    model_.ids.erase(lacking);
    const auto map = Orb::makePtr<::Vrf::VrfIdMap::NameToIdMap>();
    for (const auto& [name, id] : model_.ids) {
        map->vrfIdIs(L3::VrfName(name), ::Vrf::VrfIdMap::VrfId(id));
    }
    harness_.nameToIdMapWrapper->nameToIdMapIs(map);
}

// A member of a list comes, changes its flag or goes.
void RandomDevice::changeListed(const std::string& what, std::map<std::string, bool>& listed,
                                const std::string& member, const Apply& apply) {
    std::optional<bool> flag;
    if (!oneIn(3)) {
        flag = !oneIn(5);
    }
    note(what + " " + member + (!flag ? " goes" : *flag ? " true" : " false"));
    if (flag) {
        listed[member] = *flag;
    } else {
        listed.erase(member);
    }
    apply(flag);
}

void RandomDevice::changeDevice() {
    const std::string netns = oneOf(namespaces);
    const std::string on = intf();
    changeListed("device " + netns, model_.devices[netns], on, [&](std::optional<bool> running) {
        running ? harness_.device(netns, on, *running) : harness_.deviceDel(netns, on);
    });
}

void RandomDevice::changePrimary() {
    const std::string name = vrf();
    const std::string on = intf();
    DeviceModel::Ipv4& status = model_.ipv4[name][on];
    std::string address = oneIn(5) ? "0.0.0.0/0" : oneOf(ipv4Addresses);
    if (status.secondaries.contains(address)) {
        address = "0.0.0.0/0";
    }
    note("address " + name + " " + on + " " + address);
    status.primary = address;
    harness_.address(name, on, address);
}

void RandomDevice::changeSecondary() {
    const std::string name = vrf();
    const std::string on = intf();
    const std::string address = oneOf(ipv4Addresses);
    DeviceModel::Ipv4& status = model_.ipv4[name][on];
    if (status.primary != address) {
        changeListed("secondary " + name + " " + on, status.secondaries, address,
                     [&](std::optional<bool> inUse) {
                         inUse ? harness_.secondary(name, on, address, *inUse)
                               : harness_.secondaryDel(name, on, address);
                     });
    }
}

void RandomDevice::promoteSecondary() {
    const std::string name = vrf();
    const std::string on = intf();
    DeviceModel::Ipv4& status = model_.ipv4[name][on];
    if (status.secondaries.empty()) {
        return;
    }
    const std::string address = status.secondaries.begin()->first;
    note("promote " + name + " " + on + " " + address);
    status.secondaries.erase(address);
    harness_.secondaryDel(name, on, address);
    status.primary = address;
    harness_.address(name, on, address);
}

void RandomDevice::changeIpv6() {
    const std::string name = vrf();
    const std::string on = intf();
    const std::string address = oneOf(ipv6Addresses);
    changeListed("address6 " + name + " " + on, model_.ipv6[name][on], address,
                 [&](std::optional<bool> active) {
                     active ? harness_.address6(name, on, address, *active)
                            : harness_.address6Del(name, on, address);
                 });
}

void RandomDevice::removeInterfaces() {
    const std::string name = vrf();
    const std::string on = intf();
    const bool all = oneIn(5);
    const bool ipv6 = oneIn(2);
    note("interfacesDel " + name + " " + (all ? "all" : on) + (ipv6 ? " IPv6" : " IPv4"));
    const auto remove = [&](auto& interfaces) {
        all ? interfaces.erase(name) : interfaces[name].erase(on);
    };
    if (ipv6) {
        remove(model_.ipv6);
        all ? harness_.ipv6Del(name) : harness_.ipv6Del(name, on);
    } else {
        remove(model_.ipv4);
        all ? harness_.ipv4Del(name) : harness_.ipv4Del(name, on);
    }
}

void RandomDevice::changeSubnetRoutes() {
    model_.subnetRoutes = !model_.subnetRoutes;
    note(model_.subnetRoutes ? "subnetRoutes true" : "subnetRoutes false");
    harness_.subnetRoutes(model_.subnetRoutes);
}

void RandomDevice::changeVirtualIp() {
    const std::string name = vrf();
    const std::string address = oneOf(virtualAddresses);
    const std::string on = intf();
    changeListed("virtualIp " + name + " " + address, model_.virtualIps[{name, address}], on,
                 [&](std::optional<bool> carried) {
                     carried ? harness_.virtualIp(name, address, on, *carried)
                             : harness_.virtualIpDel(name, address, on);
                 });
}

void RandomDevice::removeVirtualIp() {
    const std::string name = vrf();
    const std::string address = oneOf(virtualAddresses);
    note("virtualIpDel " + name + " " + address);
    model_.virtualIps.erase({name, address});
    harness_.virtualIpDel(name, address);
}

// The ids need not be those of any VRF, and a VRF may leak to itself.
void RandomDevice::changeLeak() {
    const unsigned source = 1 + below(ids);
    const unsigned dest = 1 + below(ids);
    const std::string prefix = oneOf(leakedPrefixes);
    const std::string text = std::to_string(source) + " " + prefix + " " + std::to_string(dest);
    if (model_.leaks.erase({source, prefix, dest}) != 0) {
        note("leakDel " + text);
        harness_.leakDel(source, prefix, dest);
    } else {
        note("leak " + text);
        model_.leaks.insert({source, prefix, dest});
        harness_.leak(source, prefix, dest);
    }
}

void RandomDevice::removeLeaks() {
    const unsigned source = 1 + below(ids);
    note("leakDel " + std::to_string(source));
    std::erase_if(model_.leaks, [&](const auto& leak) { return std::get<0>(leak) == source; });
    harness_.leakDel(source);
}

void RandomDevice::changeRibWaits() {
    const std::string name = vrf();
    const bool waits = !oneIn(3);
    note((waits ? "ribWaits " : "ribWaitsDel ") + name);
    model_.ribWaits.erase(name);
    if (waits) {
        model_.ribWaits.insert(name);
    }
    harness_.ribWaits(name, waits);
}

void RandomDevice::restart() {
    note("restart");
    beforeRestart();
    harness_.stop();
    harness_.start();
}

void RandomDevice::letTimePass() {
    if (oneIn(2)) {
        const double seconds = below(11) / 100.0;
        note("run " + std::to_string(seconds));
        harness_.run(seconds);
    }
}

} // namespace Routing::DirectNet
