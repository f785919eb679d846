#pragma once

#include "platform/orb/attribute/Arguments.h"
#include "platform/orb/attribute/Attribute.h"
#include "platform/orb/attribute/AttributeAt.h"
#include "platform/orb/attribute/Child.h"
#include "platform/orb/attribute/Children.h"
#include "platform/orb/attribute/Collection.h"
#include "platform/orb/attribute/MemberReactors.h"
#include "platform/orb/attribute/References.h"
#include "platform/orb/object/Notifiee.h"
#include "platform/orb/object/Reactor.h"
#include "platform/orb/object/TypeNode.h"

/// The declarations of a class. Each line names an attribute once; the templates behind it
/// (Attribute, Collection, Child, Children, References, MemberReactors) hold all logic, and the
/// macros give their operations the attribute's name:
///
///     class VrfReadyStatus : public Orb::Entity {
///         ORB_ENTITY(VrfReadyStatus, "Routing::DirectNet::VrfReadyStatus")
///         ORB_CONSTRUCTOR((L3::VrfName, vrfName))            // id 258 and up, in order
///         ORB_KEY(L3::VrfName, vrfName)
///         ORB_ATTRIBUTE(259, bool, v4DirectNetsReady)
///         ORB_ATTRIBUTE(260, bool, v6DirectNetsReady)
///       public:
///         explicit VrfReadyStatus(Arguments arguments) : arguments_(std::move(arguments)) {}
///     };
///
/// Numbers are given in the line and never change; one number given twice does not compile.

/// A class that is known by name. Its source has ORB_DEFINE_TYPE(Class), see DefineType.h.
#define ORB_TYPE(Class, qualifiedName)                                                             \
  public:                                                                                          \
    using OrbSelf = Class;                                                                         \
    static constexpr std::string_view orbTypeName = qualifiedName;                                 \
    static const Orb::TypeNode& fwkType();                                                         \
    const Orb::TypeNode* fwkTypeNode() const override;                                             \
    [[maybe_unused]] friend void orbNamedType(const Class*) {}

/// A class with attributes that others may watch.
#define ORB_ENTITY(Class, qualifiedName)                                                           \
    ORB_TYPE(Class, qualifiedName)                                                                 \
    using NotifieeConst = Orb::NotifieeOf<Class>;

/// A class with attributes that derives from another one: it has the base's attributes and
/// constructor attributes too, and its own numbers follow on those. ORB_ENTITY on such a class does
/// not compile.
#define ORB_DERIVED_ENTITY(Class, Base, qualifiedName)                                             \
    ORB_ENTITY(Class, qualifiedName)                                                               \
    using OrbBase = Base;                                                                          \
    using Base::orbAttribute;

/// Before a method that is compiled in those sources only that call it: a header that declares many
/// attributes costs whoever includes it little.
#define ORB_WHERE_CALLED template <typename = void>

