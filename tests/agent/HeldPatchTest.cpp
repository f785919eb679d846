#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "agent/replay/Replay.h"
#include "agent/topics/StatePrinter.h"
#include "tests/agent/Program.h"
#include "tests/agent/RandomPatches.h"

namespace {

using nlohmann::json;

/// VRFs of which two may swap their ids; no two have the same.
json vrfPatch(TestSupport::RandomPatches& random) {
    std::vector<int> ids{1, 2, 3};
    std::shuffle(ids.begin(), ids.end(), random.engine());
    json patch;
    for (const char* vrf : {"default", "red", "blue"}) {
        const bool active = random.below(5) != 0;
        const char* netns = random.below(3) == 0 ? "default" : "ns-red";
        patch["vrfs"][vrf] =
            random.below(5) == 0
                ? json()
                : json{{"id", ids.back()}, {"status", {{"active", active}, {"netns", netns}}}};
        ids.pop_back();
    }
    return patch;
}

/// Adds a row of lines up to the next look at the state. One of them is held, of a section that no
/// other touches before the state is shown.
void addRound(TestSupport::RandomPatches& random, double at, std::vector<json>& lines) {
    static const std::vector<std::string> sections{"vrfs",       "kernel", "ipv4",    "ipv6",
                                                   "virtualIps", "leaks",  "ribWaits"};
    // What an interface has depends on when these change, not on what they are alone.
    const std::set<std::string> without{"unnumbered", "directedBroadcast"};
    const auto patch = [&](std::size_t section) {
        return section == 0 ? vrfPatch(random) : random.next(sections[section], without);
    };
    const std::size_t held = random.below(sections.size());
    const std::size_t heldAt = random.below(4);
    for (std::size_t i = 0; i < 5; ++i) {
        if (i == heldAt) {
            lines.push_back({{"during", 1 + random.below(8)}, {"set", patch(held)}});
        }
        const std::size_t other = held + 1 + random.below(sections.size() - 1);
        lines.push_back({{"set", patch(other % sections.size())}});
        if (random.below(2) == 0) {
            lines.back()["at"] = at + 0.02 * static_cast<double>(i);
        }
    }
    lines.push_back({{"at", at + 0.5}, {"show", "applied at the latest"}});
    lines.push_back({{"at", at + 0.9}, {"show", "at rest"}});
}

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
    for (std::uint32_t seed = 0; seed < 60; ++seed) {
        TestSupport::RandomPatches random(seed);
        std::vector<json> lines;
        for (int round = 0; round < 8; ++round) {
            addRound(random, round, lines);
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

TEST(HeldPatch, PatchIsAppliedInTheMiddleOfTheChangeAndNamesItsOwnLine) {
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
         "-:2:35: /set/vrfs/red/id: 0 is the id of VRF default\n"},
        {R"({"during":99,"set":{"gracefulRestart":true}})",
         "-:2:21: /set/gracefulRestart: cannot change once the agent has started\n"},
        {R"({"during":0,"set":{}})", "-:2:2: /during: must be a number of changes from 1\n"},
        {R"({"during":1.5,"set":{}})", "-:2:2: /during: must be a number of changes from 1\n"},
        {R"({"during":1,"show":"x"})", "-:2:1: during without set\n"},
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
