#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace {

namespace fs = std::filesystem;
using namespace TestSupport;
using testing::HasSubstr;
using Ring = LiveTest;

/// An agent started by a shell command; as after "exec", it has the process id of the shell.
LiveProgram started(const std::string& command) {
    return LiveProgram::ofShell("unset RLFILE; " + command);
}

std::string ringOf(const LiveProgram& agent) {
    return "/run/directnet/DirectNet-" + std::to_string(agent.pid()) + ".rl";
}

mode_t modeOf(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

std::size_t entries(const std::string& folder) {
    const fs::directory_iterator files(folder);
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

TEST(ReplayRing, TextTraceChangesNothingInIt) {
    const auto run = runShell(
        R"(f=$(mktemp -d) && trap 'rm -r "$f"' EXIT
        s='{"set":{"vrfs":{"default":{"id":0}},"kernel":{"default":{"e":{}}},"virtualIps":{"ipv4":{"default":{"10.0.0.9/24":{"e":true}}}},"ipv4":{"default":{"e":{"address":"10.0.0.1/24"}}}}}'
        echo "$s" | $D replay --ring "$f/a" - >/dev/null &&
        echo "$s" | $D replay --ring "$f/b" --trace 9 - >/dev/null 2>&1 &&
        for r in a b; do $D ringlog "$f/$r" | cut -d' ' -f2- >"$f/$r.txt" || exit; done
        cmp "$f/a.txt" "$f/b.txt" && cat "$f/a.txt")");
    EXPECT_EQ(run.status, 0) << run.err;
    for (const char* message : {"] Setting ready for v4 connected routes for vrf : default",
                                "] create receive route", "[RootSm::handleDelete] handleDelete"}) {
        EXPECT_THAT(run.out, HasSubstr(message));
    }
}

TEST_F(Ring, FileOfAnAgentLiesInItsStateFolderAndNowhereElse) {
    fs::create_directory("/run/here");
    std::string last;
    for (int run = 0; run < 3; ++run) {
        LiveProgram agent = started("cd /run/here && exec \"$D\" run");
        ASSERT_TRUE(agent.learned()) << agent.err();
        EXPECT_EQ(agent.err(), "");
        EXPECT_EQ(modeOf("/run/directnet"), 0750U);
        EXPECT_EQ(modeOf(ringOf(agent)), 0640U);
        EXPECT_THAT(runProgram("ringlog " + ringOf(agent)).out, HasSubstr("handleInitialized"));
        EXPECT_TRUE(last.empty() || fs::exists(last)) << "the one before is kept";
        last = ringOf(agent);
        EXPECT_EQ(agent.endedBy(SIGKILL), -1);
        std::ofstream("/run/directnet/DirectNet-note.rl") << "not ours";
    }
    EXPECT_THAT(runProgram("ringlog " + last).out, HasSubstr("handleInitialized"));
    EXPECT_EQ(entries("/run/directnet"), 3U) << "two rings, and the note";

    // Another agent's ring is not an old one.
    LiveProgram first = started("exec \"$D\" run --no-socket");
    ASSERT_TRUE(first.learned()) << first.err();
    LiveProgram second = started("exec \"$D\" run --no-socket");
    ASSERT_TRUE(second.learned()) << second.err();
    EXPECT_TRUE(fs::exists(ringOf(first)));
    EXPECT_TRUE(fs::exists(ringOf(second)));

    const auto other = runShell("cd /run/here && unset RLFILE && \"$D\" run --once && "
                                "echo | \"$D\" replay - && echo | \"$D\" replay --ring asked -");
    EXPECT_EQ(other.status, 0);
    EXPECT_EQ(other.err, "");
    EXPECT_EQ(entries("/run/here"), 1U);
    EXPECT_THAT(runProgram("ringlog /run/here/asked").out, HasSubstr("handleInitialized"));
}

TEST_F(Ring, FileThatCannotBeHadIsSaidOnceAndTheAgentRunsWithout) {
    ASSERT_EQ(runShell("mkdir /run/small && mount -t tmpfs -o size=100k none /run/small").status,
              0);
    std::ofstream("/run/precious") << "precious";
    const std::vector<std::pair<std::string, std::string>> cases{
        {"\"$D\" run --once --ring /run/precious", "there is a file that is no ring trace"},
        {"RLFILE=/run/precious \"$D\" run --once", "there is a file that is no ring trace"},
        {"RLFILE=/run/precious \"$D\" replay - </dev/null", "that is no ring trace"},
        {"\"$D\" run --once --ring /run/small/ring", "No space left on device"},
        {"\"$D\" run --once --ring /nowhere/ring", "No such file or directory"},
        {"\"$D\" run --once --ring /run", "no regular file"},
        {"ulimit -f 1; \"$D\" run --once --ring /run/ring", "File too large"},
        {"RLFILE=/run/precious \"$D\" run --once --ring /dev/null", ""}};
    for (const auto& [command, message] : cases) {
        const auto run = runShell("unset RLFILE; " + command);
        EXPECT_EQ(run.status, 0) << command;
        EXPECT_NE(run.out, "") << command;
        EXPECT_EQ(countOf("\n", run.err), message.empty() ? 0U : 1U) << command << '\n' << run.err;
        EXPECT_THAT(run.err, HasSubstr(message)) << command;
    }
    EXPECT_EQ(readFile("/run/precious"), "precious");
    for (const std::string taking : {"touch $F", "mkfifo $F", "ln -s /tmp $F",
                                     "mkdir $F; chown -f 1 $F || mount --bind /usr $F"}) {
        LiveProgram agent = started("F=/run/directnet; rm -rf $F; " + taking + "; exec \"$D\" run");
        ASSERT_TRUE(agent.learned()) << agent.err();
        EXPECT_EQ(agent.endedBy(SIGTERM), 0);
        EXPECT_EQ(countOf("\n", agent.err()), 1U) << agent.err();
        EXPECT_EQ(agent.err().find("directnet: folder /run/directnet: "), 0U) << agent.err();
    }
}

TEST_F(Ring, FileThatIsCutOffIsSaidOnceAndTheAgentGoesOn) {
    LiveProgram agent = started("RLFILE=/run/ring exec \"$D\" run");
    ASSERT_TRUE(agent.learned()) << agent.err();
    fs::resize_file("/run/ring", 0);
    for (const std::string address : {"10.1.0.1/32", "10.1.0.2/32"}) {
        ASSERT_TRUE(ip("addr add " + address + " dev lo"));
        EXPECT_TRUE(agent.untilOut("+ default " + address)) << agent.err();
    }
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    EXPECT_EQ(agent.err(), "directnet: ring trace file /run/ring: somebody has cut it off, or "
                           "the disk is full; no longer written\n");
    // The signal behind this ends the process where it means anything else.
    LiveProgram other = started("exec \"$D\" run");
    ASSERT_TRUE(other.learned()) << other.err();
    EXPECT_EQ(other.endedBy(SIGBUS), -1);
}

} // namespace
