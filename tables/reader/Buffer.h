#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include <sys/mman.h>

namespace Tables {

/// An array that grows. What needs memory returns false, and changes nothing, when there is none.
template <typename T>
class Buffer {
    static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);

  public:
    Buffer() = default;
    ~Buffer() { std::free(data_); }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    void swap(Buffer& other) noexcept {
        T* const data = data_;
        const std::size_t size = size_;
        const std::size_t capacity = capacity_;
        take(other.data_, other.size_, other.capacity_);
        other.take(data, size, capacity);
    }

    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    T& operator[](std::size_t n) { return data_[n]; }
    const T& operator[](std::size_t n) const { return data_[n]; }
    const T* begin() const { return data_; }
    const T* end() const { return data_ + size_; }

    /// New elements are zero.
    bool resize(std::size_t size) {
        if (size > capacity_ && !reserve(size)) {
            return false;
        }
        if (size > size_) {
            std::memset(static_cast<void*>(data_ + size_), 0, (size - size_) * sizeof(T));
        }
        size_ = size;
        return true;
    }

    bool append(const T& element) {
        if (size_ == capacity_ && !reserve(size_ + 1)) {
            return false;
        }
        data_[size_++] = element;
        return true;
    }

    /// Gives the memory back.
    void clear() {
        std::free(data_);
        take(nullptr, 0, 0);
    }

  private:
    void take(T* data, std::size_t size, std::size_t capacity) {
        data_ = data;
        size_ = size;
        capacity_ = capacity;
    }

    bool reserve(std::size_t size) {
        const std::size_t grown = capacity_ + capacity_ / 2;
        const std::size_t capacity = size > grown ? size : grown;
        void* const data = capacity > SIZE_MAX / sizeof(T)
                               ? nullptr
                               : std::realloc(static_cast<void*>(data_), capacity * sizeof(T));
        if (data == nullptr) {
            return false;
        }
        data_ = static_cast<T*>(data);
        capacity_ = capacity;
        preferHugePages();
        return true;
    }

    /// Filling a large array costs less so, and looking around in it.
    void preferHugePages() const {
        static constexpr std::size_t pageBytes = std::size_t{4} << 10U;
        static constexpr std::size_t hugeBytes = std::size_t{2} << 20U;
        const std::size_t bytes = capacity_ * sizeof(T);
        if (bytes >= hugeBytes) {
            const auto begin = reinterpret_cast<std::uintptr_t>(data_);
            const std::size_t skipped = -begin % pageBytes;
            ::madvise(reinterpret_cast<char*>(data_) + skipped,
                      (bytes - skipped) / pageBytes * pageBytes, MADV_HUGEPAGE);
        }
    }

    T* data_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace Tables
