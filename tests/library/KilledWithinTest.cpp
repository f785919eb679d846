#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <sys/ptrace.h>

#include "platform/orb/loop/ActivityManager.h"
#include "platform/routing/PerVrfTable.h"
#include "platform/routing/RouteForm.h"
#include "tests/support/ManualClock.h"
#include "tests/support/SharedTables.h"

// This source is compiled with optimization and without sanitizers: what it steps through should be
// little else than the changes themselves.

namespace Routing::DirectNet {
namespace {

using VrfId = Vrf::VrfIdMap::VrfId;

/// Runs a child that traces itself, instruction by instruction, from its first SIGSTOP to the
/// second, but no further than so many. Returns how many there were.
long stepThrough(const Child& child, long atMost) {
    child.wait();
    for (long steps = 0; steps < atMost; ++steps) {
        ::ptrace(PTRACE_SINGLESTEP, child.pid(), nullptr, nullptr);
        const int status = child.wait(__WALL);
        if (!WIFSTOPPED(status) || WSTOPSIG(status) == SIGSTOP) {
            return steps;
        }
    }
    return atMost;
}

class KilledWithinTest : public testing::Test {
  protected:
    using Table = Rib::PerVrfTable<Rib::RouteForm>;

    static Rib::Route route(unsigned n, unsigned type) {
        const auto prefix = Lanx::IpGenPrefix::fromString("10.0." + std::to_string(n) + ".0/24");
        return {Rib::RouteKey(VrfId(5), prefix), Rib::ViaSetKey(type * 0x0101010101010101),
                Fib::RouteType{static_cast<std::uint8_t>(type)}, MetricPref(type, type)};
    }
    void open(Table& table) const {
        table.share(store_.store()->folder(), Tables::Paths::ipv4Routes);
    }
    /// What the table has: the type of each route, in their order.
    std::string types(const Table& table) const {
        std::string text;
        for (unsigned n = 0; n < 4; ++n) {
            const auto found = table.find(route(n, 1).key());
            EXPECT_TRUE(!found || *found == route(n, static_cast<unsigned>(found->routeType())));
            text += found ? static_cast<char>('0' + static_cast<int>(found->routeType())) : '-';
        }
        return text;
    }
    std::string read(Reader& reader) const {
        reader.update();
        std::string text;
        for (unsigned n = 0; n < 4; ++n) {
            const auto key = keyOf(Rib::RouteForm::record(route(n, 1)));
            const Tables::RouteRecord* found = reader.ipv4Routes().find(key);
            text += found == nullptr ? '-' : static_cast<char>('0' + found->type);
            EXPECT_TRUE(
                found == nullptr
                || Tables::sameContent(*found, Rib::RouteForm::record(route(n, found->type))));
        }
        return text;
    }
    /// Replaces a record, removes one, adds two, one of them into the place of the removed.
    static void change(Table& table, const std::array<Rib::Route, 4>& routes) {
        table.insertOrAssign(routes[0]);
        table.erase(routes[1].key());
        table.insertOrAssign(routes[2]);
        table.insertOrAssign(routes[3]);
    }
    static constexpr std::string_view states[] = {"12--", "32--", "3---", "3-4-", "3-45"};

    SharedFolder store_;
};

// The writer is killed after so many instructions of the same changes, from the first to the last.
TEST_F(KilledWithinTest, ChangesAreMadeOrNotWhereverTheirWriterIsKilled) {
    const auto writer = [this] {
        Orb::ActivityManager activityManager(Orb::makePtr<ManualClock>());
        Table table(16);
        open(table);
        table.insertOrAssign(route(0, 1));
        table.insertOrAssign(route(1, 2));
        table.erase(route(2, 4).key());
        table.erase(route(3, 5).key());
        const std::array routes = {route(0, 3), route(1, 2), route(2, 4), route(3, 5)};
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::raise(SIGSTOP);
        change(table, routes);
        ::raise(SIGSTOP);
    };
    const long all = [&] {
        const Child child(writer);
        return stepThrough(child, 10'000'000);
    }();
    ASSERT_GT(all, 100);
    Reader follower(store_);
    std::size_t reached = 0;
    std::mt19937 random(11);
    constexpr long kills = 60;
    for (long n = 0; n < kills; ++n) {
        const long steps = all * n / kills + static_cast<long>(random() % (all / kills + 1));
        Child child(writer);
        stepThrough(child, steps);
        child.kill();
        Reader fresh(store_);
        const std::string seen = read(fresh);
        const auto state = std::ranges::find(states, seen) - std::begin(states);
        ASSERT_LT(state, std::ssize(states)) << seen << " after " << steps;
        EXPECT_GE(state, static_cast<std::ptrdiff_t>(reached)) << seen << " after " << steps;
        reached = static_cast<std::size_t>(state);
        EXPECT_EQ(read(follower), seen);
        Table next(16);
        open(next);
        EXPECT_EQ(types(next), seen);
        EXPECT_EQ(read(follower), seen);
    }
    EXPECT_EQ(reached, std::size(states) - 1);
}

} // namespace
} // namespace Routing::DirectNet
