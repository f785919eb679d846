#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "agent/base/SocketAddress.h"
#include "agent/base/Utf8.h"
#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace {

using namespace TestSupport;
using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using testing::StartsWith;
using Operator = LiveTest;

TEST_F(Operator, ClientTellsACleanStopFromACrashAndGoesOnWithTheNextAgent) {
    ASSERT_TRUE(ip("addr add 10.1.0.1/32 dev lo"));
    LiveProgram first("run");
    ASSERT_TRUE(first.learned());
    LiveProgram plain("watch --json");
    LiveProgram lasting("watch --reconnect --vrf default --prefix 10.0.0.0/8");
    ASSERT_TRUE(plain.untilOut("complete"));
    ASSERT_TRUE(lasting.untilOut("= default 10.1.0.1/32")) << lasting.err();
    ASSERT_TRUE(ip("addr add 11.0.0.1/32 dev lo\naddr add 10.1.0.2/32 dev lo"));
    EXPECT_TRUE(lasting.untilOut("+ default 10.1.0.2/32"));
    EXPECT_EQ(first.endedBy(SIGTERM), 0);
    EXPECT_EQ(plain.wait(), 0) << plain.err();
    EXPECT_TRUE(lasting.untilErr("the agent has stopped; waiting for it\n"));

    ASSERT_TRUE(ip("addr add 10.1.0.3/32 dev lo"));
    LiveProgram second("run");
    // There at the start, or comes, whichever is first: the route or the watcher.
    EXPECT_TRUE(lasting.untilOut(" default 10.1.0.3/32")) << lasting.err();
    EXPECT_THAT(lasting.out(), AllOf(Not(HasSubstr("11.0.0.1")), Not(HasSubstr("127."))));
    EXPECT_EQ(runProgram("watch --reconnect >/dev/full").status, 1) << "no agent helps there";
    LiveProgram cut("watch");
    ASSERT_TRUE(cut.untilOut(" default 10.1.0.1/32"));
    second.endedBy(SIGKILL);
    EXPECT_EQ(cut.wait(), 1);
    EXPECT_TRUE(lasting.untilErr("has closed the connection; waiting for it\n"));
}

TEST_F(Operator, ShownRoutesAreThoseOfThePrefixAndTheInterface) {
    // More routes than an answer looks at in one turn.
    ASSERT_TRUE(ip(linkWithAddresses(300) + "addr add 11.0.0.1/32 dev lo"));
    LiveProgram agent("run");
    ASSERT_TRUE(agent.untilShown("vrfs", " 1205 "));
    EXPECT_THAT(show("routes 10.1.0.0/24"),
                AllOf(HasSubstr("10.1.0.0/24"), HasSubstr("10.1.0.255/32"), Not(HasSubstr("10.0.")),
                      Not(HasSubstr("11.0."))));
    EXPECT_THAT(show("routes 0.0.0.0/0 --intf lo"),
                AllOf(HasSubstr("11.0.0.1/32"), Not(HasSubstr("10.1.0."))));
    EXPECT_EQ(countOf("/", show("routes 11.0.0.1")), 1U);
    EXPECT_EQ(runProgram("show routes 10.1.0.1/16").status, 2) << "it has host bits";
    EXPECT_THAT(runProgram("show vrfs --intf lo").err, HasSubstr("select routes"));
}

