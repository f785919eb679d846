#include "bench/Rig.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>

#include "platform/interface/KernelNetInfo.h"
#include "platform/memtab/Mount.h"
#include "platform/orb/loop/SimulatedClock.h"
#include "platform/routing/DirectNetLeakStatus.h"

namespace Bench {

namespace {

std::size_t vrfOf(std::size_t n) { return n % Rig::vrfs; }
std::size_t interfaceOf(std::size_t n) { return n / Rig::vrfs % Rig::interfaces; }
/// Which of its interface's addresses it is.
std::size_t placeOf(std::size_t n) { return n / (Rig::vrfs * Rig::interfaces); }

double secondsNow() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

Rig::Rig(Orb::Ptr<Orb::Clock> clock, Orb::Ptr<Vaultdb::Folder> folder)
    : clock_(std::move(clock)), activityManager_(clock_),
      inputs_(Orb::makePtr<Kiln::TaskScheduler>(clock_), false, {.folder = std::move(folder)}),
      root_(std::make_unique<Agent::AgentRoot>(inputs_)) {
    for (std::size_t vrf = 0; vrf < vrfs; ++vrf) {
        addVrf(vrf);
    }
    settle();
}

void Rig::addVrf(std::size_t vrf) {
    const std::string number = std::to_string(vrf);
    const L3::VrfName name("vrf" + number);
    vrfs_[vrf].name = name;
    const Lanx::NamespaceName netns("ns-" + name.value());
    const Orb::String path = Routing::DirectNet::MountPaths::kernelDevices(netns);
    OrbMemtab::Mount mount(inputs_.entityManager());
    mount.doMount(path, "KernelNetInfo::Status",
                  OrbMemtab::MountInfo(OrbMemtab::MountInfo::Type::write));
    const auto kernel = mount.getEntity<KernelNetInfo::Status>(path);
    auto* ipv4 = inputs_.ipStatus()->vrfIpIntfStatusIs(name);
    auto* ipv6 = inputs_.ip6Status()->vrfIp6IntfStatusIs(name);
    for (std::size_t interface = 0; interface < interfaces; ++interface) {
        const std::string device = "Ethernet" + number + "/" + std::to_string(interface);
        const Lanx::IntfId id(device);
        kernel->deviceIs(id, KernelNetInfo::Device(device, true));
        vrfs_[vrf].interfaces.push_back({id, ipv4->ipIntfStatusIs(id), ipv6->intfStatusIs(id)});
    }
    inputs_.vrfs().nameToIdMapWrapper()->nameToIdMap()->vrfIdIs(name, vrfId(vrf));
    auto* status = inputs_.vrfs().allVrfStatusLocal()->vrfIs(name);
    status->netNsIs(netns);
    status->stateIs(Ip::VrfState::active);
}

::Vrf::VrfIdMap::VrfId Rig::vrfId(std::size_t vrf) {
    return ::Vrf::VrfIdMap::VrfId(static_cast<std::uint32_t>(vrf));
}

Lanx::IpAddrWithMask Rig::ipv4(std::size_t n) {
    return {Lanx::IpAddr(0x0a000001U + (static_cast<std::uint32_t>(n) << 8)), 24};
}

const Rig::Interface& Rig::interface(std::size_t n) const {
    return vrfs_[vrfOf(n)].interfaces[interfaceOf(n)];
}

void Rig::addIpv4(std::size_t n) {
    if (placeOf(n) == 0) {
        interface(n).ipv4->activeAddrWithMaskIs(ipv4(n));
    } else {
        interface(n).ipv4->activeSecondaryWithMaskIs(ipv4(n), true);
    }
}

void Rig::delIpv4(std::size_t n) {
    if (placeOf(n) == 0) {
        interface(n).ipv4->activeAddrWithMaskIs(Lanx::IpAddrWithMask());
    } else {
        interface(n).ipv4->activeSecondaryWithMaskDel(ipv4(n));
    }
}

void Rig::addIpv6(std::size_t n) {
    const std::size_t m = n / vrfs;
    Lanx::AddressBytes bytes{};
    bytes[0] = 0x20;
    bytes[1] = 0x01;
    bytes[4] = static_cast<std::uint8_t>(m >> 16);
    bytes[5] = static_cast<std::uint8_t>(m >> 8);
    bytes[6] = static_cast<std::uint8_t>(m);
    bytes[15] = 1;
    interface(n).ipv6->addrIs({Lanx::Ip6Addr(bytes), 64}, Ip6::AddressInfo{true, 0});
}

void Rig::addVirtualIp(std::size_t n) {
    constexpr std::size_t carriers = 8;
    auto* virtualIp = inputs_.virtualIpStatus()->virtualIpIntfStatusIs(
        VirtualIp::VrfIpWithMaskPair(vrfName(vrfOf(n)), ipv4(n)));
    for (std::size_t carrier = 0; carrier < carriers; ++carrier) {
        virtualIp->intfIdIs(interface(n + carrier * vrfs).intfId, true);
    }
}

void Rig::addLeak(std::size_t n) {
    const Orb::Ptr<Routing::DirectNetLeakStatus> status = root().operator->()->ipv4CrLeakStatus();
    auto* leaks = status->leakedRouteBySourceVrfIs(vrfId(vrfOf(n)));
    for (std::size_t vrf = 0; vrf < vrfs; ++vrf) {
        if (vrf != vrfOf(n)) {
            leaks->destVrfIdIs(ipv4(n).subnet(), vrfId(vrf));
        }
    }
}

double Rig::settle() {
    auto* simulated = dynamic_cast<Orb::SimulatedClock*>(clock_.get());
    double longest = 0;
    while (clock_->nextWakeup() < Orb::Clock::never) {
        if (simulated != nullptr) {
            simulated->advanceToNextWakeup();
        } else {
            const double wait = clock_->nextWakeup() - clock_->now();
            std::this_thread::sleep_for(std::chrono::duration<double>(std::max(wait, 0.0)));
        }
        const double start = secondsNow();
        clock_->runOne();
        longest = std::max(longest, secondsNow() - start);
    }
    return longest;
}

} // namespace Bench
