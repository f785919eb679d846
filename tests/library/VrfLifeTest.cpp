#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "platform/orb/value/Error.h"
#include "tests/support/LibraryHarness.h"
#include "tests/support/Outsider.h"

namespace Routing::DirectNet {
namespace {

using VrfId = ::Vrf::VrfIdMap::VrfId;

/// What an error of a misuse says.
template <typename Error>
std::string textOf(const std::function<void()>& misuse) {
    try {
        misuse();
    } catch (const Error& error) {
        return error.what();
    }
    return "nothing";
}

class VrfLifeTest : public testing::Test {
  protected:
    bool exists(const std::string& vrf) const {
        return harness.root().containerSm(L3::VrfName(vrf)) != nullptr;
    }
    void addRed() {
        harness.device("ns1", "Et1");
        harness.address("red", "Et1", "10.0.0.1/32");
        harness.vrf("red", 5, "ns1");
    }

    LibraryHarness harness;
    const std::vector<RouteRow> oneRoute{{"10.0.0.1/32", 2, "Et1"}};
};

TEST_F(VrfLifeTest, ContainersGoWithTheMapOfIds) {
    harness.vrfId("default", 0);
    harness.vrf("red", 5);
    harness.vrfStatus("default", false); // which needs no status
    EXPECT_TRUE(exists("red") && exists("default"));
    harness.nameToIdMapWrapper->nameToIdMapIs(nullptr);
    EXPECT_FALSE(exists("red") || exists("default"));
    EXPECT_EQ(harness.leftovers(), "");
}

// The outsider is told of a VRF's state before or after the library, and takes the VRF away.
TEST_F(VrfLifeTest, StatusThatGoesInTheMiddleOfItsOwnChangeMakesNoContainer) {
    harness.stop();
    for (const bool outsiderFirst : {true, false}) {
        LibraryHarness h(!outsiderFirst);
        h.vrfId("red", 5);
        h.vrfStatus("red", false);
        const Orb::Ptr<Ip::VrfStatusLocal> status(h.allVrfStatusLocal->vrf("red"));
        const auto outsider =
            Orb::makePtr<Outsider>(status, [&h](Orb::AttributeId) { h.vrfStatusDel("red"); });
        if (outsiderFirst) {
            h.start();
        }
        status->stateIs(Ip::VrfState::active);
        EXPECT_EQ(h.root().containerSm().size(), 0U);
    }
}

TEST_F(VrfLifeTest, HandlerThatThrowsDuringCreationLeavesAWholeVrf) {
    int thrown = 0;
    const auto outsider =
        Orb::makePtr<Outsider>(harness.root().ipv4AllVrfViaConfig(), [&](Orb::AttributeId) {
            if (++thrown == 1) {
                throw Orb::Error("outside");
            }
        });
    EXPECT_THROW(addRed(), Orb::Error);
    EXPECT_ROUTES(harness, "red", oneRoute);
    harness.vrf("blue", 6); // all others go on
    EXPECT_TRUE(exists("blue"));
}

// What an earlier run left in the store for an id is gone before the first new write, and never
// seen beside it.
TEST_F(VrfLifeTest, StaleRoutesAndViasOfTheIdAreGoneBeforeTheFirstNewOne) {
    addRed();
    harness.settle();
    Rib::Route stale(Rib::RouteKey(VrfId(5), Lanx::IpGenPrefix::fromString("10.9.0.0/16")),
                     Rib::ViaSetKey(77), Fib::RouteType::connected);
    Rib::Via via(Rib::ViaKey(1, 99, VrfId(5), 1));
    via.intfIdIs(Lanx::IntfId("Et9"));
    const auto routes = harness.root().ipv4AllVrfRouteConfig();
    harness.stop();
    routes->routeAdd(stale);
    harness.store.doMount("routing/rib/viaConfig/ipv4/connected", "Routing::Rib::Ip::ViaConfig",
                          OrbMemtab::MountInfo(OrbMemtab::MountInfo::Type::write));
    const auto vias =
        harness.store.getEntity<Rib::Ip::ViaConfig>("routing/rib/viaConfig/ipv4/connected");
    vias->viaIs(via);
    harness.viaSetConfig->viaSetCollection()->viaSetIs(
        Rib::Memtab::ViaSet(harness.viaSetConfig->newViaSetKey()));
    bool both = false;
    const auto outsider = Orb::makePtr<Outsider>(routes, [&](Orb::AttributeId) {
        both = both || (routes->size() > 1 && routes->route(stale.key()) == stale);
    });
    harness.start();
    harness.settle();
    EXPECT_FALSE(both);
    EXPECT_ROUTES(harness, "red", oneRoute);
    EXPECT_EQ(harness.vias(), 1U);
    EXPECT_EQ(harness.viaSets(), 4U);
    harness.store.doUnmount("routing/rib/viaConfig/ipv4/connected");
}

TEST_F(VrfLifeTest, StoppedRootReleasesItsTablesAndFollowsNothing) {
    addRed();
    harness.settle();
    EXPECT_TRUE(harness.virtualIpAsReceiveRoute->enabled());
    harness.stop();
    EXPECT_FALSE(harness.virtualIpAsReceiveRoute->enabled());
    for (const char* path :
         {"routing/rib/viaConfig/ipv4/connected", "routing/rib/viaConfig/ipv6/connected",
          "routing/rib/routeConfig/ipv4/connected", "routing/rib/routeConfig/ipv6/connected",
          "routing/directNetLeakStatus", "routing6/directNetLeakStatus", "kni/ns/ns1/status"}) {
        EXPECT_EQ(harness.entityManager->mounts(path), 0U) << path;
    }
    harness.vrf("blue", 6);
    harness.start();
    EXPECT_TRUE(exists("red") && exists("blue"));
}

// The conditions name errors with fixed texts, and the agent goes on with everything else.
TEST_F(VrfLifeTest, NameThatIsTooLongIsRefusedAndNothingElse) {
    addRed();
    EXPECT_EQ(textOf<Orb::RangeError>([&] { harness.vrf(std::string(101, 'x'), 9); }),
              "VrfName::bytes > VrfName::maxLength not allowed");
    EXPECT_EQ(
        textOf<Orb::RangeError>([&] { harness.vrfStatus("blue", true, std::string(151, 'x')); }),
        "NamespaceName::bytes > 150 not allowed");
    harness.vrf(std::string(100, 'x'), 9);
    EXPECT_ROUTES(harness, "red", oneRoute);
}

TEST_F(VrfLifeTest, MisuseIsRefusedByItsName) {
    addRed();
    IntfBacklogByVrf& backlogs = *harness.root().intfBacklogByVrf();
    EXPECT_EQ(textOf<Orb::NameInUseError>([&] { backlogs.intfBacklogIs("green", VrfId(5)); }),
              "Reinstantiating the pointer interface where constructor parameter attribute "
              "_vrfName has a different value of green than the current value of red not allowed");
    EXPECT_EQ(textOf<Orb::NullArgumentError>(
                  [&] { backlogs.intfBacklog(VrfId(5))->intfIdsByPrefixIs(nullptr); }),
              "null _intfIdsByPrefix parameter to mutator for "
              "Routing::DirectNet::IntfBacklog::intfIdsByPrefix not allowed\"");
    const auto table = harness.root().allVrfVirtualIp6Status()->vrfVirtualIpStatus("red");
    EXPECT_EQ(textOf<Orb::NullArgumentError>([&] { table->virtualIpIs(nullptr); }),
              "null _virtualIp parameter to mutator for "
              "Routing::DirectNet::Ipv6::VrfVirtualIpStatus::virtualIp not allowed\"");
}

TEST_F(VrfLifeTest, InputThatMayBeAbsentIsDoneWithoutAndAnyOtherIsRefused) {
    LibraryHarness host(false);
    host.device("default", "Et1");
    host.address("default", "Et1", "10.0.0.1/24");
    RootInputs inputs = host.inputs();
    inputs.scheduler = nullptr;
    inputs.ip6Status = nullptr;
    inputs.virtualIpStatus = nullptr;
    inputs.virtualIp6Status = nullptr;
    const auto root = RootSm::RootSmIs(inputs);
    host.vrfId("default", 0);
    host.settle();
    EXPECT_EQ(root->ipv4AllVrfRouteConfig()->size(), 4U);
    const VrfReadyStatus& flags = *root->allVrfReadyStatus()->vrfReadyStatus("default");
    EXPECT_TRUE(flags.v4DirectNetsReady() && flags.v6DirectNetsReady());
    root->handleDelete();
    inputs.grState = nullptr;
    EXPECT_THROW(RootSm::RootSmIs(inputs), Orb::NullArgumentError);
}

TEST_F(VrfLifeTest, EmptyVariableCountsAsSet) {
    constexpr const char* variable = "DIRECTNET_INTFENTRY_WITHOUT_KERNEL_INTF";
    harness.vrfId("default", 0);
    ::setenv(variable, "", 1);
    harness.vrf("red", 5, "ns1");
    ::unsetenv(variable); // read once per VRF
    harness.address("default", "Et1", "10.0.0.1/32");
    harness.address("red", "Et1", "10.0.0.1/32");
    EXPECT_ROUTES(harness, "default", {});
    EXPECT_ROUTES(harness, "red", oneRoute);
    harness.device("ns1", "Et1");
    harness.deviceDel("ns1", "Et1");
    EXPECT_ROUTES(harness, "red", oneRoute);
}

} // namespace
} // namespace Routing::DirectNet
