#include "platform/orb/HashMap.h"
#include "platform/orb/HashMap2018.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

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
};

void PrintTo(const HashCase& value, std::ostream* out) { *out << value.name; }

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
    using Map = Orb::HashMap<ForcedKey, std::unique_ptr<std::uint32_t>>;
    using Model = std::map<ForcedKey, std::uint32_t, HashOrder>;

    ForcedKey key(std::uint32_t id) const { return {id, GetParam().hash(id)}; }
    ForcedKey randomKey() {
        return key(std::uniform_int_distribution<std::uint32_t>(0, GetParam().keys - 1)(random_));
    }

    void insertRandom() {
        const ForcedKey at = randomKey();
        const auto value = static_cast<std::uint32_t>(random_());
        const bool added = map_.insertOrAssign(at, std::make_unique<std::uint32_t>(value));
        ASSERT_EQ(added, model_.insert_or_assign(at, value).second);
    }
    void eraseRandom() {
        const ForcedKey at = randomKey();
        ASSERT_EQ(map_.erase(at), model_.erase(at) == 1);
    }
    void expectSame() const {
        ASSERT_EQ(map_.size(), model_.size());
        ASSERT_EQ(map_.empty(), model_.empty());
        auto expected = model_.begin();
        for (const auto& [at, value] : map_) {
            ASSERT_EQ(at, expected->first);
            ASSERT_EQ(*value, expected->second);
            ++expected;
        }
    }
    void expectSamePositions(const ForcedKey& at) const {
        const auto* found = map_.find(at);
        ASSERT_EQ(found != nullptr, model_.contains(at));
        const auto expectEntry = [&](const Map::Entry* entry, Model::const_iterator expected) {
            ASSERT_EQ(entry == nullptr, expected == model_.end());
            if (entry != nullptr) {
                ASSERT_EQ(entry->key(), expected->first);
            }
        };
        expectEntry(map_.first(), model_.begin());
        expectEntry(map_.after(at), model_.upper_bound(at));
        expectEntry(map_.atOrAfter(at), model_.lower_bound(at));
    }

    std::mt19937 random_{20240117};
    Map map_;
    Model model_;
};

TEST_P(HashMapAgainstModel, RandomOperationsLoseOrMisplaceNothing) {
    // Phases of mostly growing and mostly draining, so that growth and shrinking both happen.
    for (int phase = 0; phase < 8; ++phase) {
        const unsigned insertPercent = phase % 2 == 0 ? 85 : 10;
        const std::uint32_t steps = GetParam().keys * (phase % 2 == 0 ? 2 : 3);
        for (std::uint32_t step = 0; step < steps; ++step) {
            if (random_() % 100 < insertPercent) {
                insertRandom();
            } else {
                eraseRandom();
            }
            expectSamePositions(randomKey());
        }
        expectSame();
    }
    map_.clear();
    model_.clear();
    expectSame();
}