TEST_F(Operator, SocketIsForWhomItIsMeantAndComesBackWhenItsFileIsRemoved) {
    const std::string socket = "/run/own.sock";
    LiveProgram agent("run --socket " + socket + " --socket-mode 640 --socket-group "
                      + std::to_string(::getegid()));
    ASSERT_TRUE(agent.learned()) << agent.err();
    const std::string ask = "vrfs --socket " + socket;
    EXPECT_TRUE(agent.untilShown(ask, "default"));
    struct stat status {};
    ASSERT_EQ(::stat(socket.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);

    std::filesystem::remove(socket);
    std::filesystem::remove(socket + ".lock");
    EXPECT_TRUE(agent.untilShown(ask, "default")) << agent.err();
    EXPECT_EQ(runProgram("run --socket " + socket).status, 1) << "it is in use again";

    std::filesystem::remove(socket);
    std::ofstream(socket) << "precious";
    EXPECT_TRUE(agent.untilErr("there is a file that is no socket; nobody can ask this agent"));
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    EXPECT_EQ(readFile(socket), "precious");
}

TEST_F(Operator, TwoNamespacesHaveTwoDefaultSockets) {
    ASSERT_TRUE(ip("netns add other\nlink add here up type veth peer name there"));
    LiveProgram agent("run");
    LiveProgram other = LiveProgram::ofShell("exec ip netns exec other \"$D\" run");
    EXPECT_TRUE(agent.untilShown("vrfs", "default"));
    const auto shown = [] { return runShell("ip netns exec other \"$D\" show routes").out; };
    EXPECT_TRUE(other.until([&] { return shown().find("vias 0 ipv4") != std::string::npos; }))
        << shown() << other.err();
    EXPECT_THAT(show("routes"), Not(HasSubstr("vias 0 ipv4")));
}

TEST_F(Operator, CheckSaysWhatIsWrongWithAConfigurationAndTouchesNothing) {
    std::ofstream("/run/good.json") << R"({"ribWaits": {"default": true},
        "leaks": {"ipv4": {"default": {"10.0.0.0/8": {"green": true}}}}})";
    const auto good = runProgram("run --check --config /run/good.json");
    EXPECT_EQ(good.status, 0) << good.err;
    EXPECT_EQ(good.out, "/run/good.json: would do\n");
    EXPECT_THAT(good.err, HasSubstr("/run/good.json: VRF green: not active"));
    EXPECT_EQ(countOf("\n", good.err), 1U) << good.err;
    EXPECT_FALSE(std::filesystem::exists(Agent::defaultSocketPath()));
    EXPECT_FALSE(std::filesystem::exists("/dev/shm/directnet"));

    std::ofstream("/run/bad.json") << "{\"vrfs\": {\n \"a\": {\"id\": 7}, \"ö\": {\"id\": 7}}}";
    const auto bad = runProgram("run --check --config /run/bad.json");
    EXPECT_EQ(bad.status, 2);
    EXPECT_THAT(bad.err, HasSubstr("/run/bad.json:2:24: /vrfs/ö/id: 7 is the id of VRF a\n"));
    EXPECT_EQ(bad.out, "");
}

TEST_F(Operator, LinesHaveALevelForTheJournalAndTheTimeOnRequest) {
    runShell("touch /run/log; JOURNAL_STREAM=$(stat -c %d:%i /run/log) "
             "\"$D\" run --check --config /nowhere 2>>/run/log");
    EXPECT_THAT(readFile("/run/log"), StartsWith("<3>/nowhere: "));
    LiveProgram agent("run --timestamps --trace 0");
    LiveProgram json("run --timestamps --json --no-socket --no-tables");
    ASSERT_TRUE(agent.learned());
    ASSERT_TRUE(json.learned());
    const std::string time = "[0-9]+-[0-9]+-[0-9]+T[0-9]+:[0-9]+:[0-9]+[.][0-9]+[-+][0-9]+:[0-9]+";
    EXPECT_THAT(agent.out(), MatchesRegex("(" + time + " [+] default [^\n]*\n)+"));
    EXPECT_THAT(json.out(), StartsWith("{\"date\":\"20"));
    EXPECT_THAT(agent.err(), MatchesRegex("(" + time + " DirectNet [^\n]*\n)+"));
}

TEST(Printable, KeepsCharactersAndEscapesWhatSteersATerminal) {
    EXPECT_EQ(Agent::printable("Zürich 東京"), "Zürich 東京");
    EXPECT_EQ(Agent::printable("a\x1b[2J\n\x7f"), "a\\x1b[2J\\x0a\\x7f");
    EXPECT_EQ(Agent::printable("\xff\xc3\xe2\x82"), "\\xff\\xc3\\xe2\\x82");
    EXPECT_EQ(Agent::printable("\xc2\x9b\xe2\x80\xae"), "\\xc2\\x9b\\xe2\\x80\\xae");
    EXPECT_EQ(Agent::columnsOf("Zürich"), 6U);
    EXPECT_EQ(Agent::columnsOf("東京"), 4U);
    EXPECT_EQ(Agent::columnsOf("e\xcc\x81"), 1U);
}

} // namespace
