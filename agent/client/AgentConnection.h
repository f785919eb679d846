#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/base/FileDescriptor.h"
#include "agent/document/JsonReader.h"

namespace Agent {

/// A client's connection to a running agent: one request and the lines of its answer. Blocks until
/// the agent answers.
class AgentConnection {
  public:
    /// A line of an answer, without its line end; always an object.
    struct Line {
        std::string text;
        ParsedJson json;
    };

    /// Connects to the agent that listens at `path`, or at defaultSocketPath() if that is empty,
    /// and sends the request, a line of JSON with its line end. Throws FailureError.
    AgentConnection(std::string path, const std::string& request);

    /// The next line of the answer; nothing at its end. Throws FailureError for what the agent
    /// refuses and when the answer breaks off.
    std::optional<Line> next();

    /// Whether more was received than has been returned yet.
    bool hasMore() const { return taken_ < received_.size(); }

    /// Waits for more, at most so many milliseconds; -1 for as long as it takes. Returns whether
    /// something has come: next() will hardly wait.
    bool waitForMore(int milliseconds) const;

  private:
    bool receive();

    std::string path_;
    FileDescriptor file_;
    std::string received_;
    std::size_t taken_ = 0; // of received_
};

// The requests that an agent takes, see AgentConnection.

/// What is empty is not asked for: one VRF, or of routes those in a prefix or to an interface.
std::string showRequest(const std::string& topic, const std::string& vrf, const std::string& prefix,
                        const std::string& intf);
std::string watchRequest(const std::string& vrf, const std::string& prefix);
std::string traceRequest(int level);
std::string reloadRequest();
/// For these VRFs to be ready; for none of them, what the agent itself waits for.
std::string waitRequest(const std::vector<std::string>& vrfs);

} // namespace Agent
