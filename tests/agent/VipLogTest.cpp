#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <unistd.h>

#include "tests/agent/Program.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using TestSupport::ProgramRun;
using TestSupport::runProgram;
using TestSupport::runShell;

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

} // namespace
