#pragma once

#include <cstdint>

#include "tables/reader/Descriptor.h"
#include "tables/reader/ErrorText.h"
#include "tables/reader/Folder.h"

namespace Tables {

/// Wakes a reader of a folder by a descriptor that it polls in its own loop: when a writer rings
/// the bell; every half second while something is missing; and every few seconds to see whether the
/// bell was made anew. A reader takes no byte out of the bell, so any number hears it.
///
/// Who is woken calls acknowledge(), then look(), and then reads the tables: what comes after that
/// wakes again.
class FolderWatch {
  public:
    bool open(ErrorText& error);

    /// Becomes readable, and stays it until acknowledge(). Only to be polled.
    int descriptor() const { return events_.get(); }

    void acknowledge();

    /// Follows the bell that the folder has now. It has been looked for just before.
    void look(const Folder& folder);

    /// Whether the reader still waits for something else than the bell to be made.
    void isIncomplete(bool incomplete);

  private:
    static constexpr long missingNs = 500'000'000;
    static constexpr long presentSeconds = 3;

    bool add(const Descriptor& descriptor, std::uint32_t events) const;

    Descriptor events_;
    Descriptor timer_;
    Descriptor bell_;
    FileIdentity bellIdentity_;
    std::uint64_t generation_ = 0; ///< of the folder when the bell was last looked at
    bool isTimed_ = false;
    bool isUrgent_ = false; ///< how the timer is set, if isTimed_
};

} // namespace Tables
