#include "agent/explain/CandidateWalk.h"

#include <algorithm>
#include <functional>
#include <set>

#include "agent/device/DeviceInputs.h"
#include "agent/explain/IntfPlaces.h"
#include "directnet/backlog/IntfBacklog.h"

namespace Agent {

namespace {

class CandidateSink final : public IntfSection::Sink {
  public:
    CandidateSink(std::string& out, const CandidateWalk::Asked& asked,
                  const IntfSection::Options& place)
        : out_(out), asked_(asked), place_(place) {}

    bool wants(const Lanx::IpGenAddrWithMask& address) const override {
        if (!asked_.isAddress) {
            return prefixesAround(address).contains(asked_.prefix);
        }
        const Lanx::IpGenPrefix subnet = address.subnet();
        return Routing::DirectNet::IntfBacklog::isRoutable(subnet)
               && subnet.contains(asked_.prefix);
    }
    void interface(const InterfaceRow&) override {}
    void address(const AddressRow& row, const Contributions&) override {
        if (row.why) {
            appendJsonLine(out_, CandidateRow{place_.intf, row.address, row.role,
                                              place_.vrf.value(), *row.why});
        }
    }

  private:
    std::string& out_;
    const CandidateWalk::Asked& asked_;
    const IntfSection::Options& place_;
};

/// All interfaces that have addresses, by falling name.
std::vector<Lanx::IntfId> interfaces(const AgentView& view) {
    std::set<Lanx::IntfId, std::greater<>> intfs;
    if (view.links != nullptr) {
        for (const Lanx::IntfId name : view.links->names()) {
            intfs.insert(name);
        }
    }
    for (const auto& vrf : view.inputs.ipStatus()->vrfIpIntfStatus()) {
        for (const auto& status : vrf->ipIntfStatus()) {
            intfs.insert(status->intfId());
        }
    }
    for (const auto& vrf : view.inputs.ip6Status()->vrfIp6IntfStatus()) {
        for (const auto& status : vrf->intfStatus()) {
            intfs.insert(status->intfId());
        }
    }
    return {intfs.begin(), intfs.end()};
}

} // namespace

CandidateWalk::CandidateWalk(const AgentView& view, Asked asked)
    : view_(view), asked_(std::move(asked)), intfs_(interfaces(view)) {}

bool CandidateWalk::step(std::string& out) {
    if (section_) {
        CandidateSink sink(out, asked_, section_->options());
        if (section_->step(sink)) {
            return true;
        }
        section_.reset();
    }
    if (!places_.empty()) {
        if (!asked_.vrf || places_.back().vrf == *asked_.vrf) {
            places_.back().ownOnly = true;
            section_.emplace(view_, std::move(places_.back()));
        }
        places_.pop_back();
        return true;
    }
    if (intfs_.empty()) {
        return false;
    }
    places_ = placesOf(view_, intfs_.back());
    std::ranges::stable_sort(places_, std::ranges::greater(), &IntfSection::Options::vrf);
    intfs_.pop_back();
    return true;
}

} // namespace Agent
