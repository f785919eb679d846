#include <gmock/gmock.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <arpa/inet.h>

#include "directnet/tables.hpp"
#include "tables/layout/TablePaths.h"
#include "tests/tables/TableWriter.h"

namespace TablesTest {
namespace {

namespace Paths = Tables::Paths;
using testing::ElementsAre;
using testing::HasSubstr;

/// All tables of a folder, with what a device with one interface in one VRF has.
struct Writers {
    explicit Writers(const std::string& folder)
        : bell(folder), vrfs(folder, Paths::vrfs), viaSets(folder, Paths::viaSets),
          vias4(folder, Paths::ipv4Vias), vias6(folder, Paths::ipv6Vias),
          routes4(folder, Paths::ipv4Routes), routes6(folder, Paths::ipv6Routes),
          leaks4(folder, Paths::ipv4Leaks), leaks6(folder, Paths::ipv6Leaks) {}

    void addVrf(std::uint32_t slot, std::uint32_t id, const std::string& name) {
        Tables::VrfRecord vrf{};
        vrf.vrfId = id;
        vrf.ipv4Ready = 1;
        vrf.nameLength = static_cast<std::uint8_t>(name.size());
        std::memcpy(vrf.name, name.data(), name.size());
        vrfs.put(slot, vrf);
    }

    /// A via, one via set of each kind, keys from `id` on.
    void addInterface(std::uint32_t slot, std::uint64_t id, const std::string& name) {
        Tables::ViaRecord via{};
        via.viaId = id;
        via.nameLength = static_cast<std::uint8_t>(name.size());
        std::memcpy(via.name, name.data(), name.size());
        vias4.put(slot, via);
        for (std::uint8_t kind = 1; kind <= 4; ++kind) {
            Tables::ViaSetRecord set{};
            set.key = id + kind - 1;
            set.viaId = id;
            set.kind = static_cast<Tables::ViaKind>(kind);
            set.familyCode = 2;
            viaSets.put(slot * 4 + kind - 1, set);
        }
    }

    void addRoute(std::uint32_t slot, const char* prefix, std::uint64_t viaSet,
                  std::uint32_t vrfId = 0) {
        const auto parsed = directnet::prefixFrom(prefix).value();
        Tables::RouteRecord route{};
        route.vrfId = vrfId;
        route.sourceVrfId = Tables::noVrf;
        route.viaSet = viaSet;
        route.type = 11;
        route.family = parsed.family;
        route.length = parsed.length;
        std::memcpy(route.prefix.address, parsed.address, sizeof parsed.address);
        (parsed.family == Tables::ipv4 ? routes4 : routes6).put(slot, route);
    }

