#include "platform/attributelog/AttributeLogRecorder.h"

namespace Orb {

AttributeLogRecorder::AttributeLogRecorder(AttributeLogSink& sink) : sink_(sink) {
    std::string head;
    AttributeLogFramer::appendHead(head);
    sink_.write(head);
}

void AttributeLogRecorder::record(std::string_view body) {
    if (!sink_.isOpen()) {
        return;
    }
    if (body.size() > AttributeLogFormat::maxBodySize) {
        sink_.drop("a change is too long for a record");
        return;
    }
    std::string frame;
    framer_.append(frame, body);
    sink_.write(frame);
}

void AttributeLogRecorder::record(AttributeLogFormat::Kind kind) {
    const char body = static_cast<char>(kind);
    record(std::string_view(&body, 1));
}

} // namespace Orb
