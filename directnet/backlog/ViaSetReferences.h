#pragma once

#include <cstdint>

#include "directnet/backlog/IntfViaSetConfig.h"
#include "directnet/backlog/IntfViaSetKeyStatus.h"
#include "platform/orb/container/HashMap.h"

namespace Routing::DirectNet {

/// The via-set references that one machine holds, by what it took them for. Whatever sequence of
/// additions and withdrawals reaches the machine, it gives back exactly what it took: a withdrawal
/// of something never added gives nothing back, that of something added twice gives both back.
template <typename Key>
class ViaSetReferences {
  public:
    /// Answers whether it is the first that is held for the key.
    bool take(const Key& key, Lanx::IntfId intfId, IntfViaSetKeyStatus& status) {
        const bool first = ++*taken_.tryInsert(key).first == 1;
        status.incIntfVskRefcount(intfId);
        return first;
    }

    void giveBack(const Key& key, Lanx::IntfId intfId, IntfViaSetConfig& config,
                  IntfViaSetKeyStatus& status) {
        const auto taken = taken_.take(key);
        for (std::uint32_t left = taken ? taken->value() : 0; left > 0; --left) {
            config.releaseViaSetKey(intfId, status);
        }
    }

    bool holds(const Key& key) const { return taken_.contains(key); }

    const Orb::HashMap<Key, std::uint32_t>& taken() const { return taken_; }

  private:
    Orb::HashMap<Key, std::uint32_t> taken_;
};

} // namespace Routing::DirectNet
