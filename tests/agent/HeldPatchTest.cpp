#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "agent/replay/Replay.h"
#include "agent/topics/StatePrinter.h"
#include "tests/agent/Program.h"

namespace {

using nlohmann::json;
using Texts = std::vector<std::string>;

const Texts vrfs{"default", "red", "blue"};
const Texts intfs{"Et1", "Et2", "Vlan3"};
const Texts addresses4{"10.0.0.1/24", "10.0.0.2/24", "10.0.0.9/30", "10.0.0.7/32"};
const Texts addresses6{"2001:db8::1/64", "2001:db8::2/64", "2001:db8::7/128"};
const Texts prefixes4{"10.0.0.0/24", "10.0.0.8/30"};
const Texts prefixes6{"2001:db8::/64"};

/// Scenarios in which now and then a line is held, of a part of the device that no other line
/// touches before the state is shown.
class RandomLines {
  public:
    explicit RandomLines(std::uint32_t seed) : random_(seed) {}

    /// A row of lines up to the next look at the state.
    void round(double at, std::vector<json>& lines) {
        const std::uint32_t heldPart = below(parts);
        const std::uint32_t heldAt = below(4);
        for (std::uint32_t i = 0; i < 5; ++i) {
            if (i == heldAt) {
                lines.push_back({{"during", 1 + below(8)}, {"set", patch(heldPart)}});
            }
            lines.push_back({{"set", patch((heldPart + 1 + below(parts - 1)) % parts)}});
            if (below(2) == 0) {
                lines.back()["at"] = at + 0.02 * i;
            }
        }
        lines.push_back({{"at", at + 0.5}, {"show", "applied at the latest"}});
        lines.push_back({{"at", at + 0.9}, {"show", "at rest"}});
    }

  private:
    static constexpr std::uint32_t parts = 7;

    std::uint32_t below(std::uint32_t n) { return static_cast<std::uint32_t>(random_() % n); }
    const std::string& oneOf(const Texts& texts) {
        return texts[below(static_cast<std::uint32_t>(texts.size()))];
    }
    json flag() { return below(4) == 0 ? json() : json(true); }

    json patch(std::uint32_t part) {
        switch (part) {
        case 0:
            return {{"vrfs", vrfPatch()}};
        case 1:
            return {{"kernel",
                     {{below(2) == 0 ? "default" : "ns1",
                       {{oneOf(intfs), below(4) == 0 ? json() : json::object()}}}}}};
        case 2:
            return {{"ipv4", {{oneOf(vrfs), {{oneOf(intfs), ipv4Patch()}}}}}};
        case 3:
            return {{"ipv6", {{oneOf(vrfs), {{oneOf(intfs), {{oneOf(addresses6), flag()}}}}}}}};
        case 4:
            return {{"virtualIps",
                     {{"subnetRoutes", below(2) == 0},
                      {"ipv4", {{oneOf(vrfs), {{oneOf(addresses4), {{oneOf(intfs), flag()}}}}}}}}}};
        case 5:
            return {{"leaks", leakPatch()}};
        default:
            return {{"ribWaits", {{oneOf(vrfs), flag()}}}};
        }
    }

    // The ids of two VRFs may be swapped; no two are ever the same.
    json vrfPatch() {
        std::shuffle(ids_.begin(), ids_.end(), random_);
        json patch;
        for (std::size_t i = 0; i < vrfs.size(); ++i) {
            patch[vrfs[i]] =
                below(5) == 0
                    ? json()
                    : json{{"id", ids_[i]},
                           {"status",
                            {{"active", below(5) != 0}, {"netns", i == 0 ? "default" : "ns1"}}}};
        }
        return patch;
    }

    json ipv4Patch() {
        if (below(5) == 0) {
            return {};
        }
        return {{"address", below(3) == 0 ? json() : json(oneOf(addresses4))},
                {"secondary", {{oneOf(addresses4), flag()}}}};
    }

    json leakPatch() {
        const bool ipv4 = below(3) != 0;
        return {
            {ipv4 ? "ipv4" : "ipv6",
             {{oneOf(vrfs), {{oneOf(ipv4 ? prefixes4 : prefixes6), {{oneOf(vrfs), flag()}}}}}}}};
    }

