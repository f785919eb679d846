#pragma once

#include <string>

#include "agent/patch/DevicePatch.h"
#include "agent/patch/DocumentError.h"

namespace Agent {

/// A configuration (see readConfigDocument) in a file, over as many lines as it likes.
class ConfigFile {
  public:
    /// Checks the text of the file. Throws BadInputError with one line for the user:
    /// "FILE:LINE:COLUMN: POINTER: ...".
    ConfigFile(std::string name, std::string text);

    const DevicePatch& document() const { return document_; }

    /// An error in the document as one line for the user.
    std::string message(const DocumentError& error) const;

  private:
    std::string name_;
    std::string text_;
    DevicePatch document_;
};

} // namespace Agent
