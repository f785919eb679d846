#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "directnet/root/RootSm.h"
#include "platform/orb/loop/ActivityManager.h"
#include "tests/support/ManualClock.h"

namespace Routing::DirectNet {

/// One route as a test writes it down. Without `via` it goes through the via set that is usual for
/// its type: type 3 is taken for a network address.
struct RouteRow {
    std::string prefix;
    unsigned type = 0;
    std::string intf;
    std::string via = {};
    std::string sourceVrf = {}; ///< of a leaked route: the id of its source VRF

    std::string text() const;
    static std::string usualVia(unsigned type);
};

/// The library on simulated time: its fifteen inputs, with a short word for every change that a
/// device can make to them, and the tables that it writes. Interfaces have a kernel device only
/// when a test gives them one. At its end all VRFs go, and nothing of them may be left.
class LibraryHarness {
  public:
    explicit LibraryHarness(bool started = true)
        : LibraryHarness(Orb::makePtr<Vaultdb::EntityManager>(), started) {}
    /// On a store that may be shared. Leaks that are found there go.
    explicit LibraryHarness(Orb::Ptr<Vaultdb::EntityManager> tables, bool started = true);
    LibraryHarness(const LibraryHarness&) = delete;
    LibraryHarness& operator=(const LibraryHarness&) = delete;
    ~LibraryHarness();

    /// The root comes and goes; what the store holds stays.
    void start();
    void stop();
    RootSm& root() const { return *root_; }
    RootInputs inputs() const;

    // VRFs. One with an id and an active status has a container; "default" needs only the id.
    void vrf(const std::string& name, unsigned id, const std::string& netns = "default");
    void vrfId(const std::string& name, unsigned id);
    void vrfIdDel(const std::string& name);
    void vrfStatus(const std::string& name, bool active, const std::string& netns = "default");
    void vrfStatusDel(const std::string& name);
    void removeVrfs();

    // Kernel devices, by network namespace.
    void device(const std::string& netns, const std::string& intf, bool running = true);
    void deviceDel(const std::string& netns, const std::string& intf);

    // Addresses.
    Ip::IpIntfStatus& ipv4(const std::string& vrf, const std::string& intf);
    void address(const std::string& vrf, const std::string& intf, const std::string& address);
    void secondary(const std::string& vrf, const std::string& intf, const std::string& address,
                   bool inUse = true);
    void secondaryDel(const std::string& vrf, const std::string& intf, const std::string& address);
    void ipv4Del(const std::string& vrf, const std::string& intf);
    void ipv4Del(const std::string& vrf);
    Ip6::IntfStatus& ipv6(const std::string& vrf, const std::string& intf);
    void address6(const std::string& vrf, const std::string& intf, const std::string& address,
                  bool active = true);
    void address6Del(const std::string& vrf, const std::string& intf, const std::string& address);
    void ipv6Del(const std::string& vrf, const std::string& intf);
    void ipv6Del(const std::string& vrf);

    // Virtual addresses: IPv4 with a mask, IPv6 without.
    void virtualIp(const std::string& vrf, const std::string& address, const std::string& intf,
                   bool carried = true);
    void virtualIpDel(const std::string& vrf, const std::string& address, const std::string& intf);
    void virtualIpDel(const std::string& vrf, const std::string& address);
    void subnetRoutes(bool enabled) { virtualIpStatus->subnetRoutesIs(enabled); }

    // Leaks, by VRF id as the device publishes them.
    void leak(unsigned source, const std::string& prefix, unsigned dest);
    void leakDel(unsigned source, const std::string& prefix, unsigned dest);
    void leakDel(unsigned source);

    // Readiness.
    void ribWaits(const std::string& vrf, bool waits = true);
    Rib::ProtoVrfStatus* ribStatus(const std::string& vrf) const;

    // Time.
    /// What is due next happens at its time.
    void wakeUp();
    void run(double seconds);
    /// Until nothing is pending; a test that never comes to rest fails.
    void settle();

    // What came of it.
    std::vector<std::string> routes(const std::string& vrf) const;
    /// The VRF's container; it must have one.
    ContainerSm& container(const std::string& vrf) const;
    IntfBacklog& backlog(const std::string& vrf) const { return *container(vrf).intfBacklog(); }
    std::size_t vias() const;
    std::size_t viaSets() const { return viaSetConfig->viaSetCollection()->size(); }
    /// All that is still there of VRFs, one a line; empty when nothing is. Settles first.
    std::string leftovers();

    template <typename T>
    struct Input : Orb::Ptr<T> {
        Input() : Orb::Ptr<T>(Orb::makePtr<T>()) {}
    };

    Input<ManualClock> clock;
    Orb::ActivityManager activityManager{clock};
    const Orb::Ptr<Vaultdb::EntityManager> entityManager;
    OrbMemtab::Mount store{entityManager};
    Orb::Ptr<Kiln::TaskScheduler> scheduler = Orb::makePtr<Kiln::TaskScheduler>(clock);
    const Orb::Ptr<Rib::ViaSetConfig> viaSetConfig;
    Input<Ip::Status> ipStatus;
    Input<Ip6::Status> ip6Status;
    Input<VirtualIp::VirtualIpStatus> virtualIpStatus;
    Input<VirtualIp::VirtualIp6Status> virtualIp6Status;
    Input<Arp::VirtualIpAsReceiveRoute> virtualIpAsReceiveRoute;
    Input<Vrf::VrfIdMap::NameToIdMapWrapper> nameToIdMapWrapper;
    Input<Ip::AllVrfStatusLocal> allVrfStatusLocal;
    Input<Interface::AllIntfStatusDir> allIntfStatusDir;
    Input<Interface::AllIntfStatusLocalDir> allIntfStatusLocalDir;
    Input<Rib::AllVrfRibReady> allVrfRibReady;
    Input<Orb::Dir> protoStatusDir;
    Orb::Ptr<GrState> grState = Orb::makePtr<GrState>(GrState::Arguments{false});

  private:
    void runUntil(double end);
    template <typename T>
    Orb::Ptr<T> table(const Orb::String& path);
    template <typename T>
    Orb::Ptr<T> written(const Orb::String& path);
    RouteLeakedFromVrf* leaksFrom(unsigned source, const std::string& prefix);
    std::string text(const Rib::Route& route) const;
    /// The via set's part among those of its interface, looked for where such a route's belongs.
    std::string viaName(const Rib::Route& route, Lanx::IntfId intfId) const;
    static std::map<std::string, std::size_t> livingObjects();

    Orb::Ptr<RootSm> root_;
    std::map<std::string, std::size_t> livingAtStart_;
};

/// The routes of a VRF, both families, are these and no others when the agent has come to rest.
/// Prints what is missing and what there is besides.
testing::AssertionResult hasRoutes(LibraryHarness& harness, const std::string& vrf,
                                   const std::vector<RouteRow>& rows);

} // namespace Routing::DirectNet

#define EXPECT_ROUTES(harness, vrf, ...)                                                           \
    EXPECT_TRUE(::Routing::DirectNet::hasRoutes(harness, vrf, __VA_ARGS__))
