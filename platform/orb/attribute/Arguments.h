#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "platform/orb/attribute/Display.h"
#include "platform/orb/object/Ptr.h"
#include "platform/orb/value/Error.h"
#include "platform/orb/value/ForEach.h"

namespace Orb {

/// What every class's Arguments derive from, see ORB_CONSTRUCTOR.
struct ConstructorArguments {
    static constexpr std::size_t orbCount = 0;
    bool operator==(const ConstructorArguments&) const = default;
};

/// Closes the parameter list of a constructor that a macro wrote.
struct EndOfArguments {};

/// `constructor` is the signature of that of the Arguments.
[[noreturn]] void throwNullInput(std::string_view attribute, std::string_view constructor);
[[noreturn]] void throwReinstantiation(std::string_view attribute, const std::string& wanted,
                                       const std::string& present);

/// Stands behind a constructor attribute that may be a null pointer.
struct MayBeNull {};
inline constexpr MayBeNull mayBeNull;

/// Objects that a class is made from are there: throws NullArgumentError for a null pointer.
template <typename T>
void checkInput(const T&, const char*, const char*) {}
template <typename T>
void checkInput(const Ptr<T>& object, const char* attribute, const char* constructor) {
    if (object == nullptr) {
        throwNullInput(attribute, constructor);
    }
}

template <typename T>
void checkInput(const Ptr<T>&, const char*, const char*, MayBeNull) {}

template <typename Arguments>
struct ReinstantiationCheck {
    const Arguments& wanted;
    const Arguments& present;

    template <auto member>
    void field(const char* name) {
        if (!(wanted.*member == present.*member)) {
            throwReinstantiation(name, display(wanted.*member), display(present.*member));
        }
    }
};

/// The first constructor attribute, in declaration order, in which `wanted` differs from `present`
/// is a name-in-use error.
template <typename Arguments>
void checkReinstantiation(const Arguments& wanted, const Arguments& present) {
    ReinstantiationCheck<Arguments> check{wanted, present};
    Arguments::visitFields(check);
}

/// What a T can be made from: all of its constructor attributes, in their order.
template <typename T, typename... Args>
concept MadeFrom = requires { (typename T::Arguments{std::declval<Args>()...}); };

} // namespace Orb

/// ORB_CONSTRUCTOR((Type, name), ...) lists a class's constructor attributes, once: the struct
/// Arguments with which the class is constructed, an accessor for each, and what the comparison of
/// a reinstantiation and the generic attribute interface read. The class keeps them in
/// `arguments_`, which its constructor sets:
///     explicit Machine(Arguments arguments) : arguments_(std::move(arguments)) {}
/// Arguments are given all together; one that is left out does not compile, and one that is a null
/// pointer is refused with NullArgumentError, unless (Type, name, Orb::mayBeNull) declares it.
#define ORB_CONSTRUCTOR(...)                                                                       \
  public:                                                                                          \
    struct Arguments : Orb::ConstructorArguments {                                                 \
        explicit Arguments(ORB_FOR_EACH(ORB_ARGUMENT_PARAMETER, Arguments, __VA_ARGS__)            \
                               Orb::EndOfArguments = {})                                           \
            : Orb::ConstructorArguments()                                                          \
                  ORB_FOR_EACH(ORB_ARGUMENT_INITIALIZER, Arguments, __VA_ARGS__){ORB_FOR_EACH(     \
                      ORB_ARGUMENT_CHECK, Arguments,                                               \
                      __VA_ARGS__)} ORB_FOR_EACH(ORB_ARGUMENT_MEMBER, Arguments,                   \
                                                 __VA_ARGS__) template <typename Visitor>          \
                  static void visitFields(Visitor & visitor) {                                     \
            ORB_FOR_EACH(ORB_ARGUMENT_FIELD, Arguments, __VA_ARGS__)                               \
        }                                                                                          \
        [[maybe_unused]] static constexpr std::size_t orbCount =                                   \
            0 ORB_FOR_EACH(ORB_ARGUMENT_COUNT, Arguments, __VA_ARGS__);                            \
        bool operator==(const Arguments&) const = default;                                         \
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
    struct Arguments : Orb::ConstructorArguments {                                                 \
        template <typename Visitor>                                                                \
        static void visitFields(Visitor&) {}                                                       \
        bool operator==(const Arguments&) const = default;                                         \
    };                                                                                             \
    explicit Class(Arguments = {}) {}                                                              \
    Arguments arguments() const { return {}; }

#define ORB_ARGUMENT_PARAMETER(context, Type, name, ...) Type name##Argument,
#define ORB_ARGUMENT_INITIALIZER(context, Type, name, ...) , name(std::move(name##Argument))
#define ORB_ARGUMENT_CHECK(context, Type, name, ...)                                               \
    Orb::checkInput(name, #name, __PRETTY_FUNCTION__ __VA_OPT__(, ) __VA_ARGS__);
#define ORB_ARGUMENT_MEMBER(context, Type, name, ...) Type name;
#define ORB_ARGUMENT_FIELD(context, Type, name, ...) visitor.template field<&context::name>(#name);
#define ORB_ARGUMENT_COUNT(context, Type, name, ...) +1
#define ORB_ARGUMENT_ACCESSOR(context, Type, name, ...)                                            \
    const Type& name() const { return arguments_.name; }

/// ORB_KEY(Type, name): the constructor attribute `name` is the key under which a parent keeps
/// objects of this class.
#define ORB_KEY(Type, name)                                                                        \
  public:                                                                                          \
    using Key = Type;                                                                              \
    const Type& fwkKey() const { return arguments_.name; }                                         \
    static const Type& fwkKey(const Arguments& arguments) { return arguments.name; }
