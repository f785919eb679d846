#include <algorithm>
#include <array>
#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <vector>

#include "agent/base/FileDescriptor.h"
#include "agent/topics/MetricsText.h"
#include "tests/agent/LiveProgram.h"
#include "tests/agent/PrivateNamespace.h"
#include "tests/agent/Program.h"

namespace {

using namespace TestSupport;
using nlohmann::json;
using testing::AllOf;
using testing::Contains;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;
using Service = LiveTest;

/// A service manager's end of the protocol.
class Notifications {
  public:
    /// As NOTIFY_SOCKET names it.
    explicit Notifications(std::string name)
        : file_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
        std::replace(name.begin(), name.begin() + 1, '@', '\0');
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy(name.begin(), name.end(), address.sun_path);
        EXPECT_EQ(::bind(file_.get(), reinterpret_cast<const sockaddr*>(&address),
                         static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size())),
                  0);
    }

    /// All that have come so far.
    const std::vector<std::string>& messages() {
        std::array<char, 4096> buffer{};
        for (ssize_t size = 0;
             (size = ::recv(file_.get(), buffer.data(), buffer.size(), 0)) >= 0;) {
            messages_.emplace_back(buffer.data(), static_cast<std::size_t>(size));
        }
        return messages_;
    }
    std::size_t count(const std::string& beginning) {
        return static_cast<std::size_t>(
            std::ranges::count_if(messages(), [&](const std::string& message) {
                return message.starts_with(beginning);
            }));
    }

  private:
    Agent::FileDescriptor file_;
    std::vector<std::string> messages_;
};

LiveProgram serviceAt(const std::string& socket, const std::string& arguments,
                      const std::string& environment = {}) {
    return LiveProgram::ofShell("NOTIFY_SOCKET=" + socket + ' ' + environment
                                + " exec \"$D\" run --quiet " + arguments);
}

TEST_F(Service, IsReadyOnceTheRoutesOfTheVrfsThatItWaitsForAreThereAndNotBefore) {
    Notifications manager("@manager");
    LiveProgram waiting("wait");
    LiveProgram agent =
        serviceAt("@manager", "--vrf red=nsred --ready-vrfs red,default", "WATCHDOG_USEC=50000");
    ASSERT_EQ(runProgram("wait --vrf default --timeout 60").status, 0);
    const auto early = runProgram("wait --timeout 0");
    EXPECT_EQ(early.status, 1);
    EXPECT_THAT(early.err, HasSubstr("not ready after 0 s"));
    EXPECT_THAT(runProgram("wait --vrf default --vrf red --timeout 1").err,
                HasSubstr("not ready after 1 s: VRF red\n"));
    // The loop turns, which is all that a watchdog asks.
    ASSERT_TRUE(agent.until([&] { return manager.count("WATCHDOG=1") > 2; }));
    EXPECT_EQ(manager.count("READY=1"), 0U);
    EXPECT_TRUE(agent.until([&] { return manager.count("STATUS=Waiting for VRF red; ") > 0; }));

    // It comes with all its addresses at once.
    ASSERT_TRUE(ip("netns add other"));
    runShell("ip -n other link set lo up; touch /run/netns/nsred; "
             "mount --bind /run/netns/other /run/netns/nsred");
    ASSERT_TRUE(agent.until([&] { return manager.count("READY=1") > 0; })) << agent.err();
    EXPECT_THAT(runProgram("tables --vrf red").out, HasSubstr("127.0.0.0/8"));
    EXPECT_EQ(waiting.wait(), 0) << "it was there before the agent";
    EXPECT_TRUE(agent.until([&] { return manager.count("STATUS=VRFs: 2, routes: 10") > 0; }));
    EXPECT_EQ(agent.endedBy(SIGTERM), 0);
    EXPECT_EQ(manager.messages().back(), "STOPPING=1");
    EXPECT_EQ(manager.count("READY=1"), 1U);
    EXPECT_EQ(agent.out(), "");
    EXPECT_EQ(runProgram("wait --timeout 0").status, 1);
}

TEST_F(Service, ReloadWaitsAndSaysWhatChangedOrWhyNothingDid) {
    const std::string config = "/run/config.json";
    std::ofstream(config) << R"({"ribWaits": {"default": true}})";
    Notifications manager("/run/manager");
    LiveProgram agent =
        serviceAt("/run/manager", "--config " + config, "WATCHDOG_USEC=1000 WATCHDOG_PID=1");
    ASSERT_TRUE(agent.until([&] { return manager.count("READY=1") > 0; })) << agent.err();
    EXPECT_EQ(manager.count("WATCHDOG"), 0U) << "that is for another process";

    std::ofstream(config)
        << R"({"virtualIps": {"ipv4": {"default": {"10.1.0.9/24": {"lo": true}}}}})";
    const auto good = runProgram("reload");
    EXPECT_EQ(good.out, "+ /virtualIps/ipv4/default/10.1.0.9~124/lo  true\n"
                        "- /ribWaits/default\n");
    EXPECT_EQ(good.status, 0) << good.err;
    EXPECT_THAT(show("routes"), HasSubstr("10.1.0.9/32")) << "the reload is over with its routes";
    EXPECT_TRUE(agent.until([&] { return manager.count("READY=1") == 2; }));
    EXPECT_THAT(manager.messages(), Contains(StartsWith("RELOADING=1\nMONOTONIC_USEC=")));

    std::ofstream(config) << "{\n\"leaks\": 1}";
    const auto bad = runProgram("reload");
    EXPECT_EQ(bad.status, 1);
    EXPECT_THAT(bad.err, HasSubstr("config.json:2"));
    EXPECT_TRUE(agent.until([&] { return manager.count("READY=1") == 3; }));
    EXPECT_THAT(manager.messages(),
                Contains(AllOf(StartsWith("STATUS="), HasSubstr("config.json:2"))));
    EXPECT_THAT(show("routes"), HasSubstr("10.1.0.9/32"));

    const json status = json::parse(show("status --json"));
    EXPECT_EQ(status["reloads"]["succeeded"], 1);
    EXPECT_EQ(status["reloads"]["failed"], 1);
    EXPECT_THAT(status["reloads"]["failure"].get<std::string>(), HasSubstr("config.json:2"));
    EXPECT_EQ(status["vrfs"]["default"]["routes"]["ipv4"]["receive"], 2);
    EXPECT_GE(status["drains"]["count"], 2);
    EXPECT_GT(status["drains"]["longest"], 0);
    EXPECT_THAT(show("metrics"), EndsWith("\n# EOF\n"));
}

TEST(Metrics, NamesAndLabelsAreAsOpenMetricsHasThem) {
    std::string text;
    Agent::MetricsText metrics(text);
    metrics.family("a_seconds", Agent::MetricsText::Type::counter, "A \\ B.", "seconds");
    metrics.sample({{"vrf", "r\"e\\d\n"}, {"family", "ipv4"}}, 1);
    metrics.finish();
    EXPECT_EQ(text,
              "# TYPE a_seconds counter\n# UNIT a_seconds seconds\n# HELP a_seconds A \\\\ B.\n"
              "a_seconds_total{vrf=\"r\\\"e\\\\d\\n\",family=\"ipv4\"} 1\n# EOF\n");
}

} // namespace
