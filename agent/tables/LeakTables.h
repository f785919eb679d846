#pragma once

#include <functional>
#include <string>

#include "platform/orb/loop/ActivityManager.h"
#include "platform/routing/DirectNetLeakStatus.h"
#include "platform/vaultdb/EntityManager.h"

namespace Agent {

/// The tables of leaks in a folder, which it writes for as long as it lives.
class LeakTables {
  public:
    using Status = Routing::DirectNetLeakStatus;
    using Report = std::function<void(const std::string& message)>;

    /// Waits a moment for somebody else who does the same. Throws Vaultdb::TableInUseError while an
    /// agent writes them, Vaultdb::FolderError.
    LeakTables(const std::string& folder, const Report& report);

    /// The leaks of the family.
    Status& of(Lanx::AddressFamily af) const {
        return af == Lanx::AddressFamily::ipv4 ? *ipv4_ : *ipv6_;
    }

  private:
    bool mount(const std::string& folder, const Report& report, bool isLastTry);

    Orb::ActivityManager activityManager_; // by which the bell is rung
    Orb::Ptr<Status> ipv4_;
    Orb::Ptr<Status> ipv6_;
    Orb::Ptr<Vaultdb::EntityManager> store_;
};

} // namespace Agent
