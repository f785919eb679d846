#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
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

using Agent::FileDescriptor;
using Agent::Linux::inPrivateNamespace;
using Agent::Linux::ip;
using Agent::Linux::manyAddresses;
using TestSupport::LiveProgram;
using TestSupport::runProgram;

constexpr const char* path = "/run/directnet.sock";

FileDescriptor connectToAgent(const std::string& at = path) {
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

/// An agent that has learned the namespace that it is started in.
class ReadyAgent : public LiveProgram {
  public:
    explicit ReadyAgent(const std::vector<std::string>& arguments = {"run"})
        : LiveProgram(arguments) {
        EXPECT_TRUE(untilOut("127.0.0.0/8")) << err();
    }
};

std::size_t openFiles(const LiveProgram& agent) {
    const std::filesystem::directory_iterator files("/proc/" + std::to_string(agent.pid()) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

} // namespace

TEST(Socket, IsForOwnerAndGroupAndReplacesADeadAgentsFileOnly) {
    inPrivateNamespace([] {
        { const ReadyAgent killed; }
        ASSERT_TRUE(std::filesystem::exists(path));
        ReadyAgent agent({"run", "--socket", path});
        struct stat status {};
        ASSERT_EQ(::lstat(path, &status), 0);
        EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFSOCK | 0660));
        LiveProgram second({"run", "--socket", path});
        EXPECT_EQ(second.wait(), 1);
        EXPECT_NE(second.err().find("is in use"), std::string::npos) << second.err();
        ReadyAgent third;
        EXPECT_TRUE(third.untilErr("is in use"));
        EXPECT_EQ(runProgram("show vrfs").status, 0);
        EXPECT_EQ(third.endedBy(SIGTERM), 0);
        EXPECT_TRUE(std::filesystem::exists(path)) << "the file is the other agent's";
        EXPECT_EQ(agent.endedBy(SIGTERM), 0);
        EXPECT_FALSE(std::filesystem::exists(path));

        std::ofstream("/run/file") << "precious";
        EXPECT_EQ(runProgram("run --socket /run/file").status, 1);
        EXPECT_EQ(TestSupport::readFile("/run/file"), "precious");
    });
}

TEST(Socket, LocksOfOthersHoldNobodyUp) {
    inPrivateNamespace([] {
        // Whoever may read a folder may lock it.
        const FileDescriptor folder(::open("/run", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        ASSERT_EQ(::flock(folder.get(), LOCK_EX), 0);
        {
            ReadyAgent agent({"run", "--socket", path});
            struct stat status {};
            ASSERT_EQ(::lstat("/run/directnet.sock.lock", &status), 0);
            EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFREG | 0600));
            EXPECT_EQ(agent.endedBy(SIGTERM), 0);
            EXPECT_FALSE(std::filesystem::exists("/run/directnet.sock.lock"));
        }
        // An agent that has just begun holds the lock and does not listen yet.
        const FileDescriptor lock(
            ::open("/run/directnet.sock.lock", O_RDWR | O_CREAT | O_CLOEXEC, 0600));
        ASSERT_EQ(::flock(lock.get(), LOCK_EX), 0);
        auto run = runProgram("run --socket " + std::string(path));
        EXPECT_EQ(run.status, 1);
        EXPECT_NE(run.err.find("is in use by another agent\n"), std::string::npos) << run.err;
        EXPECT_TRUE(std::filesystem::exists("/run/directnet.sock.lock"));

        for (const char* taking :
             {"mkfifo $L", "ln -s /run/precious $L", "mkdir $L", "touch $L; chown 1 $L"}) {
            TestSupport::runShell("L=/run/directnet.sock.lock; rm -rf $L; " + std::string(taking));
            run = runProgram("run --socket " + std::string(path));
            EXPECT_EQ(run.status, 1) << taking;
            EXPECT_NE(run.err.find("/run/directnet.sock.lock"), std::string::npos) << run.err;
            EXPECT_FALSE(std::filesystem::exists("/run/precious"));
        }
    });
}