/// A value: name(), nameIs(value). A default other than the type's own may follow the name.
#define ORB_ATTRIBUTE(number, Type, name, ...)                                                     \
    ORB_DECLARED(number, Orb::Attribute<Type>, name, {__VA_ARGS__})                                \
    Orb::Read<Type> name() const { return name##_.value(); }                                       \
    ORB_WHERE_CALLED                                                                               \
    void name##Is(Orb::Read<Type> value) { name##_.valueIs(*this, name##Attribute, value); }

/// Values by key in a hash map: name(), name(key), nameIs(key, value), nameDel(key), nameDelAll().
/// nameChange(key, change) has change(value) count or whatever in place, from the default where
/// there is none. nameIs and nameDel take the key's HashTag behind the rest, if that is at hand.
#define ORB_MAP(number, Key, Value, name) ORB_COLLECTION(HashCollection, number, Key, Value, name)

/// The same, ordered by key.
#define ORB_ORDERED_MAP(number, Key, Value, name)                                                  \
    ORB_COLLECTION(OrderedCollection, number, Key, Value, name)

/// The same for a class of which there are many objects, nearly all with one entry, which lies in
/// the object itself.
#define ORB_SOLE_MAP(number, Key, Value, name)                                                     \
    ORB_COLLECTION(SoleCollection, number, Key, Value, name)

/// An owned object: name(), nameIs(constructor arguments of T), nameDel().
#define ORB_CHILD(number, T, name)                                                                 \
    ORB_DECLARED(number, Orb::Child<T>, name)                                                      \
    const Orb::Ptr<T>& name() const { return name##_.value(); }                                    \
    template <typename... Args>                                                                    \
        requires Orb::MadeFrom<T, Args...>                                                         \
    Orb::Ptr<T> name##Is(Args&&... args) {                                                         \
        return name##_.childIs(*this, name##Attribute, T::Arguments{std::forward<Args>(args)...}); \
    }                                                                                              \
    ORB_WHERE_CALLED                                                                               \
    void name##Del() { name##_.childDel(*this, name##Attribute); }

/// An owned object that is not replaced while it is there: nameIs() with other arguments throws
/// NameInUseError.
#define ORB_SOLE_CHILD(number, T, name)                                                            \
    ORB_DECLARED(number, Orb::Child<T>, name)                                                      \
    const Orb::Ptr<T>& name() const { return name##_.value(); }                                    \
    template <typename... Args>                                                                    \
        requires Orb::MadeFrom<T, Args...>                                                         \
    Orb::Ptr<T> name##Is(Args&&... args) {                                                         \
        return name##_.soleChildIs(*this, name##Attribute,                                         \
                                   T::Arguments{std::forward<Args>(args)...});                     \
    }                                                                                              \
    ORB_WHERE_CALLED                                                                               \
    void name##Del() { name##_.childDel(*this, name##Attribute); }

