#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/orb/attribute/Declare.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/object/Entity.h"
#include "platform/orb/value/Error.h"

namespace Orb {
namespace {

class Lamp : public Entity {
    ORB_ENTITY(Lamp, "Test::Lamp")
    ORB_CONSTRUCTOR((std::string, room))
    ORB_KEY(std::string, room)
    ORB_ATTRIBUTE(259, int, watts, 40)
    ORB_MAP(260, std::string, int, hours)

  public:
    explicit Lamp(Arguments arguments) : arguments_(std::move(arguments)) {}
};
ORB_DEFINE_TYPE(Lamp)

class House : public Entity {
    ORB_ENTITY(House, "Test::House")
    ORB_CHILDREN(258, Lamp, lamp)
    ORB_CHILD(259, Lamp, porch)
};
ORB_DEFINE_TYPE(House)

/// Notes the watts that it sees under its name and then acts.
class Watcher : public Lamp::NotifieeConst {
  public:
    Watcher(std::string name, std::vector<std::string>& log) : name_(std::move(name)), log_(log) {
        hasNotificationActiveIs(true);
    }
    void onAttribute(AttributeId, const void*) override {
        log_.push_back(name_ + std::to_string(notifier()->watts()));
        if (act) {
            act();
        }
    }

    std::function<void()> act;

  private:
    std::string name_;
    std::vector<std::string>& log_;
};

using Log = std::vector<std::string>;

class NotifieeTest : public testing::Test {
  protected:
    NotifieeTest() { watchAll(); }
    void watchAll() {
        for (const char* name : {"a", "b", "c"}) {
            watchers.push_back(watch(name));
        }
    }
    Ptr<Watcher> watch(const char* name) {
        auto watcher = makePtr<Watcher>(name, log);
        watcher->notifierIs(lamp);
        return watcher;
    }
    /// What one change is seen by.
    Log seen(int watts) {
        log.clear();
        lamp->wattsIs(watts);
        return log;
    }

