#pragma once

#include <memory>
#include <ostream>
#include <string_view>

#include "agent/document/JsonReader.h"

namespace Agent {

/// Prints an answer that a client receives. Throws FailureError for lines that it cannot understand
/// and when the output takes no more.
class AnswerPrinter {
  public:
    virtual ~AnswerPrinter() = default;

    /// The next line: an object, and its text as it was received, without a line end.
    virtual void line(const JsonValue& object, std::string_view text) = 0;
    /// The answer is complete.
    virtual void end() = 0;
};

/// Prints the lines as they are.
std::unique_ptr<AnswerPrinter> printLines(std::ostream& out);

} // namespace Agent
