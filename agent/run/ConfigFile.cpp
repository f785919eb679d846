#include "agent/run/ConfigFile.h"

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
    const TextPlace place = placeOf(text_, error);
    return name_ + ':' + std::to_string(place.line) + ':' + std::to_string(place.column) + ": "
           + (pointer.empty() ? "" : pointer + ": ") + error.what();
}

} // namespace Agent
