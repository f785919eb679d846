// How the root starts and stops.

#include <cstdlib>
#include <string>
#include <vector>

#include "directnet/model/Trace.h"
#include "directnet/root/RootSm.h"
#include "directnet/root/TraceUnit.h"
#include "platform/orb/container/Keys.h"
#include "platform/orb/object/Decision.h"

namespace Routing::DirectNet {

namespace {

constexpr std::size_t viaCapacity = 1052672;
constexpr std::size_t routeCapacity = 4194304;

constexpr std::uint8_t ipv4Transport = 1;
constexpr std::uint8_t ipv6Transport = 2;
constexpr std::uint8_t connectedProtocol = 1;

void openRingTrace() {
    const char* name = std::getenv("RLFILE");
    Ringlog::initialize(name != nullptr && *name != '\0' ? name : "DirectNet-%d.rl", "", "", 0, 24,
                        Ringlog::ThreadingMode::single, true, 512);
}

} // namespace

Orb::Ptr<RootSm> RootSm::RootSmIs(const RootInputs& inputs) {
    return RootSmIs(inputs.entityManager, inputs.scheduler, inputs.viaSetConfig, inputs.ipStatus,
                    inputs.ip6Status, inputs.virtualIpStatus, inputs.virtualIp6Status,
                    inputs.virtualIpAsReceiveRoute, inputs.nameToIdMapWrapper,
                    inputs.allVrfStatusLocal, inputs.allIntfStatusDir, inputs.allIntfStatusLocalDir,
                    inputs.allVrfRibReady, inputs.protoStatusDir, inputs.grState);
}

void RootSm::doStart() {
    orbNameToIdMapWrapper_.notifierIs(nameToIdMapWrapper());
    orbAllVrfStatusLocal_.notifierIs(allVrfStatusLocal());
    for (const auto& status : Orb::objectsOf(allVrfStatusLocal()->vrf())) {
        vrfStatusLocalIs(status);
    }
    handleInitialized();
    if (nameToIdMapWrapper() != nullptr) {
        orbOrb_NameToIdMapIn_ = newOrb_NameToIdMapIn(nameToIdMapWrapper()->nameToIdMap());
    }
}

// The error that ended the start is the one to raise, not one of somebody who hears of its undoing.
void RootSm::doUndoStart() {
    try {
        Orb::decide([this] {
            orbDoZombieReactors(true);
            containerSmDelAll();
            virtualIpAsReceiveRoute()->enabledIs(false);
            doRelease();
        });
    } catch (...) { // NOLINT(bugprone-empty-catch)
    }
}

void RootSm::doStop() {
    orbDoZombieReactors(true); // a VRF that comes now gets no container
    virtualIpAsReceiveRoute()->enabledIs(false);
    doDeleteContainer();
    unmount();
}

void RootSm::doRelease() {
    orbDoZombieReactors(true);
    intfStatusManagerRootDel();
    allVrfReadyStatusDel();
    allVrfRibReadySmDel();
    protoVrfSmDel();
    allVrfVirtualIpStatusDel();
    allVrfVirtualIp6StatusDel();
    vrfVirtualIpStatusHelperDel();
    vrfVirtualIp6StatusHelperDel();
    virtualIpStatusSmDel();
    virtualIp6StatusSmDel();
    intfBacklogByVrfDel();
    ipv4CrLeakLocalStatusDel();
    ipv4CrLeakSmDel();
    ipv6CrLeakLocalStatusDel();
    ipv6CrLeakSmDel();
    receiveRouteLeakSmDel();
    intfViaSetConfigDel();
    containerSmDelAll();
    unmount();
}

void RootSm::handleInitialized() {
    DIRECTNET_TRACE(8, "handleInitialized");
    openRingTrace();
    DIRECTNET_RINGLOG("handleInitialized");
    if (initialized()) {
        return;
    }
    mountOutputs();
    mountLeakStatus();
    viaSetConfig()->viaSetDelAll();
    createSharedChildren();
    initializedIs(true);
    handleRibVrfNameToIdMap();
}

template <typename T>
Orb::Ptr<T> RootSm::mountTable(const Orb::String& path, const OrbMemtab::MountInfo& info) {
    mount_.doMount(path, T::fwkType().name(), info);
    mounted_.push_back(path);
    return mount_.getEntity<T>(path);
}

void RootSm::mountOutputs() {
    OrbMemtab::MountInfo vias(OrbMemtab::MountInfo::Type::write);
    vias.collectionInfoIs("via", viaCapacity);
    ipv4AllVrfViaConfigIs(mountTable<Rib::Ip::ViaConfig>(MountPaths::ipv4Vias, vias));
    ipv4AllVrfViaConfig()->transportIs(ipv4Transport);
    ipv4AllVrfViaConfig()->rpIs(connectedProtocol);
    ipv6AllVrfViaConfigIs(mountTable<Rib::Ip::ViaConfig>(MountPaths::ipv6Vias, vias));
    ipv6AllVrfViaConfig()->transportIs(ipv6Transport);
    ipv6AllVrfViaConfig()->rpIs(connectedProtocol);

    OrbMemtab::MountInfo routes(OrbMemtab::MountInfo::Type::write);
    routes.collectionInfoIs("route", routeCapacity);
    ipv4AllVrfRouteConfigIs(mountTable<Rib::RouteConfig>(MountPaths::ipv4Routes, routes));
    ipv6AllVrfRouteConfigIs(mountTable<Rib::RouteConfig>(MountPaths::ipv6Routes, routes));

    const OrbMemtab::MountInfo vrfs(OrbMemtab::MountInfo::Type::write);
    protoVrfTableIs(mountTable<Rib::ProtoVrfTable>(MountPaths::vrfs, vrfs));
}

void RootSm::mountLeakStatus() {
    const OrbMemtab::MountInfo read(OrbMemtab::MountInfo::Type::read);
    ipv4CrLeakStatusIs(mountTable<DirectNetLeakStatus>(MountPaths::ipv4Leaks, read));
    ipv4CrLeakLocalStatusIs();
    ipv6CrLeakStatusIs(mountTable<DirectNetLeakStatus>(MountPaths::ipv6Leaks, read));
    ipv6CrLeakLocalStatusIs();
    ipv4CrLeakSmIs(ipv4CrLeakStatus(), ipv4CrLeakLocalStatus());
    ipv6CrLeakSmIs(ipv6CrLeakStatus(), ipv6CrLeakLocalStatus());
}

void RootSm::createSharedChildren() {
    allVrfReadyStatusIs();
    allVrfRibReadySmIs(allVrfRibReady(), allVrfReadyStatus(), protoStatusDir());
    intfStatusManagerRootIs(allIntfStatusDir(), allIntfStatusLocalDir(), true);
    allVrfVirtualIpStatusIs();
    allVrfVirtualIp6StatusIs();
    virtualIpAsReceiveRoute()->enabledIs(true);
    vrfVirtualIpStatusHelperIs(allVrfVirtualIpStatus(), allVrfStatusLocal(), nameToIdMapWrapper());
    vrfVirtualIp6StatusHelperIs(allVrfVirtualIp6Status(), allVrfStatusLocal(),
                                nameToIdMapWrapper());
    if (virtualIpStatus() != nullptr) {
        virtualIpStatusSmIs(virtualIpStatus(), vrfVirtualIpStatusHelper());
    }
    if (virtualIp6Status() != nullptr) {
        virtualIp6StatusSmIs(virtualIp6Status(), vrfVirtualIp6StatusHelper());
    }
    intfBacklogByVrfIs();
    intfViaSetConfigIs(ipv4AllVrfViaConfig(), ipv6AllVrfViaConfig(), viaSetConfig());
    if (scheduler() != nullptr) {
        receiveRouteLeakSmIs(ipv4CrLeakLocalStatus(), ipv6CrLeakLocalStatus(), scheduler(),
                             intfViaSetConfig(), intfBacklogByVrf());
    }
    protoVrfSmIs(protoVrfTable(), allVrfReadyStatus(), nameToIdMapWrapper(), allVrfRibReady(),
                 protoStatusDir(), ipv4AllVrfRouteConfig(), ipv6AllVrfRouteConfig(),
                 ipv4AllVrfViaConfig(), ipv6AllVrfViaConfig());
}

void RootSm::unmount() {
    for (const Orb::String& path : std::exchange(mounted_, {})) {
        mount_.doUnmount(path);
        mount_.cleanup(path);
    }
}

} // namespace Routing::DirectNet
