#include <csignal>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "tests/vm/RandomNetwork.h"
#include "tests/vm/VmTest.h"

namespace {

using namespace TestSupport;
using nlohmann::json;

constexpr int commands = 300;

/// Other commands than the usual ones are run by setting DIRECTNET_FIRST_SEED.
std::uint32_t firstSeed() {
    const char* text = std::getenv("DIRECTNET_FIRST_SEED");
    return text == nullptr ? 0 : static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10));
}

class ChaosTest : public VmTest, public testing::WithParamInterface<std::uint32_t> {
  protected:
    void SetUp() override {
        VmTest::SetUp();
        if (!IsSkipped()) {
            addNamespaces({"ns1", "ns2"});
            ASSERT_EQ(runShell("echo 1 >/proc/sys/net/ipv6/conf/default/keep_addr_on_down").status,
                      0);
        }
    }

    const std::uint32_t seed = firstSeed() + GetParam();
    RandomNetwork network{seed};
};

TEST_P(ChaosTest, StateIsThatOfTheKernelAndOfAFreshStart) {
    const std::string follow = "--vrf one=ns1 --vrf two=ns2";
    LiveProgram agent("run --no-tables " + follow);
    ASSERT_TRUE(agent.learned()) << agent.err();
    for (int i = 0; i < commands; ++i) {
        network.step();
    }
    network.flush();
    FollowedNamespaces namespaces{{"default", ""}, {"one", "ns1"}};
    if (runShell("test -e /run/netns/ns2").status == 0) {
        namespaces["two"] = "ns2";
    }
    expectKernelVrfs(agent, namespaces);
    json own;
    const json fresh = json::parse(runProgram("run --once --json " + follow).out);
    EXPECT_TRUE(agent.until([&] {
        own = json::parse(show("--json"), nullptr, false);
        if (own.is_object()) {
            own["time"] = fresh["time"];
        }
        return own == fresh;
    })) << "running: "
        << own << "\nfresh: " << fresh;
    EXPECT_EQ(agent.err(), "");
    if (HasFailure()) {
        FAIL() << "seed " << seed << '\n' << network.log();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, ChaosTest, testing::Range(0U, 2U));

} // namespace
