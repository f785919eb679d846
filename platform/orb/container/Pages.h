#pragma once

#include <cstddef>
#include <cstdint>

namespace Orb {

/// Memory for many small objects of one size, without the header and the rounding that each would
/// have from the general allocator, and objects that come together lying together. It comes in
/// pages; one that has become empty is given back, unless it is the only one with free places.
///
/// Thread rule: one agent thread, no locks.
class Pages {
  public:
    static constexpr std::size_t pageBytes = 65536;

    /// Of so many bytes, a multiple of their alignment; at least a pointer, at most a hundredth of
    /// a page.
    explicit constexpr Pages(std::size_t objectBytes) : objectBytes_(objectBytes) {}
    Pages(const Pages&) = delete;
    Pages& operator=(const Pages&) = delete;
    /// Everything must have been given back.
    ~Pages();

    /// Throws std::bad_alloc.
    void* take();
    void giveBack(void* object) noexcept;

    /// Pages that are there, for accounting.
    std::size_t pages() const { return count_; }

  private:
    struct Page;
    struct Free {
        Free* next;
    };

    Page* makePage();
    void link(Page* page) noexcept;
    void unlink(Page* page) noexcept;
    std::uint32_t perPage() const;

    const std::size_t objectBytes_;
    Page* open_ = nullptr; // those with free places, doubly linked
    std::size_t count_ = 0;
};

} // namespace Orb
