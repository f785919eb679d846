#include "tests/agent/Program.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/wait.h>
#include <unistd.h>

namespace TestSupport {

namespace {

/// A folder that goes when the run is over.
class ScratchFolder {
  public:
    ScratchFolder() {
        std::string pattern = std::filesystem::temp_directory_path() / "directnet-XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr) {
            std::abort();
        }
        path_ = pattern;
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder() { std::filesystem::remove_all(path_); }

    std::string file(const char* name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};

} // namespace

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

ProgramRun runProgram(const std::string& arguments, const std::string& input) {
    const ScratchFolder scratch;
    std::ofstream(scratch.file("in"), std::ios::binary) << input;
    const std::string command = "{ '" DIRECTNET_EXECUTABLE "' " + arguments + "; } <'"
                                + scratch.file("in") + "' >'" + scratch.file("out") + "' 2>'"
                                + scratch.file("err") + "'";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) && WEXITSTATUS(status) < 128 ? WEXITSTATUS(status) : -1,
            readFile(scratch.file("out")), readFile(scratch.file("err"))};
}

} // namespace TestSupport
