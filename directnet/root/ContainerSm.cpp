#include "directnet/root/ContainerSm.h"

#include "directnet/model/Trace.h"
#include "directnet/root/RootInputs.h"
#include "directnet/root/TraceUnit.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/container/Keys.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/object/Decision.h"

namespace Routing::DirectNet {

ORB_DEFINE_TYPE(ContainerSm)
ORB_REGISTER(ContainerSm, ContainerSm, unitDirectNet, 10)

namespace {

/// Releases the via-set keys of every interface that a VRF's address status lists.
template <typename Interfaces>
void releaseInterfaces(const Interfaces& interfaces, IntfViaSetConfig& config,
                       IntfViaSetKeyStatus& status) {
    for (const auto& interface : Orb::objectsOf(interfaces)) {
        config.delViaSetKey(interface->intfId(), status);
    }
}

/// The same of every interface that carries one of a VRF's virtual addresses.
template <typename Table>
void releaseVirtualIps(const Table& table, IntfViaSetConfig& config, IntfViaSetKeyStatus& status) {
    for (const auto& virtualIp : Orb::objectsOf(table.virtualIp())) {
        Orb::forEachKey(virtualIp->intfId(),
                        [&](Lanx::IntfId intfId) { config.delViaSetKey(intfId, status); });
    }
}

} // namespace

ContainerSm::ContainerSm(Arguments arguments)
    : arguments_(std::move(arguments)), mount_(entityManager()) {
    try {
        Orb::decide([this] { handleInitialized(); });
    } catch (...) {
        doRelease();
        throw;
    }
}

ContainerSm::~ContainerSm() { doRelease(); }

void ContainerSm::doRelease() {
    doCleanup();
    orbDoZombieReactors(true);
    vrfIpIntfStatusSmDel();
    vrfIp6IntfStatusSmDel();
    vrfVirtualIpStatusSmDel();
    vrfVirtualIp6StatusSmDel();
    intfBacklogSmDel();
    kernelIntfStatusDel();
    // Whoever watches the tables may have answered the clean-up with new addresses, for which the
    // machines, while they lasted, made new vias.
    doReleaseAllViaSetKeys();
    clearState();
}

void ContainerSm::handleInitialized() {
    if (initialized()) {
        DIRECTNET_TRACE(8, *this, " already initialized");
        return;
    }
    DIRECTNET_TRACE(8, "vrf=", vrfName());
    DIRECTNET_RINGLOG("handleInitialized", " vrf=", vrfName());
    doKniInit();
    kernelIntfStatusIs(vrfName(), kernelIntfStatusDir());
    DIRECTNET_TRACE(8, "ipv4ViaConfig: rp ", unsigned{ipv4ViaConfig()->rp()}, " transport ",
                    unsigned{ipv4ViaConfig()->transport()}, " vrfId ", vrfId());
    DIRECTNET_RINGLOG("handleInitialized", " proto=", ipv4ViaConfig()->rp(), " vrfId=", vrfId());
    clearState();
    intfBacklogSmIs(vrfName(), vrfId(), Orb::activityManager()->clock(), route4Config(),
                    route6Config(), intfViaSetConfig(), intfBacklog());
    vrfIpIntfStatusSmIs(vrfName(), ipStatus(), intfViaSetConfig(), intfBacklog(),
                        kernelIntfStatus(), grState(), vrfReadyStatus());
    vrfIp6IntfStatusSmIs(vrfName(), ip6Status(), intfViaSetConfig(), intfBacklog(),
                         kernelIntfStatus(), grState(), vrfReadyStatus());
    vrfVirtualIpStatusSmIs(vrfVirtualIpStatus(), intfViaSetConfig(), intfBacklog());
    vrfVirtualIp6StatusSmIs(vrfVirtualIp6Status(), intfViaSetConfig(), intfBacklog());
    initializedIs(true);
}

void ContainerSm::doKniInit() {
    DIRECTNET_TRACE(
        8, "Mounting kniStatus and initializing KernelIntfStatusManager for vrf : ", *this);
    if (vrfName() == L3::VrfName::defaultVrf()) {
        netNsIs(Lanx::NamespaceName::defaultNamespace());
    } else if (const Ip::VrfStatusLocal* status = allVrfStatusLocal()->vrf(vrfName())) {
        netNsIs(status->netNs());
    }
    kernelIntfStatusDirIs(Orb::makePtr<Interface::DeviceIntfStatusDir>(
        Interface::DeviceIntfStatusDir::Arguments{Orb::Name()}));
    const Orb::String path = MountPaths::kernelDevices(netNs());
    mount_.doMount(path, KernelNetInfo::Status::fwkType().name(),
                   OrbMemtab::MountInfo(OrbMemtab::MountInfo::Type::read));
    mounted_ = true;
    intfStatusManagerRoot()
        ->intfStatusManagerIs(kernelIntfStatusDir(), mount_.getEntity<KernelNetInfo::Status>(path),
                              netNs())
        ->omitNonRunningKernelDevicesIs(true);
}

void ContainerSm::doKniDelete() {
    DIRECTNET_TRACE(8,
                    "Unmounting kniStatus and deleting KernelIntfStatusManager for vrf : ", *this);
    if (!std::exchange(mounted_, false)) {
        return;
    }
    intfStatusManagerRoot()->intfStatusManagerDel(netNs(), kernelIntfStatusDir());
    mount_.doUnmount(MountPaths::kernelDevices(netNs()));
}

void ContainerSm::clearState() {
    ipv4ViaConfig()->doDeleteViasForVrf(vrfId());
    ipv6ViaConfig()->doDeleteViasForVrf(vrfId());
    route4Config()->doDeleteRoutesForVrf(vrfId());
    route6Config()->doDeleteRoutesForVrf(vrfId());
}

void ContainerSm::doCleanup() {
    DIRECTNET_TRACE(8, "vrfName=", vrfName());
    DIRECTNET_TRACE(8, "Cleaning up ContainerSm for vrf ", *this);
    intfBacklog()->closingIs(true);
    doKniDelete();
    doReleaseViaSetKeys();
    clearState();
}

void ContainerSm::doReleaseViaSetKeys() {
    IntfViaSetConfig& config = *intfViaSetConfig();
    IntfViaSetKeyStatus& status4 = *intfBacklog()->intfViaSetKeyStatus4();
    IntfViaSetKeyStatus& status6 = *intfBacklog()->intfViaSetKeyStatus6();
    if (ipStatus() != nullptr) {
        if (const Ip::VrfIpIntfStatus* vrf = ipStatus()->vrfIpIntfStatus(vrfName())) {
            releaseInterfaces(vrf->ipIntfStatus(), config, status4);
        }
    }
    if (ip6Status() != nullptr) {
        if (const Ip6::VrfIp6IntfStatus* vrf = ip6Status()->vrfIp6IntfStatus(vrfName())) {
            releaseInterfaces(vrf->intfStatus(), config, status6);
        }
    }
    releaseVirtualIps(*vrfVirtualIpStatus(), config, status4);
    releaseVirtualIps(*vrfVirtualIp6Status(), config, status6);
    // Interfaces that are listed nowhere any more may still have theirs, kept by routes that no
    // drain has removed yet.
    doReleaseAllViaSetKeys();
}

void ContainerSm::doReleaseAllViaSetKeys() {
    intfViaSetConfig()->delViaSetKeyAll(*intfBacklog()->intfViaSetKeyStatus4());
    intfViaSetConfig()->delViaSetKeyAll(*intfBacklog()->intfViaSetKeyStatus6());
}

} // namespace Routing::DirectNet
