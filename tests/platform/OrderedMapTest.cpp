#include "platform/orb/container/OrderedMap.h"

#include <cstdint>
#include <map>
#include <memory>
#include <random>

#include <gtest/gtest.h>

#include "platform/orb/container/SoleMap.h"
#include "tests/support/MapAgainstModel.h"

namespace {

/// Random operations leave what the model holds. The number of distinct keys decides which shapes
/// of the map are passed through.
template <template <typename, typename> class Map>
void expectModelWith(std::uint32_t keys) {
    std::mt19937 random(77);
    TestSupport::MapAgainstModel<Map<std::uint32_t, std::unique_ptr<std::uint32_t>>,
                                 std::map<std::uint32_t, std::uint32_t>>
        both;
    const auto key = [&] { return static_cast<std::uint32_t>(random() % keys); };
    for (int step = 0; step < 20000; ++step) {
        if (random() % 100 < (step % 400 < 200 ? 80U : 20U)) {
            both.insert(key(), static_cast<std::uint32_t>(random()));
        } else {
            both.erase(key());
        }
        both.expectSamePositions(key());
        both.expectSame();
    }
}

class MapsInKeyOrder : public testing::TestWithParam<std::uint32_t> {};

TEST_P(MapsInKeyOrder, RandomOperationsLeaveWhatTheModelHolds) {
    expectModelWith<Orb::OrderedMap>(GetParam());
    expectModelWith<Orb::SoleMap>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Keys, MapsInKeyOrder, testing::Values(1, 2, 3, 12, 60));

TEST(OrderedMaps, ElementMayUseTheMapWhileItIsDestroyed) {
    TestSupport::expectElementMayUseTheMapWhileItIsDestroyed<Orb::OrderedMap>();
    TestSupport::expectElementMayUseTheMapWhileItIsDestroyed<Orb::SoleMap>();
}

TEST(OrderedMaps, CopyAndMoveOwnTheirEntries) {
    TestSupport::expectCopyAndMoveToOwnTheirEntries<Orb::OrderedMap>();
    TestSupport::expectCopyAndMoveToOwnTheirEntries<Orb::SoleMap>();
}

} // namespace
