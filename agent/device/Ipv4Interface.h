#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "agent/patch/DevicePatch.h"
#include "platform/ip/Status.h"

namespace Agent {

/// One IPv4 interface: what the document says of it, published so that no address has two roles at
/// once.
///
/// The document may list an interface's primary address among its secondaries. A numbered interface
/// publishes it as the primary only. On an unnumbered interface, where the primary yields nothing,
/// a secondary that is in use wins, and no primary is published. All other secondaries are
/// published as they are, so that the published status and the two members below make up the whole
/// document.
class Ipv4Interface {
  public:
    /// Applies the patch and brings `status`, this interface's, in line: first the unnumbered
    /// source and the directed-broadcast flag, then the secondaries that go, the primary, and the
    /// secondaries that come. Costs what the patch names.
    void apply(const Ipv4InterfacePatch& patch, Ip::IpIntfStatus& status);

  private:
    using Address = Lanx::IpAddrWithMask;
    using SecondaryEdit = Edit<Ipv4InterfacePatch::Secondaries>;
    /// Whether an address is a secondary, and in use; nothing if it is none.
    using SecondaryUse = std::optional<bool>;
    using SecondaryUses = std::vector<std::pair<Address, SecondaryUse>>;

    bool isAddress(const Address& address) const { return !!address && address == address_; }
    SecondaryUse use(const Address& address, const Ip::IpIntfStatus& status) const;
    SecondaryUse useAfter(const Address& address, const SecondaryEdit& edit,
                          const Ip::IpIntfStatus& status) const;
    std::vector<Address> touched(const SecondaryEdit& edit, const Address& newAddress,
                                 const Ip::IpIntfStatus& status) const;

    Address address_;     // the primary as the document has it
    SecondaryUse ownUse_; // of address_
};

} // namespace Agent
