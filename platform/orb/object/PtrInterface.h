#pragma once

#include <atomic>
#include <cstdint>

namespace Orb {

class TypeNode;

/// Base of everything that Orb::Ptr holds. One word carries the reference count and two flags:
/// whether the object's notifications are active and whether it is marked for deletion (a zombie:
/// it is being torn down and ignores what it hears). The count starts at one, for the Ptr that
/// makePtr() returns, so a constructor may hand out and drop further references to its object.
///
/// Counts change with atomic operations while threadSafePtrs() is on and with plain arithmetic
/// otherwise; flags belong to the agent thread.
class PtrInterface {
  public:
    PtrInterface() = default;
    PtrInterface(const PtrInterface&) = delete;
    PtrInterface& operator=(const PtrInterface&) = delete;

    static bool threadSafePtrs() { return threadSafePtrs_; }
    static void threadSafePtrsIs(bool on) { threadSafePtrs_ = on; }

    std::uint32_t references() const { return word() & countMask; }

    void referencesInc() const {
        if (threadSafePtrs_) {
            word_.fetch_add(1, std::memory_order_relaxed);
        } else {
            word_.store(word() + 1, std::memory_order_relaxed);
        }
    }

    void referencesDec() const {
        std::uint32_t left = 0;
        if (threadSafePtrs_) {
            left = word_.fetch_sub(1, std::memory_order_acq_rel) - 1;
        } else {
            left = word() - 1;
            word_.store(left, std::memory_order_relaxed);
        }
        if ((left & countMask) == 0) {
            const_cast<PtrInterface*>(this)->handleZeroRef();
        }
    }

    bool hasNotificationActive() const { return (word() & notificationActive) != 0; }
    void hasNotificationActiveIs(bool active) { flagIs(notificationActive, active); }

    bool orbMarkedForDeletion() const { return (word() & markedForDeletion) != 0; }
    void orbMarkedForDeletionIs(bool marked) { flagIs(markedForDeletion, marked); }

    /// Marks the object, and whatever of its own listens on its behalf, for deletion or unmarks it.
    virtual void orbDoZombieReactors(bool zombie) { orbMarkedForDeletionIs(zombie); }

    /// The object that this one is a part of and is kept alive with while it runs; null for none.
    virtual const PtrInterface* orbWhole() const { return nullptr; }

    /// The registered type of the object; null for the few that have none.
    virtual const TypeNode* fwkTypeNode() const { return nullptr; }

  protected:
    virtual ~PtrInterface() = default;

    /// Runs when the last reference goes. Destroys the object.
    virtual void handleZeroRef();

  private:
    static constexpr std::uint32_t countMask = 0x3fffffff;
    static constexpr std::uint32_t notificationActive = 0x40000000;
    static constexpr std::uint32_t markedForDeletion = 0x80000000;

    std::uint32_t word() const { return word_.load(std::memory_order_relaxed); }
    void flagIs(std::uint32_t flag, bool on) {
        if (((word() & flag) != 0) == on) {
            return;
        }
        if (on) {
            word_.fetch_or(flag, std::memory_order_relaxed);
        } else {
            word_.fetch_and(~flag, std::memory_order_relaxed);
        }
    }

    static inline bool threadSafePtrs_ = false;
    mutable std::atomic<std::uint32_t> word_{1};
};

} // namespace Orb
