#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/attributelog/AttributeLogInput.h"

namespace Orb {

/// Takes the frames of an attribute log apart as its bytes arrive, in pieces of any size, and
/// checks that they are whole and in order. It keeps at most one frame.
class AttributeLogUnframer {
  public:
    /// Receives the body of one record. Throws Orb::Error to refuse it.
    using Receive = std::function<void(AttributeLogInput& body)>;

    explicit AttributeLogUnframer(Receive receive) : receive_(std::move(receive)) {}

    /// Throws ParseError for a bad log; records before the bad one have been received by then, and
    /// nothing is taken after it.
    void feed(std::string_view bytes);

    /// Of the first byte that belongs to no whole frame.
    std::uint64_t offset() const { return offset_; }
    /// Whether the log stands between two frames.
    bool atFrameEnd() const { return headRead_ && buffer_.empty(); }

  private:
    std::size_t takeFrame(std::string_view bytes);
    void receive(std::string_view body);

    Receive receive_;
    std::string buffer_;
    std::uint64_t offset_ = 0;
    std::uint32_t crc_ = 0;
    bool headRead_ = false;
    bool refused_ = false;
};

} // namespace Orb
