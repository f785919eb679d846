#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace TestSupport {
namespace {

/// A command of a transcript and what it prints.
struct Step {
    std::string command;
    std::string output;
};

/// The commands of all blocks of a section, in order.
struct Transcript {
    std::string section;
    std::vector<Step> steps;
};

/// Of every section of a page that has blocks of `console`. There a line that begins with "# " is a
/// command, one with "> " goes on with it, and all others are its output.
std::vector<Transcript> transcriptsOf(const std::string& page) {
    std::vector<Transcript> transcripts;
    std::istringstream lines(page);
    std::string section;
    bool inside = false;
    for (std::string line; std::getline(lines, line);) {
        if (!inside && line.starts_with("##")) {
            section = line;
        } else if (line == "```console") {
            inside = true;
            if (transcripts.empty() || transcripts.back().section != section) {
                transcripts.push_back({section, {}});
            }
        } else if (line == "```") {
            inside = false;
        } else if (inside && line.starts_with("# ")) {
            transcripts.back().steps.push_back({line.substr(2), {}});
        } else if (inside && line.starts_with("> ")) {
            transcripts.back().steps.back().command += '\n' + line.substr(2);
        } else if (inside) {
            transcripts.back().steps.back().output += line + '\n';
        }
    }
    return transcripts;
}

/// Without what differs from run to run.
std::string comparable(const std::string& output) {
    static const std::regex time("time [0-9.]+");
    static const std::regex spaces(" +\n");
    return std::regex_replace(std::regex_replace(output, time, "time T"), spaces, "\n");
}

/// Runs a transcript in the namespaces that the test is in.
class Session {
  public:
    void follow(const Step& step) {
        if (step.command.ends_with('&')) {
            const std::string own = step.command.substr(0, step.command.size() - 1);
            background_.emplace_back(new LiveProgram(LiveProgram::ofShell(in("exec " + own))));
        } else if (step.command == "kill %1") {
            EXPECT_EQ(background_.at(0)->endedBy(SIGTERM), 0);
        } else if (step.command == "kill -HUP %1") {
            background_.at(0)->signal(SIGHUP);
        } else {
            expectOutput(step);
        }
    }

  private:
    /// The command with the agent found as any program is.
    static std::string in(const std::string& command) {
        return "cd /run; PATH=\"${D%/*}:$PATH\"\n" + command;
    }
    /// What a command prints may take a while to become what it is to be.
    static void expectOutput(const Step& step) {
        std::string printed;
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        do {
            const ProgramRun run = runShell(in(step.command));
            printed = comparable(run.out + run.err);
        } while (!step.output.empty() && printed != comparable(step.output)
                 && std::chrono::steady_clock::now() < deadline);
        EXPECT_EQ(printed, comparable(step.output)) << step.command;
    }

    std::vector<std::unique_ptr<LiveProgram>> background_;
};

/// The page in docs/ and how many of its sections have transcripts.
class ManualTest : public LiveTest,
                   public testing::WithParamInterface<std::pair<const char*, std::size_t>> {};

TEST_P(ManualTest, TranscriptsShowWhatTheCommandsPrint) {
    const auto& [page, sections] = GetParam();
    const auto transcripts =
        transcriptsOf(readFile(std::string(DIRECTNET_SOURCE_DIR "/docs/") + page));
    ASSERT_EQ(transcripts.size(), sections);
    for (const Transcript& transcript : transcripts) {
        SCOPED_TRACE(transcript.section);
        Session session;
        for (const Step& step : transcript.steps) {
            session.follow(step);
        }
        LiveTest::SetUp(); // namespaces of its own for the next
    }
}

INSTANTIATE_TEST_SUITE_P(Pages, ManualTest,
                         testing::Values(std::pair("agent.md", 4), std::pair("operators.md", 3)),
                         [](const auto& page) {
                             std::string name = page.param.first;
                             return name.substr(0, name.find('.'));
                         });

} // namespace
} // namespace TestSupport
