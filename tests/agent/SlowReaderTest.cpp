#include <algorithm>
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

using Agent::FileDescriptor;
using Agent::OutputFile;
using Agent::OutputQueue;
using Agent::Linux::inPrivateNamespace;
using Agent::Linux::ip;
using Agent::Linux::manyAddresses;
using TestSupport::LiveProgram;
using TestSupport::runProgram;

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

/// An agent that has both its outputs at `path`.
LiveProgram startedAt(const std::string& path) {
    return LiveProgram(
        {"/bin/sh", "-c", "exec '" DIRECTNET_EXECUTABLE "' run --trace 9 >" + path + " 2>&1"},
        STDIN_FILENO);
}

bool answers() { return runProgram("show vrfs").status == 0; }

/// More than any file keeps for a reader, and than the agent keeps.
void giveTheAgentMuchToSay(LiveProgram& agent) {
    ASSERT_TRUE(ip("link add e1 type veth peer name p1\nlink set e1 up\nlink set p1 up"));
    ASSERT_TRUE(ip(manyAddresses(1000)));
    EXPECT_TRUE(agent.until([] {
        return runProgram("show vrfs --json").out.find("\"ipv4\":4004,") != std::string::npos;
    })) << runProgram("show vrfs --json").out;
}

} // namespace

TEST(SlowReader, PipeThatNobodyDrainsLosesLinesAndCountsThem) {
    inPrivateNamespace([] {
        ASSERT_EQ(::mkfifo("/run/out", 0600), 0);
        const FileDescriptor reader(::open("/run/out", O_RDWR | O_CLOEXEC));
        LiveProgram agent = startedAt("/run/out");
        ASSERT_TRUE(agent.until(answers));
        giveTheAgentMuchToSay(agent);
        EXPECT_EQ(::fcntl(reader.get(), F_GETFL) & O_NONBLOCK, 0);
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
    });
}

TEST(SlowReader, AgentEndsThoughNobodyReadsAnything) {
    inPrivateNamespace([] {
        ASSERT_EQ(::mkfifo("/run/out", 0600), 0);
        const FileDescriptor reader(::open("/run/out", O_RDWR | O_CLOEXEC));
        LiveProgram agent = startedAt("/run/out");
        ASSERT_TRUE(agent.until(answers));
        giveTheAgentMuchToSay(agent);
        EXPECT_EQ(agent.endedBy(SIGTERM), 0);
        EXPECT_EQ(runProgram("run --config / 2>/run/out").status, 2);
    });
}

TEST(SlowReader, StoppedTerminalDoesNotStopTheAgent) {
    inPrivateNamespace([] {
        const FileDescriptor terminal(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
        ASSERT_TRUE(terminal);
        ASSERT_EQ(::grantpt(terminal.get()), 0);
        ASSERT_EQ(::unlockpt(terminal.get()), 0);
        const std::string name = ::ptsname(terminal.get());
        const FileDescriptor shell(::open(name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
        LiveProgram agent = startedAt(name);
        ASSERT_TRUE(agent.until(answers));
        ASSERT_EQ(::tcflow(shell.get(), TCOOFF), 0);
        giveTheAgentMuchToSay(agent);
        EXPECT_EQ(::fcntl(shell.get(), F_GETFL) & O_NONBLOCK, 0) << "the shell's own is as before";
        ASSERT_EQ(::tcflow(shell.get(), TCOON), 0);
        std::string text;
        EXPECT_TRUE(agent.until([&] {
            text += takeAll(terminal);
            return text.find(" lines were not written") != std::string::npos;
        }));
        EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    });
}

TEST(SlowReader, OnceThatIsNotReadCanBeInterrupted) {
    inPrivateNamespace([] {
        ASSERT_TRUE(ip("link add e1 type veth peer name p1\nlink set e1 up\nlink set p1 up"));
        ASSERT_TRUE(ip(manyAddresses(1000)));
        ASSERT_EQ(::mkfifo("/run/out", 0600), 0);
        const FileDescriptor reader(::open("/run/out", O_RDWR | O_CLOEXEC));
        LiveProgram once({"/bin/sh", "-c", "exec '" DIRECTNET_EXECUTABLE "' run --once >/run/out"},
                         STDIN_FILENO);
        int waiting = 0;
        EXPECT_TRUE(once.until(
            [&] { return ::ioctl(reader.get(), FIONREAD, &waiting) == 0 && waiting > 0; }));
        EXPECT_EQ(once.endedBy(SIGTERM), -1);
    });
}

TEST(SlowReader, AgentEndsQuietlyWhenTheReaderOfItsChangesHasGone) {
    inPrivateNamespace([] {
        LiveProgram agent({"/bin/sh", "-c",
                           "('" DIRECTNET_EXECUTABLE
                           "' run --no-socket; echo ended $? >&2) | head -n 1"},
                          STDIN_FILENO);
        ASSERT_TRUE(agent.untilOut("+ default "));
        int addresses = 0;
        EXPECT_TRUE(agent.until([&] {
            ip("addr add 10.1.0." + std::to_string(++addresses % 250) + "/32 dev lo");
            return agent.err().find("ended") != std::string::npos;
        }));
        EXPECT_EQ(agent.err(), "ended 1\n");
    });
}

TEST(SlowReader, QueueDropsWholeLinesAndTellsOfThemWhereTheyAreMissing) {
    const Orb::Ptr<Orb::Clock> clock = Orb::makePtr<Orb::SimulatedClock>();
    Orb::ActivityManager activityManager(clock);
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const FileDescriptor reader(ends[0]);
    const FileDescriptor writer(ends[1]);
    const OutputFile file(writer.get());
    std::size_t told = 0;
    int number = 0;
    std::unique_ptr<OutputQueue> queue;
    queue = std::make_unique<OutputQueue>(file, 1 << 17, [&](std::size_t lines) {
        told += lines;
        queue->append("gap\n");
    });
    const auto append = [&] {
        queue->append(std::string(80, 'x') + std::to_string(++number) + '\n');
    };
    std::string text;
    // Twice over: what counts after the first gap begins anew.
    for (int round = 0; round < 2; ++round) {
        const std::size_t before = told;
        while (number % 10000 != 9999) {
            append();
            activityManager.runOnce(0);
        }
        EXPECT_EQ(told, before);
        while (told == before) {
            activityManager.runOnce(0);
            text += takeAll(reader);
        }
        append();
    }
    while (text.find(std::to_string(number) + '\n') == std::string::npos) {
        activityManager.runOnce(0);
        text += takeAll(reader);
    }
    const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    EXPECT_EQ(lines + told, static_cast<std::size_t>(number) + 2) << "and the two gaps";
    // Left over at the end.
    while (number % 10000 != 9999) {
        append();
    }
    const std::size_t before = told;
    queue->finish();
    EXPECT_GT(told, before);
    EXPECT_EQ(queue->error(), 0);
}
