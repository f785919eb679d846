#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "directnet/backlog/IntfIdSet.h"
#include "platform/orb/attribute/References.h"
#include "platform/orb/container/PartOfMap.h"

namespace Routing::DirectNet {

/// What is known of each prefix of one VRF: its contributors, which is the collection
/// IntfBacklog::intfIdsByPrefix, and the interface for which its route was written, which is
/// IntfBacklogSm::installedIntfId. Most prefixes have both, so both are kept in one object, the set
/// of contributors, and in one table. A set that was emptied is in no collection any more but stays
/// in the table until its route has gone; contributors that come meanwhile get a set of their own.
class PrefixIndex {
    using Sets = Orb::HashMap2018<Orb::Ptr<IntfIdSet>, Orb::KeyOfObject>;
    struct IsListed {
        bool operator()(const Orb::Ptr<IntfIdSet>& set) const { return set->listed_; }
    };
    struct IsInstalled {
        bool operator()(const Orb::Ptr<IntfIdSet>& set) const { return !!set->installedIntfId(); }
    };

  public:
    using Value = IntfIdSet;
    using Key = Lanx::IpGenPrefix;
    using Listed = Orb::PartOfMap<Sets, IsListed>;
    using Installed = Orb::PartOfMap<Sets, IsInstalled>;

    // --- The collection of contributors, as Orb::References.

    const Listed& all() const { return listed_; }

    template <typename... Tag>
    IntfIdSet* find(const Key& prefix, Tag... tag) const {
        const Orb::Ptr<IntfIdSet>* set = listed_.find(prefix, tag...);
        return set == nullptr ? nullptr : set->get();
    }

    void memberIs(const Orb::Entity& owner, Orb::AttributeId id, std::string_view name,
                  Orb::Ptr<IntfIdSet> set);

    template <typename Make>
    Orb::Ptr<IntfIdSet> memberOrMade(const Orb::Entity& owner, Orb::AttributeId id,
                                     const Key& prefix, Orb::HashTag tag, const Make& make) {
        const auto [place, added] = sets_.findOrInsert(prefix, tag, make);
        if (!added && (*place)->listed_) {
            return *place;
        }
        Orb::Ptr<IntfIdSet> set = added ? *place : make();
        list(*place, set);
        tell(owner, id, *set);
        return set;
    }

    void memberDel(const Orb::Entity& owner, Orb::AttributeId id, const Key& prefix) {
        memberDel(owner, id, prefix, Orb::HashTag::of(prefix));
    }
    void memberDel(const Orb::Entity& owner, Orb::AttributeId id, const Key& prefix,
                   Orb::HashTag tag);
    void memberDelAll(const Orb::Entity& owner, Orb::AttributeId id);

    std::string text() const { return std::to_string(listed_.size()) + " members"; }

    // --- Both.

    /// What is known of one prefix.
    struct Known {
        const IntfIdSet* contributors = nullptr; ///< null where it has none
        Lanx::IntfId installedIntfId;            ///< none without a route
    };
    Known known(const Key& prefix, Orb::HashTag tag) const;

    // --- What is installed.

    const Installed& installed() const { return installed_; }

    /// The interface for which the prefix's route was written; none without a route.
    Lanx::IntfId installedIntfId(const Key& prefix, Orb::HashTag tag) const;
    /// Answers whether that is news.
    bool installedIntfIdIs(const Key& prefix, Orb::HashTag tag, Lanx::IntfId intfId);
    bool installedIntfIdDel(const Key& prefix, Orb::HashTag tag);
    void forgetInstalled();

    /// Fetches the set that a search for the prefix of that tag will most likely find.
    void prefetchSet(Orb::HashTag tag) const {
        if (const Orb::Ptr<IntfIdSet>* set = sets_.likely(tag)) {
            const auto* bytes = reinterpret_cast<const char*>(set->get());
            __builtin_prefetch(bytes);
            __builtin_prefetch(bytes + sizeof(IntfIdSet) - 1);
        }
    }

  private:
    static void tell(const Orb::Entity& owner, Orb::AttributeId id, const IntfIdSet& set) {
        const Orb::Ptr<const Orb::PtrInterface> kept = Orb::keep(owner);
        owner.notify(id, &set.fwkKey());
    }
    /// Has the place hold that set, which takes over what is installed.
    void list(Orb::Ptr<IntfIdSet>& place, const Orb::Ptr<IntfIdSet>& set);

    Sets sets_;
    Listed listed_{sets_};
    Installed installed_{sets_};
};

} // namespace Routing::DirectNet
