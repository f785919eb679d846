#include <gtest/gtest.h>

#include <array>
#include <poll.h>

#include "platform/orb/loop/ActivityManager.h"
#include "tables/reader/FolderWatch.h"
#include "tests/support/ManualClock.h"
#include "tests/support/SharedTables.h"

namespace Routing::DirectNet {
namespace {

bool isWoken(const Tables::FolderWatch& watch, int milliseconds) {
    pollfd waiting{watch.descriptor(), POLLIN, 0};
    return ::poll(&waiting, 1, milliseconds) == 1;
}

// Without the bell they would look by themselves after three seconds.
TEST(BellTest, ChangesWakeAllThatWaitOnceTheWriterIsBackInItsLoop) {
    const SharedFolder path;
    const auto clock = Orb::makePtr<ManualClock>();
    Orb::ActivityManager activityManager(clock);
    const auto store = path.store();
    Tables::ErrorText error;
    Tables::Folder folder;
    folder.pathIs(path.path().c_str(), error);
    ASSERT_EQ(folder.look(error), Tables::Found::here) << error.text();
    std::array<Tables::FolderWatch, 3> watches;
    for (Tables::FolderWatch& watch : watches) {
        ASSERT_TRUE(watch.open(error)) << error.text();
        watch.look(folder);
        watch.isIncomplete(false);
        watch.acknowledge();
    }
    for (int round = 0; round < 3; ++round) {
        for (int changes = 0; changes < 5; ++changes) {
            store->folder()->noteChange();
        }
        EXPECT_FALSE(isWoken(watches[0], 0));
        clock->runDue();
        EXPECT_EQ(clock->nextWakeup(), Orb::Clock::never); // rung once
        for (Tables::FolderWatch& watch : watches) {
            EXPECT_TRUE(isWoken(watch, 2000));
            watch.acknowledge();
        }
    }
}

} // namespace
} // namespace Routing::DirectNet
