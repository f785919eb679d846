#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace {

using namespace TestSupport;
using nlohmann::json;
using testing::HasSubstr;
using RunFailure = LiveTest;

/// The shell's word for an agent that does without the sanitizer's check of object types, which
/// needs descriptors of its own and fails where it gets none.
std::string agentWithoutTypeChecks() {
    std::string command = "exec env ";
#ifdef SANITIZER_START
    std::ofstream("/run/suppressions") << "vptr:*\nsigned-integer-overflow:SanitizerStart.cpp\n";
    command += "UBSAN_OPTIONS=suppressions=/run/suppressions ASAN_OPTIONS=verify_asan_link_order=0 "
               "LD_PRELOAD='" SANITIZER_START "' ";
#endif
    return command + "\"$D\" ";
}

constexpr int manyDescriptors = 1000;

/// Lets the process open `spare` further files and no more.
void leaveDescriptors(pid_t process, int spare) {
    std::set<rlim_t> open;
    for (const auto& file :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/fd")) {
        open.insert(std::stoul(file.path().filename()));
    }
    rlimit limit{};
    ::prlimit(process, RLIMIT_NOFILE, nullptr, &limit);
    for (limit.rlim_cur = 0; open.contains(limit.rlim_cur) || spare-- > 0;) {
        ++limit.rlim_cur;
    }
    ::prlimit(process, RLIMIT_NOFILE, &limit, nullptr);
}

/// How often the process, which has nothing else to do, has woken up.
long wakeUps(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    std::string word;
    while (status >> word && word != "voluntary_ctxt_switches:") {
    }
    long count = 0;
    status >> count;
    return count;
}

TEST_F(RunFailure, LackOfDescriptorsIsSaidOnceAndHoldsAVrfUpOnlyWhileItLasts) {
    LiveProgram agent = LiveProgram::ofShell(agentWithoutTypeChecks()
                                             + "run --no-socket --no-tables --vrf red=nsred");
    const std::string comes = "+ red 127.0.0.0/8 ";
    const std::string goes = "- red 127.0.0.0/8";
    const std::string failure = "Too many open files\n";
    ASSERT_TRUE(agent.untilOut("+ default 127.0.0.0/8 "));
    for (const int spare : {0, 1, 2, 3}) {
        SCOPED_TRACE(spare);
        const auto round = static_cast<std::size_t>(spare);
        leaveDescriptors(agent.pid(), spare);
        ASSERT_EQ(runShell("ip netns add nsred && ip -n nsred link set lo up").status, 0);
        ASSERT_TRUE(agent.until([&] { return countOf(failure, agent.err()) > round; }))
            << agent.err() << agent.out();
        EXPECT_EQ(countOf(comes, agent.out()), round);
        const long before = wakeUps(agent.pid());
        ASSERT_TRUE(agent.until([&] { return wakeUps(agent.pid()) > before + 1; }));
        leaveDescriptors(agent.pid(), manyDescriptors);
        ASSERT_TRUE(agent.until([&] { return countOf(comes, agent.out()) > round; }))
            << agent.err();

        // What is followed goes on without, and is seen to go.
        leaveDescriptors(agent.pid(), 0);
        ASSERT_TRUE(ip("netns del nsred"));
        ASSERT_TRUE(agent.until([&] { return countOf(goes, agent.out()) > round; }));
        EXPECT_EQ(countOf("directnet: VRF red: cannot ", agent.err()), round + 1) << agent.err();
    }
    EXPECT_EQ(countOf("\n", agent.err()), 4U) << agent.err();
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
}

TEST_F(RunFailure, OncePrintsWhatItHasAndThenWhichVrfItLacksAndWhy) {
    ASSERT_TRUE(ip("netns add nsred"));
    int partly = 0;
    for (int limit = 10; limit < 40; ++limit) {
        const auto run = runShell("ulimit -n " + std::to_string(limit) + "; "
                                  + agentWithoutTypeChecks() + "run --once --json --vrf red=nsred");
        const auto state = json::parse(run.out, nullptr, false);
        if (run.status == 0) {
            EXPECT_EQ(run.err, "");
            EXPECT_TRUE(state["vrfs"]["red"]["ready"]["ipv4"]) << run.out;
            break;
        }
        EXPECT_EQ(run.status, 1) << limit;
        EXPECT_THAT(run.err, HasSubstr("Too many open files"));
        if (state.is_object() && state["vrfs"].contains("default")) {
            ++partly;
            EXPECT_TRUE(state["vrfs"]["default"]["ready"]["ipv4"]) << run.out;
            EXPECT_FALSE(state["vrfs"].contains("red")) << run.out;
            EXPECT_THAT(run.err, HasSubstr("the state is incomplete: VRF red: cannot "));
        }
    }
    EXPECT_GE(partly, 2);
}

TEST_F(RunFailure, RestartIsNotOverBeforeEveryNamespaceThatIsThereIsLearned) {
    // There, but not to be followed: it is of another kind.
    runShell("mkdir /run/netns; touch /run/netns/nsred\n"
             "mount --bind /proc/self/ns/uts /run/netns/nsred\n"
             "echo '{\"gracefulRestart\": true}' >/run/config.json");
    const std::string options = "--vrf red=nsred --config /run/config.json";
    const auto once = runProgram("run --once --json " + options);
    EXPECT_EQ(once.status, 1);
    const std::string failure = "VRF red: cannot open the network namespace nsred: ";
    EXPECT_THAT(once.err, HasSubstr(failure));
    const auto state = json::parse(once.out, nullptr, false);
    ASSERT_TRUE(state.is_object()) << once.out << once.err;
    EXPECT_EQ(state["vrfs"]["default"]["ready"], json({{"ipv4", false}, {"ipv6", false}}));

    LiveProgram agent("run " + options);
    ASSERT_TRUE(agent.untilErr(failure));
    runShell("umount /run/netns/nsred");
    EXPECT_TRUE(agent.untilShown("vrfs --json", R"("ready":{"ipv4":true,"ipv6":true})"));
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
}

} // namespace