    Bell bell;
    TableWriter<Tables::VrfRecord> vrfs;
    TableWriter<Tables::ViaSetRecord> viaSets;
    TableWriter<Tables::ViaRecord> vias4;
    TableWriter<Tables::ViaRecord> vias6;
    TableWriter<Tables::RouteRecord> routes4;
    TableWriter<Tables::RouteRecord> routes6;
    TableWriter<Tables::LeakRecord> leaks4;
    TableWriter<Tables::LeakRecord> leaks6;
};

/// Each change as a line: +, - or * for changed, and what it is.
std::vector<std::string> changesOf(directnet::Tables& tables) {
    std::vector<std::string> lines;
    tables.update([&](const directnet_change& change) {
        const directnet_record& record = change.after != nullptr ? *change.after : *change.before;
        std::string line = change.before == nullptr ? "+" : change.after == nullptr ? "-" : "*";
        switch (change.kind) {
        case DIRECTNET_ROUTE: {
            const auto hop = tables.resolve(record.route);
            line += directnet::toString(record.route.prefix) + " on "
                    + (hop ? hop->interface_name : "nothing") + " in "
                    + tables.vrf(record.route.vrf_id).value().name;
            break;
        }
        case DIRECTNET_VIA:
            line += record.via.interface_name;
            break;
        case DIRECTNET_VIA_SET:
            line += std::to_string(record.via_set.key);
            break;
        case DIRECTNET_VRF:
            line += record.vrf.name;
            break;
        case DIRECTNET_LEAK:
            line += directnet::toString(record.leak.prefix);
        }
        lines.push_back(line);
    });
    return lines;
}

TEST(TablesApiTest, ARouteCanBeResolvedWhenItComesAndWhenItGoes) {
    const TemporaryFolder folder;
    Writers writers(folder.path());
    directnet::Tables tables(folder.path());
    EXPECT_THAT(changesOf(tables), ElementsAre());

    writers.addVrf(0, 0, "default");
    writers.addInterface(0, 7, "et1");
    writers.addRoute(0, "10.1.1.0/24", 7);
    EXPECT_THAT(changesOf(tables), ElementsAre("+default", "+et1", "+7", "+8", "+9", "+10",
                                               "+10.1.1.0/24 on et1 in default"));

    writers.routes4.clear(0);
    for (std::uint32_t slot = 0; slot < 4; ++slot) {
        writers.viaSets.clear(slot);
    }
    writers.vias4.clear(0);
    writers.vrfs.clear(0);
    EXPECT_THAT(changesOf(tables), ElementsAre("-10.1.1.0/24 on et1 in default", "-7", "-8", "-9",
                                               "-10", "-et1", "-default"));

    writers.addVrf(0, 0, "default");
    EXPECT_THAT(changesOf(tables), ElementsAre("+default"));
    writers.vrfs.clear(0);
    writers.addVrf(1, 0, "renamed");
    EXPECT_THAT(changesOf(tables), ElementsAre("*renamed"));
}

TEST(TablesApiTest, TheViewAnswersWhatTheTablesHold) {
    const TemporaryFolder folder;
    Writers writers(folder.path());
    writers.addVrf(0, 0, "default");
    writers.addVrf(1, 5, "red");
    writers.addInterface(0, 7, "et1");
    writers.addInterface(1, 20, "et2");
    writers.addRoute(0, "10.0.0.0/8", 7);
    writers.addRoute(1, "10.1.1.0/24", 20);
    writers.addRoute(2, "10.1.1.255/32", 23);
    writers.addRoute(3, "10.1.2.0/24", 99);
    writers.addRoute(4, "10.1.1.0/24", 8, 5);
    writers.addRoute(0, "2001:db8::/64", 0);
    Tables::LeakRecord leak{};
    leak.sourceVrfId = 5;
    leak.family = Tables::ipv6;
    writers.leaks6.put(0, leak);
    directnet::Tables tables(folder.path());
    tables.update();

    const auto match = [&](std::uint32_t vrfId, const char* address) -> std::string {
        const int family = std::strchr(address, ':') == nullptr ? DIRECTNET_IPV4 : DIRECTNET_IPV6;
        unsigned char bytes[16];
        ::inet_pton(family, address, bytes);
        const auto route = tables.match(vrfId, family, bytes);
        const auto hop = route ? tables.resolve(*route) : std::nullopt;
        return !route ? "none"
                      : directnet::toString(route->prefix)
                            + (hop ? std::string(" ") + hop->interface_name + " "
                                         + directnet_tables_via_kind_name(hop->kind)
                                   : "");
    };
    EXPECT_EQ(match(0, "10.1.1.5"), "10.1.1.0/24 et2 connected");
    EXPECT_EQ(match(0, "10.1.1.255"), "10.1.1.255/32 et2 directed-broadcast");
    EXPECT_EQ(match(0, "10.1.2.1"), "10.1.2.0/24");
    EXPECT_EQ(match(0, "10.200.0.1"), "10.0.0.0/8 et1 connected");
    EXPECT_EQ(match(0, "11.0.0.1"), "none");
    EXPECT_EQ(match(5, "10.1.1.5"), "10.1.1.0/24 et1 receive");
    EXPECT_EQ(match(5, "10.1.2.5"), "none");
    EXPECT_EQ(match(0, "2001:db8::5"), "2001:db8::/64");
    EXPECT_EQ(match(0, "2001:db8:0:1::5"), "none");

    EXPECT_EQ(tables.find(5, directnet::prefixFrom("10.1.1.0/24").value())->via_set, 8U);
    EXPECT_FALSE(tables.find(0, directnet::prefixFrom("10.1.1.0/25").value()));
    EXPECT_EQ(tables.vrfs().size(), 2U);
    EXPECT_EQ(tables.vrf("red")->id, 5U);
    EXPECT_FALSE(tables.vrf("re"));
    EXPECT_STREQ(tables.vrf(5)->name, "red");

    const directnet_sizes sizes = tables.sizes();
    EXPECT_EQ(std::tuple(sizes.ipv4_routes, sizes.ipv6_routes, sizes.ipv4_vias, sizes.ipv6_vias,
                         sizes.ipv4_via_sets, sizes.ipv6_via_sets, sizes.vrfs, sizes.leaks),
              std::tuple(5, 1, 2, 0, 8, 0, 2, 1));
    int seen = 0;
    tables.eachRoute([&](const directnet_route&) { ++seen; }, 0, DIRECTNET_IPV4);
    tables.eachVia([&](const directnet_via&) { return ++seen < 0; });
    tables.eachViaSet([&](const directnet_via_set&) { ++seen; }, 0);
    tables.eachLeak([&](const directnet_leak&) { ++seen; }, 5, DIRECTNET_IPV6);
    EXPECT_EQ(seen, 4 + 1 + 8 + 1);
}

TEST(TablesApiTest, WhetherTheWriterLivesAndSinceWhenNotIsTold) {
    const TemporaryFolder folder;
    directnet::Tables tables(folder.path());
    tables.update();
    EXPECT_EQ(tables.writer().present, 0);
    {
        TableWriter<Tables::RouteRecord> writer(folder.path(), Paths::ipv4Routes);
        writer.header().heardOfAt = 2000;
        tables.update();
        EXPECT_EQ(tables.writer().present, 1);
        EXPECT_EQ(tables.writer().lives, 1);
        EXPECT_EQ(tables.writer().pid, static_cast<std::uint32_t>(::getpid()));
        EXPECT_EQ(tables.writer().absent_since, 0U);
        EXPECT_EQ(tables.writer(DIRECTNET_LEAK).present, 0);
    }
    EXPECT_EQ(tables.writer().lives, 0);
    EXPECT_EQ(tables.writer().absent_since, 2000U);
    TableWriter<Tables::RouteRecord>(folder.path(), Paths::ipv4Routes).header().closedAt = 3000;
    EXPECT_EQ(tables.writer().lives, 0);
    EXPECT_EQ(tables.writer().epoch, 2U);
    EXPECT_EQ(tables.writer().absent_since, 3000U);
}

/// What an update says of a folder in which one table has been spoilt, and whether it has brought
/// the others to the present.
class RefusalTest : public testing::Test {
  protected:
    RefusalTest() { writers_.addRoute(0, "10.1.1.0/24", 7); }

