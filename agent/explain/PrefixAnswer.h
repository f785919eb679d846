#pragma once

#include <optional>
#include <string>
#include <vector>

#include "agent/explain/CandidateWalk.h"
#include "agent/explain/PrefixRows.h"
#include "agent/topics/AgentView.h"
#include "agent/topics/Answer.h"
#include "agent/topics/VrfCursor.h"
#include "platform/lanx/IpGenAddr.h"
#include "platform/routing/Route.h"

namespace Agent {

/// Explains a prefix, or the longest one of an address, VRF by VRF: for each VRF that has a route
/// or a contributor of it a PrefixRow, followed by a ContributorRow for each contributor. Where no
/// VRF has, there is one PrefixRow that says so, followed by a CandidateRow for each address that
/// would contribute. One VRF that is asked for must be up.
class PrefixAnswer final : public Answer {
  public:
    PrefixAnswer(const AgentView& view, const Lanx::IpGenPrefix& prefix,
                 const std::optional<L3::VrfName>& vrf)
        : view_(view), asked_(prefix), vrf_(vrf), vrfs_(view, vrf) {}
    PrefixAnswer(const AgentView& view, const Lanx::IpGenAddr& address,
                 const std::optional<L3::VrfName>& vrf)
        : view_(view), asked_(Lanx::IpGenPrefix::host(address)), isAddress_(true), vrf_(vrf),
          vrfs_(view, vrf) {}

    bool appendNext(std::string& out) override;

  private:
    using ContainerSm = VrfCursor::ContainerSm;
    using Route = Routing::Rib::Route;

    void appendPrefix(std::string& out, const ContainerSm& vrf);
    bool appendContributor(std::string& out, const ContainerSm& vrf);
    void beginCandidates(std::string& out);
    bool find(const ContainerSm& vrf, std::vector<std::string>& longer);
    Route route(const ContainerSm& vrf, const Lanx::IpGenPrefix& prefix) const;
    PrefixRow describe(const ContainerSm& vrf) const;
    void describeKernel(RouteRow& row, const Routing::Rib::RouteKey& key) const;
    std::optional<std::string> whyNone() const;

    AgentView view_;
    Lanx::IpGenPrefix asked_;
    bool isAddress_ = false;
    std::optional<L3::VrfName> vrf_;
    VrfCursor vrfs_;
    bool isSaid_ = false;                    // something was said of a VRF
    std::optional<Lanx::IpGenPrefix> found_; // in the present VRF
    std::optional<Routing::DirectNet::IntfIdAndAddr> last_;
    std::optional<CandidateWalk> candidates_; // where there is nothing of any VRF
};

} // namespace Agent
