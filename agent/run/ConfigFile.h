#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "agent/document/DocumentError.h"

namespace Agent {

/// The file that adds to what a live agent learns from the kernel: a device document, over as many
/// lines as it likes, that may hold virtual addresses, leaks, what the routing information base
/// waits for, ids of VRFs, and whether this is a graceful restart.
class ConfigFile {
  public:
    /// Checks the text of the file. Throws BadInputError with one line for the user:
    /// "FILE:LINE: POINTER: ...".
    ConfigFile(std::string name, std::string text);

    /// The document, without nulls and with every address spelled in the usual way, so that two
    /// documents that mean the same are equal.
    const nlohmann::json& document() const { return document_; }

    /// An error in the document as one line for the user.
    std::string message(const DocumentError& error) const;

  private:
    std::size_t line(const DocumentError& error) const;

    std::string name_;
    std::string text_;
    nlohmann::json document_;
};

} // namespace Agent
