#pragma once

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>
#include <type_traits>

namespace Ringlog {

/// Takes values off the front of untrusted bytes; what is not there whole is not taken.
class ByteReader {
  public:
    explicit ByteReader(std::string_view bytes) : rest_(bytes) {}

    std::string_view rest() const { return rest_; }

    template <typename T>
        requires std::is_trivially_copyable_v<T>
    std::optional<T> take() {
        auto bytes = takeBytes(sizeof(T));
        if (!bytes) {
            return std::nullopt;
        }
        T value;
        std::memcpy(&value, bytes->data(), sizeof(T));
        return value;
    }

    std::optional<std::string_view> takeBytes(std::size_t size) {
        if (size > rest_.size()) {
            return std::nullopt;
        }
        std::string_view bytes = rest_.substr(0, size);
        rest_.remove_prefix(size);
        return bytes;
    }

  private:
    std::string_view rest_;
};

} // namespace Ringlog
