#include "platform/ringlog/FunctionName.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace Routing::DirectNet {
namespace {

// Each function answers its own signature, spelled by whichever compiler builds the test.
template <typename T>
struct Machine {
    std::string method(const std::function<void(int)>& /*then*/) const {
        return __PRETTY_FUNCTION__;
    }
    template <typename U>
    std::string templated(const std::vector<U>& /*values*/) const {
        return __PRETTY_FUNCTION__;
    }
    std::string inLambda() const {
        return [](auto) { return __PRETTY_FUNCTION__; }(1);
    }
    std::vector<std::string> operator()(int /*unused*/) const { return {__PRETTY_FUNCTION__}; }
    std::string operator<(const Machine& /*other*/) const { return __PRETTY_FUNCTION__; }
    struct OrbIpStatus {
        std::string onAttribute() const { return __PRETTY_FUNCTION__; }
    };
};

template <typename T>
std::string handleStatusT(const T& /*machine*/) {
    return __PRETTY_FUNCTION__;
}

std::string inLocalClass() {
    struct Local {
        static std::string method() { return __PRETTY_FUNCTION__; }
    };
    return Local::method();
}

TEST(FunctionName, cutsWhatThisCompilerWrites) {
    using Numbers = std::vector<int>;
    const Machine<Numbers> machine;
    const std::vector<std::pair<std::string, std::string>> cases = {
        {machine.method({}), "Machine::method"},
        {machine.templated(Numbers()), "Machine::templated"},
        {machine.inLambda(), "Machine::inLambda"},
        {machine(1).front(), "Machine::operator()"},
        {machine < machine, "Machine::operator<"},
        {Machine<int>::OrbIpStatus().onAttribute(), "OrbIpStatus::onAttribute"},
        {handleStatusT(machine), "handleStatusT"},
        {inLocalClass(), "Local::method"},
    };
    for (const auto& [signature, name] : cases) {
        EXPECT_EQ(Ringlog::functionName(signature), name) << signature;
    }
}

TEST(FunctionName, cutsTheSpellingsOfBothCompilers) {
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
        {"A& A::operator=(A&&)", "A::operator="},
        {"bool A::operator<=(const A&) const", "A::operator<="},
        {"std::ostream& Lanx::operator<<(std::ostream&, const T&) [T = int]", "operator<<"},
        {"B *A::operator->() const", "A::operator->"},
        {"A::operator bool() const", "A::operator bool"},
        {"std::function<void (int)> A::f()", "A::f"},
        {"const char* const* A::f()", "A::f"},
        {"int main()", "main"},
        {"", ""},
        {"<<<((", ""},
    };
    for (const auto& [signature, name] : cases) {
        EXPECT_EQ(Ringlog::functionName(signature), name) << signature;
    }
}

} // namespace
} // namespace Routing::DirectNet
