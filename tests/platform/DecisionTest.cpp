#include "platform/orb/object/Decision.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "FanSm.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/container/Keys.h"
#include "platform/orb/value/Error.h"

namespace Orb {
namespace {

class Input : public Entity {
    ORB_ENTITY(Input, "Test::Input")
    ORB_ATTRIBUTE(258, int, value)
    ORB_MAP(259, std::string, int, member)
};
ORB_DEFINE_TYPE(Input)

class Output : public Entity {
    ORB_ENTITY(Output, "Test::Output")
    ORB_ATTRIBUTE(258, int, step)
};
ORB_DEFINE_TYPE(Output)

/// Answers a change of its input with three writes, and notes what it does when.
class Machine : public Entity {
    ORB_ENTITY(Machine, "Test::Machine")
    ORB_CONSTRUCTOR((Ptr<const Input>, input), (Ptr<Output>, output))

  public:
    using Log = std::vector<std::string>;

    Machine(Arguments arguments, Log& log)
        : arguments_(std::move(arguments)), log_(log), reactor_(this) {
        reactor_.notifierIs(input());
    }

    void handleValue(const std::string& what) {
        log_.push_back(what + " begins");
        for (int step = 1; step <= 3; ++step) {
            output()->stepIs(output()->step() + 1);
        }
        log_.push_back(what + " ends");
    }

  private:
    class OrbInput : public InputReactor<Machine, Input> {
      public:
        using InputReactor::InputReactor;
        void onAttribute(AttributeId id, const void* key) override {
            owner()->handleValue(id == Input::memberAttribute
                                     ? keyAs<std::string>(key)
                                     : std::to_string(notifier()->value()));
        }
        void onRemembered(AttributeId, const void*) override {
            owner()->log_.push_back("later, was " + std::to_string(notifier()->value()));
        }
    };

    Log& log_;
    OrbInput reactor_;
};
ORB_DEFINE_TYPE(Machine)

/// A stranger who acts on changes of an entity.
class Stranger : public NotifieeOf<Entity> {
  public:
    Stranger(Ptr<const Entity> watched, std::function<void()> act) : act_(std::move(act)) {
        hasNotificationActiveIs(true);
        notifierIs(std::move(watched));
    }
    void onAttribute(AttributeId, const void*) override { act_(); }

  private:
    std::function<void()> act_;
};

class DecisionTest : public testing::Test {
  protected:
    using Log = Machine::Log;

    /// Acts on the first change of the output only.
    Ptr<Stranger> once(std::function<void()> act) {
        return makePtr<Stranger>(output, [this, act = std::move(act)] {
            if (!acted_) {
                acted_ = true;
                act();
            }
        });
    }
    Ptr<Machine> makeMachine() { return makePtr<Machine>(Machine::Arguments{input, output}, log); }

    Log log;
    Ptr<Input> input = makePtr<Input>();
    Ptr<Output> output = makePtr<Output>();
    Ptr<Machine> machine = makeMachine();

