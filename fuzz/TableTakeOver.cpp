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
#include "platform/memtab/Mount.h"
#include "platform/orb/loop/ActivityManager.h"
#include "platform/orb/loop/SimulatedClock.h"
#include "platform/routing/DirectNetLeakStatus.h"
#include "platform/routing/ProtoVrfTable.h"
#include "platform/routing/RouteConfig.h"
#include "platform/routing/ViaConfig.h"
#include "platform/routing/ViaSetCollection.h"
#include "tables/layout/TablePaths.h"

namespace {

using namespace Tables;
namespace Rib = Routing::Rib;
using Vrf::VrfIdMap::VrfId;
using Bytes = std::span<const std::uint8_t>;

/// The fields of a header that a writer changes.
constexpr std::size_t changingAt = offsetof(TableHeader, epoch);
constexpr std::size_t changingBytes = sizeof(TableHeader) - changingAt;

[[noreturn]] void fail(const char* what) {
    ::write(STDERR_FILENO, what, std::strlen(what));
    std::abort();
}

/// Every kind of table: how many records it has, and some changes: a record that comes, one that is
/// replaced, one that goes, and all of a VRF.
struct Routes {
    using Entity = Rib::RouteConfig;
    static constexpr const char* path = Paths::ipv4Routes;
    static constexpr RecordKind kind = RecordKind::route;
    static constexpr std::uint32_t slotBytes = sizeof(RouteRecord);
    static constexpr std::uint32_t ringEntries = 1U << 16;

    static std::size_t size(const Entity& entity) { return entity.size(); }
    static void change(Entity& entity) {
        for (const char* prefix : {"10.0.0.0/24", "10.0.1.0/24", "0.0.0.0/0"}) {
            for (const unsigned type : {1U, 2U}) {
                entity.routeAdd({Rib::RouteKey(VrfId(5), Lanx::IpGenPrefix::fromString(prefix)),
                                 Rib::ViaSetKey(type),
                                 Routing::Fib::RouteType{static_cast<std::uint8_t>(type)}});
            }
        }
        entity.routeDel(Rib::RouteKey(VrfId(5), Lanx::IpGenPrefix::fromString("0.0.0.0/0")));
        entity.doDeleteRoutesForVrf(VrfId(0));
    }
};

struct Vias {
    using Entity = Rib::Ip::ViaConfig;
    static constexpr const char* path = Paths::ipv6Vias;
    static constexpr RecordKind kind = RecordKind::via;
    static constexpr std::uint32_t slotBytes = sizeof(ViaRecord);
    static constexpr std::uint32_t ringEntries = 1U << 12;

    static std::size_t size(const Entity& entity) { return entity.size(); }
    static void change(Entity& entity) {
        Rib::Via via(Rib::ViaKey(1, entity.newViaId(), VrfId(5), 1));
        entity.viaIs(via);
        via.intfIdIs(Lanx::IntfId("Ethernet1"));
        entity.viaIs(via);
        entity.doDeleteViasForVrf(VrfId(0));
    }
};

struct ViaSets {
    using Entity = Rib::Memtab::ViaSetCollection;
    static constexpr const char* path = Paths::viaSets;
    static constexpr RecordKind kind = RecordKind::viaSet;
    static constexpr std::uint32_t slotBytes = sizeof(ViaSetRecord);
    static constexpr std::uint32_t ringEntries = 1U << 13;

    static std::size_t size(const Entity& entity) { return entity.size(); }
    static void change(Entity& entity) { entity.viaSetDelAll(); }
};

struct Vrfs {
    using Entity = Rib::ProtoVrfTable;
    static constexpr const char* path = Paths::vrfs;
    static constexpr RecordKind kind = RecordKind::vrf;
    static constexpr std::uint32_t slotBytes = sizeof(VrfRecord);
    static constexpr std::uint32_t ringEntries = 1U << 8;

    static std::size_t size(const Entity& entity) { return entity.size(); }
    static void change(Entity& entity) {
        Rib::ProtoVrf vrf{L3::VrfName("red"), VrfId(5), false, false, {}};
        entity.vrfIs(vrf);
        vrf.ipv4Ready = true;
        entity.vrfIs(vrf);
        entity.vrfDel(VrfId(0));
    }
};

struct Leaks {
    using Entity = Routing::DirectNetLeakStatus;
    static constexpr const char* path = Paths::ipv6Leaks;
    static constexpr RecordKind kind = RecordKind::leak;
    static constexpr std::uint32_t slotBytes = sizeof(LeakRecord);
    static constexpr std::uint32_t ringEntries = 1U << 10;

    static std::size_t size(const Entity& entity) {
        std::size_t count = 0;
        for (const auto& source : entity.leakedRouteBySourceVrf()) {
            for (const auto& prefix : source->destVrfId()) {
                count += prefix.value().size();
            }
        }
        return count;
    }
    static void change(Entity& entity) {
        const auto prefix = Lanx::IpGenPrefix::fromString("2001:db8::/64");
        entity.leakIs({VrfId(5), prefix, VrfId(6)});
        entity.leakIs({VrfId(5), prefix, VrfId(7)});
        entity.leakDel({VrfId(5), prefix, VrfId(6)});
        entity.leakedRouteBySourceVrfDel(VrfId(0));
    }
};

/// A folder that one file is written to again and again.
class FuzzFolder {
  public:
    FuzzFolder() {
        if (::mkdtemp(path_.data()) == nullptr) {
            fail("no folder\n");
        }
    }
    ~FuzzFolder() {
        remove();
        ::unlink((path_ + "/bell").c_str());
        ::rmdir(path_.c_str());
    }
    FuzzFolder(const FuzzFolder&) = delete;
    FuzzFolder& operator=(const FuzzFolder&) = delete;

