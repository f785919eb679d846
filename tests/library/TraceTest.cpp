#include "directnet/model/Trace.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/ringlog/RinglogReader.h"
#include "tests/support/LibraryHarness.h"

namespace {
DIRECTNET_TRACE_UNIT("TraceTest");
}

namespace Routing::DirectNet {
namespace {

using Ringlog::TraceHandle;

class TraceTest : public testing::Test {
  protected:
    TraceTest() {
        Ringlog::close();
        TraceHandle::levelOfAllIs(TraceHandle::off);
        TraceHandle::sinkIs([this](std::string_view line) { printed_.emplace_back(line); });
    }
    ~TraceTest() override {
        Ringlog::close();
        TraceHandle::sinkIs({});
        TraceHandle::levelOfAllIs(TraceHandle::off);
        std::filesystem::remove(file_);
    }

    void openRing() const {
        Ringlog::initialize(file_.string(), "", "", 0, 24, Ringlog::ThreadingMode::single, true, 8);
        ASSERT_NE(Ringlog::defaultRinglogFile(), nullptr);
    }

    /// The last line of the ring file, without the time in front.
    std::string lastOfRing() const {
        std::ifstream in(file_, std::ios::binary);
        std::stringstream bytes;
        bytes << in.rdbuf();
        const std::string file = bytes.str();
        Ringlog::RinglogReader reader(file);
        std::string last;
        while (auto line = reader.next()) {
            last = line->substr(line->find(' ') + 1);
        }
        return last;
    }

    int count() { return ++evaluated_; }

    std::filesystem::path file_ = std::filesystem::temp_directory_path()
                                  / ("trace-test-" + std::to_string(::getpid()) + ".rl");
    std::vector<std::string> printed_;
    int evaluated_ = 0;
};

std::string at(int line) { return "TraceTest:" + std::to_string(line) + " [TraceTest_"; }

TEST_F(TraceTest, DisabledStatementsEvaluateNothing) {
    for (int level : {TraceHandle::off, 0, 7}) {
        TraceHandle::named("DirectNet").levelIs(level);
        // Another handle that prints the level must not make this one evaluate.
        ribReadySmTraceHandle().levelIs(9);
        DIRECTNET_TRACE(8, "x", count());
        DIRECTNET_DUALLOG(8, "x", count());
        DIRECTNET_RINGLOG("x", count());
    }
    EXPECT_EQ(evaluated_, 0);
    EXPECT_TRUE(printed_.empty());
}

TEST_F(TraceTest, LineNamesHandleLevelAndPlace) {
    TraceHandle::levelOfAllIs(8);
    const int line = __LINE__ + 1;
    DIRECTNET_TRACE(8, "size=", 5, " af=", "ipv4\nDirectNet 0 forged");
    DIRECTNET_TRACE_TO(ribReadySmTraceHandle(), 0, "ready");
    ASSERT_EQ(printed_.size(), 2U);
    EXPECT_EQ(printed_[0], "DirectNet 8 " + at(line)
                               + "LineNamesHandleLevelAndPlace_Test::TestBody] "
                                 "size=5 af=ipv4\\x0aDirectNet 0 forged");
    EXPECT_EQ(printed_[1].substr(0, 31), "DirectNetRibReadySm 0 TraceTest");
}

TEST_F(TraceTest, LevelOfAllHoldsForHandlesMadeLater) {
    TraceHandle::levelOfAllIs(3);
    TraceHandle::named("made before the other level").levelIs(TraceHandle::off);
    DIRECTNET_TRACE_TO(TraceHandle::named("made later"), 3, "printed");
    DIRECTNET_TRACE_TO(TraceHandle::named("made later"), 4, "too detailed");
    EXPECT_EQ(printed_.size(), 1U);
}

TEST_F(TraceTest, DuallogWritesTheSameTextToWhicheverIsOpen) {
    const std::string large(1000, 'x');
    for (const auto& [print, ring] :
         {std::pair(false, false), {false, true}, {true, false}, {true, true}}) {
        printed_.clear();
        evaluated_ = 0;
        TraceHandle::levelOfAllIs(print ? 8 : TraceHandle::off);
        Ringlog::close();
        if (ring) {
            openRing();
        }
        const int line = __LINE__ + 1;
        DIRECTNET_DUALLOG(8, "n=", count(), " size=", 5U, ' ', large);
        const std::string text =
            at(line) + "DuallogWritesTheSameTextToWhicheverIsOpen_Test::TestBody] n=1 size=5 ";
        EXPECT_EQ(evaluated_, print || ring ? 1 : 0);
        ASSERT_EQ(printed_.size(), print ? 1U : 0U);
        if (print) {
            EXPECT_EQ(printed_[0], std::string("DirectNet 8 ").append(text).append(large));
        }
        if (ring) {
            EXPECT_TRUE(lastOfRing().starts_with(text + "xxxx")) << lastOfRing();
        }
    }
}

TEST_F(TraceTest, LinesOfCodeThatFamiliesShareNameTheFamilysClass) {
    LibraryHarness harness;
    harness.device("default", "Et1");
    TraceHandle::levelOfAllIs(9);
    harness.vrf("default", 0);
    harness.address("default", "Et1", "10.0.0.1/24");
    harness.address6("default", "Et1", "2001:db8::1/64");
    TraceHandle::levelOfAllIs(TraceHandle::off);
    for (const char* function :
         {"[IpIntfSm::updateIntfIdsByPrefix] ", "[Ip6IntfSm::updateIntfIdsByPrefix] ",
          "[IpIntfStatusSm::handleIntfId] IpIntfStatusSm default ",
          "[Ip6IntfStatusSm::handleIntfId] Ip6IntfStatusSm default ",
          "[VrfIpIntfStatusSm::maybeSetRoutesReady] ",
          "[VrfIp6IntfStatusSm::handleVrfIp6IntfStatus] "}) {
        EXPECT_TRUE(std::any_of(printed_.begin(), printed_.end(), [&](const std::string& line) {
            return line.find(function) != std::string::npos;
        })) << function;
    }
}

TEST_F(TraceTest, FailingSinkDoesNotFailTheCaller) {
    TraceHandle::levelOfAllIs(8);
    TraceHandle::sinkIs([](std::string_view) { throw std::runtime_error("full"); });
    EXPECT_NO_THROW(DIRECTNET_TRACE(8, "x"));
}

} // namespace
} // namespace Routing::DirectNet