  private:
    bool acted_ = false;
};

TEST_F(DecisionTest, ChangesDuringADecisionAreTakenAfterItInTheirOrder) {
    const auto stranger = once([this] {
        input->valueIs(7);
        const std::string key("a key that is gone when its turn comes");
        input->memberIs(key.substr(0, 5), 1);
        input->valueIs(8);
        EXPECT_TRUE(decisionUnderWay());
        EXPECT_EQ(log.size(), 4U); // nothing has been answered yet
    });
    input->valueIs(1);
    EXPECT_EQ(log, (Log{"1 begins", "later, was 7", "later, was 7", "later, was 8", "1 ends",
                        "8 begins", "8 ends", "a key begins", "a key ends", "8 begins", "8 ends"}));
    EXPECT_FALSE(decisionUnderWay());
    EXPECT_EQ(output->step(), 12);
}

TEST_F(DecisionTest, WhoGoesOrIsRepointedHearsNothingOfWhatWaited) {
    const auto other = makePtr<Input>();
    auto second = makeMachine();
    const auto stranger = once([&] {
        input->valueIs(7);
        second = nullptr;                   // with what waited for it
        machine->orbDoZombieReactors(true); // which may be in the middle of its own decision
    });
    input->valueIs(1);
    EXPECT_EQ(log, (Log{"1 begins", "later, was 7", "later, was 7", "1 ends"}));
}

TEST_F(DecisionTest, DecisionRunsToItsEndWhateverStrangersThrow) {
    std::string heard;
    const auto first =
        makePtr<Stranger>(output, [&] { throw Error("first " + std::to_string(output->step())); });
    const auto second = makePtr<Stranger>(output, [&] {
        heard += std::to_string(output->step());
        input->valueIs(9);
        throw Error("second");
    });
    try {
        input->valueIs(1);
        ADD_FAILURE() << "the error is lost";
    } catch (const Error& error) {
        EXPECT_EQ(error.what(), std::string("first 1"));
    }
    EXPECT_EQ(heard, "123456");
    EXPECT_EQ(log.back(), "9 ends"); // what waited was taken before the error was raised
    EXPECT_FALSE(decisionUnderWay());
    EXPECT_THROW(output->stepIs(0), Error); // no decision: straight to the caller
}

TEST_F(DecisionTest, ErrorOfTheDecisionItselfComesAfterWhatWaited) {
    const auto stranger = once([this] { input->valueIs(9); });
    EXPECT_THROW(decide([this] {
                     output->stepIs(1);
                     throw Error("mine");
                 }),
                 Error);
    EXPECT_EQ(log.back(), "9 ends");
    EXPECT_FALSE(decisionUnderWay());
}

TEST_F(DecisionTest, CallsOfStrangersWaitAndOwnOnesDoNot) {
    const auto call = [this](const std::string& what) {
        decideInTurn(*machine, [this, what] { log.push_back(what); });
    };
    const auto stranger = once([&] { call("stranger"); });
    decide([&] {
        call("own");
        output->stepIs(1);
        log.push_back("end");
        decideAfterwards(*machine, [this] { log.push_back("afterwards"); });
        log.push_back("very end");
    });
    call("at rest");
    EXPECT_EQ(log, (Log{"own", "end", "very end", "stranger", "afterwards", "at rest"}));
}

TEST_F(DecisionTest, PauseTakesWhatWaitsUnlessSomebodyIsBeingTold) {
    const auto stranger = once([this] {
        input->valueIs(9);
        pauseBetweenDecisions();
        EXPECT_EQ(log.size(), 1U); // what was remembered is not taken here
    });
    decide([this] {
        output->stepIs(1);
        log.push_back("pause");
        pauseBetweenDecisions();
        log.push_back("end");
    });
    EXPECT_EQ(log, (Log{"later, was 9", "pause", "9 begins", "9 ends", "end"}));
}

// The worked example of the framework's page, whose outputs have watchers that let go of it.
class FanTest : public testing::Test {
  protected:
    using Sensors = Cooling::Sensors;

    static Name name(const char* text) { return Name(text); }

