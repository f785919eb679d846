#include "platform/ringlog/FunctionName.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <vector>

namespace Routing::DirectNet {
namespace {

// Each function answers its own signature, spelled by whichever compiler builds the test.
#define ANSWER_SIGNATURE                                                                           \
    { return __PRETTY_FUNCTION__; }

class Machine {
  public:
    Machine() : constructed(__PRETTY_FUNCTION__) {}

    std::string method(const std::string& /*name*/, const std::function<void(int)>& /*then*/) const
        ANSWER_SIGNATURE std::vector<std::string> returnsTemplate() const {
        return {__PRETTY_FUNCTION__};
    }
    template <typename T>
    std::string templated(const std::vector<T>& /*values*/) ANSWER_SIGNATURE std::string
        inLambda() {
        auto lambda = [this](int) { return constructed.empty() ? "" : __PRETTY_FUNCTION__; };
        return lambda(1);
    }
    std::string inGenericLambda() const {
        auto lambda = [](auto) { return __PRETTY_FUNCTION__; };
        return lambda(1);
    }
    std::string operator()(int /*unused*/) const ANSWER_SIGNATURE std::string
    operator<(const Machine& /*other*/) const ANSWER_SIGNATURE std::string
    operator[](std::size_t /*index*/) const ANSWER_SIGNATURE explicit
    operator std::vector<std::string>() const {
        return {__PRETTY_FUNCTION__};
    }

    class OrbIpStatus {
      public:
        std::string onAttribute() ANSWER_SIGNATURE
    };

    std::string constructed;
};

template <typename T>
class Twin {
  public:
    std::string method(T /*value*/) ANSWER_SIGNATURE
};

template <typename T>
std::string handleStatusT(const T& /*machine*/) ANSWER_SIGNATURE

    template <typename T>
    decltype(auto) deduced(const T& /*value*/) {
    return std::string(__PRETTY_FUNCTION__);
}

template <typename T>
std::string operator<<(std::vector<T>& /*left*/, const Machine& /*right*/) ANSWER_SIGNATURE

    std::string inLocalClass() {
    struct Local {
        static std::string method() ANSWER_SIGNATURE
    };
    return Local::method();
}

TEST(FunctionName, cutsWhatThisCompilerWrites) {
    Machine machine;
    std::vector<int> numbers;
    const std::vector<std::pair<std::string, std::string>> cases = {
        {machine.constructed, "Machine::Machine"},
        {machine.method("", {}), "Machine::method"},
        {machine.returnsTemplate().front(), "Machine::returnsTemplate"},
        {machine.templated(numbers), "Machine::templated"},
        {machine.inLambda(), "Machine::inLambda"},
        {machine.inGenericLambda(), "Machine::inGenericLambda"},
        {machine(1), "Machine::operator()"},
        {machine < Machine(), "Machine::operator<"},
        {machine[1], "Machine::operator[]"},
        {Machine::OrbIpStatus().onAttribute(), "OrbIpStatus::onAttribute"},
        {Twin<std::vector<int>>().method({}), "Twin::method"},
        {handleStatusT(machine), "handleStatusT"},
        {deduced(machine), "deduced"},
        {numbers << machine, "operator<<"},
        {inLocalClass(), "Local::method"},
    };
    for (const auto& [signature, name] : cases) {
        EXPECT_EQ(Ringlog::functionName(signature), name) << signature;
    }
    std::string conversion = static_cast<std::vector<std::string>>(machine).front();
    EXPECT_EQ(Ringlog::functionName(conversion).find("Machine::operator "), 0U) << conversion;
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
