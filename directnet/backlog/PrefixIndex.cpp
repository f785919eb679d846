#include "directnet/backlog/PrefixIndex.h"

#include <utility>

#include "platform/orb/container/Keys.h"

namespace Routing::DirectNet {

void PrefixIndex::list(Orb::Ptr<IntfIdSet>& place, const Orb::Ptr<IntfIdSet>& set) {
    if (!std::exchange(set->listed_, true)) {
        listed_.oneMore();
    }
    if (place == set) {
        return;
    }
    // The old set goes last: its destructor may come back here.
    const Orb::Ptr<IntfIdSet> old = std::exchange(place, set);
    set->installedIntfId_ = std::exchange(old->installedIntfId_, Lanx::IntfId());
    if (std::exchange(old->listed_, false)) {
        listed_.oneLess();
    }
}

// Takes the set by value as every store of a collection does.
void PrefixIndex::memberIs(const Orb::Entity& owner, Orb::AttributeId id, std::string_view name,
                           Orb::Ptr<IntfIdSet> set) { // NOLINT(performance-unnecessary-value-param)
    if (set == nullptr) {
        Orb::throwNullArgument(name, owner.fwkTypeNode()->name());
    }
    Orb::Ptr<IntfIdSet>& place = *sets_.tryInsert(set).first;
    if (place == set && set->listed_) {
        return;
    }
    list(place, set);
    tell(owner, id, *set);
}

void PrefixIndex::memberDel(const Orb::Entity& owner, Orb::AttributeId id, const Key& prefix,
                            Orb::HashTag tag) {
    const Orb::Ptr<IntfIdSet>* place = listed_.find(prefix, tag);
    if (place == nullptr) {
        return;
    }
    const Orb::Ptr<IntfIdSet> set = *place;
    set->listed_ = false;
    listed_.oneLess();
    if (!set->installedIntfId()) {
        sets_.take(place);
    }
    tell(owner, id, *set);
}

void PrefixIndex::memberDelAll(const Orb::Entity& owner, Orb::AttributeId id) {
    const Orb::Ptr<const Orb::PtrInterface> kept = Orb::keep(owner);
    while (!listed_.empty()) {
        // On from each in turn: a set whose route is still there stays in the table.
        for (const auto* set = listed_.first(); set != nullptr;) {
            const Key prefix = (*set)->genPrefix();
            memberDel(owner, id, prefix);
            set = listed_.after(prefix);
        }
    }
}

PrefixIndex::Known PrefixIndex::known(const Key& prefix, Orb::HashTag tag) const {
    const Orb::Ptr<IntfIdSet>* set = sets_.find(prefix, tag);
    if (set == nullptr) {
        return {};
    }
    return {(*set)->listed_ ? set->get() : nullptr, (*set)->installedIntfId()};
}

Lanx::IntfId PrefixIndex::installedIntfId(const Key& prefix, Orb::HashTag tag) const {
    const Orb::Ptr<IntfIdSet>* set = sets_.find(prefix, tag);
    return set == nullptr ? Lanx::IntfId() : (*set)->installedIntfId();
}

bool PrefixIndex::installedIntfIdIs(const Key& prefix, Orb::HashTag tag, Lanx::IntfId intfId) {
    if (!intfId) {
        return installedIntfIdDel(prefix, tag);
    }
    IntfIdSet& set =
        **sets_.findOrInsert(prefix, tag, [&] { return intfIdSetFactory(prefix); }).first;
    const Lanx::IntfId old = std::exchange(set.installedIntfId_, intfId);
    if (!old) {
        installed_.oneMore();
    }
    return old != intfId;
}

bool PrefixIndex::installedIntfIdDel(const Key& prefix, Orb::HashTag tag) {
    const Orb::Ptr<IntfIdSet>* place = installed_.find(prefix, tag);
    if (place == nullptr) {
        return false;
    }
    const Orb::Ptr<IntfIdSet> set = *place;
    set->installedIntfId_ = Lanx::IntfId();
    installed_.oneLess();
    if (!set->listed_) {
        sets_.take(place);
    }
    return true;
}

void PrefixIndex::forgetInstalled() {
    if (listed_.empty()) {
        installed_.noneLeft();
        sets_.clear();
        return;
    }
    for (const auto& set : Orb::objectsOf(installed_)) {
        installedIntfIdDel(set->genPrefix(), Orb::HashTag::of(set->genPrefix()));
    }
}

} // namespace Routing::DirectNet
