#include "agent/linux/NamespaceWatch.h"
#include "agent/linux/NamespaceMonitor.h"
#include "platform/orb/value/Error.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/mount.h>

namespace Agent::Linux {
namespace {

using namespace TestSupport;
using NamespaceWatchTest = LiveTest;

constexpr int patience = 5000; // milliseconds

bool isReadable(const NamespaceWatch& watch, int wait) {
    pollfd poll{watch.fd(), POLLIN, 0};
    return ::poll(&poll, 1, wait) > 0;
}

/// Serves the watch until it has told `count` changes and has nothing more to do; as text, "+name"
/// or "-name".
std::string changesOf(NamespaceWatch& watch, int count) {
    std::string text;
    const auto take = [&] {
        for (const auto& change : watch.takeEvents()) {
            text += (change.appeared ? "+" : "-") + change.name + " ";
            --count;
        }
    };
    for (take(); isReadable(watch, count > 0 ? patience : 0); take()) {
        watch.onReadable();
    }
    return text;
}

bool bind(const std::string& from, const std::string& to) {
    return ::mount(from.c_str(), to.c_str(), "", MS_BIND, nullptr) == 0;
}

TEST_F(NamespaceWatchTest, NamespacesComeAndGoWithTheirFolder) {
    NamespaceWatch watch({"one", "two"});
    ip("netns add one\nnetns add three");
    EXPECT_EQ(changesOf(watch, 1), "+one ");
    // The kernel gives the new namespace the identity of the old one.
    ip("netns del one\nnetns add one");
    EXPECT_EQ(changesOf(watch, 2), "-one +one ");
    ip("netns add two\nnetns del one");
    EXPECT_EQ(changesOf(watch, 2), "-one +two ");

    NamespaceWatch later({"one", "two"});
    EXPECT_EQ(changesOf(later, 1), "+two ");
}

TEST_F(NamespaceWatchTest, NameCanBeUnmountedWhileItIsFollowedAndIsGoneThen) {
    ip("netns add one\nnetns add other");
    NamespaceWatch watch({"one", "two"});
    runShell("ln -s one /run/netns/two");
    EXPECT_EQ(changesOf(watch, 2), "+one +two ");
    NamespaceMonitor::Options options;
    options.netlink.netns = "one";
    const NamespaceMonitor follower(options);
    EXPECT_EQ(::umount("/run/netns/one"), 0) << "busy";
    EXPECT_EQ(changesOf(watch, 2), "-one -two ");

    // What is bound to the name counts, not the file.
    ASSERT_TRUE(bind("/run/netns/other", "/run/netns/one"));
    EXPECT_EQ(changesOf(watch, 2), "+one +two ");
    ASSERT_TRUE(bind("/proc/thread-self/ns/net", "/run/netns/one"));
    EXPECT_EQ(changesOf(watch, 4), "-one +one -two +two ");
    runShell("rm /run/netns/two");
    EXPECT_EQ(changesOf(watch, 1), "-two ");
}

TEST_F(NamespaceWatchTest, FilesWithoutANetworkNamespaceAreNeverFollowed) {
    ip("netns add real");
    NamespaceWatch watch({"file", "other"});
    runShell("touch /run/netns/file /run/netns/other");
    EXPECT_EQ(changesOf(watch, 0), "");
    // Of another kind: there, so that who opens it can say what is wrong.
    ASSERT_TRUE(bind("/proc/thread-self/ns/uts", "/run/netns/other"));
    EXPECT_EQ(changesOf(watch, 1), "+other ");
    NamespaceMonitor::Options options;
    for (const char* name : {"file", "other", "none", "../netns/real", ""}) {
        options.netlink.netns = name;
        EXPECT_THROW(NamespaceMonitor{options}, Orb::Error) << name;
    }
}

} // namespace
} // namespace Agent::Linux
