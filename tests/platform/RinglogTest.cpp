#include "platform/ringlog/Ringlog.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <sstream>

#include "platform/lanx/IntfId.h"
#include "platform/lanx/IpGenAddrWithMask.h"
#include "platform/orb/value/Error.h"
#include "platform/ringlog/RingMessage.h"
#include "platform/ringlog/RinglogReader.h"
#include "platform/vrf/VrfId.h"
#include "platform/vrf/VrfName.h"

namespace Ringlog {
namespace {

using Lines = std::vector<std::string>;

struct Decoded {
    Lines lines; ///< everything the reader yields, without the time in front
    std::size_t damagedBlocks;
};

Decoded decodeAll(std::string_view bytes) {
    RinglogReader reader(bytes);
    Lines lines;
    while (auto line = reader.next()) {
        lines.push_back(line->substr(line->find(' ') + 1));
    }
    return {lines, reader.damagedBlocks()};
}

Lines decode(std::string_view bytes) { return decodeAll(bytes).lines; }

class RinglogTest : public testing::Test {
  protected:
    RinglogTest() {
        std::string pattern = (std::filesystem::temp_directory_path() / "ringXXXXXX").string();
        folder_ = ::mkdtemp(pattern.data());
    }
    ~RinglogTest() override {
        close();
        std::filesystem::remove_all(folder_);
    }

    std::string path(const std::string& name) const { return folder_ / name; }

    void open(const std::string& name, unsigned blocks, const std::string& second = "") const {
        initialize(path(name), "", second, 0, 1, ThreadingMode::single, true, blocks);
        ASSERT_NE(defaultRinglogFile(), nullptr);
    }

    std::string read(const std::string& name) const {
        std::ifstream in(path(name), std::ios::binary);
        std::stringstream bytes;
        bytes << in.rdbuf();
        return bytes.str();
    }

    void put(const std::string& name, const std::string& text) const {
        std::ofstream(path(name), std::ios::binary) << text;
    }

    static void writeNumbered(int count) {
        static constinit MessageDescriptor descriptor("Unit", 7, "void Orb::A::f(int)");
        for (int i = 0; i < count; ++i) {
            writeMessage(*defaultRinglogFile(), descriptor, "number ", i, " as text ",
                         std::to_string(i));
        }
    }
    static std::string numbered(int i) {
        return "Unit:7 [A::f] number " + std::to_string(i) + " as text " + std::to_string(i);
    }

