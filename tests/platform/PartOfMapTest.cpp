#include "platform/orb/container/PartOfMap.h"

#include <cstdint>
#include <map>
#include <random>

#include <gtest/gtest.h>

#include "platform/orb/container/HashMap2018.h"

namespace {

struct Element {
    std::uint32_t key = 0;
    bool belongs = false;
};
struct KeyOf {
    const std::uint32_t& operator()(const Element& element) const { return element.key; }
};
struct Belongs {
    bool operator()(const Element& element) const { return element.belongs; }
};
using Map = Orb::HashMap2018<Element, KeyOf>;

TEST(PartOfMap, WalksAndFindsWhatBelongsToItInTheOrderOfTheMap) {
    std::mt19937 random(80);
    Map map;
    Orb::PartOfMap<Map, Belongs> part(map);
    std::map<std::uint32_t, bool> model;
    for (int step = 0; step < 4000; ++step) {
        const auto key = static_cast<std::uint32_t>(random() % 60);
        if (Element* element = map.find(key)) {
            element->belongs ? part.oneLess() : void();
            map.erase(key);
            model.erase(key);
        } else {
            const bool belongs = random() % 3 == 0;
            map.tryInsert(Element{key, belongs});
            belongs ? part.oneMore() : void();
            model.emplace(key, belongs);
        }
        const Element* next = part.first();
        std::size_t count = 0;
        for (const Element& element : map) {
            if (element.belongs) {
                ASSERT_EQ(next, &element);
                ASSERT_EQ(part.atOrAfter(element.key), &element);
                next = part.after(element.key);
                ++count;
            }
            ASSERT_EQ(part.contains(element.key), model.at(element.key));
        }
        ASSERT_EQ(next, nullptr);
        ASSERT_EQ(part.size(), count);
        ASSERT_EQ(static_cast<std::size_t>(std::distance(part.begin(), part.end())), count);
        // A position that does not belong to it, or is not there at all, leads to the next.
        const auto at = static_cast<std::uint32_t>(random() % 60);
        const Element* behind = map.after(at);
        while (behind != nullptr && !behind->belongs) {
            behind = map.next(behind);
        }
        ASSERT_EQ(part.after(at), behind);
    }
}

} // namespace
