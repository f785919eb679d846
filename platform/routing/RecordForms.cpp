#include "platform/routing/RecordForms.h"

#include <string>

#include "platform/orb/value/Error.h"
#include "platform/routing/PrefixRecord.h"

namespace Routing::Rib {

using VrfId = Vrf::VrfIdMap::VrfId;

namespace {

template <typename Record>
void storeName(Record& record, std::string_view name) {
    if (name.size() > Record::maxName) {
        throw Orb::RangeError("the name " + std::string(name) + " has more than "
                              + std::to_string(Record::maxName) + " bytes");
    }
    record.nameLength = static_cast<std::uint8_t>(name.size());
    name.copy(record.name, Record::maxName);
}

template <typename Record>
std::string_view nameOf(const Record& record) {
    return {record.name, record.nameLength};
}

} // namespace

static_assert(Tables::ViaRecord::maxName == Lanx::IntfId::maxLength);
static_assert(Tables::VrfRecord::maxName == L3::VrfName::maxLength);

ViaForm::Record ViaForm::record(const Via& via) {
    Record record{};
    record.vrfId = via.key().vrfId().value();
    record.viaId = via.key().viaId();
    record.transport = via.key().transport();
    record.routingProtocol = via.key().routingProtocol();
    storeName(record, via.intfId().name());
    return record;
}

Via ViaForm::value(const Record& record) {
    Via via(key(record));
    via.intfIdIs(Lanx::IntfId(nameOf(record)));
    return via;
}

ViaKey ViaForm::key(const Record& record) {
    return {record.transport, record.viaId, VrfId(record.vrfId), record.routingProtocol};
}

ViaSetForm::Record ViaSetForm::record(const Memtab::ViaSet& viaSet) {
    Record record{};
    record.flags = viaSet.flags();
    record.familyCode = viaSet.familyCode();
    record.kind = Tables::ViaKind{viaSet.kind()};
    record.key = viaSet.key().value();
    if (const ViaKey* via = viaSet.via()) {
        record.viaId = via->viaId();
        record.vrfId = via->vrfId().value();
        record.transport = via->transport();
        record.routingProtocol = via->routingProtocol();
    }
    return record;
}

Memtab::ViaSet ViaSetForm::value(const Record& record) {
    Memtab::ViaSet viaSet(key(record));
    viaSet.flagsIs(record.flags);
    viaSet.familyCodeIs(record.familyCode);
    viaSet.kindIs(static_cast<std::uint8_t>(record.kind));
    if (record.viaId != 0) {
        viaSet.viaKeyIs(
            0, ViaKey(record.transport, record.viaId, VrfId(record.vrfId), record.routingProtocol));
    }
    return viaSet;
}

ViaSetKey ViaSetForm::key(const Record& record) { return ViaSetKey(record.key); }

ProtoVrfForm::Record ProtoVrfForm::record(const ProtoVrf& vrf) {
    Record record{};
    record.vrfId = vrf.id.value();
    record.ipv4Ready = vrf.ipv4Ready ? 1 : 0;
    record.ipv6Ready = vrf.ipv6Ready ? 1 : 0;
    if (vrf.rib) {
        record.hasRib = 1;
        record.ribReady = vrf.rib->ready ? 1 : 0;
        record.readyTime = vrf.rib->readyTime;
    }
    storeName(record, vrf.name.value());
    return record;
}

ProtoVrf ProtoVrfForm::value(const Record& record) {
    ProtoVrf vrf{
        L3::VrfName(nameOf(record)), key(record), record.ipv4Ready != 0, record.ipv6Ready != 0, {}};
    if (record.hasRib != 0) {
        vrf.rib = ProtoVrf::Rib{record.ribReady != 0, record.readyTime};
    }
    return vrf;
}

ProtoVrfForm::Key ProtoVrfForm::key(const Record& record) { return Key(record.vrfId); }

LeakForm::Record LeakForm::record(const LeakedRoute& leak) {
    Record record{};
    record.sourceVrfId = leak.sourceVrfId().value();
    record.destVrfId = leak.destVrfId().value();
    storePrefix(record, leak.genPrefix());
    return record;
}

LeakedRoute LeakForm::value(const Record& record) {
    return {VrfId(record.sourceVrfId), prefixOf(record), VrfId(record.destVrfId)};
}

} // namespace Routing::Rib
