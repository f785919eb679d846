#include "agent/server/Request.h"

#include "agent/document/RequestReader.h"
#include "agent/patch/DocumentError.h"
#include "agent/topics/Topics.h"

namespace Agent {

Request readRequest(std::string_view line) {
    const RequestDocument document = readRequestDocument(line);
    Request request;
    request.vrf = document.vrf;
    request.traceLevel = document.traceLevel;
    if (document.traceLevel) {
        request.topic = &traceTopic;
    } else if (document.topic) {
        request.topic = findTopic(*document.topic);
        if (request.topic == nullptr) {
            throw DocumentError("/show", "unknown topic");
        }
    } else if (document.explain) {
        try {
            request.explain = readExplainTarget(*document.explain);
        } catch (const DocumentError& error) {
            throw error.within("/explain");
        }
    }
    return request;
}

} // namespace Agent
