#include "agent/explain/IntfAnswer.h"

#include <algorithm>

#include "agent/explain/IntfPlaces.h"
#include "directnet/root/RootSm.h"

namespace Agent {

namespace {

using Section = IntfSection::Options;

class LinesSink final : public IntfSection::Sink {
  public:
    explicit LinesSink(std::string& out) : out_(out) {}

    bool wants(const Lanx::IpGenAddrWithMask&) const override { return true; }
    void interface(const InterfaceRow& row) override { appendJsonLine(out_, row); }
    void address(const AddressRow& row, const Contributions& contributions) override {
        appendJsonLine(out_, row);
        for (const ContributionRow& contribution : contributions) {
            appendJsonLine(out_, contribution);
        }
    }

  private:
    std::string& out_;
};

/// The VRFs that have virtual addresses, of which the interface may carry one.
void addVirtual(const AgentView& view, Lanx::IntfId intf, std::vector<Section>& sections) {
    const auto addOf = [&](const auto& tables) {
        for (const auto& table : tables.vrfVirtualIpStatus()) {
            if (!table->virtualIp().empty() && !isIn(sections, table->name())) {
                sections.push_back({.intf = intf, .vrf = table->name()});
            }
        }
    };
    addOf(*view.root.allVrfVirtualIpStatus());
    addOf(*view.root.allVrfVirtualIp6Status());
}

} // namespace

IntfAnswer::IntfAnswer(const AgentView& view, std::string_view name,
                       const std::optional<L3::VrfName>& vrf)
    : view_(view) {
    const Lanx::IntfId intf = Lanx::IntfId::known(name);
    if (!intf) {
        return;
    }
    sections_ = placesOf(view, intf);
    const auto isOfOther = [&](const Section& section) { return vrf && section.vrf != *vrf; };
    if (std::ranges::all_of(sections_, isOfOther)) {
        for (Section& section : sections_) {
            section.elsewhere = "in VRF " + section.vrf.value() + ", not in VRF " + vrf->value();
        }
    } else {
        std::erase_if(sections_, isOfOther);
    }
    addVirtual(view, intf, sections_);
    std::erase_if(sections_,
                  [&](const Section& section) { return !section.isThere && isOfOther(section); });
    // Those that are elsewhere come last, if at all.
    std::ranges::sort(sections_, std::ranges::greater(), [](const Section& section) {
        return std::pair(!section.elsewhere.empty(), section.vrf);
    });
}

bool IntfAnswer::appendNext(std::string& out) {
    LinesSink lines(out);
    if (section_ && section_->step(lines)) {
        return true;
    }
    if (section_ && section_->isSaid() && section_->options().elsewhere.empty()) {
        std::erase_if(sections_, [](const Section& section) { return !section.elsewhere.empty(); });
    }
    section_.reset();
    if (sections_.empty()) {
        return false;
    }
    section_.emplace(view_, std::move(sections_.back()));
    sections_.pop_back();
    return true;
}

} // namespace Agent
