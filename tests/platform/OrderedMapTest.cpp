#include "platform/orb/OrderedMap.h"

#include <cstdint>
#include <map>
#include <memory>
#include <random>

#include <gtest/gtest.h>

namespace {

using Map = Orb::OrderedMap<std::uint32_t, std::unique_ptr<std::uint32_t>>;
using Model = std::map<std::uint32_t, std::uint32_t>;

void expectEntry(const Map::Entry* entry, const Model& model, Model::const_iterator expected) {
    ASSERT_EQ(entry == nullptr, expected == model.end());
    if (entry != nullptr) {
        ASSERT_EQ(entry->key(), expected->first);
        ASSERT_EQ(*entry->value(), expected->second);
    }
}

/// The number of distinct keys decides which shapes of the map are passed through.
class OrderedMapAgainstModel : public testing::TestWithParam<std::uint32_t> {};

TEST_P(OrderedMapAgainstModel, RandomOperationsLoseOrMisplaceNothing) {
    std::mt19937 random(77);
    Map map;
    Model model;
    for (int step = 0; step < 20000; ++step) {
        const auto key = static_cast<std::uint32_t>(random() % GetParam());
        const auto value = static_cast<std::uint32_t>(random());
        if (random() % 100 < (step % 2000 < 1000 ? 80U : 20U)) {
            ASSERT_EQ(map.insertOrAssign(key, std::make_unique<std::uint32_t>(value)),
                      model.insert_or_assign(key, value).second);
        } else {
            ASSERT_EQ(map.erase(key), model.erase(key) == 1);
        }
        const auto probe = static_cast<std::uint32_t>(random() % GetParam());
        expectEntry(map.first(), model, model.begin());
        expectEntry(map.after(probe), model, model.upper_bound(probe));
        expectEntry(map.atOrAfter(probe), model, model.lower_bound(probe));
        ASSERT_EQ(map.contains(probe), model.contains(probe));
        ASSERT_EQ(map.size(), model.size());
        ASSERT_EQ(map.empty(), model.empty());
        auto expected = model.begin();
        for (const auto& [at, held] : map) {
            ASSERT_EQ(at, expected->first);
            ASSERT_EQ(*held, (expected++)->second);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, OrderedMapAgainstModel, testing::Values(2, 5, 12, 60));

TEST(OrderedMap, ElementMayUseTheMapWhileItIsDestroyed) {
    for (const std::uint32_t size : {1U, 3U, 9U, 40U}) {
        Orb::OrderedMap<std::uint32_t, std::shared_ptr<void>> map;
        for (std::uint32_t key = 0; key < size; ++key) {
            map.insertOrAssign(key, std::shared_ptr<void>(nullptr, [&map, key](void*) {
                                   EXPECT_FALSE(map.contains(key));
                                   map.tryInsert(key + 1000);
                                   map.erase(key + 1);
                               }));
        }
        map.erase(0);
        EXPECT_EQ(map.size(), size) << "every entry went and left another";
        EXPECT_EQ(map.first()->key(), 1000U);
    }
}

TEST(OrderedMap, CopyIsIndependent) {
    for (const std::uint32_t size : {1U, 8U, 9U}) {
        Orb::OrderedMap<std::uint32_t, int> map;
        for (std::uint32_t key = 0; key < size; ++key) {
            map.insertOrAssign(key, 1);
        }
        Orb::OrderedMap<std::uint32_t, int> copy(map);
        copy.insertOrAssign(0, 2);
        EXPECT_EQ(*map.find(0), 1);
        EXPECT_EQ(copy.size(), size);
    }
}

} // namespace
