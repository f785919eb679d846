#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>

#include "platform/orb/value/Error.h"
#include "platform/routing/RouteConfig.h"
#include "tests/support/LibraryHarness.h"
#include "tests/support/SharedTables.h"

namespace Routing::DirectNet {
namespace {

using VrfId = ::Vrf::VrfIdMap::VrfId;

/// Tables in a file system of their own that is small, in a child process.
class FullSharedTest : public testing::Test {
  protected:
    template <typename Work>
    void inOwnFileSystem(const Work& work) const {
        constexpr int notPermitted = 77;
        Child child([&] {
            if ((::unshare(CLONE_NEWNS) != 0 && ::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
                || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0
                || ::mount("tmpfs", path(), "tmpfs", 0, "size=64m,mode=750") != 0) {
                ::_exit(notPermitted);
            }
            work();
        });
        const int status = child.result();
        if (WIFEXITED(status) && WEXITSTATUS(status) == notPermitted) {
            GTEST_SKIP() << "mounting is not permitted here";
        }
        EXPECT_EQ(status, 0);
    }

    /// Leaves so much space besides what is in use.
    void spareIs(std::size_t bytes) const {
        struct statvfs system {};
        ::statvfs(path(), &system);
        const std::size_t used = (system.f_blocks - system.f_bfree) * system.f_frsize;
        const std::string size = "size=" + std::to_string(used + bytes);
        ASSERT_EQ(::mount(nullptr, path(), nullptr, MS_REMOUNT, size.c_str()), 0) << size;
    }
    static constexpr std::size_t enough = 32U << 20;

    const char* path() const { return folder_.path().c_str(); }

    static Rib::Route route(VrfId vrf, const std::string& prefix) {
        return {Rib::RouteKey(vrf, Lanx::IpGenPrefix::fromString(prefix)), Rib::ViaSetKey(1),
                Fib::RouteType::connected};
    }
    /// A writer of the IPv4 routes alone.
    Orb::Ptr<Rib::RouteConfig> routes() const {
        auto config = Orb::makePtr<Rib::RouteConfig>();
        config->share(folder([](const std::string&) {}), Tables::Paths::ipv4Routes);
        return config;
    }
    template <typename Report>
    Orb::Ptr<Vaultdb::Folder> folder(Report report) const {
        return Orb::makePtr<Vaultdb::Folder>(Vaultdb::Folder::Options{path(), {}, report});
    }

    SharedFolder folder_;
    Orb::ActivityManager activityManager_{Orb::makePtr<ManualClock>()};
};

std::string host(int net, int n) {
    return "10." + std::to_string(net) + "." + std::to_string(n) + ".1/32";
}

std::string vrfName(int n) { return "vrf" + std::to_string(n); }

/// More VRFs, interfaces, routes and leaks than one page of each table has records for.
struct Crowd {
    static constexpr int vrfs = 40;
    static constexpr int interfaces = 60;
    static constexpr int secondaries = 3;
    static constexpr int leaks = 150;

    static std::string intf(int n) { return "Et" + std::to_string(n); }