/// Owned objects by key: name(), name(key), nameIs(constructor arguments of T), nameDel(key),
/// nameDelAll(). name(key) is null where there is none.
#define ORB_CHILDREN(number, T, name)                                                              \
    ORB_DECLARED(number, Orb::Children<T>, name)                                                   \
    const auto& name() const { return name##_.all(); }                                             \
    ORB_WHERE_CALLED                                                                               \
    T* name(Orb::Read<T::Key> key) const { return name##_.find(key); }                             \
    template <typename... Args>                                                                    \
        requires Orb::MadeFrom<T, Args...>                                                         \
    T* name##Is(Args&&... args) {                                                                  \
        return name##_.childIs(*this, name##Attribute, T::Arguments{std::forward<Args>(args)...}); \
    }                                                                                              \
    ORB_WHERE_CALLED                                                                               \
    void name##Del(Orb::Read<T::Key> key) { name##_.childDel(*this, name##Attribute, key); }       \
    ORB_WHERE_CALLED                                                                               \
    void name##DelAll() { name##_.childDelAll(*this, name##Attribute); }

/// Objects made elsewhere, by key: name(), name(key), nameIs(object), nameDel(key), nameDelAll().
/// nameOrMade(key, tag, make) is the object of that key, that of make() if there is none. What
/// takes a key takes its HashTag with it, where that is at hand.
#define ORB_REFERENCES(number, T, name) ORB_REFERENCES_IN(Orb::References<T>, number, T, name)

/// The same in a holder of one's own that does what Orb::References does.
#define ORB_REFERENCES_IN(Holder, number, T, name)                                                 \
    ORB_DECLARED(number, Holder, name)                                                             \
    const auto& name() const { return name##_.all(); }                                             \
    ORB_WHERE_CALLED                                                                               \
    T* name(Orb::Read<T::Key> key) const { return name##_.find(key); }                             \
    ORB_WHERE_CALLED                                                                               \
    T* name(Orb::Read<T::Key> key, Orb::HashTag tag) const { return name##_.find(key, tag); }      \
    template <typename Make>                                                                       \
    Orb::Ptr<T> name##OrMade(Orb::Read<T::Key> key, Orb::HashTag tag, const Make& make) {          \
        return name##_.memberOrMade(*this, name##Attribute, key, tag, make);                       \
    }                                                                                              \
    ORB_WHERE_CALLED                                                                               \
    void name##Is(Orb::Ptr<T> object) {                                                            \
        name##_.memberIs(*this, name##Attribute, #name, std::move(object));                        \
    }                                                                                              \
    ORB_WHERE_CALLED                                                                               \
    void name##Del(Orb::Read<T::Key> key) { name##_.memberDel(*this, name##Attribute, key); }      \
    ORB_WHERE_CALLED                                                                               \
    void name##Del(Orb::Read<T::Key> key, Orb::HashTag tag) {                                      \
        name##_.memberDel(*this, name##Attribute, key, tag);                                       \
    }                                                                                              \
    ORB_WHERE_CALLED                                                                               \
    void name##DelAll() { name##_.memberDelAll(*this, name##Attribute); }

/// Reactors R of this machine, one per member of a collection that it follows: name(), name(key),
/// nameIs(member), nameDel(key), nameDelAll().
#define ORB_REACTORS(number, R, name)                                                              \
    ORB_DECLARED(number, Orb::MemberReactors<R>, name)                                             \
    const auto& name() const { return name##_.all(); }                                             \
    ORB_WHERE_CALLED                                                                               \
    R* name(Orb::Read<R::Watched::Key> key) const { return name##_.find(key); }                    \
    ORB_WHERE_CALLED                                                                               \
    R* name##Is(Orb::Ptr<const R::Watched> member) {                                               \
        return name##_.memberIs(this, #name, orbTypeName, std::move(member));                      \
    }                                                                                              \
    ORB_WHERE_CALLED                                                                               \
    void name##Del(Orb::Read<R::Watched::Key> key) { name##_.memberDel(*this, key); }              \
    ORB_WHERE_CALLED                                                                               \
    void name##DelAll() { name##_.memberDelAll(*this); }

#define ORB_COLLECTION(Kind, number, KeyType, ValueType, name)                                     \
    using name##Collection = Orb::Kind<KeyType, ValueType>;                                        \
    ORB_COLLECTION_IN(name##Collection, number, KeyType, ValueType, name, )                        \
    template <typename Change>                                                                     \
    void name##Change(Orb::Read<KeyType> key, Change change) {                                     \
        name##_.memberChange(*this, name##Attribute, key, change);                                 \
    }

/// Values by key in a holder of one's own that does what Orb::Collection does. What initialises the
/// holder may follow, in braces.
#define ORB_COLLECTION_IN(Holder, number, KeyType, ValueType, name, ...)                           \
    ORB_DECLARED(number, Holder, name, __VA_ARGS__)                                                \
    const auto& name() const { return name##_.all(); }                                             \
    ORB_WHERE_CALLED                                                                               \
    ValueType name(Orb::Read<KeyType> key) const { return name##_.find(key); }                     \
    ORB_WHERE_CALLED                                                                               \
    void name##Is(Orb::Read<KeyType> key, Orb::Read<ValueType> value) {                            \
        name##_.memberIs(*this, name##Attribute, key, value);                                      \
    }                                                                                              \
    ORB_WHERE_CALLED                                                                               \
    void name##Is(Orb::Read<KeyType> key, Orb::Read<ValueType> value, Orb::HashTag tag) {          \
        name##_.memberIs(*this, name##Attribute, key, value, tag);                                 \
    }                                                                                              \
    ORB_WHERE_CALLED                                                                               \
    void name##Del(Orb::Read<KeyType> key) { name##_.memberDel(*this, name##Attribute, key); }     \
    ORB_WHERE_CALLED                                                                               \
    void name##Del(Orb::Read<KeyType> key, Orb::HashTag tag) {                                     \
        name##_.memberDel(*this, name##Attribute, key, tag);                                       \
    }                                                                                              \
    ORB_WHERE_CALLED                                                                               \
    void name##DelAll() { name##_.memberDelAll(*this, name##Attribute); }

/// What every declaration has: the holder `name_`, the number `nameAttribute`, and the entry by
/// which the generic attribute interface finds it.
#define ORB_DECLARED(number, Holder, name, ...)                                                    \
  public:                                                                                          \
    static constexpr Orb::AttributeId name##Attribute{number};                                     \
    static_assert(number >= Orb::firstAttributeId && number <= Orb::lastAttributeId,               \
                  "attribute " #name ": the number is out of range");                              \
    enum { orbNumber##number##isGivenOnce };                                                       \
    template <typename Self = OrbSelf>                                                             \
    static constexpr auto orbAttribute(Orb::AttributeTag<number>) {                                \
        return Orb::AttributeAt{#name, &Self::name##_};                                            \
    }                                                                                              \
                                                                                                   \
  private:                                                                                         \
    [[no_unique_address]] Holder name##_ __VA_ARGS__;                                              \
                                                                                                   \
  public:
