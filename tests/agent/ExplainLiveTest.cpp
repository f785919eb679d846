#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <map>
#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <sstream>
#include <string>

#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace {

using namespace TestSupport;
using nlohmann::json;
using testing::_;
using testing::HasSubstr;
using ExplainLive = LiveTest;

json explained(const std::string& arguments) {
    const auto run = runProgram("explain --json " + arguments);
    EXPECT_EQ(run.status, 0) << arguments << run.err;
    return json::parse(run.out.empty() ? "null" : run.out);
}

/// Every address that the kernel has on a link, with its length or, if it has a peer, alone.
std::set<std::string> kernelAddresses(const std::string& link) {
    std::set<std::string> addresses;
    const json shown = json::parse(runShell("ip -j addr show " + link).out).back();
    for (const json& address : shown["addr_info"]) {
        const bool isIpv4 = address["family"] == "inet";
        const std::string length =
            address.contains("address") ? (isIpv4 ? "32" : "128") : address["prefixlen"].dump();
        addresses.insert(address["local"].get<std::string>() + '/' + length);
    }
    return addresses;
}

std::map<std::string, std::string> whyByAddress(const json& interface) {
    std::map<std::string, std::string> whys;
    for (const json& address : interface["addresses"]) {
        whys[address["address"]] = address.value("why", "");
    }
    return whys;
}

// What the kernel says of an address: its kind, and where it leads unless it is an own one.
TEST_F(ExplainLive, RoutesOfRandomAddressesAreThoseThatTheKernelTakes) {
    std::mt19937 random(7);
    const auto below = [&](unsigned n) { return std::to_string(random() % n); };
    std::ostringstream lines;
    for (const char number : {'1', '2', '3'}) {
        const std::string link = std::string("e") + number;
        lines << "link add " << link << " up type veth peer name p" << link << "\nlink set p"
              << link << " up\n";
        for (int i = 0; i < 6; ++i) {
            const std::string subnet = number + below(4);
            lines << "addr add 10." << subnet << '.' << below(4) << '.' << below(250) << '/'
                  << 16 + random() % 15 << " dev " << link << "\naddr add fd00:" << subnet
                  << "::" << below(9) << "/64 nodad dev " << link << '\n';
        }
    }
    ip(lines.str()); // an address may be there already
    LiveProgram agent("run");
    ASSERT_TRUE(agent.learned());
    ASSERT_TRUE(agent.untilShown("vrfs", "yes"));
    int routed = 0;
    for (int i = 0; i < 100; ++i) {
        const std::string subnet = std::to_string(1 + random() % 3) + below(4);
        const std::string address = i % 4 == 0 ? "fd00:" + subnet + "::" + below(9)
                                               : "10." + subnet + '.' + below(4) + '.' + below(250);
        const json route = explained(address)["route"];
        const auto asked = runShell("ip -j route get " + address);
        if (asked.status != 0) {
            EXPECT_TRUE(route.is_null()) << address << route;
            continue;
        }
        const json kernel = json::parse(asked.out).at(0);
        ASSERT_FALSE(route.is_null()) << address << kernel;
        if (route["type"] == 3) {
            continue; // a network address, which is nothing special to the kernel
        }
        ++routed;
        const std::string kind = kernel.value("type", "unicast");
        EXPECT_EQ(route["type"], kind == "unicast" ? 11 : kind == "broadcast" ? 4 : 1) << address;
        EXPECT_EQ(route["kernel"], "left to it");
        if (kind != "local") {
            EXPECT_EQ(route["intf"], kernel["dev"]) << address << kernel;
        }
    }
    EXPECT_GT(routed, 20);
}

