#include "agent/linux/PublishedInterface.h"

#include <utility>

#include "agent/patch/Merge.h"

namespace Agent::Linux {

namespace {

/// Has `said` say what `entryOf` says of each of the addresses, and tells the difference.
template <typename Said, typename Address, typename EntryOf>
auto bring(Said& said, const std::vector<Address>& addresses, const EntryOf& entryOf) {
    using Entry = typename Said::mapped_type;
    MapPatch<Address, typename Entry::Value> patch;
    for (const Address& address : addresses) {
        const auto before = said.find(address);
        Entry now = entryOf(address);
        Entry change = difference(before == said.end() ? Entry() : before->second, now);
        if (!change.isGiven()) {
            continue;
        }
        if (now.isGiven()) {
            said.insert_or_assign(address, std::move(now));
        } else {
            said.erase(before);
        }
        patch.append(address) = std::move(change);
    }
    patch.sort();
    return patch;
}

template <typename Said, typename Address>
void appendKeys(const Said& said, std::vector<Address>& addresses) {
    for (const auto& entry : said) {
        addresses.push_back(entry.first);
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

PublishedInterface::Entries PublishedInterface::publish(const LinkModel* model, Touched touched) {
    if (touched.whole) {
        appendKeys(secondaries_, touched.ipv4);
        appendKeys(ipv6_, touched.ipv6);
        if (model) {
            model->ipv4.forEach([&](const Ipv4& address) { touched.ipv4.push_back(address); });
            model->ipv6.forEach([&](const Ipv6& address) { touched.ipv6.push_back(address); });
        }
    }
    return {.kernel = publishKernel(model),
            .ipv4 = publishIpv4(model, std::move(touched.ipv4)),
            .ipv6 = publishIpv6(model, touched.ipv6)};
}

Edit<KernelDevicePatch> PublishedInterface::publishKernel(const LinkModel* model) {
    auto now =
        model ? Edit<KernelDevicePatch>::to(model->link.device()) : Edit<KernelDevicePatch>();
    auto change = difference(kernel_, now);
    kernel_ = std::move(now);
    return change;
}

Edit<Ipv4InterfacePatch> PublishedInterface::publishIpv4(const LinkModel* model,
                                                         std::vector<Ipv4> touched) {
    if (!model || model->ipv4.isEmpty()) {
        const bool wasThere = primary_ || !secondaries_.empty();
        primary_.reset();
        secondaries_.clear();
        return removalIf<Ipv4InterfacePatch>(wasThere);
    }
    Ipv4InterfacePatch patch;
    const auto primary = model->ipv4.primary();
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
        return model->ipv4.isSecondary(address) ? Edit<bool>::to(true) : Edit<bool>();
    });
    const bool isLast = !secondaries.empty() && secondaries_.empty();
    patch.secondary = isLast ? Edit<Ipv4InterfacePatch::Secondaries>::removal()
                             : changeOf(std::move(secondaries));
    return changeOf(std::move(patch));
}

Edit<Ipv6InterfacePatch> PublishedInterface::publishIpv6(const LinkModel* model,
                                                         const std::vector<Ipv6>& touched) {
    if (!model || model->ipv6.isEmpty()) {
        const bool wasThere = !ipv6_.empty();
        ipv6_.clear();
        return removalIf<Ipv6InterfacePatch>(wasThere);
    }
    return changeOf(
        bring(ipv6_, touched, [&](const Ipv6& address) { return model->ipv6.entry(address); }));
}

} // namespace Agent::Linux
