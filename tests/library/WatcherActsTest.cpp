#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "platform/orb/value/Error.h"
#include "platform/routing/ProtoVrfStatus.h"
#include "tests/support/LibraryHarness.h"
#include "tests/support/Outsider.h"

namespace Routing::DirectNet {
namespace {

using VrfId = ::Vrf::VrfIdMap::VrfId;

/// Acts on the first change of the entity, in the middle of it.
Orb::Ptr<Outsider> once(const Orb::Ptr<Orb::Entity>& watched, const std::function<void()>& act) {
    auto acted = std::make_shared<bool>(false);
    return Orb::makePtr<Outsider>(watched, [acted, act](Orb::AttributeId) {
        if (!std::exchange(*acted, true)) {
            act();
        }
    });
}

void addRed(LibraryHarness& h) {
    h.device("ns1", "Et1");
    h.vrf("red", 5, "ns1");
    h.address("red", "Et1", "10.0.0.1/24");
}

TEST(RootWatchers, WatchersMayStopTheRootAndLetGoOfItInTheMiddleOfAnything) {
    enum class How { stopped, stoppedAndLetGo, letGo };
    for (const How how : {How::stopped, How::stoppedAndLetGo, How::letGo}) {
        for (int nth = 1, left = 0; left <= 0; ++nth) { // until nothing changes that often
            LibraryHarness h(false);
            auto root = RootSm::RootSmIs(h.inputs());
            const auto routes = root->ipv4AllVrfRouteConfig();
            const auto vias = root->ipv4AllVrfViaConfig();
            left = nth;
            const auto act = [&](Orb::AttributeId) {
                if (--left == 0 && how != How::letGo) {
                    root->handleDelete();
                }
                if (left == 0 && how != How::stopped) {
                    root = nullptr;
                }
            };
            std::vector<Orb::Ptr<Outsider>> outsiders;
            for (const Orb::Ptr<Orb::Entity>& watched : std::vector<Orb::Ptr<Orb::Entity>>{
                     routes, vias, h.viaSetConfig->viaSetCollection(), root->allVrfReadyStatus(),
                     root->intfBacklogByVrf(), root->allVrfVirtualIpStatus()}) {
                outsiders.push_back(Orb::makePtr<Outsider>(watched, act));
            }
            h.vrf("blue", 6);
            h.leak(5, "10.0.0.0/24", 6);
            addRed(h);
            h.virtualIp("red", "10.0.7.1/24", "Et1");
            h.device("ns1", "Et2");
            h.address("red", "Et2", "10.0.9.1/32");
            h.settle();
            h.secondary("red", "Et1", "10.0.9.1/32"); // and there the route moves
            h.address("red", "Et2", "0.0.0.0/0");
            h.settle();
            h.vrfIdDel("red");
            h.vrfIdDel("blue");
            h.virtualIpDel("red", "10.0.7.1/24");
            h.settle();
            if (root != nullptr && how == How::letGo) {
                root->handleDelete();
            }
            root = nullptr;
            EXPECT_EQ(routes->size() + vias->size() + h.viaSets(), 0U) << nth;
            EXPECT_EQ(h.entityManager->mounts("routing/rib/routeConfig/ipv4/connected"), 0U);
        }
    }
}

TEST(RootStart, RefusedStartLeavesNothingBehind) {
    LibraryHarness h(false);
    h.vrf("red", 5);
    h.vrf("blue", 5);
    EXPECT_THROW(RootSm::RootSmIs(h.inputs()), Orb::NameInUseError);
    EXPECT_FALSE(h.virtualIpAsReceiveRoute->enabled());
    for (const char* path :
         {"routing/rib/viaConfig/ipv4/connected", "routing/rib/routeConfig/ipv6/connected",
          "routing/directNetLeakStatus", "kni/ns/default/status"}) {
        EXPECT_EQ(h.entityManager->mounts(path), 0U) << path;
    }
    h.vrfIdDel("blue");
    h.start();
    EXPECT_EQ(h.root().containerSm().size(), 1U);
}

// The others, and what is leaked from and to them, go on.
TEST(RefusedVrf, RefusedVrfTakesNothingOfOthersAlong) {
    LibraryHarness h;
    addRed(h);
    h.vrf("blue", 6);
    h.leak(5, "10.0.0.0/24", 6);
    const std::vector<RouteRow> leaked{{"10.0.0.1/32", 1, "Et1", {}, "5"}};
    EXPECT_ROUTES(h, "blue", leaked);
    h.vrfStatus("green", true);
    EXPECT_THROW(h.vrfId("green", 5), Orb::NameInUseError);
    h.vrfIdDel("green");
    h.leakDel(5, "10.0.0.0/24", 6);
    EXPECT_ROUTES(h, "blue", {});
    h.leak(5, "10.0.0.0/24", 6);
    EXPECT_ROUTES(h, "blue", leaked);

    // Something else stands where a namespace's devices should.
    h.entityManager->findOrCreate("kni/ns/ns2/status", "Routing::Rib::RouteConfig");
    h.vrfStatus("green", true, "ns2");
    EXPECT_THROW(h.vrfId("green", 7), Orb::NameInUseError);
    EXPECT_EQ(h.root().containerSm(L3::VrfName("green")), nullptr);
    EXPECT_EQ(h.root().allVrfReadyStatus()->vrfReadyStatus(L3::VrfName("green")), nullptr);
    EXPECT_ROUTES(h, "blue", leaked);
}

TEST(RefusedVrf, NamespaceIsReadByItsWholeName) {
    LibraryHarness h;
    h.device("ns1", "Et1");
    h.address("red", "Et1", "10.0.0.1/32");
    h.vrf("red", 5, std::string("ns1\0x", 5));
    EXPECT_ROUTES(h, "red", {});
}

TEST(BacklogWatchers, WatchersMayWithdrawWhatIsBeingWritten) {
    LibraryHarness h;
    addRed(h);
    const auto address = Lanx::IpGenAddrWithMask::fromString("10.0.0.1/24");
    const Orb::Ptr<IntfBacklog> backlog(&h.backlog("red"));
    const auto outsider = once(h.root().ipv4AllVrfRouteConfig(), [&] {
        const auto& routes = *h.root().ipv4AllVrfRouteConfig()->routes(VrfId(5));
        const Lanx::IpGenPrefix prefix = routes.first()->key().prefix();
        for (const auto type :
             {Fib::RouteType::connected, Fib::RouteType::receive, Fib::RouteType::receiveBroadcast,
              Fib::RouteType::dropDirectedBroadcast}) {
            backlog->delFromIntfIdsByPrefix(Lanx::IntfId("Et1"), prefix, address, type,
                                            VrfId::invalid(), false);
        }
    });
    h.settle();
    EXPECT_EQ(h.routes("red").size(), 3U);
}

TEST(BacklogWatchers, WatchersMayQueueBeforeTheBacklogHasItsMachine) {
    LibraryHarness h;
    const auto backlogs = h.root().intfBacklogByVrf();
    const auto outsider = once(backlogs, [&] {
        backlogs->intfBacklog(VrfId(5))->doAddBacklog(Lanx::IntfId("Et1"),
                                                      Lanx::IpGenPrefix::fromString("10.0.0.0/24"));
    });
    h.vrf("red", 5);
    h.settle();
    EXPECT_TRUE(h.backlog("red").backlog().empty());
}

TEST(TableWatchers, WatchersAreToldOfEveryRouteAndViaThatGoesWithItsVrf) {
    LibraryHarness h;
    addRed(h);
    h.address6("red", "Et1", "2001:db8::1/64");
    h.settle();
    int told = 0;
    std::vector<Orb::Ptr<Outsider>> outsiders;
    for (const Orb::Ptr<Orb::Entity>& table : std::vector<Orb::Ptr<Orb::Entity>>{
             h.root().ipv4AllVrfRouteConfig(), h.root().ipv6AllVrfRouteConfig(),
             h.root().ipv4AllVrfViaConfig(), h.root().ipv6AllVrfViaConfig()}) {
        outsiders.push_back(Orb::makePtr<Outsider>(table, [&told](Orb::AttributeId) { ++told; }));
    }
    h.vrfIdDel("red");
    EXPECT_EQ(told, 4 + 2 + 1 + 1);
}

TEST(Names, NamesInUseByAnotherTypeAreRefused) {
    const auto directory = Orb::makePtr<Orb::Dir>();
    const auto record = directory->createEntity<Rib::ProtoVrfStatus>(Orb::Name("red"));
    EXPECT_EQ(directory->createEntity<Rib::ProtoVrfStatus>(Orb::Name("red")), record);
    EXPECT_THROW(directory->createEntity("Routing::Rib::RouteConfig", Orb::Name("red")),
                 Orb::NameInUseError);
    EXPECT_EQ(directory->entity(Orb::Name("red")), record.get());
    const auto store = Orb::makePtr<Vaultdb::EntityManager>();
    const auto table = store->findOrCreate("a/b", "Routing::Rib::RouteConfig");
    EXPECT_EQ(store->findOrCreate("a/b", "Routing::Rib::RouteConfig"), table);
    EXPECT_THROW(store->findOrCreate("a/b", "Routing::Rib::Ip::ViaConfig"), Orb::NameInUseError);
}

TEST(InterfaceWatchers, StatusThatGoesAndComesBackInTheMiddleIsFollowed) {
    LibraryHarness h;
    h.vrfId("default", 0);
    for (const char* intf : {"Et1", "Et2"}) {
        h.device("default", intf);
    }
    h.address("default", "Et2", "10.0.2.1/32");
    h.address6("default", "Et2", "2001:db8::2/128");
    h.settle();
    const auto outsider = once(h.root().ipv4AllVrfViaConfig(), [&h] {
        h.ipv4Del("default", "Et2");
        h.ipv6Del("default", "Et2");
        h.address("default", "Et2", "10.0.3.1/32");
        h.address6("default", "Et2", "2001:db8::3/128");
    });
    h.address("default", "Et1", "10.0.1.1/32");
    h.secondary("default", "Et2", "10.0.4.1/32");
    EXPECT_ROUTES(h, "default",
                  {{"10.0.1.1/32", 2, "Et1"},
                   {"10.0.3.1/32", 2, "Et2"},
                   {"10.0.4.1/32", 2, "Et2"},
                   {"2001:db8::3/128", 2, "Et2"}});
}

// The second interface to go was told to the machine with another address than it has by then.
TEST(InterfaceWatchers, AddressThatIsReplacedWhileTheInterfaceGoesIsWithdrawn) {
    LibraryHarness h;
    addRed(h);
    h.device("ns1", "Et2");
    h.address("red", "Et2", "10.0.2.1/24");
    const Orb::Ptr<Ip::IpIntfStatus> et1(&h.ipv4("red", "Et1"));
    const Orb::Ptr<Ip::IpIntfStatus> et2(&h.ipv4("red", "Et2"));
    const auto outsider = once(h.root().ipv4AllVrfViaConfig(), [&] {
        for (const auto& intf : {et1, et2}) {
            intf->activeAddrWithMaskIs(Lanx::IpAddrWithMask::fromString("10.0.3.1/24"));
        }
    });
    h.ipv4Del("red");
    EXPECT_ROUTES(h, "red", {});
    EXPECT_EQ(h.viaSets(), 0U);
}

TEST(DirectedBroadcast, BroadcastOfWhatIsNotAddedKeepsItsViaSets) {
    LibraryHarness h;
    h.vrfId("default", 0);
    for (const char* intf : {"Et0", "Et1"}) {
        h.device("default", intf);
    }
    h.secondary("default", "Et1", "10.0.0.1/24", false);
    h.ipv4("default", "Et1").directedBroadcastIs(true);
    h.settle();
    h.address("default", "Et0", "10.0.0.2/24");
    h.settle();
    h.ipv4Del("default", "Et0");
    EXPECT_ROUTES(h, "default",
                  {{"10.0.0.0/32", 3, "Et1"}, {"10.0.0.255/32", 3, "Et1", "directed-broadcast"}});
    h.secondaryDel("default", "Et1", "10.0.0.1/24");
    EXPECT_ROUTES(h, "default", {});
    EXPECT_EQ(h.viaSets(), 0U);
}

TEST(DirectedBroadcast, AddressThatGoesTakesItsBroadcastAlong) {
    LibraryHarness h;
    addRed(h);
    h.ipv4("red", "Et1").directedBroadcastIs(true);
    h.settle();
    h.address("red", "Et1", "0.0.0.0/0");
    EXPECT_ROUTES(h, "red", {});
    EXPECT_EQ(h.viaSets(), 0U);
}

TEST(RibRecords, RecordsOfNamesThatNobodyWaitsForGoAtStart) {
    LibraryHarness h(false);
    const auto record = [&](const std::string& name) {
        h.protoStatusDir->createEntity<Rib::ProtoVrfStatus>(Orb::Name(name));
    };
    record(std::string(101, 'x')); // no VRF's
    record("green");
    record("red");
    h.ribWaits("red");
    h.start();
    EXPECT_EQ(h.protoStatusDir->entity().size(), 1U);
    EXPECT_NE(h.ribStatus("red"), nullptr);
}

TEST(VirtualIpHelper, HelperWithoutAMapOfIdsTakesEveryVrfForGone) {
    const auto directory = Orb::makePtr<Ipv4::AllVrfVirtualIpStatus>();
    const auto helper =
        Orb::makePtr<Ipv4::VrfVirtualIpStatusHelper>(Ipv4::VrfVirtualIpStatusHelper::Arguments{
            directory, Orb::makePtr<Ip::AllVrfStatusLocal>(), nullptr});
    const auto status = Orb::makePtr<VirtualIp::VirtualIpStatus>();
    const auto sm =
        Orb::makePtr<Ipv4::VirtualIpStatusSm>(Ipv4::VirtualIpStatusSm::Arguments{status, helper});
    const VirtualIp::VrfIpWithMaskPair key(L3::VrfName("red"),
                                           Lanx::IpAddrWithMask::fromString("10.0.0.1/24"));
    status->virtualIpIntfStatusIs(key);
    EXPECT_EQ(directory->vrfVirtualIpStatus().size(), 1U);
    status->virtualIpIntfStatusDel(key);
    EXPECT_EQ(directory->vrfVirtualIpStatus().size(), 0U);
}

TEST(VirtualIpHelper, WatcherOfTheTablesMayWithdrawTheAddress) {
    LibraryHarness h;
    const auto outsider =
        once(h.root().allVrfVirtualIpStatus(), [&] { h.virtualIpDel("red", "10.0.0.1/24"); });
    h.virtualIpStatus->virtualIpIntfStatusIs(VirtualIp::VrfIpWithMaskPair(
        L3::VrfName("red"), Lanx::IpAddrWithMask::fromString("10.0.0.1/24")));
    EXPECT_EQ(h.root().allVrfVirtualIpStatus()->vrfVirtualIpStatus().size(), 0U);
}

TEST(VirtualIpHelper, DirectoryThatIsReleasedEmptiesItself) {
    LibraryHarness h;
    h.virtualIp("red", "10.0.0.1/24", "Vlan10");
    const auto directory = h.root().allVrfVirtualIpStatus();
    int told = 0;
    auto outsider = Orb::makePtr<Outsider>(directory, [&](Orb::AttributeId) { ++told; });
    h.virtualIpDel("red", "10.0.0.1/24");
    h.virtualIp("red", "10.0.0.1/24", "Vlan10");
    told = 0;
    directory->orbDoZombieReactors(true);
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(directory->vrfVirtualIpStatus().empty());
}

// Asking twice counts nothing twice and makes nothing anew.
TEST(HandleInitialized, SecondCallDoesNothing) {
    LibraryHarness h;
    addRed(h);
    h.virtualIp("red", "10.0.7.1/24", "Vlan10");
    h.address6("red", "Et1", "2001:db8::1/64");
    h.vrf("blue", 6);
    h.leak(5, "10.0.0.0/24", 6);
    h.ribWaits("red");
    h.settle();
    const auto routes = h.routes("red");
    const ContainerSm& red = h.container("red");
    const Lanx::IntfId et1("Et1");
    const auto count = [&](Lanx::AddressFamily af) {
        return red.intfBacklog()->intfViaSetKeyStatusFromAf(af)->vskRefcountByIntfId(et1);
    };
    const auto counts =
        std::pair(count(Lanx::AddressFamily::ipv4), count(Lanx::AddressFamily::ipv6));
    const auto* sm = red.vrfIpIntfStatusSm()->ipIntfStatusSm()->ipIntfSm(et1);
    h.root().handleInitialized();
    h.root().allVrfRibReadySm()->handleInitialized();
    h.root().virtualIpStatusSm()->handleInitialized();
    h.root().virtualIp6StatusSm()->handleInitialized();
    h.root().ipv4CrLeakSm()->handleInitialized();
    h.root().receiveRouteLeakSm()->handleInitialized();
    h.container("red").handleInitialized();
    red.kernelIntfStatus()->handleInitialized();
    red.intfBacklog()->handleInitialized();
    red.intfBacklogSm()->handleInitialized();
    red.vrfIpIntfStatusSm()->handleInitialized();
    red.vrfIp6IntfStatusSm()->handleInitialized();
    red.vrfIpIntfStatusSm()->ipIntfStatusSm()->handleInitialized();
    red.vrfIpIntfStatusSm()->ipIntfStatusSm()->ipIntfSm(et1)->handleInitialized();
    red.vrfIp6IntfStatusSm()->ip6IntfStatusSm()->ip6IntfSm(et1)->handleInitialized();
    red.vrfVirtualIpStatusSm()->handleInitialized();
    red.vrfVirtualIp6StatusSm()->handleInitialized();
    EXPECT_EQ(h.clock->nextWakeup(), Orb::Clock::never); // not even a drain is asked for
    EXPECT_EQ(h.routes("red"), routes);
    EXPECT_EQ(counts,
              std::pair(count(Lanx::AddressFamily::ipv4), count(Lanx::AddressFamily::ipv6)));
    EXPECT_EQ(red.vrfIpIntfStatusSm()->ipIntfStatusSm()->ipIntfSm(et1), sm);
}

TEST(VirtualIpMachine, MachineIsNotReplacedByOneOfAnotherTable) {
    LibraryHarness h;
    addRed(h);
    ContainerSm& red = h.container("red");
    const auto other = Orb::makePtr<Ipv4::VrfVirtualIpStatus>(
        Ipv4::VrfVirtualIpStatus::Arguments{L3::VrfName("red")});
    try {
        red.vrfVirtualIpStatusSmIs(other, red.intfViaSetConfig(), red.intfBacklog());
        ADD_FAILURE() << "another table was accepted";
    } catch (const Orb::NameInUseError& error) {
        EXPECT_TRUE(std::string(error.what())
                        .starts_with("Reinstantiating the pointer interface where constructor "
                                     "parameter attribute _vrfVirtualIpStatus has a different "
                                     "value of "))
            << error.what();
    }
}

} // namespace
} // namespace Routing::DirectNet
