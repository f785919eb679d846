#pragma once

#include "tables/reader/Mirror.h"

namespace Tables {

/// Tells the changes of a table in two parts: what comes and changes, and later what goes. In
/// between it has what went.
template <typename Record>
class Departures {
  public:
    /// The first part, as Mirror::tell() tells it: `f(before, after)`. What went is told here if
    /// there is no memory to keep it.
    template <typename F>
    void tellComings(Mirror<Record>& mirror, F&& f) {
        mirror.tell([&](const Record* before, const Record* after) {
            if (after == nullptr) {
                if (!gone_.add(*before)) {
                    f(before, after);
                }
                return;
            }
            // What went and came back in one update has changed, if that.
            const Record* const left = before == nullptr ? gone_.find(keyOf(*after)) : nullptr;
            if (left == nullptr) {
                f(before, after);
                return;
            }
            const Record returned = *left;
            gone_.take(keyOf(returned));
            if (!sameContent(returned, *after)) {
                f(&returned, after);
            }
        });
    }

    /// The second part.
    template <typename F>
    void tellGoings(F&& f) {
        gone_.each([&](const Record& record) {
            f(&record, static_cast<const Record*>(nullptr));
            return 0;
        });
        gone_.clear();
    }

    const Record* find(const RecordKey& key) const { return gone_.find(key); }

  private:
    RecordSet<Record> gone_;
};

} // namespace Tables
