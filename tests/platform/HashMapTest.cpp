#include "platform/orb/container/HashMap.h"
#include "platform/orb/container/HashMap2018.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <set>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/MapAgainstModel.h"

namespace {

constexpr std::uint64_t allOnes = std::numeric_limits<std::uint64_t>::max();

/// A key whose hash the test chooses.
struct ForcedKey {
    std::uint32_t id = 0;
    std::uint64_t forced = 0;

    std::uint64_t hash(std::uint64_t) const { return forced; }
    bool operator==(const ForcedKey& other) const { return id == other.id; }
    bool operator<(const ForcedKey& other) const { return id < other.id; }
};

using ForcedHash = std::uint64_t (*)(std::uint32_t id);

struct HashCase {
    const char* name;
    ForcedHash hash;
    std::uint32_t keys;

    friend std::ostream& operator<<(std::ostream& out, const HashCase& hashCase) {
        return out << hashCase.name;
    }
};

std::uint64_t mixed(std::uint32_t id) { return Orb::hashOf(id); }

/// The order the table promises: by hash (its top half decides), then by key.
struct HashOrder {
    bool operator()(const ForcedKey& a, const ForcedKey& b) const {
        const auto tagA = std::clamp<std::uint64_t>(a.forced >> 32, 1, 0xFFFFFFFE);
        const auto tagB = std::clamp<std::uint64_t>(b.forced >> 32, 1, 0xFFFFFFFE);
        return tagA != tagB ? tagA < tagB : a.id < b.id;
    }
};

class HashMapAgainstModel : public testing::TestWithParam<HashCase> {
  protected:
    ForcedKey randomKey() {
        const auto id = static_cast<std::uint32_t>(random_() % GetParam().keys);
        return {id, GetParam().hash(id)};
    }
    void insertRandom() { both_.insert(randomKey(), static_cast<std::uint32_t>(random_())); }

