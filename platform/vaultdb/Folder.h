#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <sys/types.h>

#include "platform/orb/loop/Clock.h"
#include "platform/orb/loop/FileDescriptor.h"
#include "platform/orb/object/PtrInterface.h"
#include "platform/orb/value/Error.h"
#include "platform/vaultdb/Bell.h"

namespace Vaultdb {

/// A folder or a file in it cannot be used as what it is to be.
class FolderError : public Orb::Error {
  public:
    using Error::Error;
};

/// Another process, or another store of this one, writes the table.
class TableInUseError : public FolderError {
  public:
    using FolderError::FolderError;
};

/// The folder of a store whose tables other processes read: a file per table, and the bell, which
/// tells all that wait for a change at once. Its mode is 0750, that of the files 0640.
///
/// The bell is rung once for all changes that the thread makes before it returns to its event loop,
/// or when ring() is called.
///
/// One agent thread, no locks.
class Folder : public Orb::PtrInterface {
  public:
    struct Options {
        std::string path;
        std::optional<gid_t> group; ///< who may read; the process's group where it is not given
        /// Is told what is worth knowing though it stops nothing, such as a file that was replaced.
        std::function<void(const std::string& message)> report;
    };

    /// What has files in the folder.
    class Tenant {
      public:
        Tenant() = default;
        Tenant(const Tenant&) = delete;
        Tenant& operator=(const Tenant&) = delete;

        /// The writer was there at that time, in nanoseconds since 1970.
        virtual void heardOf(std::uint64_t time) = 0;
        /// There may be space where there was none.
        virtual void spaceAgain() = 0;

      protected:
        ~Tenant() = default;
    };

    /// Opens the folder, which is made if it is not there; the one that it lies in must be. Throws
    /// FolderError for one that belongs to another user, that others may write to, or that a
    /// symbolic link stands for.
    explicit Folder(Options options);
    ~Folder() override;

    const std::string& path() const { return options_.path; }
    int descriptor() const { return folder_.get(); }

    void report(const std::string& message) const;

    /// Keeps other processes from making files in the folder while it lives.
    class Hold {
      public:
        /// Throws FolderError when another process keeps the folder for long.
        explicit Hold(const Folder& folder);
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;
        ~Hold();

      private:
        const Folder& folder_;
    };

    /// Makes a new file, for its owner and the readers' group. Whatever has that name goes.
    Orb::FileDescriptor make(const std::string& name) const;
    /// Gives what has that name the name with ".damaged" behind it, and says why.
    void moveAside(const std::string& name, std::string_view why) const;

    void add(Tenant& tenant) { tenants_.insert(&tenant); }
    void remove(Tenant& tenant) { tenants_.erase(&tenant); }

    /// Something has changed: the bell is rung soon. Needs the thread's activity manager.
    void noteChange() {
        if (!ringing_) {
            ringSoon();
        }
    }

    /// Rings the bell.
    void ring();

    /// Lets readers know that the writer runs. A host calls it about once a second.
    void stamp();

    /// Memory was refused: looks again after a while, as long as somebody asks.
    void awaitSpace();
    bool awaitsSpace() const { return spaceWakeup_.timeMin() != Orb::Clock::never; }

  private:
    class Wakeup : public Orb::Clock::NotifieeConst {
      public:
        Wakeup(Folder& folder, void (Folder::*work)()) : folder_(folder), work_(work) {}
        void onTimeMin() override { (folder_.*work_)(); }

      protected:
        const Orb::PtrInterface* keeper() const override { return &folder_; }

      private:
        Folder& folder_;
        void (Folder::*work_)();
    };

    void ringSoon();
    void tellSpace();
    void openBell();
    Orb::FileDescriptor openBellFile() const;
    Orb::FileDescriptor makeBellFile() const;
    void giveToReaders(int file, mode_t mode) const;

    Options options_;
    Orb::FileDescriptor folder_;
    std::unique_ptr<Bell> bell_;
    std::set<Tenant*> tenants_;
    bool ringing_ = false;
    Wakeup ringWakeup_{*this, &Folder::ring};
    Wakeup spaceWakeup_{*this, &Folder::tellSpace};
};

} // namespace Vaultdb
