#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <string>
#include <sys/mount.h>
#include <unistd.h>
#include <utility>

#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace {

using namespace TestSupport;
using nlohmann::json;
using testing::HasSubstr;

constexpr const char* folder = "/dev/shm/directnet";
constexpr const char* run = "run --vrf red=nsred --config /run/config.json";

bool limitSharedMemory(const char* size) {
    return ::mount("none", "/dev/shm", "tmpfs", MS_REMOUNT, size) == 0;
}

std::string tables(const std::string& arguments = {}) {
    return runProgram("tables " + arguments).out;
}

std::string saidOfTables() { return runProgram("tables").err; }

/// A state document without what a reader of the tables cannot know, and without the time.
json comparable(const std::string& document) {
    json state = json::parse(document, nullptr, false);
    if (state.is_object()) {
        state.erase("time");
        for (json& vrf : state["vrfs"]) {
            vrf.erase("backlog");
        }
    }
    return state;
}

/// Waits until the tables are what the agent shows, and that has the text. Returns the state.
json settled(LiveProgram& agent, const std::string& text) {
    json state;
    EXPECT_TRUE(agent.until([&] {
        const std::string shown = show("--json");
        state = comparable(shown);
        return shown.find(text) != std::string::npos && state == comparable(tables("--json"));
    })) << state
        << '\n'
        << comparable(tables("--json")) << agent.err();
    return state;
}

/// The routes by VRF and prefix that a follower has been told of, if the telling is consistent.
std::map<std::pair<std::string, std::string>, json> followed(const std::string& lines) {
    std::map<std::pair<std::string, std::string>, json> routes;
    std::istringstream in(lines.substr(0, lines.rfind('\n') + 1));
    for (std::string line; std::getline(in, line);) {
        json row = json::parse(line);
        const std::string change = row["change"];
        if (change == "complete") {
            continue;
        }
        const std::pair key(row["vrf"].get<std::string>(), row["prefix"].get<std::string>());
        EXPECT_EQ(routes.contains(key), change == "changes" || change == "goes") << line;
        for (const char* member : {"time", "change", "vrf", "prefix"}) {
            row.erase(member);
        }
        routes.erase(key);
        if (change != "goes") {
            routes.emplace(key, std::move(row));
        }
    }
    return routes;
}

std::map<std::pair<std::string, std::string>, json> routesOf(const json& state) {
    std::map<std::pair<std::string, std::string>, json> routes;
    for (const auto& [name, vrf] : state["vrfs"].items()) {
        for (const char* family : {"ipv4", "ipv6"}) {
            for (const auto& [prefix, route] : vrf[family].items()) {
                routes[{name, prefix}] = route;
            }
        }
    }
    return routes;
}

/// A further VRF, with virtual addresses and leaks in the configuration.
class Tables : public LiveTest {
  protected:
    void SetUp() override {
        LiveTest::SetUp();
        if (IsSkipped()) {
            return;
        }
        ASSERT_TRUE(ip("netns add nsred\nlink add e1 netns nsred type veth peer name p1\n"
                       "link set p1 up"));
        ASSERT_TRUE(inRed("link set lo up\nlink set e1 up\naddr add 10.1.0.1/24 dev e1\n"
                          "addr add 2001:db8:1::1/64 dev e1 nodad"));
        configure(1);
    }

    static bool inRed(const std::string& lines) {
        return runShell("ip -batch - -n nsred", lines).status == 0;
    }

    static void configure(int idOfRed) {
        json config = json::parse(R"({
            "virtualIps": {"ipv4": {"red": {"10.1.0.9/24": {"e1": true}}},
                           "ipv6": {"red": {"2001:db8:1::9": {"e1": true}}}},
            "leaks": {"ipv4": {"red": {"10.1.0.0/24": {"default": true}}},
                      "ipv6": {"red": {"2001:db8:1::/64": {"default": true}}}},
            "ribWaits": {"red": true}})");
        config["vrfs"]["red"]["id"] = idOfRed;
        std::ofstream("/run/config.json") << config;
    }
};

