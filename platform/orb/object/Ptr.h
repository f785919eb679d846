#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <utility>

#include "platform/orb/object/AllocTrackTypeInfo.h"
#include "platform/orb/object/PtrInterface.h"

namespace Orb {

/// Intrusive strong pointer to a PtrInterface. Compares by address.
template <typename T>
class Ptr {
  public:
    using Element = T;

    Ptr() = default;
    Ptr(std::nullptr_t) {}
    /// A further reference to an object that somebody already holds.
    explicit Ptr(T* object) : object_(object) { inc(); }
    Ptr(const Ptr& other) : object_(other.object_) { inc(); }
    Ptr(Ptr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    template <typename U>
        requires std::convertible_to<U*, T*>
    Ptr(const Ptr<U>& other) : object_(other.get()) {
        inc();
    }
    template <typename U>
        requires std::convertible_to<U*, T*>
    Ptr(Ptr<U>&& other) noexcept : object_(other.release()) {}
    ~Ptr() { dec(object_); }

    // The old object goes last: its destructor may look at this pointer.
    Ptr& operator=(Ptr other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    /// Takes over the reference that the object was created with.
    static Ptr adopt(T* object) {
        Ptr ptr;
        ptr.object_ = object;
        return ptr;
    }

    T* get() const { return object_; }
    T* operator->() const { return object_; }
    T& operator*() const { return *object_; }
    explicit operator bool() const { return object_ != nullptr; }

    /// Gives the reference away without dropping it.
    T* release() { return std::exchange(object_, nullptr); }

    friend bool operator==(const Ptr& a, const Ptr& b) { return a.object_ == b.object_; }
    friend bool operator==(const Ptr& a, std::nullptr_t) { return a.object_ == nullptr; }

  private:
    void inc() {
        if (object_ != nullptr) {
            object_->referencesInc();
        }
    }
    static void dec(T* object) {
        if (object != nullptr) {
            object->referencesDec();
        }
    }

    T* object_ = nullptr;
};

/// Keeps an object that is about to tell others, who may let go of it. Null in its destructor.
inline Ptr<const PtrInterface> keep(const PtrInterface& object) {
    return Ptr<const PtrInterface>(object.references() == 0 ? nullptr : &object);
}

/// Allocates (tracked per type), constructs and switches notification on.
template <typename T, typename... Arguments>
Ptr<T> makePtr(Arguments&&... arguments) {
    Ptr<T> made = Ptr<T>::adopt(new T(std::forward<Arguments>(arguments)...));
    if constexpr (requires { T::fwkType(); }) {
        AllocTrackTypeInfo::trackAllocation(T::fwkType());
    }
    made->hasNotificationActiveIs(true);
    return made;
}

} // namespace Orb
