#pragma once

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/lanx/IpGenAddrWithMask.h"
#include "tests/support/LibraryHarness.h"

namespace Routing::DirectNet {

/// What a device tells the library, and by plain rules the routes that follow from it alone,
/// whatever came before. Unnumbered interfaces and directed broadcast, whose routes do depend on
/// what came before, are left out.
struct DeviceModel {
    using Vrf = std::string;
    using Intf = std::string;
    using Address = Lanx::IpGenAddrWithMask;

    struct Status {
        bool active = false;
        std::string netns;
    };
    struct Ipv4 {
        std::string primary; ///< empty where there is none
        std::map<std::string, bool> secondaries;
    };
    /// VRF, interface, address family, and whether the via sets are those of virtual addresses.
    using ViaSetHolder = std::tuple<Vrf, Intf, Lanx::AddressFamily, bool>;
    struct ViaSetHolders {
        std::set<ViaSetHolder> certain, possible;
    };
    using Leak = std::tuple<unsigned, std::string, unsigned>; ///< source id, prefix, destination id

    std::map<Vrf, unsigned> ids;
    std::map<Vrf, Status> statuses;
    std::map<std::string, std::map<Intf, bool>> devices; ///< by namespace; whether they run
    std::map<Vrf, std::map<Intf, Ipv4>> ipv4;
    std::map<Vrf, std::map<Intf, std::map<std::string, bool>>> ipv6;
    std::map<std::pair<Vrf, std::string>, std::map<Intf, bool>> virtualIps;
    bool subnetRoutes = false;
    std::set<Leak> leaks;
    std::set<Vrf> ribWaits;

    bool hasContainer(const Vrf& vrf) const;
    std::vector<Vrf> vrfsWithContainer() const;
    std::vector<RouteRow> routes(const Vrf& vrf) const;
    ViaSetHolders viaSetHolders() const;

    /// In the order in which they win.
    struct Contributor {
        Intf intf;
        Address address;
        unsigned sourceVrf;
        bool isVirtual;
        unsigned type;

        auto operator<=>(const Contributor&) const = default;
    };
    static constexpr unsigned local = 0xFFFFFF;
    using Contributors = std::map<Lanx::IpGenPrefix, std::set<Contributor>>;

    Contributors contributors(const Vrf& vrf) const;

  private:
    std::vector<Address> ownAddresses(const Vrf& vrf, const Intf& intf) const;
    std::set<Intf> interfaces(const Vrf& vrf) const;
    bool countsForLeaks(const Vrf& source, const Contributor& contributor) const;
    Contributors localContributors(const Vrf& vrf) const;
    void addLeaked(const Vrf& vrf, Contributors& contributors) const;
};

} // namespace Routing::DirectNet
