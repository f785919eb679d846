#pragma once

#include <ostream>
#include <utility>

#include "platform/ringlog/RingMessage.h"
#include "platform/ringlog/Ringlog.h"
#include "platform/ringlog/TextBuffer.h"
#include "platform/ringlog/TraceHandle.h"

namespace Duallog {

/// One message for both traces. Its text is built once, if the handle prints the level; the ring
/// takes the operands themselves, if a ring trace file is open, so that what it holds does not
/// depend on the text trace and costs no text.
class RinglogConverter {
  public:
    RinglogConverter(Ringlog::TraceHandle& handle, int level,
                     Ringlog::MessageDescriptor& descriptor)
        : handle_(handle), level_(level), descriptor_(descriptor) {}
    RinglogConverter(const RinglogConverter&) = delete;
    RinglogConverter& operator=(const RinglogConverter&) = delete;

    template <typename... Ts>
    void write(Ts&&... operands) {
        if (handle_.enabled(level_)) {
            print(operands...);
        }
        if (Ringlog::RingFile* file = Ringlog::defaultRinglogFile()) {
            Ringlog::writeMessage(*file, descriptor_, std::forward<Ts>(operands)...);
        }
    }

  private:
    template <typename... Ts>
    [[gnu::noinline]] void print(const Ts&... operands) {
        Ringlog::TextBuffer buffer(Ringlog::TextBuffer::WhenFull::grow);
        std::ostream stream(&buffer);
        (stream << ... << operands);
        handle_.print(level_, descriptor_.site(), buffer.text());
    }

    Ringlog::TraceHandle& handle_;
    const int level_;
    Ringlog::MessageDescriptor& descriptor_;
};

} // namespace Duallog
