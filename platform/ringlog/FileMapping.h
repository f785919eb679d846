#pragma once

#include <cstddef>
#include <string>
#include <utility>

namespace Ringlog {

/// A new file mapped into memory for writing. What is written survives the end of the process,
/// however it ends. Empty when the file could not be made.
class FileMapping {
  public:
    FileMapping() = default;

    /// Makes `path`, which must not exist, with `size` zero bytes. With `reserve` the disk space is
    /// taken at once; without, a disk that fills up later kills the process that writes.
    /// On failure nothing is left behind and the mapping is empty.
    FileMapping(const std::string& path, std::size_t size, bool reserve);

    FileMapping(FileMapping&& other) noexcept
        : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}
    FileMapping& operator=(FileMapping&& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        return *this;
    }
    FileMapping(const FileMapping&) = delete;
    FileMapping& operator=(const FileMapping&) = delete;
    ~FileMapping();

    explicit operator bool() const { return data_ != nullptr; }
    std::byte* data() const { return data_; }

  private:
    std::byte* data_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace Ringlog
