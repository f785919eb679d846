#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "agent/base/FileDescriptor.h"

namespace Agent {

/// A client's connection to a running agent: one request and the lines of its answer. Waits for the
/// agent.
class AgentConnection {
  public:
    using Json = nlohmann::ordered_json;

    /// Connects to the agent that listens at `path`, where there is one by default if it is empty,
    /// and sends the request. Throws FailureError.
    AgentConnection(std::string path, const Json& request);

    /// The next line of the answer; nothing at its end. Throws FailureError for what the agent
    /// refuses and when the answer breaks off.
    std::optional<Json> next();

    /// Whether more was received than has been returned yet.
    bool hasMore() const { return taken_ < received_.size(); }

  private:
    bool receive();

    std::string path_;
    FileDescriptor file_;
    std::string received_;
    std::size_t taken_ = 0; // of received_
};

} // namespace Agent
