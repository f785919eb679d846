#include "agent/server/Request.h"

#include "agent/document/RequestReader.h"
#include "agent/patch/DocumentError.h"
#include "agent/topics/Topics.h"

namespace Agent {

Request readRequest(std::string_view line) {
    const RequestDocument document = readRequestDocument(line);
    Request request;
    request.vrf = document.vrf;
    request.routes = {document.prefix, document.intf};
    request.traceLevel = document.traceLevel;
    request.isReload = document.reload;
    request.waitedFor = document.waitedFor;
    if (document.traceLevel) {
        request.topic = &traceTopic;
    } else if (document.topic) {
        request.topic = findTopic(*document.topic);
        if (request.topic == nullptr) {
            throw DocumentError("/show", "unknown topic");
        }
    } else {
        request.isWatch = !document.reload && !document.waitedFor;
    }
    const bool canFilter = request.isWatch ? !document.intf : request.topic == &routesTopic();
    if (request.routes.isGiven() && !canFilter) {
        throw DocumentError("",
                            "prefix and intf select routes that are shown, prefix those that are "
                            "watched");
    }
    return request;
}

} // namespace Agent