    std::mt19937 random_{20240117};
    TestSupport::MapAgainstModel<Orb::HashMap<ForcedKey, std::unique_ptr<std::uint32_t>>,
                                 std::map<ForcedKey, std::uint32_t, HashOrder>>
        both_;
};

TEST_P(HashMapAgainstModel, RandomOperationsLeaveWhatTheModelHolds) {
    // Phases of mostly growing and mostly draining, so that growth and shrinking both happen.
    for (int phase = 0; phase < 8; ++phase) {
        const unsigned insertPercent = phase % 2 == 0 ? 85 : 10;
        const std::uint32_t steps = GetParam().keys * (phase % 2 == 0 ? 2 : 3);
        for (std::uint32_t step = 0; step < steps; ++step) {
            if (random_() % 100 < insertPercent) {
                insertRandom();
            } else {
                both_.erase(randomKey());
            }
            both_.expectSamePositions(randomKey());
        }
        both_.expectSame();
    }
    both_.map.clear();
    both_.model.clear();
    both_.expectSame();
}

TEST_P(HashMapAgainstModel, WalkMeetsEveryStayingEntryOnce) {
    for (int round = 0; round < 20; ++round) {
        while (both_.map.size() < GetParam().keys / 2) {
            insertRandom();
        }
        std::set<std::uint32_t> staying;
        for (const auto& entry : both_.model) {
            staying.insert(entry.first.id);
        }
        std::set<std::uint32_t> met;
        for (const auto* entry = both_.map.first(); entry != nullptr;) {
            const ForcedKey at = entry->key();
            ASSERT_TRUE(met.insert(at.id).second) << "met twice";
            for (unsigned change = random_() % 4; change > 0; --change) {
                const ForcedKey gone = random_() % 4 == 0 ? at : randomKey();
                if ((round % 2 == 0) == (random_() % 8 != 0)) {
                    both_.erase(gone);
                    staying.erase(gone.id);
                } else {
                    insertRandom();
                }
            }
            entry = both_.map.after(at);
        }
        ASSERT_TRUE(std::includes(met.begin(), met.end(), staying.begin(), staying.end()));
        both_.expectSame();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Hashes, HashMapAgainstModel,
    testing::Values(
        HashCase{"Mixed", mixed, 3000},
        HashCase{"AllZero", [](std::uint32_t) { return std::uint64_t{0}; }, 300},
        HashCase{"AllOnes", [](std::uint32_t) { return allOnes; }, 300},
        HashCase{"FourBuckets", [](std::uint32_t id) { return std::uint64_t{id % 4} << 62; }, 300},
        HashCase{"CrowdedTop", [](std::uint32_t id) { return allOnes - mixed(id) / 64; }, 1000},
        HashCase{"OnlyLowBitsDiffer", [](std::uint32_t id) { return std::uint64_t{id}; }, 300}),
    [](const testing::TestParamInfo<HashCase>& tested) { return tested.param.name; });

/// Counts what the table does with its entries.
class Counted {
  public:
    explicit Counted(std::uint32_t id) : id_{id} {}
    Counted(Counted&& other) noexcept : id_(other.id_) { ++moves; }
    Counted& operator=(Counted&& other) noexcept = default;
    ~Counted() = default;

    struct Id {
        std::uint32_t value;
        std::uint64_t hash(std::uint64_t) const { return mixed(value); }
        bool operator==(const Id& other) const {
            ++compares;
            return value == other.value;
        }
        bool operator<(const Id& other) const {
            ++compares;
            return value < other.value;
        }
    };
    const Id& id() const { return id_; }
    static inline std::uint64_t moves = 0;
    static inline std::uint64_t compares = 0;

  private:
    explicit Counted(Id id) : id_(id) {}
    Id id_;
};

struct CountedKey {
    const Counted::Id& operator()(const Counted& element) const { return element.id(); }
};

using CountedMap = Orb::HashMap2018<Counted, CountedKey>;

class HashMapCost : public testing::Test {
  protected:
    static constexpr std::uint32_t count = 100000;

    HashMapCost() { reset(); }
    static void reset() { Counted::moves = Counted::compares = 0; }
    static void expectLinear(std::uint64_t operations) {
        EXPECT_LT(Counted::moves, 20 * operations);
        EXPECT_LT(Counted::compares, 4 * operations);
        reset();
    }
    void drainFront(CountedMap& map, std::size_t left) {
        for (const Counted* element = map.first(); map.size() > left;) {
            const Counted::Id at = element->id();
            map.erase(at);
            element = map.after(at);
        }
    }
};

TEST_F(HashMapCost, InsertingInHashOrderDoesNotPileUp) {
    std::vector<std::uint32_t> hashOrder(count);
    std::iota(hashOrder.begin(), hashOrder.end(), 0);
    std::ranges::sort(hashOrder, {}, mixed);
    for (const bool reversed : {false, true}) {
        CountedMap map;
        for (std::size_t index = 0; index < count; ++index) {
            map.tryInsert(Counted(hashOrder[reversed ? count - 1 - index : index]));
        }
        expectLinear(count);
        EXPECT_LT(map.allocatedBytes(), std::size_t{count} * (sizeof(Counted) + 4) * 4);
    }
}

TEST_F(HashMapCost, DrainedTableShrinksAndRefillsWithoutPilingUp) {
    CountedMap map;
    std::uint32_t next = 0;
    const auto refill = [&] {
        while (map.size() < count) {
            map.tryInsert(Counted(next++));
        }
    };
    refill();
    for (int round = 0; round < 10; ++round) {
        drainFront(map, count / 2);
        refill();
    }
    expectLinear(std::uint64_t{count} * 11);
    const std::size_t full = map.allocatedBytes();
    for (std::uint32_t id = 0; map.size() > count / 100; ++id) {
        map.erase(Counted::Id{id});
    }
    EXPECT_LT(map.allocatedBytes(), full / 10);
    drainFront(map, 0);
    expectLinear(count);
    EXPECT_EQ(map.allocatedBytes(), 0U);
}

TEST(HashMap, ElementMayUseTheMapWhileItIsDestroyed) {
    TestSupport::expectElementMayUseTheMapWhileItIsDestroyed<Orb::HashMap>();
}

TEST(HashMap, CopyAndMoveOwnTheirEntries) {
    TestSupport::expectCopyAndMoveToOwnTheirEntries<Orb::HashMap>();
}

} // namespace