TEST_F(Tables, ShowWhatTheAgentShowsWhetherItRunsIsStoppedOrDeadAndTheNextRunAfterIt) {
    EXPECT_EQ(runProgram("tables").status, 1);
    LiveProgram agent(run);
    json state = settled(agent, "10.1.0.9/32");
    const json& leaked = state["vrfs"]["default"];
    EXPECT_EQ(leaked["ipv4"]["10.1.0.1/32"]["sourceVrf"], "red");
    EXPECT_EQ(leaked["ipv6"]["2001:db8:1::1/128"]["intf"], "e1");
    EXPECT_EQ(state["vrfs"]["red"]["ipv6"]["2001:db8:1::9/128"]["via"], "receive");
    EXPECT_TRUE(state["vrfs"]["red"]["rib"]["ready"]);
    EXPECT_EQ(saidOfTables(), "");
    EXPECT_EQ(tables("leaks --json"), show("leaks --json"));
    EXPECT_THAT(tables("vias --vrf red"), HasSubstr("e1"));
    EXPECT_EQ(runProgram("tables --vrf nowhere").status, 1);

    agent.signal(SIGSTOP);
    EXPECT_EQ(comparable(tables("--json")), state);
    EXPECT_TRUE(agent.until(
        [] { return saidOfTables().find("not heard of since 20") != std::string::npos; }));
    EXPECT_EQ(agent.endedBy(SIGKILL), -1);
    EXPECT_EQ(comparable(tables("--json")), state);
    EXPECT_THAT(saidOfTables(), HasSubstr("was killed at about 20"));

    ASSERT_TRUE(inRed("addr del 10.1.0.1/24 dev e1\nlink set lo down"));
    LiveProgram next(run);
    ASSERT_TRUE(next.untilOut("2001:db8:1::9/128"));
    state = settled(next, "2001:db8:1::9/128");
    json fresh = comparable(runProgram(std::string(run) + " --once --json").out);
    for (json* one : {&state, &fresh}) {
        (*one)["vrfs"]["red"]["rib"].erase("readyTime");
    }
    EXPECT_EQ(state, fresh);
    EXPECT_EQ(next.endedBy(SIGTERM), 0);
    EXPECT_EQ(comparable(tables("--json"))["vrfs"], json::object());
    EXPECT_THAT(saidOfTables(), HasSubstr("has ended at 20"));
}

TEST_F(Tables, FollowerThatWasThereFirstKeepsUpOverRestartsAndNewIdsOfVrfs) {
    LiveProgram follower("tables --follow --json");
    ASSERT_TRUE(follower.untilOut("complete"));
    // The last swaps ids: what is red's now was no VRF's, and its own becomes another's.
    for (const int idOfRed : {1, 1, 7}) {
        configure(idOfRed);
        LiveProgram agent(run);
        ASSERT_TRUE(agent.untilOut("+ red 2001:db8:1::1/128"));
        const json state = settled(agent, "10.1.0.9/32");
        EXPECT_TRUE(follower.until([&] { return followed(follower.out()) == routesOf(state); }))
            << json(followed(follower.out())) << '\n'
            << state;
        EXPECT_EQ(agent.endedBy(SIGKILL), -1);
    }
    LiveProgram agent("run"); // which has no red at all
    ASSERT_TRUE(agent.learned());
    EXPECT_TRUE(follower.until([&] { return followed(follower.out()).size() == 5; }));
    EXPECT_THAT(follower.err(), HasSubstr("there is no agent yet"));
    EXPECT_EQ(countOf("was killed at about", follower.err()), 3U) << follower.err();
}

