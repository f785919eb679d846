#pragma once

#include "platform/routing/LeakedRoute.h"
#include "platform/routing/ProtoVrf.h"
#include "platform/routing/Via.h"
#include "platform/routing/ViaSet.h"
#include "tables/layout/Records.h"

// How the values of the tables look in memory that other processes read, see Records.h of
// platform/memtab.

namespace Routing::Rib {

struct ViaForm {
    using Record = Tables::ViaRecord;
    using Value = Via;
    using Key = ViaKey;

    /// Throws RangeError for an interface name of more than Record::maxName bytes.
    static Record record(const Via& via);
    static Via value(const Record& record);
    static ViaKey key(const Record& record);
};

struct ViaSetForm {
    using Record = Tables::ViaSetRecord;
    using Value = Memtab::ViaSet;
    using Key = ViaSetKey;

    static Record record(const Memtab::ViaSet& viaSet);
    static Memtab::ViaSet value(const Record& record);
    static ViaSetKey key(const Record& record);
};

struct ProtoVrfForm {
    using Record = Tables::VrfRecord;
    using Value = ProtoVrf;
    using Key = Vrf::VrfIdMap::VrfId;

    static Record record(const ProtoVrf& vrf);
    static ProtoVrf value(const Record& record);
    static Key key(const Record& record);
};

struct LeakForm {
    using Record = Tables::LeakRecord;
    using Value = LeakedRoute;
    using Key = LeakedRoute;

    static Record record(const LeakedRoute& leak);
    static LeakedRoute value(const Record& record);
    static LeakedRoute key(const Record& record) { return value(record); }
};

} // namespace Routing::Rib