    static void come(LibraryHarness& h) {
        h.vrfId("default", 0);
        h.device("default", intf(0));
        h.address6("default", intf(0), "2001:db8::1/128"); // two via sets; the others have four
        for (int n = 0; n < interfaces; ++n) {
            h.device("default", intf(n));
            h.address("default", intf(n), host(1, n));
            for (int more = 0; more < secondaries; ++more) {
                h.secondary("default", intf(n), host(2 + more, n));
            }
        }
        for (int n = 0; n < leaks; ++n) {
            h.leak(0, host(n % 2 + 1, n), 1);
        }
        for (int n = 1; n <= vrfs; ++n) {
            h.vrf(vrfName(n), static_cast<unsigned>(n));
            h.address(vrfName(n), intf(n), host(200, n));
        }
    }
    static void go(LibraryHarness& h) {
        h.removeVrfs();
        h.ipv4Del("default");
        h.ipv6Del("default");
        for (int n = 1; n <= vrfs; ++n) {
            h.ipv4Del(vrfName(n));
        }
        h.leakDel(0);
    }
    static void expectAll(LibraryHarness& h) {
        for (const char* vrf : {"default", "vrf40"}) {
            EXPECT_EQ(h.backlog(vrf).waitingForRoom(), 0U) << vrf;
            EXPECT_TRUE(h.backlog(vrf).backlog().empty()) << vrf;
        }
        EXPECT_EQ(h.routes("default").size(), 1 + interfaces * (1 + secondaries));
        EXPECT_EQ(h.routes("vrf40").size(), 1U);
        EXPECT_EQ(h.root().protoVrfTable()->size(), 1 + vrfs);
    }
};

TEST_F(FullSharedTest, WhatDoesNotFitComesByItselfWhenThereIsSpace) {
    inOwnFileSystem([this] {
        int reports = 0;
        LibraryHarness h(Orb::makePtr<Vaultdb::EntityManager>(
            folder([&reports](const std::string&) { ++reports; })));
        const auto& written = *h.root().ipv4AllVrfRouteConfig();
        Reader reader(folder_);
        spareIs(0);
        for (int round = 0; round < 2; ++round) { // tables that were emptied hold as much again
            Crowd::come(h);
            h.run(10);
            EXPECT_GT(h.backlog("default").waitingForRoom(), 0U);
            EXPECT_EQ(written.size(), 85U); // what one page holds
            EXPECT_EQ(reports, 1 + round);  // of the leaks
            reader.update();
            EXPECT_EQ(reader.routes(), 86U);
            if (round == 0) {
                Crowd::go(h);
                h.run(10);
                EXPECT_EQ(h.leftovers(), "");
            }
        }
        spareIs(enough);
        h.run(10);
        Crowd::expectAll(h);
        reader.update();
        EXPECT_EQ(reader.routes(), written.size() + h.root().ipv6AllVrfRouteConfig()->size());
        EXPECT_EQ(reader.leaks(), static_cast<std::size_t>(Crowd::leaks));
    });
}

// What looks like an earlier run's, since the table of VRFs does not say whose it is, is not.
TEST_F(FullSharedTest, VrfThatTheTableHasNoRoomForKeepsItsRoutes) {
    inOwnFileSystem([this] {
        routes()->routeAdd(route(VrfId(77), "10.9.9.0/24"));
        LibraryHarness h(folder_.store());
        spareIs(0);
        for (int n = 1; n <= Crowd::vrfs; ++n) {
            h.vrf(vrfName(n), static_cast<unsigned>(n));
        }
        h.device("default", "Et1");
        h.address(vrfName(Crowd::vrfs), "Et1", host(1, 1));
        h.run(10);
        EXPECT_LT(h.root().protoVrfTable()->size(), static_cast<std::size_t>(Crowd::vrfs));
        EXPECT_EQ(h.routes(vrfName(Crowd::vrfs)).size(), 1U);
        spareIs(enough);
        h.settle();
        EXPECT_EQ(h.routes(vrfName(Crowd::vrfs)).size(), 1U);
        EXPECT_EQ(h.root().ipv4AllVrfRouteConfig()->size(), 1U);
    });
}

TEST_F(FullSharedTest, TablesThatThereIsNoSpaceForAreRefusedAndMadeLater) {
    inOwnFileSystem([this] {
        spareIs(64U << 10);
        EXPECT_THROW(LibraryHarness(folder_.store()), Vaultdb::FolderError);
        // One that has to be made anew, since an IPv6 route cannot be in it.
        spareIs(enough);
        routes()->routeAdd(route(VrfId(5), "2001:db8::/64"));
        spareIs(0);
        EXPECT_THROW(routes(), Vaultdb::FolderError);
        spareIs(enough);
        EXPECT_EQ(routes()->size(), 0U);
        LibraryHarness h(folder_.store());
        h.vrf("default", 0);
        h.device("default", "Et1");
        h.address("default", "Et1", host(1, 1));
        EXPECT_ROUTES(h, "default", {{host(1, 1), 2, "Et1"}});
    });
}

} // namespace
} // namespace Routing::DirectNet