TEST_P(HashMapAgainstModel, WalkThroughMutationsMeetsEveryStayingEntryOnce) {
    for (int round = 0; round < 20; ++round) {
        while (map_.size() < GetParam().keys / 2) {
            insertRandom();
        }
        std::set<std::uint32_t> staying;
        for (const auto& entry : model_) {
            staying.insert(entry.first.id);
        }
        std::set<std::uint32_t> met;
        for (const auto* entry = map_.first(); entry != nullptr;) {
            const ForcedKey at = entry->key();
            ASSERT_TRUE(met.insert(at.id).second) << "met twice";
            for (unsigned change = random_() % 4; change > 0; --change) {
                const ForcedKey gone = random_() % 4 == 0 ? at : randomKey();
                if ((round % 2 == 0) == (random_() % 8 != 0)) {
                    map_.erase(gone);
                    model_.erase(gone);
                    staying.erase(gone.id);
                } else {
                    insertRandom();
                }
            }
            entry = map_.after(at);
        }
        ASSERT_TRUE(std::includes(met.begin(), met.end(), staying.begin(), staying.end()));
        expectSame();
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

TEST(HashMap, OrderDoesNotDependOnHistory) {
    std::vector<std::uint32_t> keys(2000);
    for (std::uint32_t index = 0; index < keys.size(); ++index) {
        keys[index] = index * 7;
    }
    const auto orderOf = [](const Orb::HashMap<std::uint32_t, int>& map) {
        std::vector<std::uint32_t> order;
        for (const auto& entry : map) {
            order.push_back(entry.key());
        }
        return order;
    };
    Orb::HashMap<std::uint32_t, int> ascending;
    for (const std::uint32_t key : keys) {
        ascending.tryInsert(key);
    }
    Orb::HashMap<std::uint32_t, int> onceHuge;
    for (std::uint32_t key = 0; key < 200000; ++key) {
        onceHuge.tryInsert(key);
    }
    for (std::uint32_t key = 0; key < 200000; ++key) {
        if (key % 7 != 0 || key >= 14000) {
            onceHuge.erase(key);
        }
    }
    std::shuffle(keys.begin(), keys.end(), std::mt19937(5));
    Orb::HashMap<std::uint32_t, int> shuffled;
    for (const std::uint32_t key : keys) {
        shuffled.tryInsert(key);
    }
    EXPECT_EQ(orderOf(ascending), orderOf(shuffled));
    EXPECT_EQ(orderOf(ascending), orderOf(onceHuge));
    EXPECT_EQ(orderOf(ascending), orderOf(Orb::HashMap<std::uint32_t, int>(onceHuge)));
    EXPECT_LT(onceHuge.allocatedBytes(), 20U * keys.size() * 12) << "kept its largest size";
}

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

    HashMapCost() {
        for (std::uint32_t id = 0; id < count; ++id) {
            hashOrder_.push_back(id);
        }
        std::sort(hashOrder_.begin(), hashOrder_.end(),
                  [](std::uint32_t a, std::uint32_t b) { return mixed(a) < mixed(b); });
        reset();
    }
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

    std::vector<std::uint32_t> hashOrder_;
};

TEST_F(HashMapCost, InsertingInHashOrderDoesNotPileUp) {
    for (const bool reversed : {false, true}) {
        CountedMap map;
        for (std::size_t index = 0; index < count; ++index) {
            map.tryInsert(Counted(hashOrder_[reversed ? count - 1 - index : index]));
        }
        expectLinear(count);
        EXPECT_LT(map.allocatedBytes(), std::size_t{count} * (sizeof(Counted) + 4) * 4);
    }
}

TEST_F(HashMapCost, ErasingWhileWalkingIsLinear) {
    CountedMap map;
    for (std::uint32_t id = 0; id < count; ++id) {
        map.tryInsert(Counted(id));
    }
    expectLinear(count);
    drainFront(map, 0);
    expectLinear(count);
    EXPECT_EQ(map.allocatedBytes(), 0U);
}

TEST_F(HashMapCost, RefillingAHalfDrainedTableDoesNotPileUp) {
    CountedMap map;
    for (std::uint32_t id = 0; id < count; ++id) {
        map.tryInsert(Counted(id));
    }
    std::uint32_t next = count;
    for (int round = 0; round < 10; ++round) {
        drainFront(map, count / 2);
        while (map.size() < count) {
            map.tryInsert(Counted(next++));
        }
    }
    expectLinear(std::uint64_t{count} * 11);
}

TEST(HashMap, ElementMayUseTheMapWhileItIsDestroyed) {
    struct Element {
        std::uint32_t id;
        std::shared_ptr<void> guard;
    };
    struct ElementKey {
        const std::uint32_t& operator()(const Element& element) const { return element.id; }
    };
    Orb::HashMap2018<Element, ElementKey> map;
    const auto element = [&map](std::uint32_t id) {
        return Element{id, std::shared_ptr<void>(nullptr, [&map, id](void*) {
                           EXPECT_EQ(map.find(id), nullptr);
                           map.tryInsert(Element{id + 1000, nullptr});
                           map.erase(id + 1);
                       })};
    };
    for (std::uint32_t id = 0; id < 100; ++id) {
        map.tryInsert(element(id));
    }
    EXPECT_TRUE(map.erase(50));
    EXPECT_EQ(map.size(), 100U) << "50 to 99 went, each left another";
    map.clear();
    EXPECT_EQ(map.size(), 50U);
}

TEST(HashMap, CopyAndMoveOwnTheirEntries) {
    Orb::HashMap<std::string, std::string> map;
    for (int index = 0; index < 50; ++index) {
        map.insertOrAssign("key" + std::to_string(index), std::string(40, 'v'));
    }
    Orb::HashMap<std::string, std::string> copy(map);
    Orb::HashMap<std::string, std::string> moved(std::move(map));
    map = copy;
    copy.erase("key7");
    moved.find("key8")->clear();
    EXPECT_EQ(*map.find("key7"), std::string(40, 'v'));
    EXPECT_EQ(*map.find("key8"), std::string(40, 'v'));
    EXPECT_EQ(copy.size() + 1, moved.size());
}

} // namespace
