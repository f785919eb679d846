#pragma once

#include <functional>
#include <string>
#include <utility>

#include "platform/orb/loop/FileDescriptorReactor.h"
#include "platform/orb/object/Ptr.h"
#include "platform/orb/value/Name.h"
#include "platform/vaultdb/Folder.h"
#include "tables/layout/TablePaths.h"
#include "tables/reader/FolderWatch.h"
#include "tables/reader/Mirror.h"

namespace OrbMemtab {

/// Follows the table of a mount path that another process writes, for as long as it lives: whether
/// its writer is there, comes later, or comes again. Changes are told from the thread's event loop.
///
/// What stands in the table's place but cannot be read is reported, once, and waited for.
template <typename Record>
class Following : public Orb::PtrInterface {
  public:
    /// Is told what has changed: the record before and after, each null where there is none.
    using OnChange = std::function<void(const Record* before, const Record* after)>;

    /// Begins with what is there now. Throws FolderError.
    Following(Orb::Ptr<Vaultdb::Folder> folder, Orb::String path, OnChange onChange)
        : folder_(std::move(folder)), path_(std::move(path)), onChange_(std::move(onChange)),
          mirror_(path_.c_str(), Tables::familyAt(path_.c_str())), opened_(*this), wakeup_(*this) {
        update();
    }

  private:
    /// Opens what is watched before somebody waits for it.
    struct Opened {
        explicit Opened(Following& owner) {
            Tables::ErrorText error;
            if (!owner.directory_.pathIs(owner.folder_->path().c_str(), error)
                || !owner.watch_.open(error)) {
                throw Vaultdb::FolderError(error.text());
            }
        }
    };
    class Wakeup : public Orb::FileDescriptorReactor {
      public:
        explicit Wakeup(Following& owner)
            : FileDescriptorReactor(owner.watch_.descriptor()), owner_(owner) {}
        void onReadable() override { owner_.handleWakeup(); }

      private:
        Following& owner_;
    };

    void handleWakeup() {
        const Orb::Ptr<Following> keep(this);
        watch_.acknowledge();
        update();
    }

    void update() {
        Tables::ErrorText error;
        Tables::Found found = directory_.look(error);
        if (found == Tables::Found::here) {
            watch_.look(directory_);
            found = mirror_.update(directory_, error, onChange_);
        }
        watch_.isIncomplete(found != Tables::Found::here);
        if (found == Tables::Found::refused && reported_ != error.text()) {
            folder_->report("table " + std::string(error.text()));
        }
        reported_ = error.text();
    }

    Orb::Ptr<Vaultdb::Folder> folder_;
    const Orb::String path_;
    OnChange onChange_;
    Tables::Folder directory_;
    Tables::FolderWatch watch_;
    Tables::Mirror<Record> mirror_;
    std::string reported_;
    Opened opened_;
    Wakeup wakeup_;
};

} // namespace OrbMemtab
