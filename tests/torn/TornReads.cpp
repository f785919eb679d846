// One thread changes records whose fields check one another, four read them: each that is read has
// to be whole, and no older than the one that the same reader has read before. A program of its own
// because ThreadSanitizer, with which it is built once more, goes with no other sanitizer.

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

#include "tables/layout/ChangeRing.h"
#include "tables/layout/Slot.h"

using namespace Tables;

namespace {

constexpr std::uint32_t slotCount = 4;
constexpr std::uint32_t ringEntries = 64;

struct SharedTable {
    TableHeader header{};
    std::array<std::uint64_t, ringEntries> ring{};
    std::array<Slot::Bytes<RouteRecord>, slotCount> slots{};
};

RouteRecord recordOf(std::uint32_t value) {
    RouteRecord record{};
    record.vrfId = value;
    record.viaSet = value * 3ULL;
    std::memset(record.prefix.address, static_cast<int>(value & 0xFFU), sizeof record.prefix);
    record.sourceVrfId = ~value;
    record.metric = value * 5;
    record.preference = value * 7;
    record.type = static_cast<std::uint8_t>(value);
    return record;
}

bool isWhole(RouteRecord record) {
    const RouteRecord expected = recordOf(record.vrfId);
    record.word = 0;
    return std::memcmp(&record, &expected, sizeof record) == 0;
}

class Run {
  public:
    Run() { table_.header.ringEntries = ringEntries; }

    void write() {
        std::uint32_t random = 1;
        for (std::uint32_t value = 1; !isOver_; ++value) {
            random = random * 1664525 + 1013904223;
            const std::uint32_t number = (random >> 24) % slotCount;
            change(number, (random >> 16) % 4 != 0, recordOf(value));
        }
    }

    void read() {
        std::array<std::uint32_t, slotCount> lastValue{};
        std::uint64_t reads = 0;
        for (std::uint32_t number = 0; !isOver_; number = (number + 1) % slotCount) {
            const std::uint64_t changes = load(table_.header.changes);
            RouteRecord record;
            if (!Slot::tryRead(table_.slots[number], number, table_.header, record)) {
                continue;
            }
            if ((record.word & Slot::present) != 0) {
                ++reads;
                if (!isWhole(record) || record.vrfId < lastValue[number]) {
                    fail("a record is torn or old");
                }
                lastValue[number] = record.vrfId;
            }
            if (changes != 0) {
                checkEntry(changes - 1);
            }
        }
        reads_ += reads;
    }

    int result() {
        std::printf("%llu records read\n", static_cast<unsigned long long>(reads_));
        return failed_ || reads_ == 0 ? 1 : 0;
    }

    void end() { isOver_ = true; }

  private:
    void change(std::uint32_t number, bool leavesRecord, const RouteRecord& record) {
        auto& slot = table_.slots[number];
        const bool replaces = (slot.word & Slot::present) != 0;
        const std::uint32_t word = Slot::next(slot.word, leavesRecord);
        announce(table_.header, table_.ring.data(), {number, word});
        if (!leavesRecord) {
            Slot::clear(slot, word);
        } else if (replaces) {
            Slot::replace(slot, number, record, word, table_.header);
        } else {
            Slot::put(slot, record, word);
        }
    }

    /// A change that another one follows has been made: its slot is as far, or further.
    void checkEntry(std::uint64_t index) {
        if (index == 0) {
            return;
        }
        const auto [number, word] = unpacked(load(table_.ring[(index - 1) % ringEntries]));
        if (isIntact(index - 1, load(table_.header.changes), ringEntries)
            && (number >= slotCount
                || Slot::changesSince(word, load(table_.slots[number].word)) < 0)) {
            fail("a change that was announced was not made");
        }
    }

    void fail(const char* what) {
        if (!failed_.exchange(true)) {
            std::puts(what);
        }
    }

    SharedTable table_;
    std::atomic<bool> isOver_ = false;
    std::atomic<bool> failed_ = false;
    std::atomic<std::uint64_t> reads_ = 0;
};

} // namespace

int main() {
    Run run;
    {
        std::vector<std::jthread> threads;
        threads.emplace_back([&] { run.write(); });
        for (int n = 0; n < 4; ++n) {
            threads.emplace_back([&] { run.read(); });
        }
        std::this_thread::sleep_for(std::chrono::seconds(2));
        run.end();
    }
    return run.result();
}
