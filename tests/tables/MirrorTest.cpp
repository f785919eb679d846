#include <gmock/gmock.h>

#include <atomic>
#include <map>
#include <optional>
#include <random>
#include <thread>
#include <vector>

#include "tables/layout/TablePaths.h"
#include "tables/reader/Mirror.h"
#include "tests/tables/TableWriter.h"

namespace TablesTest {
namespace {

using Tables::Found;
using Tables::RouteRecord;

constexpr const char* path = Tables::Paths::ipv4Routes;

/// What a reader is told, put together; every change has to fit onto what was told before.
class Follower {
  public:
    explicit Follower(const std::string& folder) { folder_.pathIs(folder.c_str(), error_); }

    Found update() {
        EXPECT_EQ(folder_.look(error_), Found::here);
        return mirror_.update(
            folder_, error_,
            [this](const RouteRecord* before, const RouteRecord* after) { told(before, after); });
    }

    void told(const RouteRecord* before, const RouteRecord* after) {
        const std::uint8_t number = (before != nullptr ? before : after)->prefix.address[2];
        const auto known = values.find(number);
        ASSERT_EQ(known != values.end(), before != nullptr);
        if (before != nullptr) {
            ASSERT_EQ(before->metric, known->second);
        }
        if (after == nullptr) {
            values.erase(known);
        } else {
            ASSERT_TRUE(before == nullptr || !sameContent(*before, *after));
            ASSERT_EQ(after->preference, ~after->metric);
            values[number] = after->metric;
        }
    }

    std::map<std::uint8_t, std::uint32_t> mirrored() const {
        std::map<std::uint8_t, std::uint32_t> seen;
        mirror_.each([&](const RouteRecord& route) {
            EXPECT_TRUE(seen.emplace(route.prefix.address[2], route.metric).second);
            const RouteRecord* const found = mirror_.find(keyOf(route));
            EXPECT_TRUE(found != nullptr && found->metric == route.metric);
            return 0;
        });
        EXPECT_EQ(seen.size(), mirror_.count());
        return seen;
    }

    std::string error() const { return error_.text(); }

    std::map<std::uint8_t, std::uint32_t> values;

  private:
    Tables::Folder folder_;
    Tables::ErrorText error_;
    Tables::Mirror<RouteRecord> mirror_{path, Tables::ipv4};
};

/// Changes a table at random, like a writer that has a record of a key in one slot at a time and
/// gives free slots to whoever comes. So slots are used again and keys move.
class RandomWriter {
  public:
    RandomWriter(const std::string& folder, unsigned seed, std::uint32_t ringEntries)
        : folder_(folder), ringEntries_(ringEntries), random_(seed) {
        writer_.emplace(folder_, path, ringEntries_);
    }

    void changeOne() {
        const auto number = static_cast<std::uint8_t>(random_() % 24);
        const auto known = slots_.find(number);
        if (known == slots_.end()) {
            std::uint32_t slot = nextSlot_;
            if (!free_.empty()) {
                std::swap(free_[random_() % free_.size()], free_.back());
                slot = free_.back();
                free_.pop_back();
            } else {
                ++nextSlot_;
            }
            slots_[number] = slot;
            model[number] = ++value_;
            writer_->put(slot, routeOf(number, value_));
        } else if (random_() % 2 == 0) {
            // Sometimes the record stays the same, though its slot changes.
            model[number] = random_() % 4 == 0 ? model[number] : ++value_;
            writer_->put(known->second, routeOf(number, model[number]));
        } else {
            writer_->clear(known->second);
            free_.push_back(known->second);
            slots_.erase(known);
            model.erase(number);
        }
    }

    void dieAndTakeOver() {
        writer_->announceOnly(free_.empty() ? nextSlot_ : free_.front());
        writer_.reset();
        writer_.emplace(folder_, path, ringEntries_);
    }

    void makeAnew() {
        writer_.reset();
        ::unlink(tableFile(folder_, path).c_str());
        writer_.emplace(folder_, path, ringEntries_);
        free_.clear();
        nextSlot_ = 0;
        for (auto& [number, slot] : slots_) {
            slot = nextSlot_++;
            writer_->put(slot, routeOf(number, model[number]));
        }
    }

    std::map<std::uint8_t, std::uint32_t> model;

