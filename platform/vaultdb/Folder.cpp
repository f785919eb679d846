#include "platform/vaultdb/Folder.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <utility>
#include <vector>

#include "platform/orb/loop/ActivityManager.h"
#include "tables/layout/FileLayout.h"
#include "tables/layout/WallTime.h"

namespace Vaultdb {

namespace {

constexpr mode_t folderMode = 0750;
constexpr mode_t fileMode = 0640;
constexpr double spaceDelay = 1;
constexpr int holdTries = 100;
constexpr long holdPauseNs = 10'000'000;

[[noreturn]] void fail(const std::string& path, const std::string& why) {
    throw FolderError("tables " + path + ": " + why);
}

Orb::FileDescriptor openFolder(const std::string& path, bool& made) {
    made = ::mkdir(path.c_str(), folderMode) == 0;
    if (!made && errno != EEXIST) {
        fail(path, std::strerror(errno));
    }
    Orb::FileDescriptor folder(
        ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder) {
        fail(path, errno == ENOTDIR || errno == ELOOP ? "is not a folder" : std::strerror(errno));
    }
    return folder;
}

} // namespace

Folder::Folder(Options options) : options_(std::move(options)) {
    bool made = false;
    folder_ = openFolder(path(), made);
    struct stat status {};
    if (::fstat(descriptor(), &status) != 0) {
        fail(path(), std::strerror(errno));
    }
    if (status.st_uid != ::geteuid()) {
        fail(path(), "belongs to another user");
    }
    if (made) {
        giveToReaders(descriptor(), folderMode);
    } else if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        // Whoever may write there could put a file of theirs under a name of ours.
        fail(path(), "others may write to it");
    }
    const Hold hold(*this);
    openBell();
}

Folder::~Folder() = default;

void Folder::report(const std::string& message) const {
    if (options_.report) {
        options_.report(message);
    }
}

void Folder::giveToReaders(int file, mode_t mode) const {
    if (options_.group && ::fchown(file, static_cast<uid_t>(-1), *options_.group) != 0) {
        fail(path(), "group " + std::to_string(*options_.group) + ": " + std::strerror(errno));
    }
    if (::fchmod(file, mode) != 0) {
        fail(path(), std::strerror(errno));
    }
}

// The time that somebody needs to make a file is short; whoever is stopped in the middle of it must
// not stop others for ever.
Folder::Hold::Hold(const Folder& folder) : folder_(folder) {
    for (int tries = 0; ::flock(folder.descriptor(), LOCK_EX | LOCK_NB) != 0; ++tries) {
        if (tries == holdTries || (errno != EWOULDBLOCK && errno != EINTR)) {
            fail(folder.path(), "another process is making tables there");
        }
        const timespec pause{0, holdPauseNs};
        ::nanosleep(&pause, nullptr);
    }
}

Folder::Hold::~Hold() { ::flock(folder_.descriptor(), LOCK_UN); }

Orb::FileDescriptor Folder::make(const std::string& name) const {
    ::unlinkat(descriptor(), name.c_str(), 0);
    Orb::FileDescriptor file(::openat(
        descriptor(), name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, fileMode));
    if (!file) {
        fail(path() + "/" + name, std::strerror(errno));
    }
    giveToReaders(file.get(), fileMode);
    return file;
}

void Folder::moveAside(const std::string& name, std::string_view why) const {
    const std::string aside = name + ".damaged";
    if (::renameat(descriptor(), name.c_str(), descriptor(), aside.c_str()) != 0) {
        fail(path() + "/" + name, std::strerror(errno));
    }
    report("table " + path() + "/" + name + ": " + std::string(why) + "; it is now " + aside
           + ", and a new one is made");
}

Orb::FileDescriptor Folder::openBellFile() const {
    Orb::FileDescriptor bell(
        ::openat(descriptor(), Tables::bellName, O_RDWR | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (bell
        && (::fstat(bell.get(), &status) != 0 || !S_ISFIFO(status.st_mode)
            || status.st_uid != ::geteuid())) {
        errno = EEXIST;
        return {};
    }
    return bell;
}

void Folder::openBell() {
    Orb::FileDescriptor fifo = openBellFile();
    if (!fifo) {
        fifo = makeBellFile();
    }
    try {
        bell_ = std::make_unique<Bell>(std::move(fifo));
    } catch (const Orb::Error& error) {
        fail(path(), error.what());
    }
}

Orb::FileDescriptor Folder::makeBellFile() const {
    if (errno != ENOENT) {
        moveAside(Tables::bellName, "is not the bell");
    }
    Orb::FileDescriptor fifo;
    if (::mkfifoat(descriptor(), Tables::bellName, fileMode) == 0) {
        fifo = openBellFile();
    }
    if (!fifo) {
        fail(path() + "/" + Tables::bellName, std::strerror(errno));
    }
    giveToReaders(fifo.get(), fileMode);
    return fifo;
}

void Folder::ringSoon() {
    const auto& clock = Orb::activityManager()->clock();
    ringWakeup_.notifierIs(clock);
    ringWakeup_.timeMinIs(clock->now());
    ringing_ = true;
}

void Folder::ring() {
    ringing_ = false;
    ringWakeup_.timeMinIs(Orb::Clock::never);
    stamp();
    bell_->ring();
}

void Folder::stamp() {
    const std::uint64_t time = Tables::wallTime();
    for (Tenant* tenant : tenants_) {
        tenant->heardOf(time);
    }
}

void Folder::awaitSpace() {
    if (!awaitsSpace()) {
        const auto& clock = Orb::activityManager()->clock();
        spaceWakeup_.notifierIs(clock);
        spaceWakeup_.timeMinIs(clock->now() + spaceDelay);
    }
}

// Whoever is told may open and close tables.
void Folder::tellSpace() {
    spaceWakeup_.timeMinIs(Orb::Clock::never);
    const std::vector<Tenant*> tenants(tenants_.begin(), tenants_.end());
    for (Tenant* tenant : tenants) {
        if (tenants_.contains(tenant)) {
            tenant->spaceAgain();
        }
    }
}

} // namespace Vaultdb
