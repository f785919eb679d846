#include "agent/linux/AddressQueue.h"

#include <algorithm>

namespace Agent::Linux {

void AddressQueue::remove(Ticket ticket) {
    std::ranges::lower_bound(places_, ticket, {}, &Place::ticket)->gone = true;
    ++gone_;
    if (gone_ > places_.size() / 2) {
        std::erase_if(places_, [](const Place& place) { return place.gone; });
        places_.shrink_to_fit();
        first_ = gone_ = 0;
    }
    while (first_ < places_.size() && places_[first_].gone) {
        ++first_;
    }
}

} // namespace Agent::Linux
