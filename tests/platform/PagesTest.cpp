#include "platform/orb/container/Pages.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

/// An object that was taken, and the byte that it is filled with.
struct Taken {
    std::uint8_t* object;
    std::uint8_t filling;
};

class PagesOfSize : public testing::TestWithParam<std::size_t> {};

// Objects overlap neither each other nor what the pages keep about themselves.
TEST_P(PagesOfSize, RandomObjectsKeepWhatIsWrittenToThem) {
    const std::size_t size = GetParam();
    std::mt19937 random(79);
    Orb::Pages pages(size);
    std::vector<Taken> taken;
    const auto intact = [&](const Taken& one) {
        return std::all_of(one.object, one.object + size,
                           [&](std::uint8_t byte) { return byte == one.filling; });
    };
    std::size_t most = 0;
    for (int step = 0; step < 20000; ++step) {
        if (taken.empty() || random() % 100 < (step % 4000 < 2000 ? 80U : 20U)) {
            const auto filling = static_cast<std::uint8_t>(random());
            auto* object = static_cast<std::uint8_t*>(pages.take());
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(object) % alignof(void*), 0U);
            std::memset(object, filling, size);
            taken.push_back({object, filling});
            most = std::max(most, taken.size());
        } else {
            std::swap(taken[random() % taken.size()], taken.back());
            ASSERT_TRUE(intact(taken.back()));
            pages.giveBack(taken.back().object);
            taken.pop_back();
        }
    }
    EXPECT_LE(pages.pages() * Orb::Pages::pageBytes, most * size * 5 / 4 + Orb::Pages::pageBytes);
    for (const Taken& one : taken) {
        EXPECT_TRUE(intact(one));
        pages.giveBack(one.object);
    }
    EXPECT_EQ(pages.pages(), 1U) << "all but the last are given back";
}

INSTANTIATE_TEST_SUITE_P(Sizes, PagesOfSize, testing::Values(8, 88, 600));

} // namespace
