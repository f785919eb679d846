#include "tests/tables/TableWriter.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "tables/layout/FileLayout.h"

namespace TablesTest {

TemporaryFolder::TemporaryFolder()
    : path_((std::filesystem::temp_directory_path() / "tables-XXXXXX").string()) {
    if (::mkdtemp(path_.data()) == nullptr) {
        std::abort();
    }
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string tableFile(const std::string& folder, const char* path) {
    std::string name = path;
    std::replace(name.begin(), name.end(), '/', '.');
    return folder + '/' + name;
}

Bell::Bell(const std::string& folder) {
    const std::string path = folder + '/' + Tables::bellName;
    ::mkfifo(path.c_str(), 0640);
    fd_ = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
}

void Bell::ring() const {
    char bytes[16];
    while (::read(fd_, bytes, sizeof bytes) > 0) {
    }
    [[maybe_unused]] const auto written = ::write(fd_, "", 1);
}

Tables::RouteRecord routeOf(std::uint8_t number, std::uint32_t value) {
    Tables::RouteRecord route{};
    route.viaSet = value;
    route.metric = value;
    route.preference = ~value;
    route.sourceVrfId = Tables::noVrf;
    route.prefix.address[0] = 10;
    route.prefix.address[2] = number;
    route.length = 24;
    route.family = Tables::ipv4;
    route.type = 11;
    return route;
}

} // namespace TablesTest
