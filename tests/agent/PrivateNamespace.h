#pragma once

#include <functional>
#include <string>

namespace Agent::Linux {

/// Runs `body` on a thread that has network and mounts of its own, with an empty /run. Nothing of
/// it is left afterwards, and nothing outside is touched. Skips the test where that is not
/// permitted.
void inPrivateNamespace(const std::function<void()>& body);

/// Runs lines of the `ip` utility, going on after lines that fail. Returns whether all did well.
bool ip(const std::string& lines);

/// Lines that add so many /24 addresses to the link e1.
std::string manyAddresses(int count);

/// Writes a kernel setting of the namespace, such as "ipv6/conf/e1/keep_addr_on_down".
void setKernel(const std::string& name, const std::string& value);

} // namespace Agent::Linux
