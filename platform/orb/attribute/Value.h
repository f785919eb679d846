#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "platform/orb/value/Error.h"
#include "platform/orb/value/ForEach.h"
#include "platform/orb/value/Hash.h"
#include "platform/orb/value/Text.h"

/// Declares a composite value type: its name, its name in texts, and its fields once each as
/// (type, name) or (type, name, default).
///
///     class SourceVrfPrefix {
///         ORB_VALUE(SourceVrfPrefix, "Routing::SourceVrfPrefix",
///                   (Vrf::VrfIdMap::VrfId, sourceVrfId),
///                   (Lanx::IpGenPrefix, genPrefix))
///     };
///
/// From that follow a default constructor, a constructor from all fields, a getter per field,
/// equality and order (field by field as declared; an order only if every field has one),
/// operator! (true for the default value), hash(seed), the text form
///     Value('Routing::SourceVrfPrefix', ** {'sourceVrfId': 5, 'genPrefix': '10.1.1.0/24'})
/// which is also what operator<< prints, and its parser. A value changes by assignment only. Fields
/// lie in memory in declaration order without anything between them but padding.
///
/// Must come first in the class; what follows it is public.
// clang-format off
#define ORB_VALUE(Class, typeName, ...)                                                            \
    ORB_FOR_EACH(ORB_VALUE_MEMBER, Class, __VA_ARGS__)                                             \
  public:                                                                                          \
    Class() = default;                                                                             \
    Class(ORB_FOR_EACH(ORB_VALUE_PARAMETER, Class, __VA_ARGS__) Orb::EndOfFields = {}) {           \
        ORB_FOR_EACH(ORB_VALUE_ASSIGNMENT, Class, __VA_ARGS__)                                     \
    }                                                                                              \
    ORB_FOR_EACH(ORB_VALUE_GETTER, Class, __VA_ARGS__)                                             \
    bool operator!() const { return *this == Class(); }                                            \
    std::uint64_t hash(std::uint64_t seed) const {                                                 \
        Orb::Hasher hasher(seed);                                                                  \
        ORB_FOR_EACH(ORB_VALUE_MIX, Class, __VA_ARGS__)                                            \
        return hasher.result();                                                                    \
    }                                                                                              \
    [[maybe_unused]] friend bool operator==(const Class&, const Class&) = default;                 \
    [[maybe_unused]] friend auto operator<=>(const Class&, const Class&) = default;                \
    template <typename Char>                                                                       \
    [[maybe_unused]] friend std::basic_ostream<Char>& operator<<(std::basic_ostream<Char>& out,    \
                                                                 const Class& value) {             \
        return out << Orb::valueToStrep(value);                                                    \
    }                                                                                              \
    static constexpr std::string_view valueTypeName() { return typeName; }                         \
    [[maybe_unused]] static constexpr std::size_t valueFieldCount =                                \
        0 ORB_FOR_EACH(ORB_VALUE_COUNT, Class, __VA_ARGS__);                                       \
    template <typename Visit>                                                                      \
    static constexpr void visitFields(Visit&& visit) {                                             \
        ORB_FOR_EACH(ORB_VALUE_FIELD, Class, __VA_ARGS__)                                          \
    }
// clang-format on

#define ORB_VALUE_MEMBER(Class, Type, field, ...) Type field##_{__VA_ARGS__};
#define ORB_VALUE_PARAMETER(Class, Type, field, ...) Type field,
#define ORB_VALUE_ASSIGNMENT(Class, Type, field, ...) field##_ = std::move(field);
#define ORB_VALUE_GETTER(Class, Type, field, ...)                                                  \
    Orb::FieldResult<Type> field() const { return field##_; }
#define ORB_VALUE_COUNT(Class, Type, field, ...) +1
#define ORB_VALUE_MIX(Class, Type, field, ...) hasher.mixValue(field##_);
#define ORB_VALUE_FIELD(Class, Type, field, ...) visit(std::string_view(#field), &Class::field##_);

namespace Orb {

/// Closes the parameter list of a value's constructor.
struct EndOfFields {};

/// What a getter hands out: small plain fields as a copy, which outlives the value.
template <typename T>
using FieldResult =
    std::conditional_t<std::is_trivially_copyable_v<T> && sizeof(T) <= 4 * sizeof(void*), T,
                       const T&>;

/// A class that was declared with ORB_VALUE. (Does not ask for the fields, whose type is not known
/// yet while the class itself is being compiled.)
template <typename T>
concept IsValue = requires {
    { T::valueTypeName() } -> std::same_as<std::string_view>;
};

/// Says which attribute a range error came from: throws it again with "ATTRIBUTE: " before its
/// text.
[[noreturn]] void rethrowFromDeserializeAttribute(const RangeError& error,
                                                  std::string_view attribute);

/// Reads the value of an attribute; a range error names the attribute.
template <HasTextForm T>
T readAttribute(TextReader& in, std::string_view attribute) {
    try {
        return TextForm<T>::read(in);
    } catch (const RangeError& error) {
        rethrowFromDeserializeAttribute(error, attribute);
    }
}

template <IsValue T>
struct TextForm<T> {
    static void write(std::string& out, const T& value) {
        out.append(head).append(T::valueTypeName()).append(headEnd);
        std::string_view separator = firstSeparator;
        T::visitFields([&](std::string_view name, auto member) {
            out.append(std::exchange(separator, nextSeparator)).append(name).append(nameEnd);
            TextForm<FieldType<decltype(member)>>::write(out, value.*member);
        });
        out.append(tail);
    }

    static T read(TextReader& in) {
        T value;
        in.literal(head);
        in.literal(T::valueTypeName());
        in.literal(headEnd);
        std::string_view separator = firstSeparator;
        T::visitFields([&](std::string_view name, auto member) {
            in.literal(std::exchange(separator, nextSeparator));
            in.literal(name);
            in.literal(nameEnd);
            value.*member = readAttribute<FieldType<decltype(member)>>(in, name);
        });
        in.literal(tail);
        return value;
    }

  private:
    static constexpr std::string_view head = "Value('";
    static constexpr std::string_view headEnd = "', ** {";
    static constexpr std::string_view nameEnd = "': ";
    static constexpr std::string_view tail = "})";

    static constexpr std::string_view firstSeparator = "'";
    static constexpr std::string_view nextSeparator = ", '";

    template <typename Member>
    using FieldType = std::remove_cvref_t<decltype(std::declval<T&>().*std::declval<Member>())>;
};

} // namespace Orb