  private:
    std::string folder_;
    std::uint32_t ringEntries_;
    std::mt19937 random_;
    std::optional<TableWriter<RouteRecord>> writer_;
    std::map<std::uint8_t, std::uint32_t> slots_;
    std::vector<std::uint32_t> free_;
    std::uint32_t nextSlot_ = 0;
    std::uint32_t value_ = 0;
};

TEST(MirrorTest, FollowersEndWithTheTableWhateverTheirPaceAndTheWriters) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        const TemporaryFolder folder;
        RandomWriter writer(folder.path(), seed, 16);
        std::vector<std::unique_ptr<Follower>> followers;
        std::mt19937 random(seed);
        for (int step = 0; step < 2000; ++step) {
            const auto choice = random() % 400;
            if (choice == 0) {
                writer.makeAnew();
            } else if (choice == 1) {
                writer.dieAndTakeOver();
            } else if (choice == 2 && followers.size() < 4) {
                followers.push_back(std::make_unique<Follower>(folder.path()));
            } else {
                writer.changeOne();
            }
            for (std::size_t n = 0; n < followers.size(); ++n) {
                // From at every change to hardly ever.
                if (random() % (1U << (n * 3)) == 0) {
                    ASSERT_EQ(followers[n]->update(), Found::here) << followers[n]->error();
                    ASSERT_EQ(followers[n]->values, writer.model);
                    ASSERT_EQ(followers[n]->mirrored(), writer.model);
                }
            }
        }
    }
}

TEST(MirrorTest, FollowersEndWithTheTableThatChangesWhileTheyRead) {
    const TemporaryFolder folder;
    RandomWriter writer(folder.path(), 1, 64);
    std::atomic<bool> isOver = false;
    std::atomic<unsigned> rounds = 0;
    std::vector<std::jthread> readers;
    readers.reserve(2);
    for (int n = 0; n < 2; ++n) {
        readers.emplace_back([&, n] {
            Follower follower(folder.path());
            bool last = false;
            while (!last && !testing::Test::HasFailure()) {
                last = isOver;
                const Found found = follower.update();
                ASSERT_TRUE(found == Found::here || !last) << follower.error();
                ASSERT_EQ(follower.mirrored(), follower.values);
                if (n == 1) {
                    std::this_thread::yield();
                }
                ++rounds;
            }
            ASSERT_EQ(follower.values, writer.model);
        });
    }
    for (int step = 0; (step < 300000 || rounds < 100) && !HasFailure(); ++step) {
        writer.changeOne();
    }
    isOver = true;
}

TEST(MirrorTest, AChangeThatIsAnnouncedIsWaitedForUntilItsWriterComesToIt) {
    const TemporaryFolder folder;
    TableWriter<RouteRecord> writer(folder.path(), path);
    writer.put(0, routeOf(0, 1));
    writer.announceOnly(1);
    Follower follower(folder.path());
    ASSERT_EQ(follower.update(), Found::here);
    EXPECT_EQ(follower.values.size(), 1U);
    const auto word = Tables::Slot::next(writer.slot(1).word, true);
    Tables::Slot::put(writer.slot(1), routeOf(1, 2), word);
    ASSERT_EQ(follower.update(), Found::here);
    EXPECT_EQ(follower.values.size(), 2U);
}

TEST(MirrorTest, ANewWriterNeedNotAnnounceWhatItMends) {
    const TemporaryFolder folder;
    TableWriter<RouteRecord> writer(folder.path(), path);
    writer.put(0, routeOf(0, 1));
    Follower follower(folder.path());
    ASSERT_EQ(follower.update(), Found::here);
    Tables::Slot::clear(writer.slot(0), Tables::Slot::next(writer.slot(0).word, false));
    writer.nextEpoch();
    ASSERT_EQ(follower.update(), Found::here);
    EXPECT_EQ(follower.values.size(), 0U);
}

TEST(MirrorTest, RecordsThatNoTableHasAreRefusedAndTheCopyStays) {
    const TemporaryFolder folder;
    TableWriter<RouteRecord> writer(folder.path(), path);
    writer.put(0, routeOf(0, 1));
    Follower follower(folder.path());
    ASSERT_EQ(follower.update(), Found::here);

    std::vector<RouteRecord> unsound(4, routeOf(1, 2));
    unsound[0].length = 33;
    unsound[1].family = Tables::ipv6;
    unsound[2].prefix.address[3] = 1;
    unsound[3].prefix.address[15] = 1;
    for (const RouteRecord& route : unsound) {
        writer.put(1, route);
        EXPECT_EQ(follower.update(), Found::refused);
        EXPECT_THAT(follower.error(), testing::HasSubstr("damaged"));
        EXPECT_EQ(follower.mirrored().size(), 1U);
    }
    writer.put(1, routeOf(1, 2));
    EXPECT_EQ(follower.update(), Found::here);
    EXPECT_EQ(follower.values.size(), 2U);
}

} // namespace
} // namespace TablesTest