TEST(Socket, OfAnotherProgramThatListensIsNotTaken) {
    inPrivateNamespace([] {
        const FileDescriptor other(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const sockaddr_un address = Agent::socketAddress(path);
        ASSERT_EQ(::bind(other.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
                  0);
        ASSERT_EQ(::listen(other.get(), 0), 0);
        // Also when it takes no more connections, as one that is busy.
        for (int connections = 0; connections < 2; ++connections) {
            const auto run = runProgram("run --socket " + std::string(path));
            EXPECT_EQ(run.status, 1);
            EXPECT_NE(run.err.find("is in use\n"), std::string::npos) << run.err;
            EXPECT_TRUE(std::filesystem::exists(path));
        }
    });
}

TEST(Socket, DropsAWatcherThatHasMissedChanges) {
    const std::string own =
        std::filesystem::temp_directory_path() / ("watcher-" + std::to_string(::getpid()));
    const Orb::Ptr<Orb::Clock> clock = Orb::makePtr<Orb::SimulatedClock>();
    Orb::ActivityManager activityManager(clock);
    const Agent::DeviceInputs inputs(Orb::makePtr<Kiln::TaskScheduler>(clock), false);
    const Agent::AgentRoot root(inputs);
    Agent::SocketServer server(own, {*root, inputs, *clock});
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

TEST(Socket, ShowsTheStateDocumentThatOnceShows) {
    inPrivateNamespace([] {
        ASSERT_TRUE(ip("link add e1 type veth peer name p1\nlink set e1 up\nlink set p1 up\n"
                       "addr add 10.1.0.1/24 dev e1\naddr add 2001:db8::1/64 dev e1 nodad"));
        ReadyAgent agent;
        nlohmann::ordered_json shown;
        nlohmann::ordered_json once;
        EXPECT_TRUE(agent.until([&] {
            shown = nlohmann::ordered_json::parse(runProgram("show --json").out, nullptr, false);
            once =
                nlohmann::ordered_json::parse(runProgram("run --once --json").out, nullptr, false);
            shown["time"] = once["time"];
            return shown == once;
        })) << shown
            << '\n'
            << once;
        EXPECT_EQ(runProgram("show --vrf nowhere").status, 1);
        EXPECT_EQ(runProgram("show nothing").status, 2);
        EXPECT_EQ(runProgram("show --socket /run/nobody").status, 1);
    });
}

TEST(Socket, AnswersABadRequestWithAnErrorAndNothingElse) {
    inPrivateNamespace([] {
        const ReadyAgent agent;
        for (const std::string& request :
             {std::string("hello\n"), std::string("{}\n"), std::string("[]\n"), std::string("\n"),
              std::string("{\"show\":\"secrets\"}\n"), std::string("{\"show\":1}\n"),
              std::string("{\"trace\":10}\n"), std::string("{\"watch\":true,\"show\":\"vrfs\"}\n"),
              std::string("\0\xff\n", 3), std::string(100000, 'x'), std::string(300, '[') + "\n"}) {
            const FileDescriptor client = connectToAgent();
            sendText(client, request);
            const std::string answer = receiveAll(client);
            EXPECT_EQ(answer.rfind("{\"error\":", 0), 0U)
                << request.substr(0, 40) << ": " << answer;
            EXPECT_EQ(answer.find('\n'), answer.size() - 1);
        }
    });
}

TEST(Socket, WatchesTheStateAndThenEveryChange) {
    inPrivateNamespace([] {
        const ReadyAgent agent;
        LiveProgram watch({"watch", "--json"});
        ASSERT_TRUE(watch.untilOut("{\"change\":\"complete\"}\n")) << watch.err();
        LiveProgram plain({"watch"});
        ASSERT_TRUE(plain.untilOut("= default 127.0.0.0/8  11 connected  lo  connected\n"));
        ASSERT_TRUE(ip("addr add 10.1.0.1/32 dev lo"));
        EXPECT_TRUE(plain.untilOut("+ default 10.1.0.1/32  2 attached-host  lo  receive\n"))
            << plain.out();
        ASSERT_TRUE(ip("addr del 10.1.0.1/32 dev lo"));
        EXPECT_TRUE(plain.untilOut("- default 10.1.0.1/32\n")) << plain.out();
        EXPECT_TRUE(
            watch.untilOut("\"change\":\"goes\",\"vrf\":\"default\",\"prefix\":\"10.1.0.1/32\"}"))
            << watch.out();
    });
}

TEST(Socket, SetsAndShowsTheTextTrace) {
    inPrivateNamespace([] {
        ReadyAgent agent;
        EXPECT_NE(runProgram("show trace --json").out.find("{\"trace\":-1}"), std::string::npos);
        EXPECT_EQ(runProgram("trace 9").status, 0);
        EXPECT_NE(runProgram("show trace --json").out.find("{\"trace\":9}"), std::string::npos);
        ASSERT_TRUE(ip("addr add 10.1.0.1/32 dev lo"));
        EXPECT_TRUE(agent.untilErr("10.1.0.1/32")) << agent.err();
        EXPECT_EQ(runProgram("trace off").status, 0);
        EXPECT_NE(runProgram("show trace --json").out.find("{\"trace\":-1}"), std::string::npos);
    });
}

TEST(Socket, DropsAReaderThatStopsReadingAndServesTheOthers) {
    inPrivateNamespace([] {
        // So many routes do not fit into what the kernel holds for a socket.
        ASSERT_TRUE(ip("link add e1 type veth peer name p1\nlink set e1 up\nlink set p1 up"));
        ASSERT_TRUE(ip(manyAddresses(3000)));
        ReadyAgent agent;
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
    });
}

TEST(Socket, TurnsAwayClientsBeyondTheBoundAndRecovers) {
    inPrivateNamespace([] {
        ReadyAgent agent;
        {
            std::vector<FileDescriptor> clients;
            clients.reserve(80);
            for (int i = 0; i < 80; ++i) {
                clients.push_back(connectToAgent());
            }
            EXPECT_NE(receiveAll(clients.back()).find("too many clients"), std::string::npos);
        }
        EXPECT_TRUE(agent.until([] { return runProgram("show vrfs").status == 0; }));
    });
}

TEST(ChangeLogTest, GivesEachReaderEveryByteUntilItFallsTooFarBehind) {
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