TEST_F(ExplainLive, EveryAddressOfALinkIsThereWithWhyItContributesNothing) {
    setKernel("ipv6/conf/default/addr_gen_mode", "1"); // no link-local address but our own
    ASSERT_TRUE(ip("link add e1 up type veth peer name p1\nlink set p1 up\n"
                   "addr add fd00::1/64 nodad dev p1\n"
                   "addr add 10.1.0.1/24 dev e1\naddr add 10.1.0.2/24 dev e1\n"
                   "addr add 10.2.0.1 peer 10.2.0.9/24 dev e1\n"
                   "addr add fe80::5/64 nodad dev e1\naddr add fd00:2::1/64 nodad dev e1\n"
                   "addr add fd00::1/64 dev e1\n"));
    setKernel("ipv6/conf/e1/dad_transmits", "1000000");
    ASSERT_TRUE(ip("addr add fd00:3::1/64 dev e1\n"
                   "link add e2 type veth peer name p2\naddr add 10.3.0.1/24 dev e2"));
    LiveProgram agent("run");
    ASSERT_TRUE(agent.learned());
    std::map<std::string, std::string> whys;
    EXPECT_TRUE(agent.until([&] {
        whys = whyByAddress(explained("e1"));
        return whys["fd00::1/64"] == "duplicate";
    })) << json(whys);
    std::set<std::string> addresses;
    for (const auto& [address, why] : whys) {
        addresses.insert(address);
        const bool isLinkLocal = address.starts_with("fe80");
        EXPECT_EQ(why, isLinkLocal                 ? "link-local"
                       : address == "fd00::1/64"   ? "duplicate"
                       : address == "fd00:3::1/64" ? "tentative"
                                                   : "");
    }
    EXPECT_EQ(addresses, kernelAddresses("e1"));
    EXPECT_EQ(whyByAddress(explained("e2")),
              (std::map<std::string, std::string>{{"10.3.0.1/24", "not running"}}));
    const json tentative = explained("fd00:3::/64");
    EXPECT_EQ(tentative["why"], "nobody contributes to it");
    EXPECT_EQ(tentative["candidates"],
              json::parse(R"([{"intf":"e1","address":"fd00:3::1/64","role":"own","vrf":"default",)"
                          R"("whyNot":"tentative"}])"));
    EXPECT_EQ(explained("10.3.0.77")["candidates"][0]["whyNot"], "not running");
}

TEST_F(ExplainLive, VirtualAddressesAndVrfsThatAreNotUpAreExplained) {
    std::ofstream("/run/config.json")
        << R"({"virtualIps":{"ipv4":{"default":{"10.1.0.9/24":{"e1":true}},)"
           R"("green":{"10.5.0.9/24":{"e1":true}}}}})";
    ASSERT_TRUE(ip("link add e1 up type veth peer name p1\nlink set p1 up\n"
                   "addr add 10.1.0.1/24 dev e1"));
    LiveProgram agent("run --config /run/config.json --vrf red=ns-red");
    ASSERT_TRUE(agent.learned());
    ASSERT_TRUE(agent.untilShown("routes", "10.1.0.9/32"));
    const json virtualIp = explained("10.1.0.9");
    EXPECT_EQ(virtualIp["contributors"][0]["kind"], "virtual");
    EXPECT_EQ(virtualIp["route"]["kernel"], "not installed: the agent runs without --install");
    const auto elsewhere = whyByAddress(explained("e1 --vrf red"));
    EXPECT_THAT(elsewhere, testing::Contains(testing::Key("10.1.0.1/24")));
    EXPECT_THAT(elsewhere, testing::Each(testing::Pair(_, "in VRF default, not in VRF red")));
    const std::string green = "not active: no VRF device or --vrf of that name";
    EXPECT_THAT(explained("10.5.0.9")["why"].get<std::string>(),
                HasSubstr("green (" + green + "), red (no such network namespace)"));
    const std::string notUp = "VRF green is not up: " + green;
    EXPECT_EQ(whyByAddress(explained("e1 --vrf green")),
              (std::map<std::string, std::string>{
                  {"10.5.0.9/24", notUp + "; its subnet is no route: subnetRoutes is off"}}));
    const auto refused = runProgram("explain 10.5.0.9 --vrf green");
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr(notUp));
    EXPECT_EQ(runProgram("explain e1 --vrf nosuch").status, 1);
    EXPECT_EQ(runProgram("explain nosuch").status, 1);

    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    LiveProgram installing("run --config /run/config.json --install");
    EXPECT_TRUE(installing.untilShown("routes", "installed"));
    EXPECT_EQ(explained("10.1.0.9")["route"]["kernel"], "installed");
}

// Both the contributors of a prefix and the addresses of an interface are many.
TEST_F(ExplainLive, LargeAnswersAreWhole) {
    std::string lines = "link add e1 up type veth peer name p1\nlink set p1 up\n";
    for (int i = 1; i <= 3000; ++i) {
        lines += "addr add 10." + std::to_string(i / 250) + '.' + std::to_string(i % 250)
                 + ".1/8 dev e1\n";
    }
    ASSERT_TRUE(ip(lines));
    LiveProgram agent("run");
    ASSERT_TRUE(agent.learned());
    ASSERT_TRUE(agent.untilShown("vrfs", "yes"));
    EXPECT_EQ(explained("10.0.0.0/8")["contributors"].size(), 3000U);
    EXPECT_EQ(explained("e1")["addresses"].size(), kernelAddresses("e1").size());
}

} // namespace
