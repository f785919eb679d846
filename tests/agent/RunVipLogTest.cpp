#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <string>
#include <sys/stat.h>

#include "agent/base/FileDescriptor.h"
#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace {

using namespace TestSupport;
using Agent::FileDescriptor;
using testing::HasSubstr;
using RunVipLog = LiveTest;

/// What the agent is to know of virtual addresses, by the interfaces that carry one.
void configure(const std::string& interfaces) {
    std::ofstream("/run/config.json")
        << R"({"virtualIps": {"ipv4": {"default": {"10.1.0.9/24": {)" << interfaces << "}}}}}";
}

LiveProgram makeAgent(const std::string& log) {
    configure(R"("e1": true)");
    return LiveProgram("run --config /run/config.json --vip-log " + log);
}

TEST_F(RunVipLog, FollowerPrintsChangesAsTheyComeAndKnowsWhetherTheLogWasEnded) {
    LiveProgram agent = makeAgent("/run/log");
    ASSERT_TRUE(agent.learned());
    {
        LiveProgram text("vip-log --follow /run/log");
        EXPECT_TRUE(text.untilOut("  10.1.0.9/24  e1\n")) << text.out() << text.err();
        LiveProgram json("vip-log --follow --json /run/log");
        EXPECT_TRUE(json.untilOut(R"("10.1.0.9/24":{"e1":true})")) << json.out();
        configure(R"("e1": true, "e2": true)");
        agent.signal(SIGHUP);
        EXPECT_TRUE(text.untilOut("~ default ipv4 10.1.0.9/24  e1  e2\n")) << text.out();
        EXPECT_TRUE(json.untilOut(R"({"change":"changes","family":"ipv4","vrf":"default",)"
                                  R"("virtualIp":"10.1.0.9/24",)"
                                  R"("interfaces":{"e1":true,"e2":true}})"
                                  "\n"))
            << json.out();
        const auto second = runProgram("run --once --vip-log /run/log");
        EXPECT_EQ(second.status, 1);
        EXPECT_THAT(second.err, HasSubstr("/run/log: is being written"));
        agent.endedBy(SIGKILL);
        EXPECT_EQ(text.wait(), 2);
        EXPECT_THAT(text.err(), HasSubstr("the log ends early"));
        EXPECT_EQ(json.wait(), 2);
    }
    LiveProgram next = makeAgent("/run/log");
    ASSERT_TRUE(next.learned());
    LiveProgram text("vip-log --follow /run/log");
    EXPECT_TRUE(text.untilOut("  10.1.0.9/24  e1\n")) << text.out() << text.err();
    EXPECT_EQ(next.endedBy(SIGTERM), 0) << next.err();
    EXPECT_EQ(text.wait(), 0) << text.err();
    EXPECT_EQ(text.err(), "");
}

TEST_F(RunVipLog, ReaderThatStandsStillOrGoesHoldsNothingUp) {
    ASSERT_EQ(::mkfifo("/run/pipe", 0600), 0);
    const auto without = runProgram("run --once --vip-log /run/pipe");
    EXPECT_EQ(without.status, 1);
    EXPECT_THAT(without.err, HasSubstr("/run/pipe: "));

    FileDescriptor reader(::open("/run/pipe", O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    LiveProgram agent = makeAgent("/run/pipe");
    ASSERT_TRUE(agent.learned());
    // More than the pipe takes.
    std::string many;
    for (int i = 0; i < 5000; ++i) {
        many += (i == 0 ? "\"e" : ",\"e") + std::to_string(i) + "\": true";
    }
    configure(many);
    agent.signal(SIGHUP);
    EXPECT_TRUE(agent.untilShown("vips", "e4999")) << agent.err();
    EXPECT_EQ(agent.err(), "");

    reader = FileDescriptor();
    const std::string said = "directnet: /run/pipe: Broken pipe; this log ends here\n";
    EXPECT_TRUE(agent.untilErr(said)) << agent.err();
    configure(R"("e1": true, "last": true)");
    agent.signal(SIGHUP);
    EXPECT_TRUE(agent.untilShown("vips", "last")) << agent.err();
    EXPECT_EQ(agent.err(), said);
    EXPECT_EQ(agent.endedBy(SIGTERM), 1);
}

} // namespace
