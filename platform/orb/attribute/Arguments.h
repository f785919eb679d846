#pragma once

#include <string>
#include <string_view>
#include <tuple>

#include "platform/orb/attribute/Display.h"
#include "platform/orb/value/Error.h"
#include "platform/orb/value/ForEach.h"

namespace Orb {

/// One constructor attribute: its name and where it stands in the class's Arguments.
template <typename Arguments, typename T>
struct ArgumentField {
    const char* name;
    T Arguments::*member;
};
template <typename Arguments, typename T>
ArgumentField(const char*, T Arguments::*) -> ArgumentField<Arguments, T>;

[[noreturn]] void throwReinstantiation(std::string_view attribute, const std::string& wanted,
                                       const std::string& present);

/// The first constructor attribute, in declaration order, in which `wanted` differs from `present`
/// is a name-in-use error.
template <typename Arguments>
void checkReinstantiation(const Arguments& wanted, const Arguments& present) {
    const auto check = [&](const auto& field) {
        if (!(wanted.*field.member == present.*field.member)) {
            throwReinstantiation(field.name, display(wanted.*field.member),
                                 display(present.*field.member));
        }
    };
    std::apply([&](const auto&... field) { (check(field), ...); }, Arguments::fields());
}

template <typename Arguments>
bool sameArguments(const Arguments& a, const Arguments& b) {
    return std::apply(
        [&](const auto&... field) { return ((a.*field.member == b.*field.member) && ...); },
        Arguments::fields());
}

} // namespace Orb

/// ORB_CONSTRUCTOR((Type, name), ...) lists a class's constructor attributes, once: the struct
/// Arguments with which the class is constructed, an accessor for each, and what the comparison of
/// a reinstantiation and the generic attribute interface read. The class keeps them in
/// `arguments_`, which its constructor sets:
///     explicit Machine(Arguments arguments) : arguments_(std::move(arguments)) {}
#define ORB_CONSTRUCTOR(...)                                                                       \
  public:                                                                                          \
    struct Arguments {                                                                             \
        ORB_FOR_EACH(ORB_ARGUMENT_MEMBER, Arguments, __VA_ARGS__)                                  \
        static constexpr auto fields() {                                                           \
            return std::tuple_cat(std::tuple<>()                                                   \
                                      ORB_FOR_EACH(ORB_ARGUMENT_FIELD, Arguments, __VA_ARGS__));   \
        }                                                                                          \
    };                                                                                             \
    ORB_FOR_EACH(ORB_ARGUMENT_ACCESSOR, Arguments, __VA_ARGS__)                                    \
    const Arguments& arguments() const { return arguments_; }                                      \
                                                                                                   \
  private:                                                                                         \
    const Arguments arguments_;                                                                    \
                                                                                                   \
  public:

/// A class that a parent makes without any constructor attributes.
#define ORB_NO_CONSTRUCTOR(Class)                                                                  \
  public:                                                                                          \
    struct Arguments {                                                                             \
        static constexpr auto fields() { return std::tuple<>(); }                                  \
    };                                                                                             \
    explicit Class(Arguments = {}) {}                                                              \
    Arguments arguments() const { return {}; }

#define ORB_ARGUMENT_MEMBER(context, Type, name) Type name;
#define ORB_ARGUMENT_FIELD(context, Type, name)                                                    \
    , std::make_tuple(Orb::ArgumentField{#name, &context::name})
#define ORB_ARGUMENT_ACCESSOR(context, Type, name)                                                 \
    const Type& name() const { return arguments_.name; }

/// ORB_KEY(Type, name): the constructor attribute `name` is the key under which a parent keeps
/// objects of this class.
#define ORB_KEY(Type, name)                                                                        \
  public:                                                                                          \
    using Key = Type;                                                                              \
    const Type& fwkKey() const { return arguments_.name; }                                         \
    static const Type& fwkKey(const Arguments& arguments) { return arguments.name; }
