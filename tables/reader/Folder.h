#pragma once

#include <cstdint>

#include <sys/stat.h>
#include <sys/types.h>

#include "tables/reader/Descriptor.h"
#include "tables/reader/ErrorText.h"

namespace Tables {

/// What came of looking for something that a writer makes.
enum class Found {
    here,
    absent,  ///< not made yet, or gone; nothing is wrong
    refused, ///< it is not what it should be; the error text says why
};

/// Which file something is: the same path may name another one later.
struct FileIdentity {
    dev_t device = 0;
    ino_t number = 0;

    static FileIdentity of(const struct stat& status) { return {status.st_dev, status.st_ino}; }
    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// A folder of tables, open to read. It may come later, go, and be made anew.
class Folder {
  public:
    static constexpr unsigned maxPath = 4096;

    /// False if the path is too long or empty.
    bool pathIs(const char* path, ErrorText& error);
    const char* path() const { return path_; }

    /// Opens the folder that is at the path now, unless it is open. One that has gone stays open
    /// until there is another.
    Found look(ErrorText& error);

    /// -1 while no folder has been found.
    int descriptor() const { return descriptor_.get(); }
    /// Another number when look() found that a file may have been made, renamed or removed since it
    /// was called before. So nobody has to look at every file each time.
    std::uint64_t generation() const { return generation_; }
    /// Who owns the folder, and so has to own what is in it.
    uid_t owner() const { return owner_; }

  private:
    void noteTimes(const struct stat& status);

    char path_[maxPath] = {};
    Descriptor descriptor_;
    FileIdentity identity_;
    uid_t owner_ = 0;
    std::uint64_t generation_ = 0;
    timespec modified_{}; ///< the folder's own time
};

} // namespace Tables
