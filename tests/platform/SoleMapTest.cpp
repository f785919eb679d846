#include "platform/orb/container/SoleMap.h"

#include <cstdint>
#include <map>
#include <memory>
#include <random>

#include <gtest/gtest.h>

#include "tests/support/MapAgainstModel.h"

namespace {

/// The number of distinct keys decides how often the map goes from none to one to many and back.
class SoleMapAgainstModel : public testing::TestWithParam<std::uint32_t> {};

TEST_P(SoleMapAgainstModel, RandomOperationsLeaveWhatTheModelHolds) {
    std::mt19937 random(78);
    TestSupport::MapAgainstModel<Orb::SoleMap<std::uint32_t, std::unique_ptr<std::uint32_t>>,
                                 std::map<std::uint32_t, std::uint32_t>>
        both;
    const auto key = [&] { return static_cast<std::uint32_t>(random() % GetParam()); };
    for (int step = 0; step < 20000; ++step) {
        if (random() % 100 < (step % 200 < 100 ? 70U : 20U)) {
            both.insert(key(), static_cast<std::uint32_t>(random()));
        } else {
            both.erase(key());
        }
        both.expectSamePositions(key());
        both.expectSame();
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, SoleMapAgainstModel, testing::Values(1, 2, 3, 40));

TEST(SoleMap, ElementMayUseTheMapWhileItIsDestroyed) {
    TestSupport::expectElementMayUseTheMapWhileItIsDestroyed<Orb::SoleMap>();
}

TEST(SoleMap, CopyAndMoveOwnTheirEntries) {
    TestSupport::expectCopyAndMoveToOwnTheirEntries<Orb::SoleMap>();
}

} // namespace
