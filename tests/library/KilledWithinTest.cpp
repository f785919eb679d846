#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
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

/// A file as another process changes it.
class WatchedFile {
  public:
    explicit WatchedFile(const std::filesystem::path& path)
        : file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)),
          size_(std::filesystem::file_size(path)),
          data_(static_cast<const char*>(
              ::mmap(nullptr, size_, PROT_READ, MAP_SHARED, file_.get(), 0))),
          seen_(data_, size_) {}
    WatchedFile(const WatchedFile&) = delete;
    WatchedFile& operator=(const WatchedFile&) = delete;
    ~WatchedFile() { ::munmap(const_cast<char*>(data_), size_); }

    /// Whether it has changed since this was asked last.
    bool hasChanged() {
        const bool changed = std::memcmp(data_, seen_.data(), size_) != 0;
        if (changed) {
            seen_.assign(data_, size_);
        }
        return changed;
    }

  private:
    const Orb::FileDescriptor file_;
    const std::size_t size_;
    const char* const data_;
    std::string seen_;
};

/// Runs a child that traces itself, instruction by instruction, from its first SIGSTOP to the
/// second. Where one has changed the file, `visit` is called.
template <typename Visit>
void stepThrough(const Child& child, const std::filesystem::path& path, const Visit& visit) {
    child.wait();
    WatchedFile file(path);
    for (;;) {
        ::ptrace(PTRACE_SINGLESTEP, child.pid(), nullptr, nullptr);
        const int status = child.wait(__WALL);
        if (!WIFSTOPPED(status) || WSTOPSIG(status) == SIGSTOP) {
            return;
        }
        if (file.hasChanged()) {
            visit();
        }
    }
}

class KilledWithinTest : public testing::Test {
  protected:
    using Table = Rib::PerVrfTable<Rib::RouteForm>;

    static Rib::Route route(unsigned n, unsigned type) {
        const auto prefix = Lanx::IpGenPrefix::fromString("10.0." + std::to_string(n) + ".0/24");
        return {Rib::RouteKey(VrfId(5), prefix), Rib::ViaSetKey(type * 0x0101010101010101),
                Fib::RouteType{static_cast<std::uint8_t>(type)}, MetricPref(type, type)};
    }
    static void open(Table& table, const SharedFolder& folder) {
        table.share(folder.store()->folder(), Tables::Paths::ipv4Routes);
    }
    static std::filesystem::path file(const SharedFolder& folder) {
        return std::filesystem::path(folder.path())
               / Tables::TableFileName(Tables::Paths::ipv4Routes).text;
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

// Every state that the memory has during some changes is one that a killed writer may leave. In
// each the table is read, and taken over by another writer, who has a copy and goes on.
TEST_F(KilledWithinTest, ChangesAreMadeOrNotWhereverTheirWriterIsKilled) {
    const Child writer([this] {
        Orb::ActivityManager activityManager(Orb::makePtr<ManualClock>());
        Table table(16);
        open(table, store_);
        EXPECT_EQ(table.newId(), 1U);
        table.insertOrAssign(route(1, 2));
        table.insertOrAssign(route(0, 1));
        table.erase(route(2, 4).key());
        table.erase(route(3, 5).key());
        const std::array routes = {route(0, 3), route(1, 2), route(2, 4), route(3, 5)};
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::raise(SIGSTOP);
        change(table, routes);
        ::raise(SIGSTOP);
    });
    Orb::ActivityManager activityManager(Orb::makePtr<ManualClock>());
    Reader follower(store_);
    std::ptrdiff_t reached = 0;
    int visits = 0;
    stepThrough(writer, file(store_), [&] {
        ++visits;
        Reader fresh(store_);
        const std::string seen = read(fresh);
        const auto state = std::ranges::find(states, seen) - std::begin(states);
        ASSERT_LT(state, std::ssize(states)) << seen << " in state " << visits;
        EXPECT_TRUE(state == reached || state == reached + 1) << seen << " in state " << visits;
        reached = state;
        EXPECT_EQ(read(follower), seen);

        const SharedFolder copied;
        std::filesystem::copy_file(file(store_), file(copied));
        Reader across(copied);
        EXPECT_EQ(read(across), seen);
        Table next(16);
        open(next, copied);
        EXPECT_EQ(types(next), seen);
        EXPECT_EQ(read(across), seen);
        for (unsigned n = 0; n < 4; ++n) {
            next.insertOrAssign(route(n, 6 + n));
            next.insertOrAssign(route(n, 5 + n));
        }
        EXPECT_EQ(types(next), "5678");
        EXPECT_EQ(next.newId(), 2U);
        EXPECT_EQ(read(across), "5678");
        const Tables::TableHeader& header = across.ipv4Routes().file().header();
        EXPECT_EQ(header.epoch, 2U);
        EXPECT_EQ(header.used, 4U); // what was free is used again
    });
    EXPECT_EQ(reached, std::ssize(states) - 1);
    EXPECT_GT(visits, 30);
}

} // namespace
} // namespace Routing::DirectNet
