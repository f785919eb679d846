#pragma once

#include <concepts>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <string_view>

#include "platform/ringlog/FileMapping.h"
#include "platform/ringlog/MessageDescriptor.h"
#include "platform/ringlog/RingAddress.h"
#include "platform/ringlog/RingLayout.h"

namespace Ringlog {

/// The ring trace of a process: a file of fixed size that keeps the newest messages (RingLayout.h).
/// A message is built aside and enters the ring as a whole at its end; writing one neither
/// allocates nor formats nor fails. Agent thread only.
///
///   if (!file.knows(descriptor)) file.describe(descriptor, "size=%u");
///   if (file.startMsg(descriptor)) { file.put(size); file.endMsg(); }
class RingFile {
  public:
    /// `mapping` is zeroed and holds fileSize(tablePages, blockCount) bytes; `clock` stamps the
    /// messages.
    RingFile(FileMapping mapping, std::uint32_t tablePages, std::uint32_t blockCount,
             clockid_t clock);
    RingFile(const RingFile&) = delete;
    RingFile& operator=(const RingFile&) = delete;
    ~RingFile() = default;

    static std::size_t fileSize(std::uint32_t tablePages, std::uint32_t blockCount);

    /// Whether describe() has been called for the descriptor since this file was opened.
    bool knows(const MessageDescriptor& descriptor) const { return descriptor.file_ == serial_; }

    /// Enters the descriptor into the file's table, with `text` as RingLayout.h says. Messages of
    /// a descriptor for which the table has no room left are skipped.
    void describe(MessageDescriptor& descriptor, std::string_view text);

    /// Starts a message; false when messages of this descriptor are to be skipped. A message that
    /// was started and not ended is dropped.
    bool startMsg(const MessageDescriptor& descriptor) {
        if (descriptor.file_ != serial_ || descriptor.id_ == skipped) {
            return false;
        }
        descriptor_ = static_cast<std::uint16_t>(descriptor.id_);
        cursor_ = message_.data() + sizeof(Layout::MessageHeader);
        full_ = false;
        return true;
    }

    /// Arguments, in the order of the placeholders. Strings are truncated at maxString bytes; what
    /// a message has no room for is left out from there on.
    void put(std::int64_t value) { putBytes(&value, sizeof(value)); }
    void put(std::uint64_t value) { putBytes(&value, sizeof(value)); }
    void put(double value) { putBytes(&value, sizeof(value)); }
    void put(std::same_as<bool> auto value) { putBytes(&value, 1); }
    void put(std::string_view text);
    void put(const RingAddress& address) { putBytes(&address, sizeof(address)); }

    /// Enters the message into the ring, over the oldest ones when it is full.
    void endMsg();

    static constexpr std::size_t maxString = 400;

  private:
    static constexpr std::uint32_t skipped = UINT32_MAX;

    std::size_t room() const {
        return static_cast<std::size_t>(message_.data() + message_.size() - cursor_);
    }

    void putBytes(const void* bytes, std::size_t size) {
        if (size > room()) {
            full_ = true;
        }
        if (!full_) {
            std::memcpy(cursor_, bytes, size);
            cursor_ += size;
        }
    }

    Layout::FileHeader& header();
    void beginBlock();

    FileMapping mapping_;
    clockid_t clock_;
    std::uint32_t serial_;
    std::uint32_t tableSize_;
    std::uint32_t blockCount_;
    std::uint32_t descriptors_ = 0;
    std::uint32_t tableUsed_ = 0;  // kept here: others may write to the file
    std::uint64_t sequence_ = 0;   // of the block being filled
    std::uint32_t blockUsed_ = 0;  // bytes of messages in it
    std::byte* block_ = nullptr;   // where it lies
    std::uint16_t descriptor_ = 0; // of the message being built
    bool full_ = false;            // the message being built has left out an argument
    std::byte* cursor_ = nullptr;  // behind the last argument of the message being built
    std::array<std::byte, Layout::blockRoom> message_{};
};

} // namespace Ringlog
