#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>
#include <poll.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include "agent/output/OutputFile.h"
#include "agent/output/OutputQueue.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/SimulatedClock.h"
#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace {

using namespace TestSupport;
using Agent::FileDescriptor;
using Agent::OutputFile;
using Agent::OutputQueue;
using SlowReader = LiveTest;

std::string takeAll(const FileDescriptor& file) {
    std::string text;
    std::array<char, 65536> buffer{};
    pollfd polled{file.get(), POLLIN, 0};
    while (::poll(&polled, 1, 0) > 0) {
        const ssize_t size = ::read(file.get(), buffer.data(), buffer.size());
        if (size <= 0) {
            break;
        }
        text.append(buffer.data(), static_cast<std::size_t>(size));
    }
    return text;
}

/// A pipe at /run/out, both ends in one.
FileDescriptor makePipe() {
    EXPECT_EQ(::mkfifo("/run/out", 0600), 0);
    return FileDescriptor(::open("/run/out", O_RDWR | O_CLOEXEC));
}

/// An agent that has both its outputs at `path`, and says more there than any file keeps for a
/// reader, and than the agent keeps.
LiveProgram startedAt(const std::string& path) {
    return LiveProgram("run --trace 9 >" + path + " 2>&1");
}

void giveItMuchToSay(LiveProgram& agent) {
    ASSERT_TRUE(ip(linkWithAddresses(1000)));
    EXPECT_TRUE(agent.untilShown("vrfs --json", "\"ipv4\":4004,")) << show("vrfs --json");
}

TEST_F(SlowReader, PipeThatNobodyDrainsLosesLinesAndCountsThem) {
    const FileDescriptor reader = makePipe();
    LiveProgram agent = startedAt("/run/out");
    giveItMuchToSay(agent);
    EXPECT_EQ(::fcntl(reader.get(), F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(runProgram("run --config / 2>/run/out").status, 2) << "waits for a reader";
    std::string text;
    EXPECT_TRUE(agent.until([&] {
        text += takeAll(reader);
        return text.find(" lines were not written\n") != std::string::npos;
    }));
    // All that it keeps is whole lines, and lines come as ever afterwards.
    EXPECT_NE(text.find("\ndirectnet: "), std::string::npos);
    ASSERT_TRUE(ip("addr add 10.9.9.9/32 dev lo"));
    EXPECT_TRUE(agent.until([&] {
        text += takeAll(reader);
        return text.find("+ default 10.9.9.9/32 ") != std::string::npos;
    }));
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
}

TEST_F(SlowReader, StoppedTerminalStopsNeitherTheAgentNorItsEnd) {
    const FileDescriptor terminal(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    ASSERT_TRUE(terminal);
    ASSERT_EQ(::grantpt(terminal.get()), 0);
    ASSERT_EQ(::unlockpt(terminal.get()), 0);
    const std::string name = ::ptsname(terminal.get());
    const FileDescriptor shell(::open(name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    LiveProgram agent = startedAt(name);
    ASSERT_EQ(::tcflow(shell.get(), TCOOFF), 0);
    giveItMuchToSay(agent);
    EXPECT_EQ(::fcntl(shell.get(), F_GETFL) & O_NONBLOCK, 0) << "the shell's own is as before";
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
}

TEST_F(SlowReader, OnceThatIsNotReadCanBeInterrupted) {
    ASSERT_TRUE(ip(linkWithAddresses(1000)));
    const FileDescriptor reader = makePipe();
    LiveProgram once("run --once >/run/out");
    int waiting = 0;
    EXPECT_TRUE(
        once.until([&] { return ::ioctl(reader.get(), FIONREAD, &waiting) == 0 && waiting > 0; }));
    EXPECT_EQ(once.endedBy(SIGTERM), -1);
}

TEST_F(SlowReader, AgentEndsQuietlyWhenTheReaderOfItsChangesHasGone) {
    LiveProgram agent("run --no-socket");
    ASSERT_TRUE(agent.learned());
    agent.closeOut();
    ASSERT_TRUE(ip("addr add 10.1.0.1/32 dev lo"));
    EXPECT_EQ(agent.wait(), 1);
    EXPECT_EQ(agent.err(), "");
}

TEST(OutputQueue, QueueDropsWholeLinesAndTellsOfThemWhereTheyAreMissing) {
    const Orb::Ptr<Orb::Clock> clock = Orb::makePtr<Orb::SimulatedClock>();
    Orb::ActivityManager activityManager(clock);
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const FileDescriptor reader(ends[0]);
    const FileDescriptor writer(ends[1]);
    const OutputFile file(writer.get());
    std::size_t told = 0;
    std::size_t number = 0;
    std::unique_ptr<OutputQueue> queue;
    queue = std::make_unique<OutputQueue>(file, 1 << 17, [&](std::size_t lines) {
        told += lines;
        queue->append("gap\n");
    });
    std::string text;
    const auto append = [&](std::size_t lines) {
        for (; lines > 0; --lines) {
            queue->append(std::string(80, 'x') + std::to_string(++number) + '\n');
            activityManager.runOnce(0);
        }
    };
    const auto readUntil = [&](const auto& condition) {
        while (!condition()) {
            activityManager.runOnce(0);
            text += takeAll(reader);
        }
    };
    // Twice over: what counts after the first gap begins anew.
    for (int round = 0; round < 2; ++round) {
        const std::size_t before = told;
        append(9999);
        EXPECT_EQ(told, before);
        readUntil([&] { return told > before; });
        append(1);
    }
    readUntil([&] { return text.ends_with(std::to_string(number) + '\n'); });
    EXPECT_EQ(countOf("\n", text) + told, number + 2) << "and the two gaps";
    append(9999);
    const std::size_t before = told;
    queue->finish();
    EXPECT_GT(told, before) << "what is left over counts as dropped";
    EXPECT_EQ(queue->error(), 0);
}

} // namespace
