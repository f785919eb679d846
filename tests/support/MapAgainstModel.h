#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace TestSupport {

/// A map under test, whose values are owned so that a lost one is seen, and a standard map that
/// every operation goes to as well.
template <typename Map, typename Model>
struct MapAgainstModel {
    using Key = typename Model::key_type;

    void insert(const Key& key, std::uint32_t value) {
        ASSERT_EQ(map.insertOrAssign(key, std::make_unique<std::uint32_t>(value)),
                  model.insert_or_assign(key, value).second);
    }
    void erase(const Key& key) { ASSERT_EQ(map.erase(key), model.erase(key) == 1); }

    void expectSame() const {
        ASSERT_EQ(map.size(), model.size());
        ASSERT_EQ(map.empty(), model.empty());
        auto expected = model.begin();
        for (const auto& [key, value] : map) {
            ASSERT_EQ(key, expected->first);
            ASSERT_EQ(*value, (expected++)->second);
        }
    }
    void expectSamePositions(const Key& key) const {
        ASSERT_EQ(map.find(key) != nullptr, model.contains(key));
        expectEntry(map.first(), model.begin());
        expectEntry(map.after(key), model.upper_bound(key));
        expectEntry(map.atOrAfter(key), model.lower_bound(key));
    }
    void expectEntry(const typename Map::Entry* entry,
                     typename Model::const_iterator expected) const {
        ASSERT_EQ(entry == nullptr, expected == model.end());
        if (entry != nullptr) {
            ASSERT_EQ(entry->key(), expected->first);
            ASSERT_EQ(*entry->value(), expected->second);
        }
    }

    Map map;
    Model model;
};

template <template <typename, typename> typename Map>
void expectElementMayUseTheMapWhileItIsDestroyed() {
    for (const std::uint32_t size : {1U, 3U, 9U, 40U}) {
        Map<std::uint32_t, std::shared_ptr<void>> map;
        for (std::uint32_t key = 0; key < size; ++key) {
            map.insertOrAssign(key, std::shared_ptr<void>(nullptr, [&map, key](void*) {
                                   EXPECT_FALSE(map.contains(key));
                                   map.tryInsert(key + 1000);
                                   map.erase(key + 1);
                               }));
        }
        map.erase(0);
        EXPECT_EQ(map.size(), size) << "every entry went and left another";
        EXPECT_FALSE(map.contains(size - 1));
    }
}

template <template <typename, typename> typename Map>
void expectCopyAndMoveToOwnTheirEntries() {
    for (const std::uint32_t size : {1U, 8U, 9U, 50U}) {
        Map<std::uint32_t, std::string> map;
        for (std::uint32_t key = 0; key < size; ++key) {
            map.insertOrAssign(key, std::string(40, 'v'));
        }
        Map<std::uint32_t, std::string> copy(map);
        Map<std::uint32_t, std::string> moved(std::move(map));
        map = copy;
        copy.erase(0);
        moved.find(0)->clear();
        EXPECT_EQ(*map.find(0), std::string(40, 'v'));
        EXPECT_EQ(copy.size() + 1, moved.size());
    }
}

} // namespace TestSupport
