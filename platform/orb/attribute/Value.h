#pragma once

#include <compare>
#include <concepts>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <tuple>
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
    std::uint64_t hash(std::uint64_t seed) const { return Orb::hashFields(*this, seed); }          \
    [[maybe_unused]] friend bool operator==(const Class&, const Class&) = default;                 \
    [[maybe_unused]] friend auto operator<=>(const Class&, const Class&) = default;                \
    [[maybe_unused]] friend std::ostream& operator<<(std::ostream& out, const Class& value) {      \
        return out << Orb::valueToStrep(value);                                                    \
    }                                                                                              \
    static constexpr std::string_view valueTypeName() { return typeName; }                         \
    static constexpr auto valueFields() {                                                          \
        return std::tuple_cat(ORB_FOR_EACH(ORB_VALUE_FIELD, Class, __VA_ARGS__) std::tuple<>());   \
    }
// clang-format on

#define ORB_VALUE_MEMBER(Class, Type, field, ...) Type field##_{__VA_ARGS__};
#define ORB_VALUE_PARAMETER(Class, Type, field, ...) Type field,
#define ORB_VALUE_ASSIGNMENT(Class, Type, field, ...) field##_ = std::move(field);
#define ORB_VALUE_GETTER(Class, Type, field, ...)                                                  \
    Orb::FieldResult<Type> field() const { return field##_; }
#define ORB_VALUE_FIELD(Class, Type, field, ...)                                                   \
    std::tuple(Orb::ValueField<Class, Type>{#field, &Class::field##_}),

namespace Orb {

/// Closes the parameter list of a value's constructor.
struct EndOfFields {};

/// What a getter hands out: small plain fields as a copy, which outlives the value.
template <typename T>
using FieldResult =
    std::conditional_t<std::is_trivially_copyable_v<T> && sizeof(T) <= 4 * sizeof(void*), T,
                       const T&>;

template <typename Class, typename T>
struct ValueField {
    std::string_view name;
    T Class::*member;
};

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

/// The hash of all fields in declaration order.
template <typename Class>
std::uint64_t hashFields(const Class& value, std::uint64_t seed) {
    Hasher hasher(seed);
    std::apply([&](const auto&... field) { (hasher.mixValue(value.*field.member), ...); },
               Class::valueFields());
    return hasher.result();
}

template <IsValue T>
struct TextForm<T> {
    static void write(std::string& out, const T& value) {
        out.append(head).append(T::valueTypeName()).append(headEnd);
        forEachField([&](const auto& field, std::string_view separator) {
            out.append(separator).append(field.name).append(nameEnd);
            TextForm<FieldType<decltype(field)>>::write(out, value.*field.member);
        });
        out.append(tail);
    }

    static T read(TextReader& in) {
        T value;
        in.literal(head);
        in.literal(T::valueTypeName());
        in.literal(headEnd);
        forEachField([&](const auto& field, std::string_view separator) {
            in.literal(separator);
            in.literal(field.name);
            in.literal(nameEnd);
            value.*field.member = readAttribute<FieldType<decltype(field)>>(in, field.name);
        });
        in.literal(tail);
        return value;
    }

  private:
    static constexpr std::string_view head = "Value('";
    static constexpr std::string_view headEnd = "', ** {";
    static constexpr std::string_view nameEnd = "': ";
    static constexpr std::string_view tail = "})";

    template <typename Field>
    using FieldType =
        std::remove_cvref_t<decltype(std::declval<T&>().*std::declval<const Field&>().member)>;

    /// Calls visit(field, what stands before its name) for every field.
    template <typename Visit>
    static void forEachField(Visit visit) {
        std::string_view separator = "'";
        const auto visitOne = [&](const auto& field) {
            visit(field, separator);
            separator = ", '";
        };
        std::apply([&](const auto&... field) { (visitOne(field), ...); }, T::valueFields());
    }
};

} // namespace Orb
