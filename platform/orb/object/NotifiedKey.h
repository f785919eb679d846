#pragma once

#include <memory>

namespace Orb {

/// The key of a notification: where it lies, and how to copy it for whoever is told later. Null
/// where the attribute is no collection.
class NotifiedKey {
  public:
    NotifiedKey() = default;
    template <typename Key>
    explicit NotifiedKey(const Key* key) : key_(key), copy_(&copyOf<Key>) {}

    const void* get() const { return key_; }

    std::shared_ptr<const void> copy() const { return key_ == nullptr ? nullptr : copy_(key_); }

  private:
    template <typename Key>
    static std::shared_ptr<const void> copyOf(const void* key) {
        return std::make_shared<const Key>(*static_cast<const Key*>(key));
    }

    const void* key_ = nullptr;
    std::shared_ptr<const void> (*copy_)(const void*) = nullptr;
};

} // namespace Orb
