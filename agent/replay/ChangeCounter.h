#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "directnet/root/RootSm.h"
#include "platform/orb/object/Notifiee.h"
#include "platform/routing/ViaSetConfig.h"

namespace Agent {

/// Counts the changes of the tables that the library writes: routes, vias and via sets of both
/// families. Calls, once, from inside the notification of a change to come.
class ChangeCounter {
  public:
    ChangeCounter(const Routing::DirectNet::RootSm& root,
                  const Routing::Rib::ViaSetConfig& viaSets);
    ChangeCounter(const ChangeCounter&) = delete;
    ChangeCounter& operator=(const ChangeCounter&) = delete;
    ~ChangeCounter() = default;

    /// `act` runs in the middle of the `nth` change from now, the next one being the first. It
    /// takes the place of what was to run before.
    void callAt(std::uint64_t nth, std::function<void()> act);
    void cancel() { act_ = nullptr; }

  private:
    class TableReactor : public Orb::NotifieeOf<Orb::Entity> {
      public:
        TableReactor(ChangeCounter& owner, Orb::Ptr<const Orb::Entity> table,
                     Orb::AttributeId collection);
        void onAttribute(Orb::AttributeId id, const void* key) override;

      private:
        ChangeCounter& owner_;
        const Orb::AttributeId collection_;
    };

    void handleChange();

    std::uint64_t left_ = 0;
    std::function<void()> act_;
    std::vector<Orb::Ptr<TableReactor>> reactors_;
};

} // namespace Agent
