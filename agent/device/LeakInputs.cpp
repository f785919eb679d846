#include "agent/device/LeakInputs.h"

#include <tuple>
#include <utility>

namespace Agent {

template <typename Prefix>
bool LeakInputs<Prefix>::Leak::operator<(const Leak& other) const {
    if (prefix != other.prefix) {
        return prefix < other.prefix;
    }
    if (vrf == nullptr || other.vrf == nullptr) {
        return vrf == nullptr && other.vrf != nullptr;
    }
    return vrf->first < other.vrf->first;
}

template <typename Prefix>
LeakInputs<Prefix>::LeakInputs(Orb::Ptr<Routing::DirectNetLeakStatus> status)
    : status_(std::move(status)) {}

template <typename Prefix>
void LeakInputs<Prefix>::apply(const Edit<LeakPatch<Prefix>>& patch) {
    const auto removeAllOf = [this](Vrf& source) {
        Leaks& leaks = source.second.to;
        removeRange(source, leaks.begin(), leaks.end());
    };
    if (patch.isRemoval()) {
        for (auto next = vrfs_.begin(); next != vrfs_.end(); ++next) {
            removeAllOf(*next);
        }
        std::erase_if(vrfs_, [](const Vrf& vrf) { return vrf.second.id == VrfId::invalid(); });
    }
    if (const auto* sources = patch.value()) {
        for (const auto& [name, edit] : *sources) {
            Vrf& source = vrf(name);
            if (edit.isRemoval()) {
                removeAllOf(source);
            } else if (edit.value() != nullptr) {
                applyTo(source, *edit.value());
            }
            dropIfUnused(source);
        }
    }
}

template <typename Prefix>
void LeakInputs<Prefix>::applyTo(Vrf& source, const MapPatch<Prefix, VrfSetPatch>& patch) {
    Leaks& leaks = source.second.to;
    for (const auto& [prefix, edit] : patch) {
        if (edit.isRemoval()) {
            auto end = leaks.lower_bound({prefix, nullptr});
            const auto begin = end;
            while (end != leaks.end() && end->prefix == prefix) {
                ++end;
            }
            removeRange(source, begin, end);
        } else if (const VrfSetPatch* destinations = edit.value()) {
            for (const auto& [name, leak] : *destinations) {
                const bool* leaked = leak.value();
                if (leaked != nullptr && *leaked) {
                    add(source, prefix, vrf(name));
                } else if (leak.isGiven()) {
                    remove(source, prefix, name);
                }
            }
        }
    }
}

template <typename Prefix>
void LeakInputs<Prefix>::add(Vrf& source, const Prefix& prefix, Vrf& destination) {
    if (source.second.to.insert({prefix, &destination}).second) {
        destination.second.from.insert({prefix, &source});
        publish(source, prefix, destination);
    }
}

template <typename Prefix>
void LeakInputs<Prefix>::remove(Vrf& source, const Prefix& prefix, const L3::VrfName& destination) {
    const auto found = vrfs_.find(destination);
    if (found == vrfs_.end()) {
        return;
    }
    const auto leak = source.second.to.find({prefix, &*found});
    if (leak != source.second.to.end()) {
        removeRange(source, leak, std::next(leak));
    }
}

template <typename Prefix>
void LeakInputs<Prefix>::removeRange(Vrf& source, typename Leaks::iterator from,
                                     typename Leaks::iterator to) {
    while (from != to) {
        const Leak leak = *from;
        from = source.second.to.erase(from);
        leak.vrf->second.from.erase({leak.prefix, &source});
        withdraw(source, leak.prefix, *leak.vrf);
        if (leak.vrf != &source) {
            dropIfUnused(*leak.vrf);
        }
    }
}

template <typename Prefix>
void LeakInputs<Prefix>::dropIfUnused(Vrf& vrf) {
    const Participant& participant = vrf.second;
    if (participant.id == VrfId::invalid() && participant.to.empty() && participant.from.empty()) {
        vrfs_.erase(L3::VrfName(vrf.first));
    }
}

template <typename Prefix>
void LeakInputs<Prefix>::vrfIdIs(const L3::VrfName& name, VrfId id) {
    Vrf& subject = vrf(name);
    subject.second.id = id;
    for (const Leak& leak : subject.second.to) {
        publish(subject, leak.prefix, *leak.vrf);
    }
    for (const Leak& leak : subject.second.from) {
        publish(*leak.vrf, leak.prefix, subject);
    }
}

template <typename Prefix>
void LeakInputs<Prefix>::vrfIdDel(const L3::VrfName& name) {
    Vrf& subject = vrf(name);
    for (const Leak& leak : subject.second.to) {
        withdraw(subject, leak.prefix, *leak.vrf);
    }
    for (const Leak& leak : subject.second.from) {
        withdraw(*leak.vrf, leak.prefix, subject);
    }
    subject.second.id = VrfId::invalid();
    dropIfUnused(subject);
}

template <typename Prefix>
void LeakInputs<Prefix>::publish(const Vrf& source, const Prefix& prefix, const Vrf& destination) {
    const VrfId from = source.second.id;
    const VrfId into = destination.second.id;
    if (from != VrfId::invalid() && into != VrfId::invalid()) {
        status_->leakedRouteBySourceVrfIs(from)->destVrfIdIs(prefix, into);
    }
}

template <typename Prefix>
void LeakInputs<Prefix>::withdraw(const Vrf& source, const Prefix& prefix, const Vrf& destination) {
    const VrfId from = source.second.id;
    if (Routing::RouteLeakedFromVrf* leaks = status_->leakedRouteBySourceVrf(from)) {
        leaks->destVrfIdDel(prefix, destination.second.id);
        if (leaks->destVrfId().empty()) {
            status_->leakedRouteBySourceVrfDel(from);
        }
    }
}

template class LeakInputs<Lanx::IpPrefix>;
template class LeakInputs<Lanx::Ip6Prefix>;

} // namespace Agent