    std::mt19937 random_;
    std::vector<int> ids_{1, 2, 3};
};

/// What a scenario prints, without what tells when things happened: times, and vias at rest, which
/// some interfaces keep or have not, by what was first.
std::vector<json> states(const std::vector<json>& lines) {
    std::stringstream scenario;
    for (const json& line : lines) {
        scenario << line.dump() << '\n';
    }
    std::stringstream printed;
    const auto printer = Agent::makeStateDocuments(printed);
    Agent::Replay("scenario", *scenario.rdbuf(), *printer).run();
    std::vector<json> read;
    for (std::string line; std::getline(printed, line);) {
        json state = json::parse(line);
        if (state.value("label", "at rest") != "at rest") {
            continue;
        }
        if (state.contains("label")) {
            state.erase("vias");
            state.erase("viaSets");
        }
        state.erase("time");
        read.push_back(std::move(state));
        for (json& vrf : read.back()["vrfs"]) {
            if (vrf.contains("rib")) {
                vrf["rib"].erase("readyTime");
            }
        }
    }
    return read;
}

TEST(HeldPatch, StatesAreThoseOfOrdinaryLines) {
    for (std::uint32_t seed = 0; seed < 500; ++seed) {
        RandomLines random(seed);
        std::vector<json> lines;
        for (int round = 0; round < 8; ++round) {
            random.round(round, lines);
        }
        lines.push_back({{"set", {{"vrfs", nullptr}}}});
        std::vector<json> ordinary = lines;
        for (json& line : ordinary) {
            line.erase("during");
        }
        const auto held = states(lines);
        ASSERT_EQ(held.size(), 9U);
        EXPECT_EQ(held.back()["viaSets"], 0);
        const auto expected = states(ordinary);
        for (std::size_t i = 0; i < held.size(); ++i) {
            std::string text;
            for (const json& line : lines) {
                text += line.dump() + '\n';
            }
            ASSERT_EQ(held[i], expected[i]) << "seed " << seed << " state " << i << '\n' << text;
        }
    }
}

TEST(HeldPatch, IsAppliedInTheMiddleOfTheChangeAndNamesItsOwnLine) {
    const std::string begin =
        R"({"set":{"vrfs":{"default":{"id":0}},"kernel":{"default":{"e":{}}}}})"
        "\n";
    const std::string address = R"({"set":{"ipv4":{"default":{"e":{"address":"10.0.0.1/24"}}}}})"
                                "\n";
    const struct {
        const char* held;
        const char* message;
    } cases[] = {
        {R"({"during":2,"set":{"vrfs":{"red":{"id":0}}}})",
         "-:2: /set/vrfs/red/id: 0 is the id of VRF default\n"},
        {R"({"during":99,"set":{"gracefulRestart":true}})",
         "-:2: /set/gracefulRestart: cannot change once the agent has started\n"},
        {R"({"during":0,"set":{}})", "-:2: /during: must be a number of changes from 1\n"},
        {R"({"during":1.5,"set":{}})", "-:2: /during: must be a number of changes from 1\n"},
        {R"({"during":1,"show":"x"})", "-:2: during without set\n"},
    };
    for (const auto& bad : cases) {
        std::string scenario = begin;
        scenario.append(bad.held).append("\n").append(address).append(address);
        const auto run = TestSupport::runProgram("replay --json -", scenario);
        EXPECT_EQ(run.status, 2) << bad.held;
        EXPECT_EQ(run.err, bad.message);
    }
    // The first drain finds the VRF gone, and nothing is ever written in it.
    std::string scenario = begin;
    scenario.append(R"({"during":1,"set":{"vrfs":{"default":null}}})").append("\n");
    scenario.append(address).append(R"({"at":5,"show":"x"})");
    const auto run = TestSupport::runProgram("replay --json -", scenario);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(run.out.starts_with(R"({"time":6.0,"label":"x","vrfs":{},)")) << run.out;
}

} // namespace
