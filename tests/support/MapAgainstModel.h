#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

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

} // namespace TestSupport
