#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "platform/memtab/RecordTable.h"
#include "platform/memtab/TableEntity.h"
#include "platform/orb/container/HashMap.h"
#include "platform/vrf/VrfId.h"

namespace Routing::Rib {

/// The records of one collection VRF by VRF, so that one VRF's are walked and cleared at the cost
/// of what it holds.
template <typename Form>
class PerVrfIndex {
  public:
    using VrfId = Vrf::VrfIdMap::VrfId;
    using Key = typename Form::Key;
    using Records = OrbMemtab::Records<Form>;
    using Slots = OrbMemtab::Slots<typename Form::Record>;

    explicit PerVrfIndex(const Slots& slots) : slots_(&slots) {}

    Records* find(VrfId vrfId) const {
        if (last_ == nullptr || lastVrfId_ != vrfId) {
            const std::unique_ptr<Records>* found = byVrf_.find(vrfId);
            last_ = found == nullptr ? nullptr : found->get();
            lastVrfId_ = vrfId;
        }
        return last_;
    }
    Records* find(const Key& key) const { return find(key.vrfId()); }
    Records& findOrMake(const Key& key) {
        if (Records* present = find(key)) {
            return *present;
        }
        std::unique_ptr<Records>& records = *byVrf_.tryInsert(key.vrfId()).first;
        if (records == nullptr) {
            records = std::make_unique<Records>(*slots_);
        }
        return *records;
    }
    void emptied(const Key& key) {
        last_ = nullptr;
        byVrf_.erase(key.vrfId());
    }

    std::vector<VrfId> vrfIds() const {
        std::vector<VrfId> ids;
        for (const auto& entry : byVrf_) {
            ids.push_back(entry.key());
        }
        return ids;
    }

    /// Takes the VRF's out; null where it has none.
    std::unique_ptr<Records> take(VrfId vrfId) {
        last_ = nullptr;
        auto taken = byVrf_.take(vrfId);
        return taken ? std::move(taken->value()) : nullptr;
    }

  private:
    const Slots* slots_;
    Orb::HashMap<VrfId, std::unique_ptr<Records>> byVrf_;
    // Those that were found last: one VRF is asked for again and again.
    mutable Records* last_ = nullptr;
    mutable VrfId lastVrfId_;
};

/// A table whose key has a `vrfId()`.
template <typename Form>
class PerVrfTable : public OrbMemtab::RecordTable<Form, PerVrfIndex<Form>> {
    using Base = OrbMemtab::RecordTable<Form, PerVrfIndex<Form>>;

  public:
    using VrfId = Vrf::VrfIdMap::VrfId;
    using Base::Base;
    using typename Base::Key;
    using typename Base::Records;

    /// The VRF's records; null while there is none.
    const Records* records(VrfId vrfId) const { return this->index().find(vrfId); }

    /// The VRFs that have records.
    std::vector<VrfId> vrfIds() const { return this->index().vrfIds(); }

    template <typename F>
    void forEach(F&& function) const {
        for (const VrfId vrfId : vrfIds()) {
            for (const auto& value : *records(vrfId)) {
                function(value);
            }
        }
    }

    /// Fetches what a search for the VRF's key of that tag will read first, and then what it will
    /// read next, for a caller that has work until then.
    void prefetch(VrfId vrfId, Orb::HashTag tag) const {
        if (const Records* vrf = records(vrfId)) {
            vrf->prefetch(tag);
        }
    }
    void prefetchRecord(VrfId vrfId, Orb::HashTag tag) const {
        if (const Records* vrf = records(vrfId)) {
            vrf->prefetchRecord(tag);
        }
    }

    /// Removes all records of a VRF; their keys, if somebody asks for them.
    std::vector<Key> clear(VrfId vrfId, bool wantsKeys) {
        std::vector<Key> keys;
        if (const auto taken = this->index().take(vrfId)) {
            keys.reserve(wantsKeys ? taken->size() : 0);
            taken->forEachNumber([&](std::uint32_t number) {
                if (wantsKeys) {
                    keys.push_back(Form::key(this->slots().at(number)));
                }
                this->slots().remove(number);
            });
        }
        return keys;
    }
};

/// An entity whose one collection is kept VRF by VRF.
template <typename Form>
class PerVrfTableEntity : public OrbMemtab::TableEntity<PerVrfTable<Form>> {
  public:
    using VrfId = Vrf::VrfIdMap::VrfId;

    /// The VRFs that have members.
    std::vector<VrfId> vrfIds() const { return this->table_.vrfIds(); }

  protected:
    using OrbMemtab::TableEntity<PerVrfTable<Form>>::TableEntity;

    /// Removes all members of a VRF, then tells of each.
    void clearVrf(VrfId vrfId, Orb::AttributeId id) {
        const auto gone = this->table_.clear(vrfId, this->hasReactors());
        if (gone.empty()) {
            return;
        }
        const Orb::Ptr<const Orb::PtrInterface> kept = Orb::keep(*this);
        for (const auto& key : gone) {
            this->notify(id, &key);
        }
        this->noteRoom();
    }
};

} // namespace Routing::Rib
