#include <gmock/gmock.h>

#include <utility>

#include "platform/orb/attribute/Declare.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/object/Decision.h"
#include "platform/orb/value/Name.h"

// What the compiler refuses is in tests/refused.

namespace Orb {
namespace {

class Table : public Entity {
    ORB_ENTITY(Table, "Table")
    ORB_CONSTRUCTOR((Name, name)) // 258
    ORB_MAP(259, Name, int, number)
    ORB_ATTRIBUTE(260, int, plain)

  public:
    explicit Table(Arguments arguments) : arguments_(std::move(arguments)) {}
};

class NamedTable : public Table {
    ORB_DERIVED_ENTITY(NamedTable, Table, "NamedTable")
    ORB_ATTRIBUTE(261, int, extra)

  public:
    using Table::Table;
};

class Follower : public Entity {
    ORB_ENTITY(Follower, "Follower")
    ORB_CONSTRUCTOR((Ptr<const Table>, table))

  public:
    class OrbTable : public InputReactor<Follower, Table> {
      public:
        using InputReactor::InputReactor;
        void onAttribute(AttributeId, const void* key) override {
            owner()->found = keyAs<std::string>(key);
        }
    };

    explicit Follower(Arguments arguments) : arguments_(std::move(arguments)), orbTable(this) {
        orbTable.notifierIs(table());
    }

    std::string found;
    OrbTable orbTable;
};

class Owner : public Entity {
    ORB_ENTITY(Owner, "Owner")
    ORB_CHILD(258, Follower, follower)
};

ORB_DEFINE_TYPE(Table)
ORB_DEFINE_TYPE(NamedTable)
ORB_DEFINE_TYPE(Follower)
ORB_DEFINE_TYPE(Owner)

template <typename Call>
std::string errorOf(const Call& call) {
    try {
        call();
    } catch (const Error& error) {
        return error.what();
    }
    return "no error";
}

TEST(Misuse, AKeyOfAnotherTypeIsRefusedAtOnceAndAfterADecision) {
    const auto table = makePtr<Table>(Table::Arguments{Name("t")});
    const auto follower = makePtr<Follower>(Follower::Arguments{table});
    EXPECT_THROW(table->numberIs(Name("a"), 1), KeyTypeError);
    EXPECT_THROW(decide([&] { table->numberIs(Name("b"), 1); }), KeyTypeError);
    EXPECT_THROW(table->plainIs(1), KeyTypeError) << "an attribute without a key";
    EXPECT_EQ(follower->found, "");
}

TEST(Misuse, ANullInputIsRefusedByName) {
    const auto owner = makePtr<Owner>();
    EXPECT_THAT(
        errorOf([&] { owner->followerIs(nullptr); }),
        testing::MatchesRegex("null _table parameter to constructor of .*Follower not allowed"));
    EXPECT_EQ(owner->follower(), nullptr);
}

TEST(Misuse, AForgottenActivityManagerIsAnError) {
    EXPECT_THROW(activityManager(), NoActivityManagerError);
}

TEST(Misuse, ADerivedEntityKeepsTheAttributesOfItsBase) {
    const auto table = makePtr<NamedTable>(NamedTable::Arguments{Name("t")});
    std::string listed;
    for (const AttributeDescription& attribute : NamedTable::fwkType().attributes()) {
        listed += std::string(attribute.name) + '=' + attribute.get(*table) + ' ';
    }
    EXPECT_EQ(listed, "name=t number=0 members plain=0 extra=0 ");
    NamedTable::fwkType().attribute("plain")->set(*table, "7");
    EXPECT_EQ(table->plain(), 7);
}

} // namespace
} // namespace Orb
