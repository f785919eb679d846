#include "agent/base/InputFile.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <utility>

#include "agent/base/Errors.h"

namespace Agent {

InputFile::InputFile(std::string name) : name_(std::move(name)) {
    if (name_ == "-") {
        return;
    }
    std::error_code ignored;
    if (std::filesystem::is_directory(name_, ignored)) {
        throw BadInputError(name_ + ": is a directory");
    }
    if (file_.open(name_, std::ios::in | std::ios::binary) == nullptr) {
        throw BadInputError(name_ + ": " + std::strerror(errno));
    }
}

std::streambuf& InputFile::buffer() { return name_ == "-" ? *std::cin.rdbuf() : file_; }

} // namespace Agent
