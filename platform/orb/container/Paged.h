#pragma once

#include <cstddef>

#include "platform/orb/container/MappedMemory.h"
#include "platform/orb/container/Pages.h"

namespace Orb {

/// The base of a class of which there are many objects: `new` takes them from pages of their own.
/// The class must be final in what it is derived from: its objects are all of its size.
template <typename T>
class Paged {
  public:
#ifndef ORB_MEMORY_IS_WATCHED
    static void* operator new(std::size_t) { return pages().take(); }
    static void operator delete(void* object) noexcept { pages().giveBack(object); }

  private:
    // Never destroyed, so that objects of static lifetime may come and go to the end.
    static Pages& pages() {
        static Pages& pages = *new Pages(sizeof(T));
        return pages;
    }
#endif
};

} // namespace Orb