    std::string file() const { return tableFile(folder_.path(), Paths::viaSets); }

    std::string refusal() {
        directnet::Tables tables(folder_.path());
        try {
            tables.update();
        } catch (const directnet::TablesError& error) {
            EXPECT_EQ(tables.sizes().ipv4_routes, 1U);
            EXPECT_THAT(error.what(), HasSubstr(file()));
            return error.what();
        }
        return "none";
    }

    Tables::TableHeader& header() { return writers_.viaSets.header(); }

    TemporaryFolder folder_;
    Writers writers_{folder_.path()};
};

TEST_F(RefusalTest, AFileThatIsNoTableIsRefusedWithItsNameAndTheCause) {
    EXPECT_EQ(refusal(), "none");
    header().layoutVersion = 7;
    EXPECT_THAT(refusal(), HasSubstr("has layout 7"));
    header().layoutVersion = Tables::layoutVersion;
    header().slotBytes ^= 1;
    EXPECT_THAT(refusal(), HasSubstr("does not add up"));
    writers_.viaSets.sign();
    EXPECT_THAT(refusal(), HasSubstr("other records"));
    header().slotBytes ^= 1;
    header().ringEntries = 12;
    writers_.viaSets.sign();
    EXPECT_THAT(refusal(), HasSubstr("ring"));
    header().ringEntries = 8;
    header().path[0] = 'x';
    writers_.viaSets.sign();
    EXPECT_THAT(refusal(), HasSubstr("another path"));
    header().path[0] = 'r';
    writers_.viaSets.sign();
    EXPECT_EQ(refusal(), "none");
    header().used = 5;
    EXPECT_THAT(refusal(), HasSubstr("cut short"));
    header().used = 0;
    header().changes = 1;
    writers_.viaSets.slot(0).word = Tables::Slot::replacing | Tables::Slot::present;
    header().used = 1;
    header().replacedSlot = 3;
    EXPECT_THAT(refusal(), HasSubstr("damaged"));
    header().magic = 1;
    EXPECT_THAT(refusal(), HasSubstr("is no table"));
    // One that is being made is not there yet.
    header().magic = 0;
    header().epoch = 0;
    EXPECT_EQ(refusal(), "none");
}

TEST_F(RefusalTest, WhatIsNoFileOfTheFoldersOwnerIsRefused) {
    std::filesystem::rename(file(), file() + ".away");
    EXPECT_EQ(refusal(), "none");
    std::filesystem::create_symlink(file() + ".away", file());
    EXPECT_THAT(refusal(), HasSubstr("is a symbolic link"));
    std::filesystem::remove(file());
    ASSERT_EQ(::mkfifo(file().c_str(), 0640), 0);
    EXPECT_THAT(refusal(), HasSubstr("is no regular file"));
    std::filesystem::remove(file());
    std::filesystem::create_directory(file());
    EXPECT_THAT(refusal(), HasSubstr("is no regular file"));
    std::filesystem::remove(file());
    std::ofstream(file()) << "short";
    EXPECT_THAT(refusal(), HasSubstr("is cut short"));
    std::filesystem::remove(file());
    std::ofstream(file()) << std::string(8192, 'x');
    EXPECT_THAT(refusal(), HasSubstr("is no table"));
    if (::getuid() == 0) {
        std::filesystem::rename(file() + ".away", file());
        ASSERT_EQ(::chown(file().c_str(), 1, 1), 0);
        EXPECT_THAT(refusal(), HasSubstr("belongs to another user"));
    }
}

TEST(TablesApiTest, AFolderThatIsNotThereIsAnErrorUnlessItIsWaitedFor) {
    const TemporaryFolder parent;
    const std::string folder = parent.path() + "/tables";
    const auto refusal = [&](unsigned flags) -> std::string {
        try {
            directnet::Tables tables(folder, flags);
        } catch (const directnet::TablesError& error) {
            return error.what();
        }
        return "none";
    };
    EXPECT_THAT(refusal(0), HasSubstr(folder + ": No such file"));
    EXPECT_EQ(refusal(DIRECTNET_TABLES_WAIT), "none");
    std::filesystem::create_symlink(parent.path(), folder);
    EXPECT_THAT(refusal(DIRECTNET_TABLES_WAIT), HasSubstr("is a symbolic link"));
    std::filesystem::remove(folder);
    std::ofstream(folder) << "a file";
    EXPECT_THAT(refusal(DIRECTNET_TABLES_WAIT), HasSubstr("Not a directory"));
}

/// Updates until the view has so many IPv4 routes; false if that takes half a minute.
bool waitForRoutes(directnet::Tables& tables, std::size_t count) {
    for (int n = 0; n < 60; ++n) {
        tables.update();
        if (tables.sizes().ipv4_routes == count) {
            return true;
        }
        tables.wait(std::chrono::milliseconds(500));
    }
    return false;
}

TEST(WakeUpTest, AReaderIsWokenByTheBellByWhatIsMadeAndByWhatIsMadeAnew) {
    const TemporaryFolder parent;
    const std::string folder = parent.path() + "/tables";
    directnet::Tables tables(folder, DIRECTNET_TABLES_WAIT);
    for (std::size_t life = 1; life <= 3; ++life) {
        std::filesystem::create_directory(folder);
        Writers writers(folder);
        writers.addRoute(0, "10.1.1.0/24", 7);
        writers.bell.ring();
        if (life == 2) {
            writers.addRoute(1, "10.1.2.0/24", 7);
        }
        ASSERT_TRUE(waitForRoutes(tables, life == 2 ? 2 : 1)) << life;
        tables.update();

        // The timer comes every three seconds now, so it cannot be what wakes each time.
        directnet::Tables second(folder);
        second.update();
        int wokenForNothing = 0;
        for (int n = 0; n < 6; ++n) {
            wokenForNothing += tables.wait(std::chrono::milliseconds(0)) ? 1 : 0;
            writers.bell.ring();
            ASSERT_TRUE(tables.wait(std::chrono::milliseconds(400)));
            ASSERT_TRUE(second.wait(std::chrono::milliseconds(400)));
            ASSERT_EQ(tables.update(), 0);
            second.update();
        }
        EXPECT_LE(wokenForNothing, 1);
        std::filesystem::remove_all(folder);
    }
}

TEST(TablesApiTest, PrefixesAreReadAndWrittenAsText) {
    for (const char* text : {"0.0.0.0/0", "10.1.1.0/24", "10.1.1.5/32", "::/0", "2001:db8::/64",
                             "ffff:ffff:ffff:ffff:ffff:ffff:ffff:fff0/124"}) {
        const auto prefix = directnet::prefixFrom(text);
        ASSERT_TRUE(prefix) << text;
        EXPECT_EQ(directnet::toString(*prefix), text);
    }
    EXPECT_EQ(directnet::toString(directnet::prefixFrom("10.1.1.5").value()), "10.1.1.5/32");
    for (const char* text :
         {"", "/", "10.1.1.0/", "10.1.1.0/33", "10.1.1.5/24", "10.1.1/24", "::1/129", "::1/64",
          "10.1.1.0/024x", "10.1.1.0/ 4", "10.1.1.0/0024"}) {
        EXPECT_FALSE(directnet::prefixFrom(text)) << text;
    }
}

} // namespace
} // namespace TablesTest
