#pragma once

#include <nlohmann/json.hpp>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace TestSupport {

/// Patches of the device document on a small world, so that they often meet.
class RandomPatches {
  public:
    explicit RandomPatches(unsigned seed);

    /// A patch of one to six places, all of this section of the document if one is named, and none
    /// that has one of the names in `without`.
    nlohmann::json next(const std::string& section = {}, const std::set<std::string>& without = {});
    std::size_t below(std::size_t limit) { return engine_() % limit; }
    template <typename T>
    const T& oneOf(const std::vector<T>& choices) {
        return choices[below(choices.size())];
    }
    std::mt19937& engine() { return engine_; }

  private:
    /// Where a device document can hold something: the keys on the way there, and what may be
    /// there.
    struct Place {
        std::vector<std::vector<std::string>> keys;
        std::vector<nlohmann::json> values;
    };

    static std::vector<Place> placesOfASmallWorld();

    const std::vector<Place> places_ = placesOfASmallWorld();
    std::mt19937 engine_;
};

} // namespace TestSupport
