#pragma once

#include <gtest/gtest.h>
#include <string>

namespace TestSupport {

/// A test with network and mounts of its own, and with an empty /run and /dev/shm: nothing outside
/// is touched, and nothing of it is left once the next has begun or the process has ended. A
/// process without the privilege for that becomes root of a user namespace first. Where not even
/// that is permitted the test is skipped.
class LiveTest : public testing::Test {
  protected:
    void SetUp() override;
};

/// Runs lines of the `ip` utility, going on after lines that fail. Returns whether all did well.
bool ip(const std::string& lines);

/// Lines that add the running link e1 with so many /24 addresses.
std::string linkWithAddresses(int count);

/// Writes a kernel setting of the namespace, such as "ipv6/conf/e1/keep_addr_on_down".
void setKernel(const std::string& name, const std::string& value);

/// How many announcements did not fit into the netlink sockets of the namespace.
long lostAnnouncements();

} // namespace TestSupport
