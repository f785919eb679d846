#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/vm/VmTest.h"

namespace {

using namespace TestSupport;
using nlohmann::json;
using std::chrono::steady_clock;
using BurstTest = VmTest;

constexpr int addresses = 20000;
constexpr int links = 40; // the kernel goes through all addresses of a link to add one

/// IPv4 routes by VRF, as `show vrfs` counts them.
std::map<std::string, int> counted() {
    std::map<std::string, int> routes;
    std::istringstream rows(show("vrfs --json"));
    for (std::string line; std::getline(rows, line);) {
        const json row = json::parse(line, nullptr, false);
        if (row.is_object() && row.contains("routes")) {
            routes[row["vrf"]] = row["routes"]["ipv4"];
        }
    }
    return routes;
}

TEST_F(BurstTest, AddressesOfTwoVrfDevicesAreAllThereThoughTheSocketOverran) {
    std::string lines = "link add red up type vrf table 100\nlink add blue up type vrf table 200\n";
    for (int i = 0; i < links; ++i) {
        lines += "link add e" + std::to_string(i) + " up master " + (i % 2 == 0 ? "red" : "blue")
                 + " type dummy\n";
    }
    ASSERT_TRUE(ipIn("", lines));
    json config;
    for (int i = 0; i < 8; ++i) {
        config["leaks"]["ipv4"]["red"]["10.0." + std::to_string(i) + ".0/31"]["blue"] = true;
    }
    std::ofstream("/run/config.json") << config;
    LiveProgram agent("run --no-tables --install --config /run/config.json");
    ASSERT_TRUE(agent.untilShown("vrfs", "blue")) << agent.err();
    agent.signal(SIGSTOP);
    for (int i = 0; i < addresses;) {
        lines.clear();
        for (const int end = i + addresses / 10; i < end; ++i) { // a part that is soon done
            const int number = i / 2;
            lines += "addr add 10." + std::to_string(number / 256 + (i % 2) * 100) + '.'
                     + std::to_string(number % 256) + ".0/31 dev e" + std::to_string(i % links)
                     + '\n';
        }
        ASSERT_TRUE(ipIn("", lines));
    }
    EXPECT_GT(lostAnnouncements(), 2);
    agent.signal(SIGCONT);
    const auto begin = steady_clock::now();
    const std::map<std::string, int> expected{
        {"blue", addresses + 8}, {"default", 4}, {"red", addresses}};
    std::map<std::string, int> found;
    EXPECT_TRUE(agent.until([&] { return (found = counted()) == expected; })) << json(found);
    const std::chrono::duration<double> time = steady_clock::now() - begin;
    std::cout << addresses << " addresses: all routes " << time.count()
              << " s after the agent may go on\n";
    EXPECT_TRUE(agent.until([] { return foreignRoutes(77, "default")["blue"].size() == 8; }));
    const auto kernel = kernelVrfs("default");
    const std::string state = show("--json");
    for (const char* vrf : {"red", "blue"}) {
        EXPECT_TRUE(agree(kernel.at(vrf), agentRoutes(state, vrf))) << vrf;
    }
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    EXPECT_TRUE(foreignRoutes(77, "default")["blue"].empty());
    EXPECT_EQ(agent.err(), "");
}

} // namespace
