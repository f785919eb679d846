#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "agent/base/FileDescriptor.h"
#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace {

using namespace TestSupport;
using Agent::FileDescriptor;
using testing::HasSubstr;
using testing::StartsWith;
using RunVipLog = LiveTest;

/// Changes of which only the last state counts.
constexpr const char* someChanges =
    R"({"set": {"vrfs": {"default": {"id": 0}, "red": {"id": 5, "status": {"active": true}}}}}
{"at": 1, "set": {"virtualIps": {"subnetRoutes": true, "ipv4": {"red": {"10.1.1.1/24": {"Vlan10": true, "Vlan\n\"": true}}}}}}
{"at": 2, "set": {"virtualIps": {"ipv4": {"gone": {"10.9.1.1/24": {"Vlan10": true}}}, "ipv6": {"default": {"2001:db8::9": {"Vlan10": true}}}}}}
{"at": 3, "set": {"virtualIps": {"ipv4": {"gone": null, "red": {"10.1.1.1/24": {"Vlan10": null, "Vlan20": true}, "10.1.0.1/32": {}}}}}}
)";
constexpr const char* tables =
    R"({"ipv4":{"default":{"subnetRoutes":true,"virtualIps":{}},)"
    R"("red":{"subnetRoutes":true,"virtualIps":{"10.1.0.1/32":{},)"
    R"("10.1.1.1/24":{"Vlan\n\"":true,"Vlan20":true}}}},)"
    R"("ipv6":{"default":{"subnetRoutes":false,"virtualIps":{"2001:db8::9":{"Vlan10":true}}},)"
    R"("red":{"subnetRoutes":false,"virtualIps":{}}}})"
    "\n";

ProgramRun replay(const std::string& log, const std::string& scenario = someChanges) {
    return runProgram("replay --vip-log " + log + " -", scenario);
}

/// What a reader in another process prints of the changes while they are written.
ProgramRun readWith(const std::string& options) {
    return runShell("\"$D\" replay --vip-log /dev/fd/3 - 3>&1 >/dev/null | \"$D\" vip-log "
                        + options,
                    someChanges);
}

TEST(VipLog, ReaderInAnotherProcessEndsWithTheSameTables) {
    const ProgramRun run = readWith("--json -");
    EXPECT_EQ(run.out, tables);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
}

TEST(VipLog, LogThatEndsEarlyIsRefusedAfterWhatItHad) {
    const std::string log =
        std::filesystem::temp_directory_path() / ("vip-log-test-" + std::to_string(::getpid()));
    EXPECT_EQ(replay(log, std::string(someChanges) + "{").status, 2);
    const ProgramRun failed = runProgram("vip-log " + log);
    EXPECT_EQ(failed.status, 2);
    EXPECT_THAT(failed.err, HasSubstr("the log ends early"));

    ASSERT_EQ(replay(log).err, "");
    const ProgramRun readable = runProgram("vip-log " + log);
    EXPECT_EQ(readable.status, 0);
    EXPECT_THAT(readable.out, HasSubstr("10.1.1.1/24"));
    const auto size = std::filesystem::file_size(log);
    for (const std::uintmax_t kept : {size - 1, size / 2, std::uintmax_t{20}, std::uintmax_t{0}}) {
        std::filesystem::resize_file(log, kept);
        const ProgramRun cut = runProgram("vip-log --json " + log);
        EXPECT_EQ(cut.status, 2);
        EXPECT_EQ(cut.out.empty(), kept <= 20) << cut.out;
        if (kept == size - 1) {
            EXPECT_EQ(cut.out, tables);
        }
        EXPECT_THAT(cut.err, StartsWith(log + ": attribute log, byte "));
    }
    std::filesystem::remove(log);
}

TEST(VipLog, FollowerPrintsEveryChange) {
    const ProgramRun run = readWith("--follow -");
    std::size_t at = 0;
    for (const std::string line :
         {"+ red ipv4, subnet routes off\n", "~ red ipv4, subnet routes on\n",
          "+ gone ipv4 10.9.1.1/24\n", "~ gone ipv4 10.9.1.1/24  Vlan10\n",
          "~ default ipv6 2001:db8::9  Vlan10\n", "- gone ipv4 10.9.1.1/24\n- gone ipv4\n",
          "~ red ipv4 10.1.1.1/24  Vlan\\x0a\"  Vlan20\n"}) {
        at = run.out.find(line, at);
        ASSERT_NE(at, std::string::npos) << line << run.out;
    }
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
}

TEST(VipLog, ReaderThatGoesDoesNotStopTheReplay) {
    std::string many; // more than a pipe holds
    for (int number = 0; number < 3000; ++number) {
        many += (many.empty() ? "\"10." : ", \"10.") + std::to_string(number / 256) + "."
                + std::to_string(number % 256) + ".1/24\": {\"Vlan10\": true}";
    }
    const ProgramRun run = runShell(
        "exec 4>&1; { \"$D\" replay --json --vip-log /dev/fd/3 - 3>&1 >&4; echo status $? >&4; } | "
        "head -c 8 >/dev/null",
        someChanges + (R"({"set": {"virtualIps": {"ipv4": {"red": {)" + many) + "}}}}}\n");
    EXPECT_THAT(run.out, HasSubstr("\"viaSets\":"));
    EXPECT_THAT(run.out, HasSubstr("\nstatus 1\n"));
    EXPECT_THAT(run.err, HasSubstr("/dev/fd/3: Broken pipe\n"));
}

TEST(VipLog, LogThatCannotBeWrittenIsAFailure) {
    for (const std::string file : {"/nonexistent/log", "/dev/full"}) {
        const ProgramRun run = replay(file);
        EXPECT_EQ(run.status, 1);
        EXPECT_THAT(run.err, HasSubstr(file + ": "));
    }
}

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
