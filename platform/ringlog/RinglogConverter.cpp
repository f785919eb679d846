#include "platform/ringlog/RinglogConverter.h"

#include "platform/ringlog/RingMessage.h"
#include "platform/ringlog/Ringlog.h"

namespace Duallog {

using WhenFull = Ringlog::TextBuffer::WhenFull;

RinglogConverter::RinglogConverter(Ringlog::TraceHandle& handle, int level,
                                   Ringlog::MessageDescriptor& descriptor)
    : handle_(handle), level_(level), descriptor_(descriptor), print_(handle.enabled(level)),
      buffer_(print_ ? WhenFull::grow : WhenFull::drop), stream_(&buffer_) {}

RinglogConverter::~RinglogConverter() {
    if (print_) {
        handle_.print(level_, descriptor_.site(), buffer_.text());
    }
    if (Ringlog::RingFile* file = Ringlog::defaultRinglogFile()) {
        Ringlog::writeMessage(*file, descriptor_, buffer_.text());
    }
}

} // namespace Duallog
