#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <map>
#include <memory>
#include <random>
#include <sstream>

#include "platform/attributelog/AttributeLogReplay.h"
#include "platform/attributelog/AttributeLogWriter.h"
#include "platform/attributelog/LanxAttributeLogForm.h"
#include "platform/orb/attribute/Declare.h"
#include "platform/orb/attribute/DefineType.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/SimulatedClock.h"
#include "platform/orb/value/Error.h"
#include "platform/virtualip/VirtualIpStatus.h"

namespace Orb {
namespace {

using Item = VirtualIp::VirtualIpIntfStatus;
using ItemKey = VirtualIp::VrfIpWithMaskPair;

class Table : public Entity {
    ORB_ENTITY(Table, "AttributeLogTest::Table")
    ORB_CONSTRUCTOR((L3::VrfName, name))
    ORB_KEY(L3::VrfName, name)
    ORB_REFERENCES(259, const Item, item)
    ORB_ATTRIBUTE(260, bool, flag)

  public:
    explicit Table(Arguments arguments) : arguments_(std::move(arguments)) {}
};

class Tables : public Entity {
    ORB_ENTITY(Tables, "AttributeLogTest::Tables")
    ORB_CHILDREN(258, Table, table)
};

ORB_DEFINE_TYPE(Table)
ORB_DEFINE_TYPE(Tables)

std::string textOf(const Tables& tables) {
    std::ostringstream out;
    for (const auto& table : tables.table()) {
        out << table->name() << (table->flag() ? " on" : " off");
        for (const auto& item : table->item()) {
            out << ' ' << item->vrfIpWithMask().ipAddrWithMask();
            for (const auto& [intfId, carried] : item->intfId()) {
                out << ' ' << intfId << '=' << carried;
            }
        }
        out << '\n';
    }
    return out.str();
}

using Writer = AttributeLogWriter<Tables>;
using Replay = AttributeLogReplay<Tables>;

/// A pipe from a writer to a reader that keeps what it read.
class Pipe {
  public:
    explicit Pipe(std::size_t maxPending = 1 << 20) {
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
        readEnd_ = ends[0];
        sink_ = std::make_unique<AttributeLogSink>(ends[1], maxPending);
    }
    ~Pipe() { ::close(readEnd_); }

    AttributeLogSink& sink() { return *sink_; }

    /// What the reader gets by letting the loop run until nothing is left to send.
    std::string take() {
        std::string taken;
        do {
            activityManager()->runOnce(0);
            char piece[4096];
            for (ssize_t count = 0; (count = ::read(readEnd_, piece, sizeof piece)) > 0;) {
                taken.append(piece, static_cast<std::size_t>(count));
            }
        } while (sink_->pending() > 0);
        return taken;
    }

  private:
    int readEnd_ = -1;
    std::unique_ptr<AttributeLogSink> sink_;
};

/// A reader that joined at some time.
struct Reader {
    explicit Reader(const Ptr<Tables>& watched) : writer(pipe.sink(), watched) {}

    void read(std::mt19937& random) {
        const std::string bytes = pipe.take();
        for (std::size_t at = 0; at < bytes.size();) {
            const std::size_t size = random() % 40 + 1;
            replay.feed(bytes.substr(at, size));
            at += size;
        }
    }

    Pipe pipe;
    Ptr<Tables> tables = makePtr<Tables>();
    Writer writer;
    Replay replay{tables};
};

class AttributeLogTest : public testing::Test {
  protected:
    AttributeLogTest() { std::signal(SIGPIPE, SIG_IGN); }

    Ptr<Item> item(const ItemKey& key) {
        Ptr<Item>& made = items_[key];
        if (made == nullptr || random_() % 8 == 0) {
            made = makePtr<Item>(Item::Arguments{key}); // another one under the same key
        }
        return made;
    }

    /// Any one change, often one that changes nothing.
    void mutate() {
        static const char* const names[] = {"default", "red", "", "a rather long name of a VRF"};
        const L3::VrfName name = names[random_() % 4];
        const ItemKey key(name, {Lanx::IpAddr(0x0a000000 + random_() % 4), 24});
        const unsigned choice = random_() % 16;
        Table* table = tables_->table(name);
        if (choice == 0) {
            tables_->tableDel(name);
        } else if (choice == 1 || table == nullptr) {
            tables_->tableIs(name);
        } else if (choice == 2) {
            table->flagIs(random_() % 2 != 0);
        } else if (choice < 6) {
            table->itemIs(item(key));
        } else if (choice < 8) {
            table->itemDel(key);
        } else if (choice < 13) {
            item(key)->intfIdIs(intfId(random_() % 5), random_() % 3 != 0);
        } else {
            item(key)->intfIdDel(intfId(random_() % 5));
        }
    }

    static Lanx::IntfId intfId(std::size_t number) {
        return Lanx::IntfId("Vlan" + std::to_string(number));
    }