TEST_F(Tables, FollowerPrintsWhatAWatchPrints) {
    LiveProgram agent(run);
    settled(agent, "10.1.0.9/32");
    LiveProgram follower("tables --follow");
    LiveProgram watch("watch");
    const auto sorted = [](const LiveProgram& program) {
        std::multiset<std::string> lines;
        std::istringstream in(program.out());
        for (std::string line; std::getline(in, line);) {
            lines.insert(line);
        }
        return lines;
    };
    ASSERT_TRUE(follower.untilOut("= red 10.1.0.9/32"));
    ASSERT_TRUE(watch.until([&] { return sorted(watch) == sorted(follower); })) << watch.out();
    ASSERT_TRUE(inRed("addr add 10.2.0.1/24 dev e1"));
    ASSERT_TRUE(follower.untilOut("+ red 10.2.0.255/32"));
    EXPECT_TRUE(watch.until([&] {
        follower.until([] { return true; });
        return watch.out().find("+ red 10.2.0.255/32") != std::string::npos
               && sorted(watch) == sorted(follower);
    })) << watch.out()
        << '\n'
        << follower.out();
    follower.closeOut();
    EXPECT_EQ(follower.wait(), 1);
    EXPECT_EQ(follower.err(), "");
}

TEST_F(Tables, ExternalLeaksAreFollowedWhileTheyAreEditedAndOverARestart) {
    const std::string external = std::string(run) + " --leaks external";
    EXPECT_EQ(runProgram(external + " --no-tables").status, 1);
    const auto leaks = [](const std::string& arguments) {
        return runProgram("leaks " + arguments);
    };
    const char* const prefix = "\"10.1.0.1/32\":{\"type\":1,\"intf\":\"e1\",\"via\":\"receive\","
                               "\"sourceVrf\":\"red\"";
    {
        LiveProgram own(run);
        settled(own, prefix);
        const auto refused = leaks("add red 10.1.0.0/24 default");
        EXPECT_EQ(refused.status, 1);
        EXPECT_THAT(refused.err, HasSubstr("in use by process " + std::to_string(own.pid())));
        EXPECT_EQ(own.endedBy(SIGKILL), -1);
    }
    LiveProgram agent(external);
    ASSERT_TRUE(agent.untilErr("the configuration's leaks are not used"));
    settled(agent, prefix); // those of the run before are still in the table
    EXPECT_EQ(leaks("clear").status, 0);
    EXPECT_TRUE(agent.untilOut("- default 10.1.0.1/32"));
    EXPECT_EQ(leaks("list").out, "");
    EXPECT_EQ(leaks("add red 2001:db8:1::/64 0").status, 0);
    EXPECT_EQ(leaks("add red 10.1.0.0/24 default").status, 0);
    EXPECT_TRUE(agent.untilShown("--json", prefix));
    const auto again = leaks("add red 10.1.0.0/24 default");
    EXPECT_EQ(again.status, 0);
    EXPECT_THAT(again.err, HasSubstr("is there already"));
    EXPECT_EQ(leaks("list --json").out, show("leaks --json"));

    EXPECT_EQ(agent.endedBy(SIGKILL), -1);
    EXPECT_EQ(leaks("del red 2001:db8:1::/64 default").status, 0) << "by the dead agent's names";
    LiveProgram next(external);
    settled(next, prefix);
    EXPECT_EQ(leaks("del red 10.1.0.0/24 default").status, 0);
    EXPECT_TRUE(next.untilOut("- default 10.1.0.1/32"));
    EXPECT_THAT(show("--json"), testing::Not(HasSubstr("sourceVrf")));
    EXPECT_EQ(leaks("del red 10.1.0.0/24 default").status, 1);
    EXPECT_EQ(leaks("add nowhere 10.1.0.0/24 default").status, 1);
    EXPECT_EQ(leaks("add red 10.1.0.1/24 default").status, 2);
    EXPECT_EQ(leaks("add red 10.1.0.0/24").status, 2);
    EXPECT_EQ(next.endedBy(SIGTERM), 0);
}

