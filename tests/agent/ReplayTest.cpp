#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <sstream>
#include <string>

#include <nlohmann/json.hpp>

#include "agent/topics/Topics.h"
#include "tests/agent/Program.h"

namespace {

using TestSupport::ProgramRun;
using TestSupport::readFile;
using TestSupport::runProgram;
using TestSupport::runShell;

TEST(Replay, ScenariosEndInTheExpectedStates) {
    const std::filesystem::path folder(DIRECTNET_SOURCE_DIR "/tests/scenarios");
    int scenarios = 0;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        std::filesystem::path path = file;
        if (path.extension() == ".jsonl") {
            const ProgramRun run = runProgram("replay --json '" + path.string() + '\'');
            EXPECT_EQ(run.err, "");
            EXPECT_EQ(run.status, 0);
            EXPECT_EQ(run.out, readFile(path.replace_extension(".expected.json"))) << path;
            ++scenarios;
        }
    }
    EXPECT_GT(scenarios, 0);
}

TEST(Replay, BadLineIsRefusedByFileLineAndPointerAndWhatWasPrintedStands) {
    const std::string good = R"({"at":1,"set":{"vrfs":{"default":{"id":0}}}})"
                             "\n\n"
                             R"({"show":"before"})"
                             "\n";
    const struct {
        const char* line;
        const char* message;
    } cases[] = {
        {R"({"set":{"vrfs":{"red":{"id":0}}}})",
         "-:4:24: /set/vrfs/red/id: 0 is the id of VRF default\n"},
        {R"({"set":{"gracefulRestart":true}})",
         "-:4:9: /set/gracefulRestart: cannot change once the agent has started\n"},
        {R"({"at":0.5,"show":"earlier"})", "-:4:2: /at: is earlier than the line before\n"},
        {R"({"set":{"ipv6":{"a\u001b\nb":{"e":{}}},"x":1}})", "-:4:40: /set/x: unknown key\n"},
        {R"({"set":{"ipv6":{"a\u001b\nb":1}}})",
         "-:4:17: /set/ipv6/a\\x1b\\x0ab: must be an object\n"},
        {R"({"set":{"vrfs")", "-:4:15: /set/vrfs: invalid JSON at byte 15\n"},
    };
    for (const auto& bad : cases) {
        const ProgramRun run = runProgram("replay --json -", good + bad.line);
        EXPECT_EQ(run.status, 2) << bad.line;
        EXPECT_EQ(run.err, bad.message);
        EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 1) << run.out;
        EXPECT_NE(run.out.find(R"("label":"before")"), std::string::npos) << run.out;
    }
}

TEST(Replay, ManyLinesInOneMomentMakeOneState) {
    constexpr int count = 5000;
    std::ostringstream scenario;
    scenario << R"({"set":{"vrfs":{"default":{"id":0}},"kernel":{"default":{"e":{}}}}})" << '\n';
    for (int index = 0; index < count; ++index) {
        scenario << R"({"set":{"ipv4":{"default":{"e":{"secondary":{"10.)" << index / 250 << '.'
                 << index % 250 << R"(.1/32":true}}}}}})" << '\n';
    }
    const ProgramRun run = runProgram("replay --json -", scenario.str());
    ASSERT_EQ(run.status, 0) << run.err;
    const auto state = nlohmann::json::parse(run.out);
    EXPECT_EQ(state["vrfs"]["default"]["ipv4"].size(), std::size_t{count});
    EXPECT_EQ(state["viaSets"], 4);
}

TEST(Replay, TablesForPeopleAreAligned) {
    const ProgramRun run = runProgram(
        "replay -",
        R"({"set":{"vrfs":{"default":{"id":0}},"kernel":{"default":{"Ethernet1":{},"e\u001b":{}}},)"
        R"("ribWaits":{"default":true},"ipv4":{"default":{"Ethernet1":{"address":"10.1.1.5/31"},)"
        R"("e\u001b":{"address":"192.168.100.200/32"}}}}})"
        "\n{\"show\":\"at once\"}");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, R"(time 1.0  at once
VRF default  id 0, ready ipv4 no ipv6 no, rib waiting, backlog 3
vias 2 ipv4, 0 ipv6; via sets 8

time 1.04
VRF default  id 0, ready ipv4 yes ipv6 yes, rib ready at 1.04, backlog 0
  IPv4 PREFIX         TYPE             INTERFACE  VIA
  10.1.1.4/31         11 connected     Ethernet1  connected
  10.1.1.5/32         1 receive        Ethernet1  receive
  192.168.100.200/32  2 attached-host  e\x1b      receive
vias 2 ipv4, 0 ipv6; via sets 8
)");
}

