#pragma once

#include <string>
#include <string_view>

#include "platform/attributelog/AttributeLogFormat.h"
#include "platform/attributelog/AttributeLogFramer.h"
#include "platform/attributelog/AttributeLogSink.h"

namespace Orb {

/// Writes the records of one attribute log to its sink.
class AttributeLogRecorder {
  public:
    explicit AttributeLogRecorder(AttributeLogSink& sink);

    /// A body that is too long for a record drops the reader: a log has no gaps.
    void record(std::string_view body);
    void record(AttributeLogFormat::Kind kind);

    AttributeLogSink& sink() const { return sink_; }

  private:
    AttributeLogSink& sink_;
    AttributeLogFramer framer_;
};

} // namespace Orb