    /// A small whole log.
    std::string someLog() {
        Pipe pipe;
        Table* red = tables_->tableIs("red");
        Writer writer(pipe.sink(), tables_);
        const auto added = item(ItemKey("red", {Lanx::IpAddr(0x0a010101), 24}));
        added->intfIdIs(intfId(1), true);
        red->itemIs(added);
        added->intfIdIs(intfId(2), false);
        red->flagIs(true);
        writer.finish();
        return pipe.take();
    }

    std::mt19937 random_{20240611};
    ActivityManager activityManager_{makePtr<SimulatedClock>()};
    Ptr<Tables> tables_ = makePtr<Tables>();
    std::map<ItemKey, Ptr<Item>> items_;
};

/// Undoes some changes from inside their notification, before the log hears of them.
struct Meddler : Tables::NotifieeConst {
    explicit Meddler(Ptr<Tables> those) : tables(std::move(those)) {
        hasNotificationActiveIs(true);
        notifierIs(tables);
    }
    void onAttribute(AttributeId, const void* key) override {
        const L3::VrfName name = keyAs<L3::VrfName>(key);
        if (Table* table = tables->table(name)) {
            table->flagIs(true);
            if (name == "red") {
                tables->tableDel(name);
            }
        } else if (name == "default") {
            tables->tableIs(name);
        }
    }
    Ptr<Tables> tables;
};

TEST_F(AttributeLogTest, ReaderHoldsWhatTheWriterHoldsAfterAnyChange) {
    std::vector<std::unique_ptr<Reader>> readers;
    Ptr<Meddler> meddler; // later on, whom some readers hear before and others after
    for (int round = 0; round < 4000; ++round) {
        if (round == 2000) {
            meddler = makePtr<Meddler>(tables_);
        }
        if (round % 1000 == 0) {
            readers.push_back(std::make_unique<Reader>(tables_));
        }
        mutate();
        for (const auto& reader : readers) {
            reader->read(random_);
            ASSERT_TRUE(reader->replay.hasState());
            ASSERT_EQ(textOf(*reader->tables), textOf(*tables_)) << "round " << round;
        }
    }
    meddler->notifierIs(nullptr);
    for (const auto& reader : readers) {
        reader->writer.finish();
        tables_->tableDelAll();
        reader->read(random_);
        reader->replay.finish();
    }
}

TEST_F(AttributeLogTest, MemberWithMoreStateThanARecordHoldsIsWhole) {
    const auto big = makePtr<Item>(Item::Arguments{ItemKey("red", {Lanx::IpAddr(1), 24})});
    for (std::size_t number = 0; number < 6000; ++number) {
        big->intfIdIs(intfId(number), true);
    }
    tables_->tableIs("red")->itemIs(big);
    Reader early(tables_);
    early.read(random_);
    EXPECT_EQ(textOf(*early.tables), textOf(*tables_));
}

/// Whether the bytes are taken as a whole log.
bool isTaken(const std::string& log) {
    Replay replay(makePtr<Tables>());
    try {
        replay.feed(log);
        replay.finish();
    } catch (const ParseError&) {
        return false;
    }
    return true;
}

TEST_F(AttributeLogTest, TruncatedExtendedOrFlippedLogIsRefused) {
    const std::string log = someLog();
    EXPECT_TRUE(isTaken(log));
    EXPECT_FALSE(isTaken(log + 'x'));
    for (std::size_t bit = 0; bit < log.size() * 8; ++bit) {
        std::string flipped = log;
        flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ 1 << bit % 8);
        ASSERT_FALSE(isTaken(flipped)) << bit;
        ASSERT_FALSE(isTaken(log.substr(0, bit / 8))) << bit;
    }
}

/// A well-framed log of the bodies, but for the one that got lost.
std::string framed(const std::vector<std::string>& bodies, std::size_t lost = std::string::npos) {
    std::string log;
    AttributeLogFramer framer;
    AttributeLogFramer::appendHead(log);
    for (std::size_t at = 0; at < bodies.size(); ++at) {
        std::string frame;
        framer.append(frame, bodies[at]);
        log += at == lost ? "" : frame;
    }
    return log;
}

/// The records of a log: before each stand its size and its checksum.
std::vector<std::string> bodiesOf(const std::string& log) {
    std::vector<std::string> bodies;
    std::size_t at = framed({}).size();
    while (at < log.size()) {
        AttributeLogInput in(std::string_view(log).substr(at), at);
        const auto size = in.number<std::uint32_t>();
        bodies.push_back(log.substr(at + 8, size));
        at += 8 + size;
    }
    return bodies;
}

TEST_F(AttributeLogTest, LostOrMovedRecordIsNoticed) {
    const std::string log = someLog();
    const std::vector<std::string> bodies = bodiesOf(log);
    ASSERT_EQ(framed(bodies), log);
    for (std::size_t lost = 0; lost + 1 < bodies.size(); ++lost) {
        EXPECT_FALSE(isTaken(framed(bodies, lost))) << lost;
    }
}

/// Feeds the bodies as a log. Answers the error, and what the roots hold then.
std::pair<std::string, std::string> outcome(const std::vector<std::string>& bodies) {
    const auto tables = makePtr<Tables>();
    std::string problem;
    try {
        Replay(tables).feed(framed(bodies));
    } catch (const ParseError& error) {
        problem = error.what();
    }
    return {problem, textOf(*tables)};
}

TEST_F(AttributeLogTest, HostileRecordIsRefusedWhole) {
    const std::string start = bodiesOf(someLog())[0];
    using std::string_literals::operator""s;
    const std::string red = "\0\0\0\3red"s;
    const std::string makeRed = "\1\0\1\0\0\1\2"s + red;
    const std::string inRed = "\1\0\0\0\0\1\2"s + red;
    const std::string key = red + "\x0a\1\1\1"s;
    const struct {
        std::vector<std::string> bodies;
        std::string error;
    } cases[] = {
        {{makeRed}, "a record that is out of place"},
        {{start, start}, "a record that is out of place"},
        {{start, "\3"s}, "a record that is out of place"},
        {{start, "\2"s, "\2"s}, "a record that is out of place"},
        {{start, ""s}, "a record ends in the middle of a value"},
        {{start, "\2x"s}, "a record is longer than what it says"},
        {{"\0\1\0\0\0\1x"s}, "a log of something else"},
        {{start, "\1\1\1\0\0\1\2"s + red}, "an unknown root"},
        {{start, "\1\0\1\0\0\1\3"s}, "an unknown attribute"},
        {{start, "\1\0\1\0\0\1\2"s + "\xff\xff\xff\xff"s}, "in the middle of a value"},
        {{start, "\1\0\1\0\0\1\2"s + "\0\0\0\x65"s + std::string(101, 'x')},
         "VrfName::bytes > VrfName::maxLength not allowed"},
        {{start, makeRed, makeRed}, "a member that is there already"},
        {{start, inRed + "\1\0\0\1\4\1"s}, "a member that is not there"},
        {{start, "\1\0\2\0\0\1\2"s + red}, "a member that is not there"},
        {{start, "\1\0\3\0\0\1\2"s + red}, "a member that is not there"},
        {{start, makeRed, "\1\0\7\0\0\1\2"s + red}, "an unknown operation"},
        {{start, makeRed, inRed + "\1\0\0\1\4\2"s}, "a flag that is neither 0 nor 1"},
        {{start, makeRed, inRed + "\2\0\0\1\4\1"s}, "an operation that an attribute does not"},
        {{start, makeRed, inRed + "\1\0\0\1\3"s + key + "\x21\0\0\0\0"s},
         "AddrWithMask::len > 32 not allowed"},
        {{start, makeRed, inRed + "\1\0\0\1\3"s + key + "\x18\xff\xff\xff\xff"s},
         "in the middle of a value"},
        {{start, makeRed, inRed + "\1\0\0\1\3"s + key + "\x18\0\0\0\1\2\0\0\1\3\0\0\0\1x"s},
         "a new object's state takes something away"},
    };
    for (const auto& [bodies, error] : cases) {
        const auto [got, state] = outcome(bodies);
        EXPECT_NE(got.find(error), std::string::npos) << got << " instead of " << error;
        const std::vector<std::string> before(bodies.begin(), bodies.end() - 1);
        EXPECT_EQ(state, outcome(before).second) << error;
    }
    const std::string endless = "\xff\xff\xff\xff\0\0\0\0"s;
    EXPECT_THROW(Replay(makePtr<Tables>()).feed(framed({}) + endless), ParseError);
}

TEST_F(AttributeLogTest, SlowReaderNeitherHoldsTheWriterUpNorFillsItsMemory) {
    for (std::size_t number = 0; number < 4000; ++number) {
        const ItemKey key("red", {Lanx::IpAddr(static_cast<std::uint32_t>(number)), 24});
        tables_->tableIs("red")->itemIs(makePtr<Item>(Item::Arguments{key}));
    }
    constexpr std::size_t bound = 10000;
    Pipe pipe(bound);
    Writer writer(pipe.sink(), tables_);
    const std::size_t atStart = pipe.sink().pending();
    ASSERT_GT(atStart, 2 * bound) << "the state at the start does not count";
    std::size_t most = 0;
    for (int change = 0; change < 10000 && pipe.sink().isOpen(); ++change) {
        tables_->table("red")->flagIs(change % 2 == 0);
        most = std::max(most, pipe.sink().pending());
    }
    EXPECT_EQ(pipe.sink().failure(), "the reader is too slow");
    EXPECT_LE(most, atStart + bound);
    EXPECT_EQ(pipe.sink().pending(), 0U);
}

} // namespace
} // namespace Orb
