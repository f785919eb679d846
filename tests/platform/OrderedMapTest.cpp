#include "platform/orb/container/OrderedMap.h"

#include <cstdint>
#include <map>
#include <memory>
#include <random>

#include <gtest/gtest.h>

#include "tests/support/MapAgainstModel.h"

namespace {

/// The number of distinct keys decides which shapes of the map are passed through.
class OrderedMapAgainstModel : public testing::TestWithParam<std::uint32_t> {};

TEST_P(OrderedMapAgainstModel, RandomOperationsLeaveWhatTheModelHolds) {
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
    TestSupport::expectElementMayUseTheMapWhileItIsDestroyed<Orb::OrderedMap>();
}

TEST(OrderedMap, CopyAndMoveOwnTheirEntries) {
    TestSupport::expectCopyAndMoveToOwnTheirEntries<Orb::OrderedMap>();
}

} // namespace
