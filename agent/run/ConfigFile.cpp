#include "agent/run/ConfigFile.h"

#include <string_view>
#include <utility>

#include "agent/base/Errors.h"
#include "agent/document/ConfigDocument.h"
#include "agent/document/JsonLines.h"

namespace Agent {

ConfigFile::ConfigFile(std::string name, std::string text)
    : name_(std::move(name)), text_(std::move(text)) {
    try {
        document_ = readConfigDocument(text_);
    } catch (const DocumentError& error) {
        throw BadInputError(message(error));
    }
}

std::string ConfigFile::message(const DocumentError& error) const {
    const std::string& pointer = error.pointer();
    return name_ + ':' + std::to_string(line(error)) + ": "
           + (pointer.empty() ? "" : pointer + ": ") + error.what();
}

std::size_t ConfigFile::line(const DocumentError& error) const {
    return error.byte() ? lineOf(text_, *error.byte())
                        : lineOf(text_, std::string_view(error.pointer()));
}

} // namespace Agent
