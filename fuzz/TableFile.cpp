#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <span>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "directnet/tables.h"
#include "tables/layout/FileLayout.h"
#include "tables/layout/TablePaths.h"

namespace {

using namespace Tables;

/// The fields of a header that a writer changes.
constexpr std::size_t changingAt = offsetof(TableHeader, epoch);
constexpr std::size_t changingBytes = sizeof(TableHeader) - changingAt;

/// A folder that one file is written to again and again.
class FuzzFolder {
  public:
    FuzzFolder() {
        if (::mkdtemp(path_.data()) == nullptr) {
            std::abort();
        }
    }
    ~FuzzFolder() {
        ::unlink(file_.c_str());
        ::rmdir(path_.c_str());
    }
    FuzzFolder(const FuzzFolder&) = delete;
    FuzzFolder& operator=(const FuzzFolder&) = delete;

    /// Makes the file of that mount path, and removes the one before.
    void write(const char* path, std::span<const std::uint8_t> bytes) {
        std::string name = path;
        for (char& letter : name) {
            letter = letter == '/' ? '.' : letter;
        }
        ::unlink(file_.c_str());
        file_ = path_ + '/' + name;
        const int fd = ::open(file_.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        append(fd, bytes);
        ::close(fd);
    }

    /// Writes over the fields that change, and over ring and slots, as a writer changes a file that
    /// is followed.
    void change(std::span<const std::uint8_t> bytes) const {
        const std::size_t fields = std::min(bytes.size(), changingBytes);
        const int fd = ::open(file_.c_str(), O_RDWR | O_CLOEXEC);
        ::lseek(fd, changingAt, SEEK_SET);
        append(fd, bytes.first(fields));
        ::lseek(fd, headerBytes, SEEK_SET);
        append(fd, bytes.subspan(fields));
        ::close(fd);
    }

    const char* path() const { return path_.c_str(); }

  private:
    static void append(int fd, std::span<const std::uint8_t> bytes) {
        if (::write(fd, bytes.data(), bytes.size()) < 0) {
            std::abort();
        }
    }

    std::string path_ = "/tmp/fuzz-tables-XXXXXX";
    std::string file_;
};

struct Kind {
    const char* path;
    RecordKind kind;
    std::uint32_t slotBytes;
};

constexpr Kind kinds[] = {
    {Paths::ipv4Routes, RecordKind::route, sizeof(RouteRecord)},
    {Paths::ipv6Routes, RecordKind::route, sizeof(RouteRecord)},
    {Paths::ipv4Vias, RecordKind::via, sizeof(ViaRecord)},
    {Paths::viaSets, RecordKind::viaSet, sizeof(ViaSetRecord)},
    {Paths::vrfs, RecordKind::vrf, sizeof(VrfRecord)},
    {Paths::ipv6Leaks, RecordKind::leak, sizeof(LeakRecord)},
};

/// A file whose first fields are as they should be, so that the fuzzer gets behind them: the ring
/// has four entries, and the bytes are the other fields of the header, the ring and the slots.
std::string tableOf(const Kind& kind, std::span<const std::uint8_t> bytes) {
    TableHeader header{};
    header.magic = tableMagic;
    header.layoutVersion = layoutVersion;
    header.recordKind = kind.kind;
    header.slotBytes = kind.slotBytes;
    header.ringEntries = 4;
    std::strncpy(header.path, kind.path, sizeof header.path - 1);
    header.check = checkOf(header);

    const std::size_t taken = std::min(bytes.size(), changingBytes);
    if (taken != 0) {
        std::memcpy(reinterpret_cast<char*>(&header) + changingAt, bytes.data(), taken);
    }
    std::string file(headerBytes, '\0');
    std::memcpy(file.data(), &header, sizeof header);
    const std::span rest = bytes.subspan(taken);
    file.append(rest.begin(), rest.end());
    return file;
}

std::span<const std::uint8_t> bytesOf(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// Asks for everything that a change and the view have.
void ask(const directnet_tables* tables) {
    directnet_tables_each_route(
        tables, DIRECTNET_ALL_VRFS, DIRECTNET_BOTH_FAMILIES,
        [](const directnet_route* route, void* context) {
            const auto* asked = static_cast<const directnet_tables*>(context);
            directnet_route found;
            directnet_hop hop;
            char text[DIRECTNET_PREFIX_TEXT_SIZE];
            directnet_tables_resolve(asked, route, &hop);
            const bool isFound =
                directnet_tables_find(asked, route->vrf_id, &route->prefix, &found) == 1;
            const bool isMatched =
                directnet_tables_match(asked, route->vrf_id, route->prefix.family,
                                       route->prefix.address, &found)
                == 1;
            if (!isFound || !isMatched
                || directnet_tables_prefix_text(&route->prefix, text, sizeof text) != 1) {
                std::abort();
            }
            return 0;
        },
        const_cast<directnet_tables*>(tables));
    directnet_sizes sizes;
    directnet_tables_sizes(tables, &sizes);
    directnet_vrf vrf;
    for (std::size_t n = 0; n < directnet_tables_vrf_count(tables); ++n) {
        directnet_tables_vrf_at(tables, n, &vrf);
    }
    directnet_writer writer;
    directnet_tables_writer(tables, DIRECTNET_ROUTE, &writer);
}

/// What was told is what the view has, in number.
struct Told {
    std::int64_t records = 0;

    static void change(const directnet_change* change, void* context) {
        auto& told = *static_cast<Told*>(context);
        told.records += (change->after != nullptr ? 1 : 0) - (change->before != nullptr ? 1 : 0);
    }

    void check(const directnet_tables* tables) const {
        directnet_sizes sizes;
        directnet_tables_sizes(tables, &sizes);
        const std::uint64_t seen = sizes.ipv4_routes + sizes.ipv6_routes + sizes.ipv4_vias
                                   + sizes.ipv6_vias + sizes.ipv4_via_sets + sizes.ipv6_via_sets
                                   + sizes.vrfs + sizes.leaks;
        if (static_cast<std::uint64_t>(records) != seen) {
            std::abort();
        }
    }
};

/// Reads the file as it is, and once more after some of it was changed.
void follow(FuzzFolder& folder, std::span<const std::uint8_t> later) {
    directnet_tables* const tables = directnet_tables_open(folder.path(), 0, nullptr, 0);
    if (tables == nullptr) {
        std::abort();
    }
    Told told;
    for (int n = 0; n < 2; ++n) {
        directnet_tables_update(tables, &Told::change, &told);
        told.check(tables);
        ask(tables);
        folder.change(later);
    }
    directnet_tables_close(tables);
}

} // namespace

/// Opens and follows a table of arbitrary bytes: as a whole file, and behind a head that is right.
/// The first byte says which table, the second how much of the rest comes later.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static FuzzFolder folder;
    if (size < 2) {
        return 0;
    }
    const Kind& kind = kinds[data[0] % std::size(kinds)];
    const std::span<const std::uint8_t> bytes(data + 2, size - 2);
    const std::size_t first = bytes.size() - bytes.size() * data[1] / 256;
    folder.write(kind.path, bytes.first(first));
    follow(folder, bytes.subspan(first));
    folder.write(kind.path, bytesOf(tableOf(kind, bytes.first(first))));
    follow(folder, bytes.subspan(first));
    return 0;
}
