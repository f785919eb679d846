#include "platform/ringlog/FunctionName.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace Routing::DirectNet {
namespace {

// Each function answers its own signature, spelled by whichever compiler builds the test.
template <typename T>
struct Machine {
    template <typename U>
    std::string method(const std::function<void(U)>& /*then*/) const {
        return __PRETTY_FUNCTION__;
    }
    std::string inLambda() const {
        return [](auto) { return __PRETTY_FUNCTION__; }(1);
    }
    std::vector<std::string> operator()(int /*unused*/) const { return {__PRETTY_FUNCTION__}; }
    struct OrbIpStatus {
        std::string onAttribute() const { return __PRETTY_FUNCTION__; }
    };
};

template <typename T>
std::string handleStatusT(const T& /*machine*/) {
    return __PRETTY_FUNCTION__;
}

TEST(FunctionName, NamesOfThisCompilerAreCutDown) {
    const Machine<std::vector<int>> machine;
    const std::vector<std::pair<std::string, std::string>> cases = {
        {machine.method<int>({}), "Machine::method"},
        {machine.inLambda(), "Machine::inLambda"},
        {machine(1).front(), "Machine::operator()"},
        {Machine<int>::OrbIpStatus().onAttribute(), "OrbIpStatus::onAttribute"},
        {handleStatusT(machine), "handleStatusT"},
    };
    for (const auto& [signature, name] : cases) {
        EXPECT_EQ(Ringlog::functionName(signature), name) << signature;
    }
}

TEST(FunctionName, SpellingsOfBothCompilersAreCutDown) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"void Routing::DirectNet::RootSm::doCreateOrDeleteContainer(const L3::VrfName&)",
         "RootSm::doCreateOrDeleteContainer"},
        {"virtual void Routing::DirectNet::Ipv4::A::OrbX::onY()", "OrbX::onY"},
        {"void {anonymous}::free(int)", "free"},
        {"void (anonymous namespace)::free(int)", "free"},
        {"void Routing::{anonymous}::A::f(std::pair<int, int>) [with T = int; U = B<C>]", "A::f"},
        {"void A<B<int>, C>::f(T) [T = int]", "A::f"},
        {"A::f(int)::<lambda(auto:1)> [with auto:1 = int]", "A::f"},
        {"auto A::f(int) const::(anonymous class)::operator()(auto) const [auto = int]", "A::f"},
        {"auto A::f()::(lambda at a.cpp:1:2)::operator()() const", "A::f"},
        {"void N::M<Sm>::f(int) [with Sm = Routing::DirectNet::IpIntfSm; T = int]", "IpIntfSm::f"},
        {"void M<IpIntfSm>::f(int) [Sm = IpIntfSm]", "IpIntfSm::f"},
        {"A::~A()", "A::~A"},
        {"std::string A::f[abi:cxx11]()", "A::f"},
        {"bool A::operator<=(const A&) const", "A::operator<="},
        {"std::ostream& Lanx::operator<<(std::ostream&, const T&) [T = int]", "Lanx::operator<<"},
        {"A::operator bool() const", "A::operator bool"},
        {"std::function<void (int)> A::f()", "A::f"},
        {"", ""},
        {"<<<((", ""},
    };
    for (const auto& [signature, name] : cases) {
        EXPECT_EQ(Ringlog::functionName(signature), name) << signature;
    }
}

} // namespace
} // namespace Routing::DirectNet