    Ptr<Sensors> sensors = makePtr<Sensors>();
    Ptr<Cooling::Fan> fan = makePtr<Cooling::Fan>();
    Ptr<Cooling::FanSm> sm = makePtr<Cooling::FanSm>(Cooling::FanSm::Arguments{sensors, fan, 60});
};

TEST_F(FanTest, FanRunsWhileASensorIsTooHot) {
    sensors->sensorIs(name("cpu"))->celsiusIs(75);
    EXPECT_TRUE(fan->on());
    sensors->sensorDel(name("cpu"));
    EXPECT_FALSE(fan->on());
}

TEST_F(FanTest, WatchersOfTheFanMayLetGoOfItAndOfItsInputs) {
    const std::vector<std::function<void()>> acts{
        [this] { sm = nullptr; },
        [this] { sensors->sensorDelAll(); },
        [this] {
            sensors->sensorDel(name("cpu"));
            sensors->sensorIs(name("cpu"))->celsiusIs(80);
            sm = nullptr;
        },
    };
    for (const auto& act : acts) {
        for (const bool early : {false, true}) { // before the machine comes, or afterwards
            for (const char* sensor : {"cpu", "disk", "nic"}) {
                sensors->sensorIs(name(sensor));
            }
            if (early) {
                sm = nullptr;
                sensors->sensor(name("cpu"))->celsiusIs(75);
            }
            bool acted = false;
            const auto stranger = makePtr<Stranger>(fan, [&] {
                if (!std::exchange(acted, true)) {
                    act();
                }
            });
            if (early) {
                sm = makePtr<Cooling::FanSm>(Cooling::FanSm::Arguments{sensors, fan, 60});
            } else {
                sensors->sensor(name("cpu"))->celsiusIs(75);
            }
            EXPECT_TRUE(acted);
            sm = nullptr;
            EXPECT_TRUE(fan->excess().empty());
            sensors->sensorDelAll();
            sm = makePtr<Cooling::FanSm>(Cooling::FanSm::Arguments{sensors, fan, 60});
        }
    }
}

class Leaf : public Entity {
    ORB_ENTITY(Leaf, "Test::Leaf")
    ORB_CONSTRUCTOR((std::string, name))
    ORB_KEY(std::string, name)

  public:
    explicit Leaf(Arguments arguments) : arguments_(std::move(arguments)) {}
};
ORB_DEFINE_TYPE(Leaf)

class Branch : public Entity {
    ORB_ENTITY(Branch, "Test::Branch")
    ORB_CHILDREN(258, Leaf, leaf)
    ORB_CHILD(259, Leaf, single)
    ORB_REFERENCES(260, Leaf, neighbour)
    ORB_MAP(261, std::string, int, number)
    ORB_SOLE_CHILD(262, Leaf, only)
};
ORB_DEFINE_TYPE(Branch)

TEST(Mutators, ParentStaysDuringItsMutatorWhoeverLetsGoOfIt) {
    const auto stone = makePtr<Leaf>(Leaf::Arguments{"stone"});
    const std::vector<std::function<void(Branch&)>> mutators{
        [](Branch& b) { EXPECT_EQ(b.leafIs("new"), nullptr); },
        [](Branch& b) { b.leafDel("old"); },
        [](Branch& b) { b.leafDelAll(); },
        [](Branch& b) { b.singleIs("only"); },
        [](Branch& b) { b.singleDel(); },
        [&](Branch& b) { b.neighbourIs(stone); },
        [](Branch& b) { b.neighbourDelAll(); },
        [](Branch& b) { b.numberIs("three", 3); },
        [](Branch& b) { b.numberDelAll(); },
    };
    for (const auto& mutate : mutators) {
        auto branch = makePtr<Branch>();
        branch->leafIs("old");
        branch->leafIs("older");
        branch->singleIs("old");
        branch->neighbourIs(makePtr<Leaf>(Leaf::Arguments{"pebble"}));
        branch->neighbourIs(makePtr<Leaf>(Leaf::Arguments{"rock"}));
        branch->numberIs("one", 1);
        branch->numberIs("two", 2);
        Branch& raw = *branch;
        auto stranger = Ptr<Stranger>();
        stranger = makePtr<Stranger>(branch, [&] {
            branch = nullptr;
            stranger->notifierIs(nullptr); // which holds it, too
        });
        mutate(raw);
        EXPECT_EQ(branch, nullptr);
    }
}

TEST(Mutators, SoleChildIsNotReplaced) {
    const auto branch = makePtr<Branch>();
    const Ptr<Leaf> first = branch->onlyIs("one");
    EXPECT_EQ(branch->onlyIs("one"), first);
    EXPECT_THROW(branch->onlyIs("two"), NameInUseError);
    EXPECT_EQ(branch->only(), first);
    branch->onlyDel();
    EXPECT_NE(branch->onlyIs("two"), nullptr);
}

} // namespace
} // namespace Orb
