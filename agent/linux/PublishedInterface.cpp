#include "agent/linux/PublishedInterface.h"

#include <utility>

#include "agent/patch/Merge.h"

namespace Agent::Linux {

namespace {

/// Has `said` say what `entryOf` says of each of the addresses, and tells the difference.
template <typename Address, typename Value, typename EntryOf>
auto bring(Orb::HashMap<Address, Edit<Value>>& said, const std::vector<Address>& addresses,
           const EntryOf& entryOf) {
    using Entry = Edit<Value>;
    MapPatch<Address, Value> patch;
    for (const Address& address : addresses) {
        const Entry* before = said.find(address);
        Entry now = entryOf(address);
        Entry change = difference(before == nullptr ? Entry() : *before, now);
        if (!change.isGiven()) {
            continue;
        }
        if (now.isGiven()) {
            said.insertOrAssign(address, std::move(now));
        } else {
            said.erase(address);
        }
        patch.append(address) = std::move(change);
    }
    patch.sort();
    return patch;
}

template <typename Said, typename Address>
void appendKeys(const Said& said, std::vector<Address>& addresses) {
    for (const auto& entry : said) {
        addresses.push_back(entry.key());
    }
}

template <typename T>
Edit<T> removalIf(bool wasThere) {
    return wasThere ? Edit<T>::removal() : Edit<T>();
}

template <typename T>
Edit<T> changeOf(T patch) {
    return isEmpty(patch) ? Edit<T>() : Edit<T>::to(std::move(patch));
}

} // namespace

Edit<KernelDevicePatch> PublishedInterface::publishDevice(const LinkModel* model) {
    auto now =
        model ? Edit<KernelDevicePatch>::to(model->link.device()) : Edit<KernelDevicePatch>();
    auto change = difference(device_, now);
    device_ = std::move(now);
    return change;
}

PublishedInterface::Addresses PublishedInterface::publishAddresses(const L3::VrfName& vrf,
                                                                   const LinkModel& model,
                                                                   Touched touched) {
    vrf_ = vrf;
    if (touched.whole) {
        appendKeys(secondaries_, touched.ipv4);
        appendKeys(ipv6_, touched.ipv6);
        model.ipv4.forEach([&](const Ipv4& address) { touched.ipv4.push_back(address); });
        model.ipv6.forEach([&](const Ipv6& address) { touched.ipv6.push_back(address); });
    }
    return {.ipv4 = publishIpv4(model, std::move(touched.ipv4)),
            .ipv6 = publishIpv6(model, touched.ipv6)};
}

PublishedInterface::Addresses PublishedInterface::withdrawAddresses() {
    vrf_.reset();
    return {.ipv4 = withdrawIpv4(), .ipv6 = withdrawIpv6()};
}

Edit<Ipv4InterfacePatch> PublishedInterface::publishIpv4(const LinkModel& model,
                                                         std::vector<Ipv4> touched) {
    if (model.ipv4.isEmpty()) {
        return withdrawIpv4();
    }
    Ipv4InterfacePatch patch;
    const auto primary = model.ipv4.primary();
    if (primary != primary_) {
        patch.address = primary ? Edit<Ipv4>::to(*primary) : Edit<Ipv4>::removal();
        // Both change roles, whether a message named them or not.
        for (const auto& role : {primary, primary_}) {
            if (role) {
                touched.push_back(*role);
            }
        }
        primary_ = primary;
    }
    auto secondaries = bring(secondaries_, touched, [&](const Ipv4& address) {
        return model.ipv4.isSecondary(address) ? Edit<bool>::to(true) : Edit<bool>();
    });
    const bool isLast = !secondaries.empty() && secondaries_.empty();
    patch.secondary = isLast ? Edit<Ipv4InterfacePatch::Secondaries>::removal()
                             : changeOf(std::move(secondaries));
    return changeOf(std::move(patch));
}

Edit<Ipv4InterfacePatch> PublishedInterface::withdrawIpv4() {
    const bool wasThere = primary_ || !secondaries_.empty();
    primary_.reset();
    secondaries_.clear();
    return removalIf<Ipv4InterfacePatch>(wasThere);
}

Edit<Ipv6InterfacePatch> PublishedInterface::publishIpv6(const LinkModel& model,
                                                         const std::vector<Ipv6>& touched) {
    if (model.ipv6.isEmpty() || !model.link.isUp()) {
        return withdrawIpv6(); // the kernel uses none while the link is down
    }
    return changeOf(
        bring(ipv6_, touched, [&](const Ipv6& address) { return model.ipv6.entry(address); }));
}

Edit<Ipv6InterfacePatch> PublishedInterface::withdrawIpv6() {
    const bool wasThere = !ipv6_.empty();
    ipv6_.clear();
    return removalIf<Ipv6InterfacePatch>(wasThere);
}

} // namespace Agent::Linux
