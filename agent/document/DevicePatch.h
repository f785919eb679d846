#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <tuple>

#include "agent/document/Change.h"
#include "platform/lanx/AddrWithMask.h"
#include "platform/lanx/IntfId.h"
#include "platform/lanx/NamespaceName.h"
#include "platform/lanx/Prefix.h"
#include "platform/vrf/VrfId.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// A merge patch on the device document, the JSON document of everything that the agent is told:
/// checked as a whole and in the agent's own types. The structures below are the document's schema;
/// `members()` gives the keys of each object, and reading follows from that.

/// One key of an object of the document.
template <typename Owner, typename T>
struct Member {
    const char* key;
    Change<T> Owner::*change;
};
template <typename Owner, typename T>
Member(const char*, Change<T> Owner::*) -> Member<Owner, T>;

struct VrfStatusPatch {
    Change<bool> active;               // default false
    Change<Lanx::NamespaceName> netns; // default "default"

    static constexpr auto members() {
        return std::tuple(Member{"active", &VrfStatusPatch::active},
                          Member{"netns", &VrfStatusPatch::netns});
    }
};

struct VrfPatch {
    Change<Vrf::VrfIdMap::VrfId> id; // without it the VRF has no id
    Change<VrfStatusPatch> status;   // without it the VRF is not set up on this device

    static constexpr auto members() {
        return std::tuple(Member{"id", &VrfPatch::id}, Member{"status", &VrfPatch::status});
    }
};

struct KernelDevicePatch {
    Change<std::string> device; // default the interface's name
    Change<bool> running;       // default true

    static constexpr auto members() {
        return std::tuple(Member{"device", &KernelDevicePatch::device},
                          Member{"running", &KernelDevicePatch::running});
    }
};

struct Ipv4InterfacePatch {
    Change<Lanx::IpAddrWithMask> address; // the primary; default none
    /// False: listed but not in use.
    Change<MapPatch<Lanx::IpAddrWithMask, bool>> secondary;
    Change<Lanx::IntfId> unnumbered;
    Change<bool> directedBroadcast; // default false

    static constexpr auto members() {
        return std::tuple(Member{"address", &Ipv4InterfacePatch::address},
                          Member{"secondary", &Ipv4InterfacePatch::secondary},
                          Member{"unnumbered", &Ipv4InterfacePatch::unnumbered},
                          Member{"directedBroadcast", &Ipv4InterfacePatch::directedBroadcast});
    }
};

using InterfaceSetPatch = MapPatch<Lanx::IntfId, bool>;
using VrfSetPatch = MapPatch<L3::VrfName, bool>;

/// By network namespace.
using KernelPatch = MapPatch<Lanx::NamespaceName, MapPatch<Lanx::IntfId, KernelDevicePatch>>;
using VrfsPatch = MapPatch<L3::VrfName, VrfPatch>;
using Ipv4Patch = MapPatch<L3::VrfName, MapPatch<Lanx::IntfId, Ipv4InterfacePatch>>;
/// An address that is false is listed but not in use.
using Ipv6Patch =
    MapPatch<L3::VrfName, MapPatch<Lanx::IntfId, MapPatch<Lanx::Ip6AddrWithMask, bool>>>;

/// Virtual addresses and the interfaces that carry them; an interface that is false does not.
template <typename Address>
using VirtualIpPatch = MapPatch<L3::VrfName, MapPatch<Address, InterfaceSetPatch>>;

struct VirtualIpsPatch {
    Change<bool> subnetRoutes; // default false
    Change<VirtualIpPatch<Lanx::IpAddrWithMask>> ipv4;
    Change<VirtualIpPatch<Lanx::Ip6Addr>> ipv6;

    static constexpr auto members() {
        return std::tuple(Member{"subnetRoutes", &VirtualIpsPatch::subnetRoutes},
                          Member{"ipv4", &VirtualIpsPatch::ipv4},
                          Member{"ipv6", &VirtualIpsPatch::ipv6});
    }
};

/// By source VRF and prefix the VRFs that it is leaked to; one that is false is none of them.
template <typename Prefix>
using LeakPatch = MapPatch<L3::VrfName, MapPatch<Prefix, VrfSetPatch>>;

struct LeaksPatch {
    Change<LeakPatch<Lanx::IpPrefix>> ipv4;
    Change<LeakPatch<Lanx::Ip6Prefix>> ipv6;

    static constexpr auto members() {
        return std::tuple(Member{"ipv4", &LeaksPatch::ipv4}, Member{"ipv6", &LeaksPatch::ipv6});
    }
};

struct DevicePatch {
    Change<bool> gracefulRestart;        // default false
    Change<bool> startReadyVerification; // default false
    Change<VrfsPatch> vrfs;
    Change<KernelPatch> kernel;
    Change<Ipv4Patch> ipv4;
    Change<Ipv6Patch> ipv6;
    Change<VirtualIpsPatch> virtualIps;
    Change<LeaksPatch> leaks;
    Change<VrfSetPatch> ribWaits; // one that is false is not waited for

    static constexpr auto members() {
        return std::tuple(
            Member{"gracefulRestart", &DevicePatch::gracefulRestart},
            Member{"startReadyVerification", &DevicePatch::startReadyVerification},
            Member{"vrfs", &DevicePatch::vrfs}, Member{"kernel", &DevicePatch::kernel},
            Member{"ipv4", &DevicePatch::ipv4}, Member{"ipv6", &DevicePatch::ipv6},
            Member{"virtualIps", &DevicePatch::virtualIps}, Member{"leaks", &DevicePatch::leaks},
            Member{"ribWaits", &DevicePatch::ribWaits});
    }
};

/// Reads a merge patch: null removes, an object is merged, anything else replaces. Throws
/// DocumentError for the first value that the schema does not allow.
DevicePatch readDevicePatch(const nlohmann::json& patch);

} // namespace Agent
