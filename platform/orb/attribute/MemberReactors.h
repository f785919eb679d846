#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "platform/orb/attribute/References.h"

namespace Orb {

/// The reactors of a machine that mirror a collection: one per member, keyed by the member's key.
/// `R` is a MemberReactor. A reactor that goes is marked for deletion first, which is where it
/// lets go of what it did for its member.
template <typename R>
class MemberReactors {
  public:
    using Value = R;
    using Owner = typename R::Owner;
    using Watched = typename R::Watched;
    using Key = typename Watched::Key;
    using Map = HashMap2018<Ptr<R>, KeyOfObject>;

    MemberReactors() = default;
    MemberReactors(const MemberReactors&) = delete;
    MemberReactors& operator=(const MemberReactors&) = delete;

    const Map& all() const { return reactors_; }

    R* find(const Key& key) const {
        const Ptr<R>* reactor = reactors_.find(key);
        return reactor == nullptr ? nullptr : reactor->get();
    }

    /// Creates the member's reactor, or re-points it where the member was replaced. Throws
    /// NullArgumentError; `name` and `type` are what the error shows. Null if whoever was told of
    /// it let go of it.
    R* memberIs(Owner* owner, std::string_view name, std::string_view type,
                Ptr<const Watched> member) {
        if (member == nullptr) {
            throwNullArgument(name, type);
        }
        const Ptr<const PtrInterface> kept = keep(*owner);
        if (R* present = find(member->fwkKey())) {
            const Ptr<R> keepPresent(present);
            if (present->watched() != member.get()) {
                present->notifierIs(member);
            }
            return ownerGoes(kept) ? nullptr : find(member->fwkKey());
        }
        const Key key = member->fwkKey();
        const Ptr<R> made = makePtr<R>(owner, member);
        reactors_.tryInsert(made);
        made->handleInitialized();
        return ownerGoes(kept) ? nullptr : find(key);
    }

    void memberDel(const PtrInterface& owner, const Key& key) {
        const Ptr<const PtrInterface> kept = keep(owner);
        if (const auto taken = reactors_.take(key)) {
            (*taken)->orbDoZombieReactors(true);
        }
    }

    void memberDelAll(const PtrInterface& owner) {
        const Ptr<const PtrInterface> kept = keep(owner);
        while (!reactors_.empty()) {
            memberDel(owner, (*reactors_.first())->fwkKey());
        }
    }

    std::string text() const { return std::to_string(reactors_.size()) + " members"; }

  private:
    static bool ownerGoes(const Ptr<const PtrInterface>& kept) {
        return kept != nullptr && kept->references() == 1;
    }

    Map reactors_;
};

} // namespace Orb
