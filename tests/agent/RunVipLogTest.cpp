#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

#include "agent/base/FileDescriptor.h"
#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace {

using Agent::FileDescriptor;
using Agent::Linux::inPrivateNamespace;
using TestSupport::LiveProgram;
using TestSupport::runProgram;

/// What the agent is to know of virtual addresses, by the interfaces that carry one.
void configure(const std::string& interfaces) {
    std::ofstream("/run/config.json")
        << R"({"virtualIps": {"ipv4": {"default": {"10.1.0.9/24": {)" << interfaces << "}}}}}";
}

LiveProgram makeAgent(const std::string& log) {
    configure(R"("e1": true)");
    return LiveProgram({"run", "--config", "/run/config.json", "--vip-log", log});
}

} // namespace

TEST(RunVipLog, FollowerPrintsChangesAsTheyComeAndKnowsWhetherTheLogWasEnded) {
    inPrivateNamespace([] {
        LiveProgram agent = makeAgent("/run/log");
        ASSERT_TRUE(agent.untilOut("+ default 127.0.0.0/8"));
        {
            LiveProgram text({"vip-log", "--follow", "/run/log"});
            EXPECT_TRUE(text.untilOut("  10.1.0.9/24  e1\n")) << text.out() << text.err();
            LiveProgram json({"vip-log", "--follow", "--json", "/run/log"});
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
            EXPECT_NE(second.err.find("/run/log: is being written"), std::string::npos)
                << second.err;
            agent.endedBy(SIGKILL);
            EXPECT_EQ(text.wait(), 2);
            EXPECT_NE(text.err().find("the log ends early"), std::string::npos) << text.err();
            EXPECT_EQ(json.wait(), 2);
        }
        LiveProgram next = makeAgent("/run/log");
        ASSERT_TRUE(next.untilOut("+ default 127.0.0.0/8"));
        LiveProgram text({"vip-log", "--follow", "/run/log"});
        EXPECT_TRUE(text.untilOut("  10.1.0.9/24  e1\n")) << text.out() << text.err();
        EXPECT_EQ(next.endedBy(SIGTERM), 0) << next.err();
        EXPECT_EQ(text.wait(), 0) << text.err();
        EXPECT_EQ(text.err(), "");
    });
}

TEST(RunVipLog, ReaderThatStandsStillOrGoesHoldsNothingUp) {
    inPrivateNamespace([] {
        ASSERT_EQ(::mkfifo("/run/pipe", 0600), 0);
        const auto without = runProgram("run --once --vip-log /run/pipe");
        EXPECT_EQ(without.status, 1);
        EXPECT_NE(without.err.find("/run/pipe: "), std::string::npos) << without.err;

        FileDescriptor reader(::open("/run/pipe", O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        LiveProgram agent = makeAgent("/run/pipe");
        ASSERT_TRUE(agent.untilOut("+ default 127.0.0.0/8"));
        // More than the pipe takes.
        std::string many;
        for (int i = 0; i < 5000; ++i) {
            many += (i == 0 ? "\"e" : ",\"e") + std::to_string(i) + "\": true";
        }
        configure(many);
        agent.signal(SIGHUP);
        EXPECT_TRUE(agent.until([] {
            return runProgram("show vips").out.find("e4999") != std::string::npos;
        })) << agent.err();
        EXPECT_EQ(agent.err(), "");

        reader = FileDescriptor();
        const std::string said = "directnet: /run/pipe: Broken pipe; this log ends here\n";
        EXPECT_TRUE(agent.untilErr(said)) << agent.err();
        configure(R"("e1": true, "e2": true)");
        agent.signal(SIGHUP);
        EXPECT_TRUE(agent.until([] {
            return runProgram("show vips").out.find("e4999") == std::string::npos;
        })) << agent.err();
        EXPECT_EQ(agent.err(), said);
        EXPECT_EQ(agent.endedBy(SIGTERM), 1);
    });
}