TEST_F(Tables, FolderInUseOrUnfitIsRefusedWhereItIsNamedAndDoneWithoutWhereItIsNot) {
    const auto expectRefused = [](const std::string& path, const std::string& why) {
        const auto refused = runProgram("run --no-socket --tables " + path);
        EXPECT_EQ(refused.status, 1) << path;
        EXPECT_EQ(refused.out, "");
        EXPECT_THAT(refused.err, HasSubstr(why));
    };
    LiveProgram agent("run");
    ASSERT_TRUE(agent.learned());
    const std::string inUse = "in use by process " + std::to_string(agent.pid());
    expectRefused(folder, inUse);
    LiveProgram without("run --no-socket");
    EXPECT_TRUE(without.learned());
    EXPECT_THAT(without.err(), HasSubstr(inUse));
    EXPECT_EQ(without.endedBy(SIGTERM), 0);
    EXPECT_THAT(tables(), HasSubstr("127.0.0.0/8")) << "the other agent's";

    std::filesystem::create_directory_symlink(folder, "/run/link");
    expectRefused("/run/link", "is not a folder");
    std::filesystem::create_directory("/run/others");
    // As root of a user namespace one cannot give anything away, but has others' folders.
    expectRefused(::chown("/run/others", 1, 1) == 0 ? "/run/others" : "/usr",
                  "belongs to another user");
    std::filesystem::permissions("/run", std::filesystem::perms::all);
    expectRefused("/run", "others may write to it");
    expectRefused("/run/no/folder", "No such file or directory");
    EXPECT_EQ(runProgram("run --tables-group no-such-group").status, 2);
}

TEST_F(Tables, DamagedFileIsMovedAsideAndWhatItHadComesAnew) {
    {
        LiveProgram agent("run");
        ASSERT_TRUE(agent.learned());
        agent.endedBy(SIGKILL);
    }
    const std::string file = std::string(folder) + "/routing.rib.routeConfig.ipv4.connected";
    std::filesystem::resize_file(file, 1000);
    EXPECT_EQ(runProgram("tables").status, 1);
    LiveProgram follower("tables --follow");
    EXPECT_TRUE(follower.untilErr(file)) << follower.err();
    LiveProgram agent("run");
    ASSERT_TRUE(agent.learned());
    EXPECT_THAT(agent.err(), HasSubstr("is cut short; it is now "));
    EXPECT_TRUE(std::filesystem::exists(file + ".damaged"));
    EXPECT_TRUE(follower.untilOut("default 127.0.0.0/8"));
    settled(agent, "127.0.0.0/8");
}

TEST_F(Tables, WhatDoesNotFitIntoSharedMemoryIsSaidOnceAndComesWhenThereIsRoom) {
    ASSERT_TRUE(limitSharedMemory("size=1500k"));
    constexpr int count = 2000;
    ASSERT_TRUE(ip("link del p1") && ip(linkWithAddresses(count)));
    LiveProgram agent("run");
    const std::string full = "VRF default: the tables are full";
    ASSERT_TRUE(agent.untilErr(full)) << agent.err();
    const json state = settled(agent, "127.0.0.0/8");
    const std::size_t fitted = state["vrfs"]["default"]["ipv4"].size();
    EXPECT_GT(fitted, 1000U);
    EXPECT_LT(fitted, 4U * count);
    // Somebody else wants the space, too.
    EXPECT_NE(runShell("head -c 1M /dev/zero >/dev/shm/other").status, 0);
    EXPECT_EQ(runProgram("leaks list").status, 0);
    ASSERT_TRUE(limitSharedMemory("size=64m"));
    EXPECT_TRUE(agent.until([&] {
        return comparable(tables("--json"))["vrfs"]["default"]["ipv4"].size() == 4U * count + 4;
    }));
    settled(agent, "127.0.0.0/8");
    EXPECT_EQ(countOf(full, agent.err()), 1U) << agent.err();
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
}

} // namespace
