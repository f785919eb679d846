#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/agent/KernelRoutes.h"
#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace TestSupport {

/// A live test under a kernel that has VRF devices; elsewhere it is skipped.
class VmTest : public LiveTest {
  protected:
    void SetUp() override;
};

/// The namespaces that an agent follows, by VRF; the empty name is that of its own.
using FollowedNamespaces = std::map<std::string, std::string>;

/// Runs lines of the `ip` utility in a named namespace, or in the thread's own if the name is
/// empty, going on after lines that fail. Says which those are.
testing::AssertionResult ipIn(const std::string& netns, const std::string& lines);

/// Adds named namespaces with a loopback that is up.
void addNamespaces(const std::vector<std::string>& names);

/// Addresses of IPv6 count at once in the namespace, and in the links that it will have.
void withoutDuplicateDetection(const std::string& netns = {});

/// Waits until the agent has the VRFs that the kernel has in the namespaces, each with the routes
/// that the kernel made for it, and no other VRF.
void expectKernelVrfs(LiveProgram& agent, const FollowedNamespaces& namespaces);

/// Whether one of three pings from a namespace is answered.
bool answers(const std::string& netns, const std::string& address);

} // namespace TestSupport
