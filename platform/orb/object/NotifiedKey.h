#pragma once

#include <memory>

namespace Orb {

/// The key of a notification: where it lies, of which type it is, and how to copy it for whoever is
/// told later. Null where the attribute is no collection.
class NotifiedKey {
  public:
    NotifiedKey() = default;
    template <typename Key>
    explicit NotifiedKey(const Key* key) : key_(key), type_(typeOf<Key>()), copy_(&copyOf<Key>) {}

    /// A copy of this key, which lies there.
    NotifiedKey copiedTo(const void* there) const {
        NotifiedKey copied = *this;
        copied.key_ = there;
        return copied;
    }

    /// Tells types of keys apart.
    template <typename Key>
    static const void* typeOf() {
        static constexpr char tag = 0;
        return &tag;
    }

    const void* get() const { return key_; }
    const void* type() const { return type_; }

    std::shared_ptr<const void> copy() const { return key_ == nullptr ? nullptr : copy_(key_); }

  private:
    template <typename Key>
    static std::shared_ptr<const void> copyOf(const void* key) {
        return std::make_shared<const Key>(*static_cast<const Key*>(key));
    }

    const void* key_ = nullptr;
    const void* type_ = nullptr;
    std::shared_ptr<const void> (*copy_)(const void*) = nullptr;
};

} // namespace Orb
