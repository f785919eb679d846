// Declarations that do not compile: each number of REFUSED adds one. tests/CMakeLists.txt says what
// the compiler is to answer; with 0, all is right.
#include <utility>

#include "platform/orb/attribute/Declare.h"
#include "platform/orb/attribute/DefineType.h"

namespace {

class Base : public Orb::Entity {
    ORB_ENTITY(Base, "Base")
    ORB_CONSTRUCTOR((int, made)) // 258
    ORB_ATTRIBUTE(259, int, first)
#if REFUSED == 1
    ORB_ATTRIBUTE(320, int, second)
#elif REFUSED == 2
    ORB_ATTRIBUTE(259, int, second)
#elif REFUSED == 3
    ORB_ATTRIBUTE(258, int, second)
#endif

  public:
    explicit Base(Arguments arguments) : arguments_(std::move(arguments)) {}
};

class Derived : public Base {
#if REFUSED == 4
    ORB_ENTITY(Derived, "Derived")
#else
    ORB_DERIVED_ENTITY(Derived, Base, "Derived")
#endif
#if REFUSED == 5
    ORB_ATTRIBUTE(259, int, third)
#elif REFUSED == 6
    ORB_CONSTRUCTOR((int, other))
#else
    ORB_ATTRIBUTE(260, int, third)
#endif

  public:
#if REFUSED != 6
    using Base::Base;
#endif
};

class Parent : public Orb::Entity {
    ORB_ENTITY(Parent, "Parent")
    ORB_CHILD(258, Base, child)
};

ORB_DEFINE_TYPE(Base)
ORB_DEFINE_TYPE(Derived)
ORB_DEFINE_TYPE(Parent)

#if REFUSED == 7
Base::Arguments leftOut{};
#elif REFUSED == 8
void leaveOut(Parent& parent) { parent.childIs(); }
#endif

} // namespace
