#include "PrivateNamespace.h"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <thread>

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
    FILE* pipe = ::popen("ip -force -batch - >/dev/null 2>&1", "w");
    if (!pipe) {
        return false;
    }
    std::fwrite(lines.data(), 1, lines.size(), pipe);
    return ::pclose(pipe) == 0;
}

void setKernel(const std::string& name, const std::string& value) {
    std::ofstream("/proc/sys/net/" + name) << value;
}

} // namespace Agent::Linux
