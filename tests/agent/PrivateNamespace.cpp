#include "tests/agent/PrivateNamespace.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <thread>

#include "tests/agent/Program.h"

namespace Agent::Linux {

namespace {

bool enter() {
    return ::unshare(CLONE_NEWNET | CLONE_NEWNS) == 0
           && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
           && ::mount("none", "/run", "tmpfs", 0, nullptr) == 0;
}

} // namespace

void inPrivateNamespace(const std::function<void()>& body) {
    bool entered = false;
    std::thread([&] {
        entered = enter() && ip("link set lo up");
        if (entered) {
            body();
        }
    }).join();
    if (!entered) {
        GTEST_SKIP() << "no permission to make network namespaces, or no ip utility";
    }
}

bool ip(const std::string& lines) {
    return TestSupport::runShell("ip -force -batch -", lines).status == 0;
}

std::string manyAddresses(int count) {
    std::string lines;
    for (int i = 0; i < count; ++i) {
        lines += "addr add 10." + std::to_string(i / 250) + '.' + std::to_string(i % 250)
                 + ".1/24 dev e1\n";
    }
    return lines;
}

void setKernel(const std::string& name, const std::string& value) {
    std::ofstream("/proc/sys/net/" + name) << value;
}

} // namespace Agent::Linux
