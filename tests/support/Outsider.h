#pragma once

#include <functional>
#include <utility>

#include "platform/orb/object/Entity.h"
#include "platform/orb/object/Notifiee.h"

namespace Routing::DirectNet {

/// Somebody outside the library who acts on every change of an entity, in the middle of it.
class Outsider : public Orb::NotifieeOf<Orb::Entity> {
  public:
    using Act = std::function<void(Orb::AttributeId)>;

    Outsider(Orb::Ptr<Orb::Entity> watched, Act act) : act_(std::move(act)) {
        hasNotificationActiveIs(true);
        notifierIs(std::move(watched));
    }
    void onAttribute(Orb::AttributeId id, const void*) override { act_(id); }

  private:
    Act act_;
};

} // namespace Routing::DirectNet
