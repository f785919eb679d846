#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "tests/agent/Program.h"

namespace {

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

class VipLogTest : public testing::Test {
  protected:
    VipLogTest() { std::filesystem::create_directory(folder_); }
    ~VipLogTest() override { std::filesystem::remove_all(folder_); }

    static ProgramRun replay(const std::string& log, const std::string& scenario = someChanges) {
        return runProgram("replay --vip-log " + log + " -", scenario);
    }

    const std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() / ("vip-log-test-" + std::to_string(::getpid()));
    const std::string log_ = folder_ / "log";
};

TEST_F(VipLogTest, readerInAnotherProcessEndsWithOtherTables) {
    const ProgramRun run = runShell("\"$D\" replay --vip-log /dev/fd/3 - 3>&1 >/dev/null | "
                                    "\"$D\" vip-log --json -",
                                    someChanges);
    EXPECT_EQ(run.out, tables);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
}

TEST_F(VipLogTest, badLogIsFollowedOrCrashesTheReader) {
    ASSERT_EQ(replay(log_).err, "");
    const ProgramRun readable = runProgram("vip-log " + log_);
    EXPECT_EQ(readable.status, 0);
    EXPECT_NE(readable.out.find("10.1.1.1/24"), std::string::npos) << readable.out;

    const auto size = std::filesystem::file_size(log_);
    for (const std::uintmax_t kept : {size - 1, size / 2, std::uintmax_t{20}, std::uintmax_t{0}}) {
        std::filesystem::resize_file(log_, kept);
        const ProgramRun cut = runProgram("vip-log --json " + log_);
        EXPECT_EQ(cut.status, 2);
        // What it had comes before the error.
        EXPECT_EQ(cut.out.empty(), kept <= 20) << cut.out;
        if (kept == size - 1) {
            EXPECT_EQ(cut.out, tables);
        }
        EXPECT_EQ(cut.err.find(log_ + ": attribute log, byte "), 0U) << cut.err;
    }
}

TEST_F(VipLogTest, followerMissesAChange) {
    const ProgramRun run = runShell("\"$D\" replay --vip-log /dev/fd/3 - 3>&1 >/dev/null | "
                                    "\"$D\" vip-log --follow -",
                                    someChanges);
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

TEST_F(VipLogTest, scenarioThatFailsLeavesAWholeLookingLog) {
    EXPECT_EQ(replay(log_, std::string(someChanges) + "{").status, 2);
    const ProgramRun run = runProgram("vip-log " + log_);
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("the log ends early"), std::string::npos) << run.err;
}

TEST_F(VipLogTest, readerThatGoesStopsTheAgent) {
    std::string many; // more than a pipe holds
    for (int number = 0; number < 3000; ++number) {
        many += (many.empty() ? "\"10." : ", \"10.") + std::to_string(number / 256) + "."
                + std::to_string(number % 256) + ".1/24\": {\"Vlan10\": true}";
    }
    const ProgramRun run = runShell(
        "exec 4>&1; { \"$D\" replay --json --vip-log /dev/fd/3 - 3>&1 >&4; echo status $? >&4; } | "
        "head -c 8 >/dev/null",
        someChanges + (R"({"set": {"virtualIps": {"ipv4": {"red": {)" + many) + "}}}}}\n");
    EXPECT_NE(run.out.find("\"viaSets\":"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\nstatus 1\n"), std::string::npos) << run.out;
    EXPECT_NE(run.err.find("/dev/fd/3: Broken pipe\n"), std::string::npos) << run.err;
}

TEST_F(VipLogTest, logThatCannotBeWrittenGoesUnnoticed) {
    for (const std::string file : {"/nonexistent/log", "/dev/full"}) {
        const ProgramRun run = replay(file);
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.err.find(file + ": "), std::string::npos) << run.err;
    }
}

} // namespace
