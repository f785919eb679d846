#include "tests/agent/PrivateNamespace.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sched.h>
#include <sstream>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/agent/Program.h"

namespace TestSupport {

namespace {

bool write(const std::string& file, const std::string& text) {
    std::ofstream out(file);
    out << text << std::flush;
    return out.good();
}

/// Where an agent keeps files unless told otherwise.
constexpr const char* ownFolders[] = {"/run", "/dev/shm"};

bool enter() {
    return ::unshare(CLONE_NEWNET | CLONE_NEWNS) == 0
           && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
           && std::all_of(std::begin(ownFolders), std::end(ownFolders), [](const char* folder) {
                  return ::mount("none", folder, "tmpfs", 0, nullptr) == 0;
              });
}

/// Whether the process as it is can make namespaces, which a child tries out.
bool mayEnter() {
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(enter() ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return status == 0;
}

bool becomeRootOfUserNamespace() {
    const std::string user = "0 " + std::to_string(::geteuid()) + " 1";
    const std::string group = "0 " + std::to_string(::getegid()) + " 1";
    return ::unshare(CLONE_NEWUSER) == 0 && write("/proc/self/setgroups", "deny")
           && write("/proc/self/uid_map", user) && write("/proc/self/gid_map", group);
}

bool saysWhyNot() {
    std::cerr << "Live tests are skipped: this user may make neither network namespaces nor user "
                 "namespaces, or there is no ip utility.\n";
    return false;
}

} // namespace

void LiveTest::SetUp() {
    static const bool possible = ((mayEnter() || (becomeRootOfUserNamespace() && mayEnter()))
                                  && runShell("ip -V").status == 0)
                                 || saysWhyNot();
    if (!possible) {
        GTEST_SKIP() << "no namespaces";
    }
    static bool hasOwn = false; // with all that the test before has mounted there
    if (hasOwn) {
        for (const char* folder : ownFolders) {
            ASSERT_EQ(::umount2(folder, MNT_DETACH), 0);
        }
    }
    hasOwn = enter();
    ASSERT_TRUE(hasOwn && ip("link set lo up"));
}

bool ip(const std::string& lines) { return runShell("ip -force -batch -", lines).status == 0; }

std::string linkWithAddresses(int count) {
    std::string lines = "link add e1 up type veth peer name p1\nlink set p1 up\n";
    for (int i = 0; i < count; ++i) {
        lines += "addr add 10." + std::to_string(i / 250) + '.' + std::to_string(i % 250)
                 + ".1/24 dev e1\n";
    }
    return lines;
}

void setKernel(const std::string& name, const std::string& value) {
    write("/proc/sys/net/" + name, value);
}

long lostAnnouncements() {
    std::ifstream sockets("/proc/thread-self/net/netlink");
    long lost = 0;
    std::string line;
    std::getline(sockets, line); // titles
    while (std::getline(sockets, line)) {
        std::istringstream words(line);
        std::string word; // the ninth is what counts
        for (int i = 0; i < 9; ++i) {
            words >> word;
        }
        lost += std::stol(word);
    }
    return lost;
}

} // namespace TestSupport
