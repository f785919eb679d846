#pragma once

#include <utility>

#include "directnet/backlog/ViaSetReferences.h"
#include "platform/orb/container/Keys.h"
#include "platform/orb/object/Reactor.h"

namespace Routing::DirectNet {

/// Watches one virtual address for its VRF's machine and holds a via-set reference for each
/// interface on which the address contributes. However the reactor goes, because the address left
/// the table or because the machine goes, it withdraws the address from all those interfaces; from
/// then on the address counts as absent, whatever the table says.
template <typename Sm, typename WatchedType>
class VirtualIpIntfReactor : public Orb::InputMemberReactor<Sm, WatchedType> {
  public:
    using Member = Orb::InputMemberReactor<Sm, WatchedType>;

    VirtualIpIntfReactor(Sm* sm, Orb::Ptr<const WatchedType> status) : Member(sm) {
        this->attach(std::move(status));
    }

    ViaSetReferences<Lanx::IntfId>& references() { return references_; }

    void onAttribute(Orb::AttributeId id, const void* key) override {
        if (id == WatchedType::intfIdId) {
            this->owner()->handleVirtualIpIntfStatus(this->fwkKey(), Orb::keyAs<Lanx::IntfId>(key));
        }
    }

    /// The address has another object now, which may lack interfaces that the old one had.
    void notifierIs(Orb::Ptr<const WatchedType> status) override {
        Member::notifierIs(std::move(status));
        for (const Lanx::IntfId intfId : Orb::keysOf(references_.taken())) {
            if (!this->notifier()->intfId(intfId)) {
                this->owner()->handleVirtualIpIntfStatus(this->fwkKey(), intfId);
            }
        }
    }

    void orbDoZombieReactors(bool zombie) override {
        const bool goes = zombie && !this->orbMarkedForDeletion();
        Member::orbDoZombieReactors(zombie);
        if (goes) {
            handleVirtualIpIntfStatusDeletion();
        }
    }

    void handleVirtualIpIntfStatusDeletion() {
        this->owner()->handleVirtualIpIntfStatusDeletion(*this);
    }

  private:
    ViaSetReferences<Lanx::IntfId> references_;
};

} // namespace Routing::DirectNet
