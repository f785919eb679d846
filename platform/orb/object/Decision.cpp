#include "platform/orb/object/Decision.h"

#include <deque>

#include "platform/orb/value/FirstError.h"

namespace Orb {

namespace Detail {

struct Turn::Memory {
    struct Remembered {
        const void* owner;
        std::function<void()> work;
    };

    std::deque<Remembered> remembered;
    FirstError errors;
};

Turn::Memory& Turn::memory() {
    static thread_local Memory memory;
    memory_ = &memory;
    return memory;
}

void Turn::keep(std::exception_ptr error) { memory().errors.keep(std::move(error)); }

void Turn::remember(const void* owner, std::function<void()> work) {
    memory().remembered.push_back({owner, std::move(work)});
}

void Turn::forget(const void* owner) {
    std::erase_if(memory().remembered,
                  [owner](const auto& waiting) { return waiting.owner == owner; });
}

void Turn::takeRemembered() {
    while (memory_ != nullptr && !memory_->remembered.empty()) {
        const Memory::Remembered next = std::move(memory_->remembered.front());
        memory_->remembered.pop_front();
        memory_->errors.attempt(next.work);
    }
}

void Turn::end() {
    takeRemembered();
    underWay_ = false;
    if (memory_ != nullptr) {
        memory_->errors.raise();
    }
}

} // namespace Detail

void pauseBetweenDecisions() {
    Detail::Turn& turn = Detail::Turn::current();
    if (!turn.telling()) {
        turn.takeRemembered();
    }
}

} // namespace Orb
