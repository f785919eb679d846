#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/kiln/TimerWheel.h"

namespace Kiln {

/// A run of adjacent slots, and which of them hold timers.
class TimerWheel::Bucket {
  public:
    explicit Bucket(std::uint32_t size)
        : size_(size), slots_(std::make_unique<Link[]>(size)), used_((size + 63) / 64) {}

    Link& slot(std::uint32_t index) { return slots_[index]; }

    void usedIs(std::uint32_t index, bool used) {
        const std::uint64_t bit = std::uint64_t{1} << (index % 64);
        std::uint64_t& word = used_[index / 64];
        word = used ? word | bit : word & ~bit;
    }

    /// The first used slot at or behind `index`, or the bucket's size.
    std::uint32_t nextUsed(std::uint32_t index) const {
        std::uint64_t mask = ~std::uint64_t{0} << (index % 64);
        for (std::size_t word = index / 64; word < used_.size(); ++word, mask = ~std::uint64_t{0}) {
            if (const std::uint64_t found = used_[word] & mask) {
                return static_cast<std::uint32_t>(word * 64)
                       + static_cast<std::uint32_t>(std::countr_zero(found));
            }
        }
        return size_;
    }

  private:
    std::uint32_t size_;
    std::unique_ptr<Link[]> slots_;
    std::vector<std::uint64_t> used_;
};

} // namespace Kiln