TEST(CommandLine, ColoursOnATerminalOnlyAndNotAgainstNoColor) {
    const std::string file = DIRECTNET_SOURCE_DIR "/tests/scenarios/worked-example-24.jsonl";
    const std::string onTerminal = "script -qec \"$D replay '" + file + "'\" /dev/null";
    const std::string title = "\033[1mVRF default\033[0m  id 0";
    EXPECT_NE(runShell("unset NO_COLOR; " + onTerminal).out.find(title), std::string::npos);
    EXPECT_NE(runShell("export NO_COLOR=; " + onTerminal).out.find(title), std::string::npos);
    EXPECT_EQ(runShell("export NO_COLOR=1; " + onTerminal).out.find('\033'), std::string::npos);
    EXPECT_EQ(runProgram("replay '" + file + '\'').out.find('\033'), std::string::npos);
}

TEST(CommandLine, ErrorsHaveTheRightExitStatus) {
    const struct {
        const char* arguments;
        int status;
        const char* out; // or a part of it
        const char* err;
    } cases[] = {
        {"--version", 0, "0.", ""},
        {"replay --version", 0, "0.", ""},
        {"ringlog --help", 0, "FILE", ""},
        {"", 2, "", "A subcommand is required"},
        {"reply", 2, "", "directnet: A subcommand is required; see --help\n"},
        {"replay", 2, "", "FILE is required"},
        {"replay --trace 10 -", 2, "", "not in range"},
        {"replay /nowhere/at-all", 2, "", "/nowhere/at-all: No such file or directory"},
        {"replay /", 2, "", "/: is a directory"},
        {"ringlog /dev/null", 2, "", "/dev/null: "},
        {"replay - >/dev/full", 1, "", "cannot write the output"},
        {"run --once >/dev/full", 1, "", "cannot write the output"},
        {"run --no-socket --no-tables >/dev/full", 1, "", "cannot write the output"},
        {"run --no-socket --no-tables >&-", 1, "", "cannot write the output"},
        {"replay --vip-log '' -", 2, "", "must not be empty"},
        {"show --vrf \xff", 2, "", "must be a name"},
        {"--help >/dev/full", 1, "", "cannot write the output"},
        {"replay --trace 0 -", 0, "time 1.0\n", ""},
    };
    for (const auto& expected : cases) {
        const ProgramRun run = runProgram(expected.arguments);
        EXPECT_EQ(run.status, expected.status) << expected.arguments << '\n' << run.err;
        EXPECT_NE(run.out.find(expected.out), std::string::npos) << run.out;
        EXPECT_NE(run.err.find(expected.err), std::string::npos) << run.err;
    }
}

TEST(CommandLine, HelpFitsATerminal) {
    for (const std::string command : {"", "run ", "show ", "leaks "}) {
        std::istringstream help(runProgram(command + "--help").out);
        std::size_t lines = 0;
        for (std::string line; std::getline(help, line); ++lines) {
            EXPECT_LE(line.size(), 79U) << line;
        }
        EXPECT_GT(lines, 10U) << command;
    }
}

TEST(CommandLine, HelpAndManualNameEveryTopic) {
    const std::regex breaks("\\s+");
    const std::string help = std::regex_replace(runProgram("show --help").out, breaks, " ");
    const std::string manual = readFile(DIRECTNET_SOURCE_DIR "/docs/agent.md");
    const std::size_t table = manual.find("| Topic ");
    ASSERT_NE(table, std::string::npos);
    for (const Agent::Topic* topic : Agent::topics()) {
        const std::string name(topic->name);
        EXPECT_NE(help.find(name + ": " + std::string(topic->help)), std::string::npos) << help;
        const std::size_t row = manual.find("| `" + name + "` ", table);
        ASSERT_NE(row, std::string::npos) << name;
        const std::string line = manual.substr(row, manual.find('\n', row) - row);
        EXPECT_NE(line.find("| " + std::string(topic->help) + ' '), std::string::npos) << line;
    }
}

} // namespace
