#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/orb/FileDescriptorReactor.h"

namespace Agent {

/// Lines on their way out through a descriptor that may be slow: written as the descriptor takes
/// them, without ever waiting for it. The descriptor may be shared with others and stays as it is.
class OutputQueue : private Orb::FileDescriptorReactor {
  public:
    /// Bytes that may wait. Output that falls further behind has failed.
    static constexpr std::size_t capacity = std::size_t{64} << 20U;

    explicit OutputQueue(int descriptor);

    void append(std::string_view text);

    /// Why nothing more can be written; empty while all is well.
    const std::string& failure() const { return failure_; }

    /// Writes what is waiting, for as long as the descriptor goes on taking it.
    void finish();

  private:
    void onWritable() override;
    bool writePiece();
    void fail(std::string why);

    std::string waiting_;
    std::size_t written_ = 0; // of waiting_
    std::string failure_;
};

} // namespace Agent
