#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Ringlog {

/// Reads a ring trace file (RingLayout.h) out of memory, oldest message first. The bytes are not
/// trusted: they may be cut off, damaged, or copied while the file was being written. What cannot
/// be read is skipped up to the next block; no bytes make the reader fail once it is made, read
/// outside the file, or take more memory than a small multiple of the file's size.
class RinglogReader {
  public:
    /// `file` must outlive the reader. Throws Orb::ParseError when it is no ring trace file.
    explicit RinglogReader(std::string_view file);

    /// The next message as "SECONDS UNIT:LINE [Class::method] text", or none at the end.
    std::optional<std::string> next();

    /// Blocks of which something was skipped, so far.
    std::size_t damagedBlocks() const { return damagedBlocks_; }

    /// The process that wrote the file.
    std::uint32_t processId() const { return processId_; }

  private:
    struct Descriptor {
        std::uint32_t line;
        std::string_view unit;
        std::string_view function;
        std::string_view text;
    };
    struct Block {
        std::uint64_t sequence;
        std::string_view messages;
        bool cutOff; // it says it has more than the file holds
    };

    void readDescriptors(std::string_view table);
    void readBlocks(std::string_view blocks);
    bool readMessage(std::string& line);

    std::vector<Descriptor> descriptors_;
    std::vector<Block> blocks_; // by rising sequence
    std::size_t block_ = 0;     // the one being read
    std::string_view messages_; // what is left of it
    std::size_t damagedBlocks_ = 0;
    std::uint32_t processId_ = 0;
};

} // namespace Ringlog
