#include "platform/orb/OrderedMap.h"

#include <cstdint>
#include <map>
#include <memory>
#include <random>

#include <gtest/gtest.h>

#include "tests/support/MapAgainstModel.h"

namespace {

/// The number of distinct keys decides which shapes of the map are passed through.
class OrderedMapAgainstModel : public testing::TestWithParam<std::uint32_t> {};

TEST_P(OrderedMapAgainstModel, RandomOperationsLoseOrMisplaceNothing) {
    std::mt19937 random(77);
    TestSupport::MapAgainstModel<Orb::OrderedMap<std::uint32_t, std::unique_ptr<std::uint32_t>>,
                                 std::map<std::uint32_t, std::uint32_t>>
        both;
    const auto key = [&] { return static_cast<std::uint32_t>(random() % GetParam()); };
    for (int step = 0; step < 20000; ++step) {
        if (random() % 100 < (step % 2000 < 1000 ? 80U : 20U)) {
            both.insert(key(), static_cast<std::uint32_t>(random()));
        } else {
            both.erase(key());
        }
        both.expectSamePositions(key());
        both.expectSame();
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
