#pragma once

#include <string>
#include <tuple>

#include "agent/patch/Edit.h"
#include "agent/patch/MapPatch.h"
#include "agent/patch/Member.h"
#include "platform/lanx/AddrWithMask.h"
#include "platform/lanx/IntfId.h"
#include "platform/lanx/NamespaceName.h"
#include "platform/lanx/Prefix.h"
#include "platform/vrf/VrfId.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// A merge patch on the device document, the document of everything that the agent is told, in the
/// agent's own types. The structures below are the document's schema: the keys of each object, what
/// holds where nothing is said, and what it means. Reading follows from that, and so do the
/// operations on patches and the table in docs/agent.md.

struct VrfStatusPatch {
    Edit<bool> active;
    Edit<Lanx::NamespaceName> netns;

    static constexpr auto members() {
        return std::tuple(
            Member{"active", &VrfStatusPatch::active, false,
                   "it is ready for use; `default` needs no status for that"},
            Member{"netns", &VrfStatusPatch::netns, "default", "its network namespace"});
    }
};

struct VrfPatch {
    Edit<Vrf::VrfIdMap::VrfId> id;
    Edit<VrfStatusPatch> status;

    static constexpr auto members() {
        return std::tuple(
            Member{"id", &VrfPatch::id, NoDefault(),
                   "the VRF's id, 0 to 4294967295, not 16777215; no two VRFs have the same"},
            Member{"status", &VrfPatch::status, NoDefault(), "the VRF is set up on this device"});
    }
};

struct KernelDevicePatch {
    Edit<std::string> device;
    Edit<bool> running;

    static constexpr auto members() {
        return std::tuple(
            Member{"device", &KernelDevicePatch::device, DerivedDefault{"I"}, "the device's name"},
            Member{"running", &KernelDevicePatch::running, true, "packets pass"});
    }
};

struct Ipv4InterfacePatch {
    using Secondaries = MapPatch<Lanx::IpAddrWithMask, bool>;

    Edit<Lanx::IpAddrWithMask> address;
    Edit<Secondaries> secondary;
    Edit<Lanx::IntfId> unnumbered;
    Edit<bool> directedBroadcast;

    static constexpr auto members() {
        return std::tuple(
            Member{"address", &Ipv4InterfacePatch::address, NoDefault(), "the primary address"},
            Member{"secondary", &Ipv4InterfacePatch::secondary, NoDefault(), "secondary addresses"},
            Member{"unnumbered", &Ipv4InterfacePatch::unnumbered, NoDefault(),
                   "the interface that the primary is borrowed from"},
            Member{"directedBroadcast", &Ipv4InterfacePatch::directedBroadcast, false,
                   "directed broadcasts are forwarded"});
    }
};

using InterfaceSetPatch = MapPatch<Lanx::IntfId, bool>;
using VrfSetPatch = MapPatch<L3::VrfName, bool>;

using KernelPatch = MapPatch<Lanx::NamespaceName, MapPatch<Lanx::IntfId, KernelDevicePatch>>;
using VrfsPatch = MapPatch<L3::VrfName, VrfPatch>;
using Ipv4Patch = MapPatch<L3::VrfName, MapPatch<Lanx::IntfId, Ipv4InterfacePatch>>;
using Ipv6InterfacePatch = MapPatch<Lanx::Ip6AddrWithMask, bool>;
using Ipv6Patch = MapPatch<L3::VrfName, MapPatch<Lanx::IntfId, Ipv6InterfacePatch>>;

/// By VRF and address the interfaces that carry it.
template <typename Address>
using VirtualIpPatch = MapPatch<L3::VrfName, MapPatch<Address, InterfaceSetPatch>>;

struct VirtualIpsPatch {
    Edit<bool> subnetRoutes;
    Edit<VirtualIpPatch<Lanx::IpAddrWithMask>> ipv4;
    Edit<VirtualIpPatch<Lanx::Ip6Addr>> ipv6;

    static constexpr auto members() {
        return std::tuple(Member{"subnetRoutes", &VirtualIpsPatch::subnetRoutes, false,
                                 "also make routes of the IPv4 ones' subnets"},
                          Member{"ipv4", &VirtualIpsPatch::ipv4, NoDefault(),
                                 "in VRF X, interface I carries the virtual address A"},
                          Member{"ipv6", &VirtualIpsPatch::ipv6, NoDefault(),
                                 "the same; these addresses have no length"});
    }
};

/// By source VRF and prefix the VRFs that it is leaked to.
template <typename Prefix>
using LeakPatch = MapPatch<L3::VrfName, MapPatch<Prefix, VrfSetPatch>>;

struct LeaksPatch {
    Edit<LeakPatch<Lanx::IpPrefix>> ipv4;
    Edit<LeakPatch<Lanx::Ip6Prefix>> ipv6;

    static constexpr auto members() {
        return std::tuple(
            Member{"ipv4", &LeaksPatch::ipv4, NoDefault(), "VRF X leaks its prefix P to VRF Y"},
            Member{"ipv6", &LeaksPatch::ipv6, NoDefault(), "the same"});
    }
};

struct DevicePatch {
    Edit<bool> gracefulRestart;
    Edit<bool> startReadyVerification;
    Edit<VrfsPatch> vrfs;
    Edit<KernelPatch> kernel;
    Edit<Ipv4Patch> ipv4;
    Edit<Ipv6Patch> ipv6;
    Edit<VirtualIpsPatch> virtualIps;
    Edit<LeaksPatch> leaks;
    Edit<VrfSetPatch> ribWaits;

    static constexpr auto members() {
        return std::tuple(
            Member{"gracefulRestart", &DevicePatch::gracefulRestart, false,
                   "how the agent was started; cannot change later"},
            Member{"startReadyVerification", &DevicePatch::startReadyVerification, false,
                   "readiness may be declared, where the restart is graceful"},
            Member{"vrfs", &DevicePatch::vrfs, NoDefault(), "what is known of VRF X"},
            Member{"kernel", &DevicePatch::kernel, NoDefault(),
                   "in network namespace N, interface I has a kernel device"},
            Member{"ipv4", &DevicePatch::ipv4, NoDefault(), "in VRF X, interface I has IPv4"},
            Member{"ipv6", &DevicePatch::ipv6, NoDefault(),
                   "in VRF X, interface I has the IPv6 address A"},
            Member{"virtualIps", &DevicePatch::virtualIps, NoDefault(), "virtual addresses"},
            Member{"leaks", &DevicePatch::leaks, NoDefault(), "prefixes leaked between VRFs"},
            Member{"ribWaits", &DevicePatch::ribWaits, NoDefault(),
                   "the RIB waits for VRF X to become ready"});
    }
};

} // namespace Agent