    std::filesystem::path folder_;
};

TEST_F(RinglogTest, WrappingKeepsTheNewestMessagesInOrder) {
    for (int count : {1, 10, 25, 26, 60, 100, 1000, 1001}) {
        open("ring", 4);
        writeNumbered(count);
        auto [lines, damagedBlocks] = decodeAll(read("ring"));
        EXPECT_EQ(damagedBlocks, 0U);
        // A full ring lacks at most the rest of the block it is about to leave and the one before.
        ASSERT_GE(lines.size(), static_cast<std::size_t>(std::min(count, 60)));
        for (int i = count; !lines.empty(); lines.pop_back()) {
            ASSERT_EQ(lines.back(), numbered(--i));
        }
    }
}

TEST_F(RinglogTest, EveryKindOfArgumentReadsAsItsValue) {
    static constinit MessageDescriptor numbers("Unit", 1, "f()");
    static constinit MessageDescriptor texts("Unit", 2, "f()");
    static constinit MessageDescriptor values("Unit", 3, "f()");
    open("ring", 4);
    RingFile& file = *defaultRinglogFile();
    char buffer[] = "mutable";
    writeMessage(file, numbers, INT64_MIN, " 100% ", UINT64_MAX, " ", true, false, " ", 0.08, "%d");
    writeMessage(file, texts, "[", std::string("a\n%i\x80"), "][", buffer, "][", std::string_view(),
                 "]");
    writeMessage(file, values, Lanx::IntfId("Ethernet1"), " ", L3::VrfName("red"), " ",
                 Vrf::VrfIdMap::VrfId(5), " ", Lanx::IpAddrWithMask::fromString("10.1.1.5/24"), " ",
                 Lanx::IpGenPrefix::fromString("2001:db8::/64"), " ",
                 Lanx::IpAddr::fromString("10.0.0.1"), " ", Lanx::IpGenAddrWithMask());
    EXPECT_EQ(decode(read("ring")),
              (Lines{"Unit:1 [f] -9223372036854775808 100% 18446744073709551615 truefalse 0.08%d",
                     "Unit:2 [f] [a\\x0a%i\\x80][mutable][]",
                     "Unit:3 [f] Ethernet1 red 5 10.1.1.5/24 2001:db8::/64 10.0.0.1 unset"}));
}

TEST_F(RinglogTest, OversizedOrUnfinishedMessagesLeaveTheRingReadable) {
    static constinit MessageDescriptor descriptor("Unit", 1, "f()");
    open("ring", 2);
    std::string large(100'000, 'x');
    writeMessage(*defaultRinglogFile(), descriptor, large, " ", large, " ", large, " ", 1, " end");
    defaultRinglogFile()->startMsg(descriptor); // which never ends, so it is not there
    defaultRinglogFile()->put(std::string_view("half"));
    writeNumbered(1);
    Lines lines = decode(read("ring"));
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].substr(0, 420), "Unit:1 [f] " + std::string(400, 'x') + " xxxxxxxx");
    EXPECT_EQ(lines[0].substr(lines[0].size() - 4), " ...");
    EXPECT_EQ(lines[1], numbered(0));
}

TEST_F(RinglogTest, CallSitesBeyondTheTableAreSkipped) {
    open("ring", 2);
    std::vector<MessageDescriptor> many(200, MessageDescriptor("Unit", 3, "f()"));
    for (MessageDescriptor& descriptor : many) {
        writeMessage(*defaultRinglogFile(), descriptor, "0123456789012345678901234567890123456789");
    }
    Lines lines = decode(read("ring"));
    EXPECT_GT(lines.size(), 10U);
    EXPECT_EQ(std::set(lines.begin(), lines.end()).size(), 1U);
    writeMessage(*defaultRinglogFile(), many.front(), "0123456789012345678901234567890123456789");
    EXPECT_EQ(decode(read("ring")).back(), lines.front());
}

TEST_F(RinglogTest, ReplacedFileIsKeptAndTheNextDescribesItsCallSites) {
    static constinit MessageDescriptor other("Unit", 1, "f()");
    open("ring", 2);
    writeMessage(*defaultRinglogFile(), other, "first only");
    writeNumbered(1);
    open("ring", 2, path("old-%d"));
    EXPECT_TRUE(decode(read("ring")).empty());
    writeNumbered(1);
    EXPECT_EQ(decode(read("ring")), Lines{numbered(0)});
    const std::string old = read("old-" + std::to_string(::getpid()));
    EXPECT_EQ(decode(old), (Lines{"Unit:1 [f] first only", numbered(0)}));
    EXPECT_EQ(RinglogReader(old).processId(), static_cast<std::uint32_t>(::getpid()));
}

TEST_F(RinglogTest, FailureLeavesNoneOpenAndHarmsNothing) {
    std::filesystem::create_symlink("/dev/null", folder_ / "link");
    const auto expectRefused = [this](const std::string& name, const char* size = "", int clock = 0,
                                      int pages = 24, unsigned blocks = 512) {
        open("good", 2);
        initialize(name, size, "", clock, pages, ThreadingMode::single, true, blocks);
        EXPECT_EQ(defaultRinglogFile(), nullptr) << name << ' ' << size;
        EXPECT_FALSE(std::filesystem::exists(path("ring")));
    };
    for (const std::string& name :
         {std::string(), std::string("/dev/null"), std::string("/proc/ring"), folder_.string(),
          path("link"), path("missing/ring")}) {
        expectRefused(name);
    }
    // The last is 4 TiB: more than 32 bits of blocks.
    for (const char* size : {"64", "-1K", "64KB", "99999999999K", "4194304M"}) {
        expectRefused(path("ring"), size);
    }
    expectRefused(path("ring"), "", 12345);
    expectRefused(path("ring"), "", 0, 0);
    expectRefused(path("ring"), "", 0, -1);
    expectRefused(path("ring"), "", 0, 24, 1);
    expectRefused(path("ring"), "", 0, 24, UINT32_MAX);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(RinglogTest, FileOfSomethingElseIsKept) {
    for (const std::string& precious :
         {std::string(), std::string("RINGLOG"), std::string(5000, 'x')}) {
        put("mine", precious);
        initialize(path("mine"), "", "", 0, 1, ThreadingMode::single, true, 2);
        EXPECT_EQ(defaultRinglogFile(), nullptr);
        EXPECT_EQ(failure(),
                  "ring trace file " + path("mine") + ": there is a file that is no ring trace");
        EXPECT_EQ(read("mine"), precious);
        // Nor does a ring that is moved away take its place.
        open("ring", 2);
        EXPECT_EQ(failure(), "");
        writeNumbered(1);
        initialize(path("ring"), "", path("mine"), 0, 1, ThreadingMode::single, true, 2);
        EXPECT_EQ(defaultRinglogFile(), nullptr);
        EXPECT_EQ(read("mine"), precious);
        EXPECT_EQ(decode(read("ring")), Lines{numbered(0)});
    }
    initialize(noFile, "", "", 0, 1, ThreadingMode::single, true, 2);
    EXPECT_EQ(failure(), "");
}

TEST_F(RinglogTest, LimitOnTheSizeOfFilesIsAFailureOnly) {
    pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const rlimit limit{5000, 5000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        initialize(path("ring"), "", "", 0, 1, ThreadingMode::single, true, 2);
        const bool refused =
            defaultRinglogFile() == nullptr && failure().ends_with("File too large");
        ::_exit(refused ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_FALSE(std::filesystem::exists(path("ring")));
}

/// What a host does about faults of the ring, for as long as it lives.
class FaultHandler {
  public:
    FaultHandler() {
        struct sigaction action {};
        action.sa_flags = SA_SIGINFO;
        action.sa_sigaction = [](int, siginfo_t* info, void*) {
            if (!recoverFromFault(info->si_addr)) {
                std::abort();
            }
        };
        ::sigaction(SIGBUS, &action, &before_);
    }
    ~FaultHandler() { ::sigaction(SIGBUS, &before_, nullptr); }

  private:
    struct sigaction before_ {};
};

TEST_F(RinglogTest, FileCutOffWhileItIsWrittenIsAFailureOnly) {
    const FaultHandler handler;
    for (const int before : {0, 50}) {
        for (const std::uintmax_t length : {0U, 100U, 5000U}) { // whole pages are gone then
            open("ring", 4);
            writeNumbered(before);
            std::filesystem::resize_file(path("ring"), length);
            writeNumbered(1000);
            EXPECT_EQ(failure(), "ring trace file " + path("ring")
                                     + ": somebody has cut it off, or the disk is full; no longer "
                                       "written");
            EXPECT_EQ(std::filesystem::file_size(path("ring")), length);
            close();
            EXPECT_EQ(failure(), "");
            std::filesystem::remove(path("ring"));
        }
    }
    open("ring", 4);
    writeNumbered(1);
    EXPECT_EQ(failure(), "");
    EXPECT_EQ(decode(read("ring")), Lines{numbered(0)}) << "the next file is written as ever";
    int elsewhere = 0;
    EXPECT_FALSE(recoverFromFault(&elsewhere));
    EXPECT_FALSE(recoverFromFault(nullptr));
}

TEST_F(RinglogTest, CallSiteIsEnteredWhateverOthersHaveWrittenIntoTheFile) {
    open("ring", 2);
    Layout::FileHeader header{};
    header.tableUsed = UINT32_MAX - 10;
    std::fstream file(path("ring"), std::ios::in | std::ios::out | std::ios::binary);
    file.write(reinterpret_cast<const char*>(&header), sizeof header).flush();
    writeNumbered(1);
    EXPECT_NE(read("ring").find("number %i as text %s"), std::string::npos);
}

TEST_F(RinglogTest, FileCutOffAtAnyLengthGivesOnlyTrueLines) {
    open("ring", 2);
    writeNumbered(200);
    const std::string whole = read("ring");
    const Lines all = decode(whole);
    const std::set<std::string> known(all.begin(), all.end());
    std::size_t most = 0;
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        // A copy of exactly that size, so that a read past its end is seen.
        std::vector<char> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        try {
            Lines lines = decode({cut.data(), cut.size()});
            most = std::max(most, lines.size());
            for (const std::string& line : lines) {
                ASSERT_TRUE(known.contains(line)) << line;
            }
        } catch (const Orb::ParseError&) {
            ASSERT_LT(length, sizeof(Layout::FileHeader));
        }
    }
    EXPECT_EQ(most, all.size());
    EXPECT_THROW(decode(std::string(10'000, '\0')), Orb::ParseError) << "no ring at all";
}

TEST_F(RinglogTest, DamagedBytesNeitherCrashNorLoop) {
    open("ring", 4);
    writeNumbered(1000);
    const std::string whole = read("ring");
    // A message has at least its header, so this many lines are all that can ever be read.
    const std::size_t mostLines = 4 * Layout::blockRoom / sizeof(Layout::MessageHeader);
    std::mt19937 random(20);
    for (int round = 0; round < 2000; ++round) {
        std::string damaged = whole;
        for (unsigned flips = 1 + random() % 16; flips > 0; --flips) {
            // Half of it goes to the head and the table, which are small but steer the rest.
            const std::size_t steering = random() % 2 * Layout::pageSize + random() % 64;
            damaged[random() % 2 != 0 ? steering : random() % damaged.size()] =
                static_cast<char>(random());
        }
        try {
            ASSERT_LE(decode(damaged).size(), mostLines);
        } catch (const Orb::ParseError&) {
        }
    }
}

TEST_F(RinglogTest, DamageInOneBlockCostsNoOther) {
    open("ring", 4);
    writeNumbered(90);
    std::string file = read("ring");
    const Lines before = decode(file);
    std::size_t firstBlock = std::size_t{2} * Layout::pageSize;
    std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(firstBlock + Layout::blockSize + 100),
                300, '\xff');
    const auto [after, damagedBlocks] = decodeAll(file);
    EXPECT_EQ(damagedBlocks, 1U);
    EXPECT_GT(after.size(), before.size() / 2);
    EXPECT_EQ(after.front(), before.front());
    EXPECT_EQ(after.back(), before.back());
}

} // namespace
} // namespace Ringlog
