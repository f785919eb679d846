#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "platform/lanx/IntfId.h"
#include "platform/lanx/IpGenPrefix.h"
#include "platform/orb/value/Hash.h"

namespace Orb {

namespace {

constexpr std::size_t bucketCount = 1 << 12;

/// How many keys the fullest of the buckets gets that the top bits of the hash name.
template <typename KeyOf>
int fullestBucket(KeyOf keyOf) {
    std::vector<int> buckets(bucketCount);
    for (std::uint32_t index = 0; index < 2 * bucketCount; ++index) {
        ++buckets[hashOf(keyOf(index)) >> 52];
    }
    return *std::max_element(buckets.begin(), buckets.end());
}

// Two keys a bucket on average: a random placement has at most about a dozen in the fullest.
TEST(Hash, RegularKeysSpreadOverTheTopBits) {
    EXPECT_LE(fullestBucket([](std::uint32_t index) { return index; }), 14);
    EXPECT_LE(fullestBucket([](std::uint32_t index) { return std::uint64_t{index} << 40; }), 14);
    EXPECT_LE(fullestBucket([](std::uint32_t index) {
                  return Lanx::IpGenPrefix(Lanx::IpPrefix(Lanx::IpAddr(index << 8), 24));
              }),
              14);
    EXPECT_LE(fullestBucket([](std::uint32_t index) {
                  return Lanx::IntfId("Ethernet" + std::to_string(index));
              }),
              14);
}

} // namespace

} // namespace Orb
