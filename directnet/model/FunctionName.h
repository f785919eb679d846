#pragma once

#include <cstddef>
#include <string_view>

/// "IpIntfSm::handleRoom" in a member function of a class template: the member by its own name, the
/// class by that of OrbSelf, under which the instance is registered. Not for use in a lambda.
#define DIRECTNET_THIS_FUNCTION                                                                    \
    (Routing::DirectNet::functionName<OrbSelf, Routing::DirectNet::FunctionText(__func__)>.text)

namespace Routing::DirectNet {

/// A registered name without its namespaces.
constexpr std::string_view shortName(std::string_view typeName) {
    return typeName.substr(typeName.rfind(':') + 1);
}

/// A text as a template argument, its closing zero included.
template <std::size_t size>
struct FunctionText {
    consteval explicit FunctionText(const char (&from)[size]) {
        for (std::size_t n = 0; n < size; ++n) {
            text[n] = from[n];
        }
    }

    char text[size] = {};
};

template <typename Class, FunctionText function>
struct FunctionName {
    consteval FunctionName() {
        std::size_t end = 0;
        for (const std::string_view part :
             {shortName(Class::orbTypeName), std::string_view("::")}) {
            for (const char c : part) {
                text[end++] = c;
            }
        }
        for (const char c : function.text) {
            text[end++] = c;
        }
    }

    char text[shortName(Class::orbTypeName).size() + 2 + sizeof(function.text)] = {};
};

template <typename Class, FunctionText function>
inline constexpr FunctionName<Class, function> functionName;

} // namespace Routing::DirectNet
