#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace Agent {
namespace {

struct Result {
    std::string output; // of both streams
    int status;
};

Result shell(const std::string& command) {
    Result result{"", -1};
    FILE* const pipe = ::popen(("D=" DIRECTNET_EXECUTABLE "; exec 2>&1; " + command).c_str(), "r");
    char piece[4096];
    while (const std::size_t size = std::fread(piece, 1, sizeof piece, pipe)) {
        result.output.append(piece, size);
    }
    const int status = ::pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

class VipLogTest : public testing::Test {
  protected:
    VipLogTest() { std::filesystem::create_directory(folder_); }
    ~VipLogTest() override { std::filesystem::remove_all(folder_); }

    void scenarioIs(const std::string& text) const { std::ofstream(scenario_) << text; }

    /// Changes of which only the last state counts.
    static std::string someChanges() {
        return R"({"set": {"vrfs": {"default": {"id": 0}, "red": {"id": 5, "status": {"active": true}}}}}
{"at": 1, "set": {"virtualIps": {"subnetRoutes": true, "ipv4": {"red": {"10.1.1.1/24": {"Vlan10": true, "Vlan\n\"": true}}}}}}
{"at": 2, "set": {"virtualIps": {"ipv4": {"gone": {"10.9.1.1/24": {"Vlan10": true}}}, "ipv6": {"default": {"2001:db8::9": {"Vlan10": true}}}}}}
{"at": 3, "set": {"virtualIps": {"ipv4": {"gone": null, "red": {"10.1.1.1/24": {"Vlan10": null, "Vlan20": true}, "10.1.0.1/32": {}}}}}}
)";
    }
    static std::string tables() {
        return R"({"ipv4":{"default":{"subnetRoutes":true,"virtualIps":{}},)"
               R"("red":{"subnetRoutes":true,"virtualIps":{"10.1.0.1/32":{},)"
               R"("10.1.1.1/24":{"Vlan\n\"":true,"Vlan20":true}}}},)"
               R"("ipv6":{"default":{"subnetRoutes":false,"virtualIps":{"2001:db8::9":{"Vlan10":true}}},)"
               R"("red":{"subnetRoutes":false,"virtualIps":{}}}})"
               "\n";
    }

    const std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() / ("vip-log-test-" + std::to_string(::getpid()));
    const std::string scenario_ = folder_ / "scenario.jsonl";
    const std::string log_ = folder_ / "log";
};

TEST_F(VipLogTest, readerInAnotherProcessEndsWithOtherTables) {
    scenarioIs(someChanges());
    const Result result = shell("\"$D\" replay --vip-log /dev/fd/3 " + scenario_
                                + " 3>&1 >/dev/null | \"$D\" vip-log --json -");
    EXPECT_EQ(result.output, tables());
    EXPECT_EQ(result.status, 0);
}

TEST_F(VipLogTest, badLogIsFollowedOrCrashesTheReader) {
    scenarioIs(someChanges());
    ASSERT_EQ(shell("\"$D\" replay --vip-log " + log_ + " " + scenario_ + " >/dev/null").output,
              "");
    const Result readable = shell("\"$D\" vip-log " + log_);
    EXPECT_EQ(readable.status, 0);
    EXPECT_NE(readable.output.find("10.1.1.1/24"), std::string::npos) << readable.output;

    const auto size = std::filesystem::file_size(log_);
    for (const std::uintmax_t kept : {size - 1, size / 2, std::uintmax_t{20}, std::uintmax_t{0}}) {
        std::filesystem::resize_file(log_, kept);
        const Result result = shell("\"$D\" vip-log --json " + log_);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output.find(log_ + ": attribute log, byte "), 0U) << result.output;
    }
}

TEST_F(VipLogTest, scenarioThatFailsLeavesAWholeLookingLog) {
    scenarioIs(someChanges() + "{");
    EXPECT_EQ(shell("\"$D\" replay --vip-log " + log_ + " " + scenario_ + " >/dev/null").status, 2);
    const Result result = shell("\"$D\" vip-log " + log_);
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.output.find("the log ends early"), std::string::npos) << result.output;
}

TEST_F(VipLogTest, readerThatGoesStopsTheAgent) {
    std::string many; // more than a pipe holds
    for (int number = 0; number < 3000; ++number) {
        many += (many.empty() ? "\"10." : ", \"10.") + std::to_string(number / 256) + "."
                + std::to_string(number % 256) + ".1/24\": {\"Vlan10\": true}";
    }
    scenarioIs(someChanges() + R"({"set": {"virtualIps": {"ipv4": {"red": {)" + many + "}}}}}\n");
    const Result result = shell("exec 4>&1; { \"$D\" replay --json --vip-log /dev/fd/3 " + scenario_
                                + " 3>&1 >&4; echo status $? >&4; } | head -c 8 >/dev/null");
    EXPECT_NE(result.output.find("\"viaSets\":"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("/dev/fd/3: Broken pipe\nstatus 1\n"), std::string::npos)
        << result.output;
}

TEST_F(VipLogTest, logThatCannotBeWrittenGoesUnnoticed) {
    scenarioIs(someChanges());
    for (const char* file : {"/nonexistent/log", "/dev/full"}) {
        const Result result =
            shell(std::string("\"$D\" replay --vip-log ") + file + " " + scenario_ + " >/dev/null");
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.output.find(std::string(file) + ": "), std::string::npos) << result.output;
    }
}

} // namespace
} // namespace Agent