    Log log;
    Ptr<Lamp> lamp = makePtr<Lamp>(Lamp::Arguments{"hall"});
    Ptr<Lamp> other = makePtr<Lamp>(Lamp::Arguments{"attic"});
    std::vector<Ptr<Watcher>> watchers;
};

TEST_F(NotifieeTest, UnchangedValueIsNoNews) {
    EXPECT_EQ(seen(40), Log());
    EXPECT_EQ(seen(60), (Log{"a60", "b60", "c60"}));
    EXPECT_EQ(seen(60), Log());
    lamp->hoursIs("monday", 0);
    EXPECT_EQ(log.size(), 3U); // a member that comes is a change, whatever its value
    lamp->hoursIs("monday", 0);
    lamp->hoursDel("tuesday");
    EXPECT_EQ(log.size(), 3U);
}

TEST_F(NotifieeTest, RemovedReactorIsNotCalledAgainAndItsNeighbourIs) {
    for (std::size_t victim = 0; victim < 3; ++victim) {
        watchers[1]->act = [this, victim] { watchers[victim] = nullptr; };
        EXPECT_EQ(seen(1).size(), victim == 2 ? 2U : 3U);
        EXPECT_EQ(seen(2).size(), 2U);
        watchers.clear();
        EXPECT_FALSE(lamp->hasReactors());
        lamp->wattsIs(100);
        watchAll();
    }
    for (std::size_t i = 0; i < 3; ++i) {
        watchers[i]->act = [this, i] { watchers[i] = nullptr; };
    }
    EXPECT_EQ(seen(3), (Log{"a3", "b3", "c3"}));
    EXPECT_EQ(seen(4), Log());
}

TEST_F(NotifieeTest, ReactorThatComesHearsOfLaterChangesOnly) {
    watchers[2]->act = [this] {
        if (watchers.size() == 3) {
            watchers.push_back(watch("d"));
        }
    };
    EXPECT_EQ(seen(1), (Log{"a1", "b1", "c1"}));
    EXPECT_EQ(seen(2).size(), 4U);
}

TEST_F(NotifieeTest, RepointedReactorHearsOfTheNewOneOnly) {
    watchers[2]->act = [this] { watchers[2]->notifierIs(lamp); }; // where it points already
    watchers[0]->act = [this] {
        watchers[1]->notifierIs(other);
        watchers[0]->notifierIs(other);
        other->wattsIs(7); // once each: the change of `other` is not this one's
        watchers[0]->act = nullptr;
    };
    other->wattsIs(6);
    const Log once = seen(1);
    EXPECT_EQ(std::count(once.begin(), once.end(), "b7"), 1);
    EXPECT_EQ(std::count(once.begin(), once.end(), "b1"), 0);
    EXPECT_EQ(std::count(once.begin(), once.end(), "c1"), 1);
    EXPECT_EQ(seen(2), (Log{"c2"}));
    watchers[2]->notifierIs(nullptr);
    EXPECT_EQ(seen(3), Log());
}

// Depth first: the inner change is told to everybody before the outer one goes on.
TEST_F(NotifieeTest, ChangeFromInsideTheHandlerIsSeenInOrder) {
    watchers[1]->act = [this] {
        if (lamp->watts() < 3) {
            lamp->wattsIs(lamp->watts() + 1);
        }
    };
    const Log all = seen(1);
    EXPECT_EQ(all.front(), "a1");
    EXPECT_EQ(std::count(all.begin(), all.end(), "a3"), 1);
    EXPECT_EQ(std::count(all.begin(), all.end(), "c3"), 3); // told thrice, of the present value
    EXPECT_EQ(all.size(), 9U);
    EXPECT_EQ(seen(10), (Log{"a10", "b10", "c10"}));
}

TEST_F(NotifieeTest, WatchedObjectAndItsOwnerMayDieWhileItTells) {
    auto house = makePtr<House>();
    for (const auto& watcher : watchers) {
        watcher->notifierIs(Ptr<Lamp>(house->lampIs("hall")));
    }
    Lamp* const raw = house->lamp("hall");
    watchers[0]->act = [&] {
        house->lampDel("hall");
        house = nullptr;
    };
    raw->wattsIs(1);
    EXPECT_EQ(log, (Log{"a1", "b1", "c1"}));
    EXPECT_EQ(raw->references(), 3U); // the reactors keep what they watch
    watchers[0]->act = [this] {       // no longer
        for (const auto& watcher : watchers) {
            watcher->notifierIs(nullptr);
        }
    };
    raw->wattsIs(2);
    EXPECT_EQ(log.size(), 4U);
}

TEST_F(NotifieeTest, ExceptionFromAHandlerLeavesTheListWhole) {
    watchers[1]->act = [] { throw Error("no"); };
    EXPECT_THROW(lamp->wattsIs(1), Error);
    EXPECT_EQ(lamp->watts(), 1);
    watchers[1]->act = nullptr;
    EXPECT_EQ(seen(2), (Log{"a2", "b2", "c2"}));
    // Thrown two levels deep, with the reactor gone by then.
    watchers[0]->act = [this] {
        watchers[0]->act = nullptr;
        lamp->wattsIs(5);
    };
    watchers[2]->act = [this] {
        watchers[2] = nullptr;
        throw Error("no");
    };
    EXPECT_THROW(lamp->wattsIs(4), Error);
    EXPECT_EQ(seen(6), (Log{"a6", "b6"}));
}

TEST_F(NotifieeTest, ReactorThatIsInactiveOrGoingHearsNothing) {
    watchers[0]->hasNotificationActiveIs(false);
    watchers[1]->orbDoZombieReactors(true);
    EXPECT_EQ(seen(1), (Log{"c1"}));
    watchers[0]->hasNotificationActiveIs(true);
    watchers[1]->orbDoZombieReactors(false);
    EXPECT_EQ(seen(2), (Log{"a2", "b2", "c2"}));
    watchers[0]->act = [this] { watchers[2]->orbDoZombieReactors(true); };
    EXPECT_EQ(seen(3), (Log{"a3", "b3"}));
}

TEST(DeclaredAttributeTest, ChildIsKeptWhenEqualAndReplacedWhenNot) {
    const auto house = makePtr<House>();
    const Ptr<Lamp> porch = house->porchIs("porch");
    EXPECT_EQ(house->porchIs("porch"), porch);
    EXPECT_NE(house->porchIs("garden"), porch);
    const Ptr<Lamp> hall(house->lampIs("hall"));
    EXPECT_EQ(house->lampIs("hall"), hall.get());
    EXPECT_EQ(hall->references(), 2U); // looking a child up does not hold it
    house->lampDelAll();
    EXPECT_EQ(hall->references(), 1U);
}

TEST(DeclaredAttributeTest, GenericInterfaceKnowsEveryAttributeAndRefusesBadText) {
    const auto lamp = makePtr<Lamp>(Lamp::Arguments{"hall"});
    const TypeNode& type = *lamp->fwkTypeNode();
    std::vector<std::string> values;
    for (const AttributeDescription& attribute : type.attributes()) {
        values.push_back(std::string(attribute.name) + '=' + attribute.get(*lamp));
    }
    EXPECT_EQ(values, (std::vector<std::string>{"room=hall", "watts=40", "hours=0 members"}));
    EXPECT_EQ(type.attribute("room")->set, nullptr);
    EXPECT_EQ(type.attribute("colour"), nullptr);
    const AttributeDescription& watts = *type.attribute("watts");
    EXPECT_EQ(watts.id, Lamp::wattsAttribute);
    watts.set(*lamp, "75");
    EXPECT_THROW(watts.set(*lamp, "many"), ParseError);
    EXPECT_THROW(watts.set(*lamp, "75 "), ParseError);
    EXPECT_THROW(watts.set(*lamp, "99999999999"), Error);
    EXPECT_EQ(lamp->watts(), 75);
}

} // namespace
} // namespace Orb
