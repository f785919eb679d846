#pragma once

#include <cstddef>
#include <string>
#include <utility>

namespace Ringlog {

/// A new file mapped into memory for writing. What is written survives the end of the process,
/// however it ends. Empty when the file could not be made.
///
/// Somebody may cut the file off while it is mapped, or its disk may be full where space was not
/// reserved; the next write there raises SIGBUS. recover() is for the host's handler of it. It
/// looks after the mapping that was made last, of those that still live.
class FileMapping {
  public:
    FileMapping() = default;

    /// Makes `path`, which must not exist, with `size` zero bytes, for its owner and group only.
    /// With `reserve` the disk space is taken at once. On failure nothing is left behind and the
    /// mapping is empty, with errno set. A limit on the size of files is a failure (EFBIG) and
    /// raises no signal.
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

    /// Whether `address` lies in the mapping. If so, private zero bytes take the file's place, and
    /// the instruction that was interrupted can be repeated. Async-signal-safe.
    static bool recover(const void* address) noexcept;

    /// Whether recover() has taken the file away from the mapping.
    static bool isRecovered() noexcept;

  private:
    std::byte* data_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace Ringlog
