#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Orb {

/// Takes values off the front of a record of an attribute log. Throws ParseError, with the place in
/// the log, for what is not there or must not be.
class AttributeLogInput {
  public:
    /// `offset` is the place of the bytes in the log.
    AttributeLogInput(std::string_view bytes, std::uint64_t offset)
        : rest_(bytes), offset_(offset) {}

    template <std::unsigned_integral T>
    T number() {
        T value = 0;
        for (const char c : bytes(sizeof(T))) {
            value = static_cast<T>(std::uint64_t{value} << 8 | static_cast<unsigned char>(c));
        }
        return value;
    }

    std::string_view bytes(std::size_t size);

    /// A length of four bytes and as many bytes.
    std::string_view string() { return bytes(number<std::uint32_t>()); }

    void expectEnd() const;

    [[noreturn]] void fail(std::string_view what) const;

  private:
    std::string_view rest_;
    std::uint64_t offset_;
};

[[noreturn]] void throwBadLog(std::uint64_t offset, std::string_view what);

} // namespace Orb
