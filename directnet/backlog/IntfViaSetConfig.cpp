#include "directnet/backlog/IntfViaSetConfig.h"

#include <array>

#include "directnet/model/Trace.h"
#include "directnet/model/Units.h"
#include "platform/orb/attribute/DefineType.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(IntfViaSetConfig)
ORB_REGISTER(IntfViaSetConfig, IntfViaSetConfig, unitIntfBacklog, 4)

namespace {
DIRECTNET_TRACE_UNIT("IntfBacklog");
} // namespace

const Orb::Ptr<Rib::Ip::ViaConfig>& IntfViaSetConfig::getViaConfig(Lanx::AddressFamily af) const {
    return af == Lanx::AddressFamily::ipv4 ? ipv4ViaConfig() : ipv6ViaConfig();
}

IntfViaSetKey IntfViaSetConfig::findOrCreateViaSetKey(Lanx::IntfId intfId, VrfId vrfId,
                                                      IntfViaSetKeyStatus& status) {
    if (const IntfViaSetKey* present = status.intfViaSetKey().find(intfId)) {
        return *present;
    }
    doAddViaSet(intfId, vrfId, status);
    return status.intfViaSetKey(intfId);
}

void IntfViaSetConfig::doAddViaSet(Lanx::IntfId intfId, VrfId vrfId, IntfViaSetKeyStatus& status) {
    const Lanx::AddressFamily af = status.af();
    Rib::Ip::ViaConfig& viaConfig = *getViaConfig(af);
    const Rib::ViaKey viaKey(viaConfig.transport(), viaConfig.newViaId(), vrfId,
                             viaConfig.routingProtocol());
    DIRECTNET_TRACE(8, "intf=", intfId, " af=", af, " viaId=", viaKey.viaId());
    if (!viaConfig.hasRoomFor(viaKey)
        || !viaSetConfig()->viaSetCollection()->hasRoom(ViaSets::all.size())) {
        return;
    }
    Rib::Via via(viaKey);
    via.intfIdIs(intfId);
    viaConfig.viaIs(via);

    const IntfViaSetKey made = addViaSets(intfId, viaKey, af);
    if (status.intfViaSetKey().contains(intfId)) {
        deleteViaSets(made, af); // a watcher of what was written had the interface get others
    } else {
        status.intfViaSetKeyIs(made);
    }
}

IntfViaSetKey IntfViaSetConfig::addViaSets(Lanx::IntfId intfId, const Rib::ViaKey& viaKey,
                                           Lanx::AddressFamily af) {
    std::array<Rib::ViaSetKey, ViaSets::all.size()> keys;
    for (std::size_t n = 0; n < keys.size(); ++n) {
        if (af != Lanx::AddressFamily::ipv6 || ViaSets::all[n].inIpv6) {
            keys[n] = addViaSet(viaKey, af, ViaSets::all[n]);
        }
    }
    return std::apply([&](const auto... key) { return IntfViaSetKey(intfId, viaKey, key...); },
                      keys);
}

Rib::ViaSetKey IntfViaSetConfig::addViaSet(const Rib::ViaKey& viaKey, Lanx::AddressFamily af,
                                           const ViaSetKind& kind) {
    Rib::Memtab::ViaSet viaSet(viaSetConfig()->newViaSetKey());
    viaSet.viaKeyIs(0, viaKey);
    viaSet.flagsIs(0);
    viaSet.kindIs(kind.number);
    viaSet.familyCodeIs(af == Lanx::AddressFamily::ipv4 ? 2 : 4);
    viaSetConfig()->viaSetCollection()->viaSetIs(viaSet);
    return viaSet.key();
}

void IntfViaSetConfig::delViaSetKey(Lanx::IntfId intfId, IntfViaSetKeyStatus& status) {
    const IntfViaSetKey key = status.intfViaSetKey(intfId);
    if (!key) {
        return;
    }
    // Out of the status first: a watcher of what is deleted may have the interface get new ones.
    status.intfViaSetKeyDel(key.intfId());
    const Lanx::AddressFamily af = status.af();
    deleteViaSets(key, af);
    DIRECTNET_TRACE(8, "intf=", key.intfId(), " af=", af, " viaId=", key.viaKey().viaId());
}

void IntfViaSetConfig::deleteViaSets(const IntfViaSetKey& key, Lanx::AddressFamily af) {
    Rib::Memtab::ViaSetCollection& viaSets = *viaSetConfig()->viaSetCollection();
    for (const ViaSetKind& kind : ViaSets::all) {
        viaSets.viaSetDel((key.*kind.key)());
    }
    getViaConfig(af)->viaDel(key.viaKey());
}

void IntfViaSetConfig::delViaSetKeyAll(IntfViaSetKeyStatus& status) {
    while (!status.intfViaSetKey().empty()) {
        delViaSetKey(status.intfViaSetKey().first()->key(), status);
    }
}

void IntfViaSetConfig::releaseViaSetKey(Lanx::IntfId intfId, IntfViaSetKeyStatus& status) {
    const bool last = status.decIntfVskRefcount(intfId);
    if (last && !status.vskRefcountByIntfId().contains(intfId)) {
        delViaSetKey(intfId, status);
    }
}

} // namespace Routing::DirectNet
