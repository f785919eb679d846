#include "platform/orb/container/Pages.h"

#include <cstddef>
#include <memory>
#include <new>

#include "platform/orb/container/MappedMemory.h"
#include "platform/orb/value/Assert.h"

namespace Orb {

/// The head of a page. An object finds it by its own address, of which it is the front part.
struct Pages::Page {
    Page* previous = nullptr;
    Page* next = nullptr;
    Free* free = nullptr;    // places that were given back
    std::uint32_t fresh = 0; // from here on no place was given out since the page came
    std::uint32_t used = 0;

    static Page* of(void* object) {
        return reinterpret_cast<Page*>(reinterpret_cast<std::uintptr_t>(object)
                                       & ~std::uintptr_t{pageBytes - 1});
    }
    void* place(std::size_t number, std::size_t bytes) {
        return reinterpret_cast<std::byte*>(this + 1) + number * bytes;
    }
};

Pages::~Pages() {
    ORB_ASSERT(count_ == 0 || (count_ == 1 && open_ != nullptr && open_->used == 0),
               "Pages::used == 0");
    if (open_ != nullptr) {
        MappedMemory::release(open_, pageBytes);
    }
}

std::uint32_t Pages::perPage() const {
    return static_cast<std::uint32_t>((pageBytes - sizeof(Page)) / objectBytes_);
}

void* Pages::take() {
    Page* page = open_ == nullptr ? makePage() : open_;
    void* object = page->free;
    if (object != nullptr) {
        page->free = page->free->next;
    } else {
        object = page->place(page->fresh++, objectBytes_);
    }
    if (++page->used == perPage()) {
        unlink(page);
    }
    return object;
}

void Pages::giveBack(void* object) noexcept {
    Page* page = Page::of(object);
    page->free = std::construct_at(static_cast<Free*>(object), Free{page->free});
    if (page->used-- == perPage()) {
        link(page);
    }
    if (page->used == 0 && (page->next != nullptr || page->previous != nullptr)) {
        unlink(page);
        --count_;
        MappedMemory::release(page, pageBytes);
    }
}

Pages::Page* Pages::makePage() {
    void* memory = MappedMemory::tryTakeAligned(pageBytes);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    Page* page = std::construct_at(static_cast<Page*>(memory));
    ++count_;
    link(page);
    return page;
}

void Pages::link(Page* page) noexcept {
    page->previous = nullptr;
    page->next = open_;
    if (open_ != nullptr) {
        open_->previous = page;
    }
    open_ = page;
}

void Pages::unlink(Page* page) noexcept {
    (page->previous == nullptr ? open_ : page->previous->next) = page->next;
    if (page->next != nullptr) {
        page->next->previous = page->previous;
    }
    page->previous = page->next = nullptr;
}

} // namespace Orb
