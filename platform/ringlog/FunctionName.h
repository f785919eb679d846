#pragma once

#include <string>
#include <string_view>

namespace Ringlog {

/// Cuts a function's signature, as GCC or Clang spells it in __PRETTY_FUNCTION__, down to its
/// class and method: "void Routing::DirectNet::RootSm::doCleanup(int)" gives "RootSm::doCleanup".
/// Return type, namespaces, template arguments and parameters go; of nested classes the innermost
/// stays; a free function of an unnamed namespace is named alone, any other with the innermost
/// namespace before it, as if that were a class; a lambda is named after the function it stands in.
/// Logic that machines share through a class template with the parameter `Sm` is named after the
/// machine that it runs for.
/// A signature that follows neither spelling gives some part of it, never an error.
std::string functionName(std::string_view signature);

} // namespace Ringlog