    const std::string& path() const { return path_; }

    /// An empty file for that table, and no other.
    int make(const char* path) {
        remove();
        std::string name = path;
        std::replace(name.begin(), name.end(), '/', '.');
        file_ = path_ + '/' + name;
        return ::open(file_.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    }

  private:
    void remove() const {
        ::unlink(file_.c_str());
        ::unlink((file_ + ".damaged").c_str());
    }

    std::string path_ = "/dev/shm/fuzz-tables-XXXXXX";
    std::string file_;
};

void write(int fd, Bytes bytes, std::size_t at) {
    if (::pwrite(fd, bytes.data(), bytes.size(), static_cast<off_t>(at)) < 0) {
        fail("cannot write\n");
    }
}

/// A file whose first fields are as they should be: the bytes are the other fields of the header,
/// the first entries of the ring, and the slots.
template <typename Kind>
void writeTable(int fd, Bytes bytes) {
    TableHeader header{};
    header.magic = tableMagic;
    header.layoutVersion = layoutVersion;
    header.recordKind = Kind::kind;
    header.slotBytes = Kind::slotBytes;
    header.ringEntries = Kind::ringEntries;
    std::strncpy(header.path, Kind::path, sizeof header.path - 1);
    header.check = checkOf(header);
    const Bytes fields = bytes.first(std::min(bytes.size(), changingBytes));
    bytes = bytes.subspan(fields.size());
    const Bytes ring = bytes.first(std::min<std::size_t>(bytes.size(), 32));
    const Bytes slots = bytes.subspan(ring.size());
    const std::size_t size = slotsAt(Kind::ringEntries) + slots.size();
    if (::posix_fallocate(fd, 0, static_cast<off_t>(size)) != 0) {
        fail("no space\n");
    }
    write(fd, {reinterpret_cast<const std::uint8_t*>(&header), sizeof header}, 0);
    write(fd, fields, changingAt);
    write(fd, ring, headerBytes);
    write(fd, slots, slotsAt(Kind::ringEntries));
}

class Reader {
  public:
    explicit Reader(const FuzzFolder& folder)
        : tables_(directnet_tables_open(folder.path().c_str(), 0, nullptr, 0)) {
        if (tables_ == nullptr) {
            fail("cannot open the folder\n");
        }
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() { directnet_tables_close(tables_); }

    bool update() { return directnet_tables_update(tables_, nullptr, nullptr) >= 0; }

    std::size_t records() const {
        directnet_sizes sizes;
        directnet_tables_sizes(tables_, &sizes);
        return sizes.ipv4_routes + sizes.ipv6_routes + sizes.ipv4_vias + sizes.ipv6_vias
               + sizes.ipv4_via_sets + sizes.ipv6_via_sets + sizes.vrfs + sizes.leaks;
    }

  private:
    directnet_tables* tables_;
};

/// Takes the table over, and changes it if `changes`. Returns how many records it is left with; a
/// reader that was there before, and a new one, have as many.
template <typename Kind>
std::size_t takeOver(const FuzzFolder& folder, Reader& before, bool changes) {
    const Orb::ActivityManager activityManager(Orb::makePtr<Orb::SimulatedClock>());
    const auto store = Orb::makePtr<Vaultdb::EntityManager>(
        Orb::makePtr<Vaultdb::Folder>(Vaultdb::Folder::Options{folder.path(), {}, {}}));
    OrbMemtab::Mount mount(store);
    mount.doMount(Kind::path, Kind::Entity::orbTypeName,
                  OrbMemtab::MountInfo(OrbMemtab::MountInfo::Type::write));
    const auto entity = mount.getEntity<typename Kind::Entity>(Kind::path);
    if (changes) {
        before.update();
        Kind::change(*entity);
    }
    const std::size_t size = Kind::size(*entity);
    Reader fresh(folder);
    if (changes && (!before.update() || !fresh.update())) {
        fail("a table that was taken over is refused\n");
    }
    if (changes && (before.records() != size || fresh.records() != size)) {
        fail("a reader has other records than the writer\n");
    }
    return size;
}

template <typename Kind>
void run(FuzzFolder& folder, bool asItIs, Bytes bytes) {
    const int fd = folder.make(Kind::path);
    if (asItIs) {
        write(fd, bytes, 0);
    } else {
        writeTable<Kind>(fd, bytes);
    }
    ::close(fd);
    Reader reader(folder);
    reader.update();
    const std::size_t size = takeOver<Kind>(folder, reader, true);
    if (takeOver<Kind>(folder, reader, false) != size) {
        fail("the next writer finds other records\n");
    }
}

} // namespace

/// Takes a file of arbitrary bytes over as a table, changes it and reads it. The first byte says
/// which table, the second whether the rest is the whole file or stands behind a head that is
/// right.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static FuzzFolder folder;
    if (size < 2) {
        return 0;
    }
    const bool asItIs = data[1] % 8 == 0;
    const Bytes bytes(data + 2, size - 2);
    switch (data[0] % 5) {
    case 0:
        run<Routes>(folder, asItIs, bytes);
        break;
    case 1:
        run<Vias>(folder, asItIs, bytes);
        break;
    case 2:
        run<ViaSets>(folder, asItIs, bytes);
        break;
    case 3:
        run<Vrfs>(folder, asItIs, bytes);
        break;
    default:
        run<Leaks>(folder, asItIs, bytes);
        break;
    }
    return 0;
}
