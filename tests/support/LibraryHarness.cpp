#include "tests/support/LibraryHarness.h"

#include <algorithm>
#include <sstream>

#include "platform/orb/attribute/TypeRegistry.h"
#include "platform/orb/object/AllocTrackTypeInfo.h"
#include "platform/orb/object/TypeNode.h"
#include "platform/routing/ProtoVrfStatus.h"

namespace Routing::DirectNet {

namespace {

using Lanx::AddressFamily;
using Lanx::IntfId;
using Vrf::VrfIdMap::VrfId;

constexpr double longEnough = 1000; ///< seconds after which an agent must have come to rest

Lanx::IpAddrWithMask ipv4Address(const std::string& text) {
    return Lanx::IpAddrWithMask::fromString(text);
}

bool isIpv6(const std::string& text) { return text.find(':') != std::string::npos; }

VirtualIp::VrfIpWithMaskPair key4(const std::string& vrf, const std::string& address) {
    return {L3::VrfName(vrf), ipv4Address(address)};
}

VirtualIp::VrfIpPair key6(const std::string& vrf, const std::string& address) {
    return {L3::VrfName(vrf), Lanx::Ip6Addr::fromString(address)};
}

} // namespace

std::string RouteRow::usualVia(unsigned type) {
    return type == 11  ? "connected"
           : type == 3 ? "receive-broadcast"
           : type == 4 ? "directed-broadcast"
                       : "receive";
}

std::string RouteRow::text() const {
    return prefix + " " + std::to_string(type) + " " + intf + " "
           + (via.empty() ? usualVia(type) : via) + (sourceVrf.empty() ? "" : " from " + sourceVrf);
}

template <typename T>
Orb::Ptr<T> LibraryHarness::written(const Orb::String& path) {
    store.doMount(path, T::fwkType().name(),
                  OrbMemtab::MountInfo(OrbMemtab::MountInfo::Type::write));
    return store.getEntity<T>(path);
}

LibraryHarness::LibraryHarness(Orb::Ptr<Vaultdb::EntityManager> tables, bool started)
    : entityManager(std::move(tables)),
      viaSetConfig(Orb::makePtr<Rib::ViaSetConfig>(
          written<Rib::Memtab::ViaSetCollection>(MountPaths::viaSets))) {
    for (const char* path : {MountPaths::ipv4Leaks, MountPaths::ipv6Leaks}) {
        written<DirectNetLeakStatus>(path)->leakedRouteBySourceVrfDelAll();
        store.doUnmount(path); // so that the mounts are the root's alone
    }
    nameToIdMapWrapper->nameToIdMapIs(Orb::makePtr<Vrf::VrfIdMap::NameToIdMap>());
    if (started) {
        start();
    }
}

LibraryHarness::~LibraryHarness() {
    if (root_ != nullptr) {
        clock->secondsPerRead = 0;
        removeVrfs();
        EXPECT_EQ(leftovers(), "");
        stop();
    }
}

template <typename Tables>
concept MakesInputsOfTablesAlone = requires(Tables tables) { RootInputs{.entityManager = tables}; };
static_assert(!MakesInputsOfTablesAlone<Orb::Ptr<Vaultdb::EntityManager>>);

RootInputs LibraryHarness::inputs() const {
    return {.entityManager = entityManager,
            .scheduler = scheduler,
            .viaSetConfig = viaSetConfig,
            .ipStatus = ipStatus,
            .ip6Status = ip6Status,
            .virtualIpStatus = virtualIpStatus,
            .virtualIp6Status = virtualIp6Status,
            .virtualIpAsReceiveRoute = virtualIpAsReceiveRoute,
            .nameToIdMapWrapper = nameToIdMapWrapper,
            .allVrfStatusLocal = allVrfStatusLocal,
            .allIntfStatusDir = allIntfStatusDir,
            .allIntfStatusLocalDir = allIntfStatusLocalDir,
            .allVrfRibReady = allVrfRibReady,
            .protoStatusDir = protoStatusDir,
            .grState = grState};
}

void LibraryHarness::start() {
    livingAtStart_ = livingObjects();
    root_ = RootSm::RootSmIs(inputs());
}

void LibraryHarness::stop() {
    root_->handleDelete();
    root_ = nullptr;
    EXPECT_EQ(livingObjects(), livingAtStart_);
}

void LibraryHarness::vrf(const std::string& name, unsigned id, const std::string& netns) {
    if (name != "default") {
        vrfStatus(name, true, netns);
    }
    vrfId(name, id);
}

void LibraryHarness::vrfId(const std::string& name, unsigned id) {
    nameToIdMapWrapper->nameToIdMap()->vrfIdIs(L3::VrfName(name), VrfId(id));
}

void LibraryHarness::vrfIdDel(const std::string& name) {
    nameToIdMapWrapper->nameToIdMap()->vrfIdDel(L3::VrfName(name));
}

void LibraryHarness::vrfStatus(const std::string& name, bool active, const std::string& netns) {
    Ip::VrfStatusLocal* status = allVrfStatusLocal->vrfIs(L3::VrfName(name));
    status->netNsIs(Lanx::NamespaceName(netns));
    status->stateIs(active ? Ip::VrfState::active : Ip::VrfState::initializing);
}

void LibraryHarness::vrfStatusDel(const std::string& name) {
    allVrfStatusLocal->vrfDel(L3::VrfName(name));
}

void LibraryHarness::removeVrfs() {
    if (const auto map = nameToIdMapWrapper->nameToIdMap()) {
        map->vrfIdDelAll();
    }
    allVrfStatusLocal->vrfDelAll();
}

template <typename T>
Orb::Ptr<T> LibraryHarness::table(const Orb::String& path) {
    return Orb::Ptr<T>(
        static_cast<T*>(entityManager->findOrCreate(path, T::fwkType().name()).get()));
}

void LibraryHarness::device(const std::string& netns, const std::string& intf, bool running) {
    table<KernelNetInfo::Status>(MountPaths::kernelDevices(netns))
        ->deviceIs(IntfId(intf), KernelNetInfo::Device(intf, running));
}

void LibraryHarness::deviceDel(const std::string& netns, const std::string& intf) {
    table<KernelNetInfo::Status>(MountPaths::kernelDevices(netns))->deviceDel(IntfId(intf));
}

Ip::IpIntfStatus& LibraryHarness::ipv4(const std::string& vrf, const std::string& intf) {
    return *ipStatus->vrfIpIntfStatusIs(L3::VrfName(vrf))->ipIntfStatusIs(IntfId(intf));
}

void LibraryHarness::address(const std::string& vrf, const std::string& intf,
                             const std::string& address) {
    ipv4(vrf, intf).activeAddrWithMaskIs(ipv4Address(address));
}

void LibraryHarness::secondary(const std::string& vrf, const std::string& intf,
                               const std::string& address, bool inUse) {
    ipv4(vrf, intf).activeSecondaryWithMaskIs(ipv4Address(address), inUse);
}

void LibraryHarness::secondaryDel(const std::string& vrf, const std::string& intf,
                                  const std::string& address) {
    ipv4(vrf, intf).activeSecondaryWithMaskDel(ipv4Address(address));
}

void LibraryHarness::ipv4Del(const std::string& vrf, const std::string& intf) {
    ipStatus->vrfIpIntfStatusIs(L3::VrfName(vrf))->ipIntfStatusDel(IntfId(intf));
}

void LibraryHarness::ipv4Del(const std::string& vrf) {
    ipStatus->vrfIpIntfStatusDel(L3::VrfName(vrf));
}

Ip6::IntfStatus& LibraryHarness::ipv6(const std::string& vrf, const std::string& intf) {
    return *ip6Status->vrfIp6IntfStatusIs(L3::VrfName(vrf))->intfStatusIs(IntfId(intf));
}

void LibraryHarness::address6(const std::string& vrf, const std::string& intf,
                              const std::string& address, bool active) {
    ipv6(vrf, intf).addrIs(Lanx::Ip6AddrWithMask::fromString(address), Ip6::AddressInfo{active});
}

void LibraryHarness::address6Del(const std::string& vrf, const std::string& intf,
                                 const std::string& address) {
    ipv6(vrf, intf).addrDel(Lanx::Ip6AddrWithMask::fromString(address));
}

void LibraryHarness::ipv6Del(const std::string& vrf, const std::string& intf) {
    ip6Status->vrfIp6IntfStatusIs(L3::VrfName(vrf))->intfStatusDel(IntfId(intf));
}

void LibraryHarness::ipv6Del(const std::string& vrf) {
    ip6Status->vrfIp6IntfStatusDel(L3::VrfName(vrf));
}

void LibraryHarness::virtualIp(const std::string& vrf, const std::string& address,
                               const std::string& intf, bool carried) {
    if (isIpv6(address)) {
        virtualIp6Status->virtualIp6IntfStatusIs(key6(vrf, address))
            ->intfIdIs(IntfId(intf), carried);
    } else {
        virtualIpStatus->virtualIpIntfStatusIs(key4(vrf, address))->intfIdIs(IntfId(intf), carried);
    }
}

void LibraryHarness::virtualIpDel(const std::string& vrf, const std::string& address,
                                  const std::string& intf) {
    if (isIpv6(address)) {
        virtualIp6Status->virtualIp6IntfStatusIs(key6(vrf, address))->intfIdDel(IntfId(intf));
    } else {
        virtualIpStatus->virtualIpIntfStatusIs(key4(vrf, address))->intfIdDel(IntfId(intf));
    }
}

void LibraryHarness::virtualIpDel(const std::string& vrf, const std::string& address) {
    if (isIpv6(address)) {
        virtualIp6Status->virtualIp6IntfStatusDel(key6(vrf, address));
    } else {
        virtualIpStatus->virtualIpIntfStatusDel(key4(vrf, address));
    }
}

RouteLeakedFromVrf* LibraryHarness::leaksFrom(unsigned source, const std::string& prefix) {
    const char* path = isIpv6(prefix) ? MountPaths::ipv6Leaks : MountPaths::ipv4Leaks;
    return table<DirectNetLeakStatus>(path)->leakedRouteBySourceVrfIs(VrfId(source));
}

void LibraryHarness::leak(unsigned source, const std::string& prefix, unsigned dest) {
    leaksFrom(source, prefix)->destVrfIdIs(Lanx::IpGenPrefix::fromString(prefix), VrfId(dest));
}

void LibraryHarness::leakDel(unsigned source, const std::string& prefix, unsigned dest) {
    leaksFrom(source, prefix)->destVrfIdDel(Lanx::IpGenPrefix::fromString(prefix), VrfId(dest));
}

void LibraryHarness::leakDel(unsigned source) {
    for (const char* path : {MountPaths::ipv4Leaks, MountPaths::ipv6Leaks}) {
        table<DirectNetLeakStatus>(path)->leakedRouteBySourceVrfDel(VrfId(source));
    }
}

void LibraryHarness::ribWaits(const std::string& vrf, bool waits) {
    if (waits) {
        allVrfRibReady->vrfIs(L3::VrfName(vrf), true);
    } else {
        allVrfRibReady->vrfDel(L3::VrfName(vrf));
    }
}

Rib::ProtoVrfStatus* LibraryHarness::ribStatus(const std::string& vrf) const {
    return dynamic_cast<Rib::ProtoVrfStatus*>(protoStatusDir->entity(Orb::Name(vrf)));
}

void LibraryHarness::wakeUp() {
    clock->advanceTo(clock->nextWakeup());
    clock->runDue();
}

void LibraryHarness::runUntil(double end) {
    while (clock->nextWakeup() <= end) {
        wakeUp();
    }
}

void LibraryHarness::run(double seconds) {
    const double end = clock->now() + seconds;
    runUntil(end);
    clock->advanceTo(end);
}

void LibraryHarness::settle() {
    runUntil(clock->now() + longEnough);
    ASSERT_EQ(clock->nextWakeup(), Orb::Clock::never) << "the agent does not come to rest";
}

ContainerSm& LibraryHarness::container(const std::string& vrf) const {
    ContainerSm* container = root_->containerSm(L3::VrfName(vrf));
    if (container == nullptr) {
        throw Orb::Error("no container of VRF " + vrf);
    }
    return *container;
}

std::size_t LibraryHarness::vias() const {
    return root_->ipv4AllVrfViaConfig()->size() + root_->ipv6AllVrfViaConfig()->size();
}

std::vector<std::string> LibraryHarness::routes(const std::string& vrf) const {
    std::vector<std::string> lines;
    const VrfId id = container(vrf).vrfId();
    for (const auto& config : {root_->ipv4AllVrfRouteConfig(), root_->ipv6AllVrfRouteConfig()}) {
        if (const auto* routes = config->routes(id)) {
            for (const Rib::Route& route : *routes) {
                lines.push_back(text(route));
            }
        }
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

// Read from the written tables alone, as the routing information base does: route, via set, via.
std::string LibraryHarness::text(const Rib::Route& route) const {
    const bool ipv4 = route.key().prefix().af() == AddressFamily::ipv4;
    const auto& vias = ipv4 ? root_->ipv4AllVrfViaConfig() : root_->ipv6AllVrfViaConfig();
    RouteRow row;
    row.prefix = route.key().prefix().toString();
    row.type = static_cast<unsigned>(route.routeType());
    row.intf = row.via = "dangling";
    const auto viaSet = viaSetConfig->viaSetCollection()->viaSet(route.viaSetKey());
    if (viaSet && viaSet->via() != nullptr && viaSet->familyCode() == (ipv4 ? 2 : 4)) {
        if (const Rib::Via via = vias->via(*viaSet->via()); via != Rib::Via()) {
            row.intf = via.intfId().name();
            row.via = viaName(route, via.intfId());
        }
    }
    if (route.srcVrfId() != VrfId::invalid()) {
        row.sourceVrf = std::to_string(route.srcVrfId().value());
    }
    return row.text();
}

std::string LibraryHarness::viaName(const Rib::Route& route, IntfId intfId) const {
    const bool leaked = route.srcVrfId() != VrfId::invalid();
    const auto vrfId = leaked ? route.srcVrfId() : route.key().vrfId();
    const AddressFamily af = route.key().prefix().af();
    for (const auto& container : root_->containerSm()) {
        if (container->vrfId() != vrfId) {
            continue;
        }
        const auto& own = container->intfBacklog()->intfViaSetKeyStatusFromAf(af);
        const auto& ofVirtualIps = af == AddressFamily::ipv4
                                       ? container->vrfVirtualIpStatusSm()->ivskStatus()
                                       : container->vrfVirtualIp6StatusSm()->ivskStatus();
        for (const auto& status : {own, ofVirtualIps}) {
            const IntfViaSetKey keys = status->intfViaSetKey(intfId);
            for (const ViaSetKind& kind : ViaSets::all) {
                if ((keys.*kind.key)() == route.viaSetKey()) {
                    const std::string name(kind.name);
                    return status == own ? name : name + "-virtual";
                }
            }
        }
    }
    return "unknown";
}

std::map<std::string, std::size_t> LibraryHarness::livingObjects() {
    std::map<std::string, std::size_t> living;
    for (const Orb::TypeNode* type : Orb::TypeRegistry::instance().typeNodes()) {
        // GrState and what the device publishes are the harness's own.
        if (type->name().find("DirectNet::") != std::string_view::npos
            && type->name().find("GrState") == std::string_view::npos
            && Orb::AllocTrackTypeInfo::living(*type) != 0) {
            living[std::string(type->name())] = Orb::AllocTrackTypeInfo::living(*type);
        }
    }
    return living;
}

std::string LibraryHarness::leftovers() {
    settle();
    std::ostringstream left;
    const auto count = [&left](const char* what, std::size_t n) {
        if (n != 0) {
            left << n << ' ' << what << '\n';
        }
    };
    count("vias", vias());
    count("via sets", viaSets());
    count("routes",
          root_->ipv4AllVrfRouteConfig()->size() + root_->ipv6AllVrfRouteConfig()->size());
    count("VRFs in the table", root_->protoVrfTable()->size());
    count("interface status managers", root_->intfStatusManagerRoot()->intfStatusManagers());
    for (const char* netns : {"default", "ns1", "ns2"}) {
        count("kernel status mounts", entityManager->mounts(MountPaths::kernelDevices(netns)));
    }
    // A table outlives its VRF only while it holds a virtual address.
    std::map<std::string, std::size_t> shared{
        {"AllVrfReadyStatus", 1},
        {"AllVrfRibReadySm", 1},
        {"IntfBacklogByVrf", 1},
        {"IntfViaSetConfig", 1},
        {"ProtoVrfSm", 1},
        {"ReceiveRouteLeakSm", 1},
        {"RootSm", 1},
        {"RootSm::VrfStatusLocalSm", allVrfStatusLocal->vrf().size()},
        {"VrfNameSet", 1}};
    for (const auto& [name, n] : livingObjects()) {
        const std::string shortName = name.substr(std::string("Routing::DirectNet::").size());
        if (shortName.starts_with("Ipv")
            && shortName.find("::VrfVirtualIpStatusSm") == std::string::npos) {
            continue;
        }
        count(shortName.c_str(), n - std::min(n, shared[shortName]));
    }
    const auto countEmpty = [&count](const auto& tables) {
        for (const auto& table : tables) {
            count("empty virtual IP table", table->virtualIp().empty() ? 1 : 0);
        }
    };
    countEmpty(root_->allVrfVirtualIpStatus()->vrfVirtualIpStatus());
    countEmpty(root_->allVrfVirtualIp6Status()->vrfVirtualIpStatus());
    return left.str();
}

testing::AssertionResult hasRoutes(LibraryHarness& harness, const std::string& vrf,
                                   const std::vector<RouteRow>& rows) {
    harness.settle();
    std::map<std::string, int> surplus; // by line: how many more are written than wanted
    for (const std::string& line : harness.routes(vrf)) {
        ++surplus[line];
    }
    for (const RouteRow& row : rows) {
        --surplus[row.text()];
    }
    std::string differences;
    for (const auto& [line, count] : surplus) {
        if (count != 0) {
            differences += (count < 0 ? "\n  missing: " : "\n  besides: ") + line;
        }
    }
    return testing::AssertionResult(differences.empty()) << "VRF " << vrf << differences;
}

} // namespace Routing::DirectNet
