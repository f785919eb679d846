#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <poll.h>
#include <string>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

#include "agent/base/FileDescriptor.h"
#include "agent/base/SocketAddress.h"
#include "agent/device/AgentRoot.h"
#include "agent/server/ChangeLog.h"
#include "agent/server/SocketServer.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/SimulatedClock.h"
#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace {

using namespace TestSupport;
using namespace std::string_literals;
using Agent::FileDescriptor;
using testing::HasSubstr;
using testing::StartsWith;
using Socket = LiveTest;

// Where an agent listens by default in the namespace of the test.
std::string path() { return Agent::defaultSocketPath(); }
std::string lockPath() { return path() + ".lock"; }

FileDescriptor connectToAgent(const std::string& at = path()) {
    FileDescriptor file(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_un address = Agent::socketAddress(at);
    EXPECT_EQ(::connect(file.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
              0);
    return file;
}

void sendText(const FileDescriptor& file, const std::string& text) {
    static_cast<void>(::send(file.get(), text.data(), text.size(), MSG_NOSIGNAL));
}

/// All that comes until the agent closes the connection.
std::string receiveAll(const FileDescriptor& file) {
    std::string text;
    std::array<char, 4096> buffer{};
    pollfd polled{file.get(), POLLIN, 0};
    while (::poll(&polled, 1, 30000) > 0) {
        const ssize_t size = ::recv(file.get(), buffer.data(), buffer.size(), 0);
        if (size <= 0) {
            return text;
        }
        text.append(buffer.data(), static_cast<std::size_t>(size));
    }
    return text + "(still open)";
}

mode_t modeOf(const std::string& file) {
    struct stat status {};
    return ::lstat(file.c_str(), &status) == 0 ? status.st_mode : 0;
}

/// Expects that an agent does not start, for this reason, where it must have the socket.
void expectRefused(const std::string& why) {
    const auto run = runProgram("run --socket " + path());
    EXPECT_EQ(run.status, 1) << why;
    EXPECT_THAT(run.err, HasSubstr(why));
}

std::size_t openFiles(const LiveProgram& agent) {
    const std::filesystem::directory_iterator files("/proc/" + std::to_string(agent.pid()) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

TEST_F(Socket, FileIsForOwnerAndGroupAndReplacesADeadAgentsOnly) {
    ASSERT_TRUE(LiveProgram("run").learned());
    ASSERT_TRUE(std::filesystem::exists(path()));
    LiveProgram agent("run --socket " + path());
    ASSERT_TRUE(agent.learned()) << agent.err();
    EXPECT_EQ(modeOf(path()), static_cast<mode_t>(S_IFSOCK | 0660));
    EXPECT_EQ(modeOf(lockPath()), static_cast<mode_t>(S_IFREG | 0600));
    expectRefused("is in use");
    LiveProgram without("run");
    ASSERT_TRUE(without.learned());
    EXPECT_TRUE(without.untilErr("is in use"));
    EXPECT_EQ(without.endedBy(SIGTERM), 0);
    EXPECT_THAT(show("vrfs"), HasSubstr("default")) << "the file is the other agent's";
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    EXPECT_FALSE(std::filesystem::exists(path()));
    EXPECT_FALSE(std::filesystem::exists(lockPath()));

    std::ofstream(path()) << "precious";
    expectRefused("there is a file that is no socket");
    EXPECT_EQ(readFile(path()), "precious");
}

TEST_F(Socket, FileOfAnotherProgramThatListensIsNotTaken) {
    const FileDescriptor other(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_un address = Agent::socketAddress(path());
    ASSERT_EQ(::bind(other.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(::listen(other.get(), 0), 0);
    expectRefused("is in use\n");
    expectRefused("is in use\n"); // it takes no more connections, as one that is busy
    EXPECT_TRUE(std::filesystem::exists(path()));
}

TEST_F(Socket, LocksOfOthersHoldNobodyUp) {
    // Whoever may read a folder may lock it.
    const FileDescriptor folder(::open("/run", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ASSERT_EQ(::flock(folder.get(), LOCK_EX), 0);
    ASSERT_TRUE(LiveProgram("run --socket " + path()).learned());
    // An agent that has just begun holds the lock and does not listen yet.
    const FileDescriptor lock(::open(lockPath().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    ASSERT_EQ(::flock(lock.get(), LOCK_EX), 0);
    expectRefused("is in use by another agent\n");
    EXPECT_TRUE(std::filesystem::exists(lockPath()));

    for (const std::string taking : {"mkfifo $L", "ln -s /run/precious $L", "mkdir $L",
                                     "touch $L; chown -f 1 $L || mount --bind /etc/passwd $L"}) {
        runShell("L=" + lockPath() + "; rm -rf $L; " + taking);
        expectRefused(lockPath());
        EXPECT_FALSE(std::filesystem::exists("/run/precious"));
    }
}

TEST_F(Socket, BadRequestIsAnsweredWithAnErrorAndNothingElse) {
    LiveProgram agent("run");
    ASSERT_TRUE(agent.learned());
    for (const auto& request :
         {"hello\n"s, "{}\n"s, "[]\n"s, "\n"s, "{\"show\":\"secrets\"}\n"s, "{\"show\":1}\n"s,
          "{\"trace\":10}\n"s, "{\"watch\":true,\"show\":\"vrfs\"}\n"s, "\0\xff\n"s,
          std::string(100000, 'x'), std::string(300, '[') + "\n"}) {
        const FileDescriptor client = connectToAgent();
        sendText(client, request);
        const std::string answer = receiveAll(client);
        EXPECT_THAT(answer, StartsWith("{\"error\":")) << request.substr(0, 40);
        EXPECT_EQ(answer.find('\n'), answer.size() - 1);
    }
}

TEST_F(Socket, WatcherSeesTheStateAndThenEveryChange) {
    LiveProgram agent("run");
    ASSERT_TRUE(agent.learned());
    LiveProgram watch("watch --json");
    ASSERT_TRUE(watch.untilOut("{\"change\":\"complete\"}\n")) << watch.err();
    LiveProgram plain("watch");
    ASSERT_TRUE(plain.untilOut("= default 127.0.0.0/8  11 connected  lo  connected\n"));
    ASSERT_TRUE(ip("addr add 10.1.0.1/32 dev lo"));
    EXPECT_TRUE(plain.untilOut("+ default 10.1.0.1/32  2 attached-host  lo  receive\n"))
        << plain.out();
    ASSERT_TRUE(ip("addr del 10.1.0.1/32 dev lo"));
    EXPECT_TRUE(plain.untilOut("- default 10.1.0.1/32\n")) << plain.out();
    EXPECT_TRUE(
        watch.untilOut("\"change\":\"goes\",\"vrf\":\"default\",\"prefix\":\"10.1.0.1/32\"}"))
        << watch.out();
}

TEST_F(Socket, TextTraceIsShownAndSet) {
    LiveProgram agent("run");
    ASSERT_TRUE(agent.learned());
    EXPECT_EQ(show("trace --json"), "{\"trace\":-1}\n");
    EXPECT_EQ(runProgram("trace 9").status, 0);
    EXPECT_EQ(show("trace --json"), "{\"trace\":9}\n");
    ASSERT_TRUE(ip("addr add 10.1.0.1/32 dev lo"));
    EXPECT_TRUE(agent.untilErr("10.1.0.1/32")) << agent.err();
    EXPECT_EQ(runProgram("trace off").status, 0);
    EXPECT_EQ(show("trace --json"), "{\"trace\":-1}\n");
}

TEST_F(Socket, ReaderThatStopsReadingIsDroppedAndTheOthersAreServed) {
    // So many routes do not fit into what the kernel holds for a socket.
    ASSERT_TRUE(ip(linkWithAddresses(3000)));
    LiveProgram agent("run");
    ASSERT_TRUE(agent.learned());
    const std::size_t before = openFiles(agent);
    const FileDescriptor shower = connectToAgent();
    sendText(shower, "{\"show\":\"routes\"}\n");
    const FileDescriptor watcher = connectToAgent();
    sendText(watcher, "{\"watch\":true}\n");
    const FileDescriptor silent = connectToAgent();
    EXPECT_TRUE(agent.until([&] { return openFiles(agent) > before; }));
    EXPECT_EQ(runProgram("show vrfs").status, 0);
    EXPECT_TRUE(agent.until([&] { return openFiles(agent) == before; }));
    EXPECT_EQ(receiveAll(shower).find("\"end\""), std::string::npos);
}

TEST_F(Socket, ClientsBeyondTheBoundAreTurnedAwayUntilOthersHaveGone) {
    LiveProgram agent("run");
    ASSERT_TRUE(agent.learned());
    {
        std::vector<FileDescriptor> clients(80);
        for (FileDescriptor& client : clients) {
            client = connectToAgent();
        }
        EXPECT_THAT(receiveAll(clients.back()), HasSubstr("too many clients"));
    }
    EXPECT_TRUE(agent.until([] { return runProgram("show vrfs").status == 0; }));
}

TEST(SocketServer, WatcherThatHasMissedChangesIsDropped) {
    const std::string own =
        std::filesystem::temp_directory_path() / ("watcher-" + std::to_string(::getpid()));
    const Orb::Ptr<Orb::Clock> clock = Orb::makePtr<Orb::SimulatedClock>();
    Orb::ActivityManager activityManager(clock);
    const Agent::DeviceInputs inputs(Orb::makePtr<Kiln::TaskScheduler>(clock), false);
    const Agent::AgentRoot root(inputs);
    Agent::SocketServer server({own}, {*root, inputs, *clock}, [](const std::string&) {});
    const FileDescriptor client = connectToAgent(own);
    sendText(client, "{\"watch\":true}\n");
    constexpr int manyTurns = 1000;
    for (int turn = 0; turn < manyTurns && !server.isWatched(); ++turn) {
        activityManager.runOnce(0);
    }
    ASSERT_TRUE(server.isWatched());
    const std::string change = std::string((1 << 16) - 1, 'x') + '\n';
    for (std::size_t sent = 0; sent <= Agent::ChangeLog::capacity; sent += change.size()) {
        server.changeIs(change);
    }
    // Time stands still, so it is not for its silence that the client is dropped.
    for (int turn = 0; turn < manyTurns && server.isWatched(); ++turn) {
        activityManager.runOnce(0);
    }
    ASSERT_FALSE(server.isWatched());
    EXPECT_EQ(receiveAll(client).find('x'), std::string::npos)
        << "what follows a gap must not look like what follows";
}

TEST(ChangeLog, ReaderGetsEveryByteUntilItFallsTooFarBehind) {
    Agent::ChangeLog log;
    std::string written;
    for (int i = 0; i < 30000; ++i) {
        const std::string line = "line " + std::to_string(i) + '\n';
        written += line;
        log.append(line);
    }
    std::string read;
    while (read.size() < written.size()) {
        read += log.at(read.size());
        log.dropBefore(read.size());
    }
    EXPECT_EQ(read, written);
    const std::string line(1 << 16, 'x');
    for (std::size_t size = 0; size <= Agent::ChangeLog::capacity; size += line.size()) {
        log.append(line);
    }
    EXPECT_GT(log.begin(), written.size());
    EXPECT_LE(log.end() - log.begin(), Agent::ChangeLog::capacity);
}

} // namespace
