#include "agent/install/InstallTable.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace Agent {

using Lanx::AddressFamily;

namespace {

/// What the kernel takes for an IPv6 route that names no metric.
constexpr std::uint32_t usualIpv6Metric = 1024;

bool isOf(const KernelEntry& entry, Listing listing) {
    switch (listing) {
    case Listing::ipv4Routes:
        return !entry.isProxy && entry.prefix.af() == AddressFamily::ipv4;
    case Listing::ipv6Routes:
        return !entry.isProxy && entry.prefix.af() == AddressFamily::ipv6;
    case Listing::proxies:
        return entry.isProxy;
    default:
        return false;
    }
}

} // namespace

InstallTable::InstallTable(const InstallLinks& links, RefusalReport::Report report,
                           IsReleased isReleased)
    : links_(links), report_(std::move(report)), isReleased_(std::move(isReleased)) {}

void InstallTable::want(const KernelSlot& slot, const InstallWant& want) {
    const auto [found, isNew] = places_.try_emplace(slot);
    Place& place = found->second;
    proxies_ += isNew && slot.isProxy() ? 1 : 0;
    if (place.want == want) {
        return;
    }
    forgive(place);
    place.want = want;
    place.vrf = want.vrf;
    place.isClaimed = true;
    look(slot, place);
}

void InstallTable::unwant(const KernelSlot& slot) {
    const auto found = places_.find(slot);
    if (found != places_.end()) {
        forgive(found->second);
        found->second.want.reset();
        look(slot, found->second);
        eraseIfEmpty(found);
    }
}

void InstallTable::clear() {
    isClearing_ = true;
    for (auto place = places_.begin(); place != places_.end();) {
        const auto present = place++;
        present->second.want.reset();
        present->second.isClaimed = true;
        look(present->first, present->second);
        eraseIfEmpty(present);
    }
}

void InstallTable::entryIs(const KernelEntry& entry) {
    const auto slot = slotOf(entry);
    if (!slot) {
        return;
    }
    const auto [found, isNew] = places_.try_emplace(*slot);
    Place& place = found->second;
    proxies_ += isNew && entry.isProxy ? 1 : 0;
    place.isClaimed = place.isClaimed || isClearing_;
    const auto known = std::ranges::find(place.present, entry, &Present::entry);
    if (known != place.present.end()) {
        known->generation = generation_;
        return;
    }
    place.present.push_back({entry, generation_});
    ++entries_;
    look(*slot, place);
}

void InstallTable::entryGone(const KernelEntry& entry) {
    const auto slot = slotOf(entry);
    const auto found = slot ? places_.find(*slot) : places_.end();
    if (found == places_.end()) {
        return;
    }
    Place& place = found->second;
    entries_ -= std::erase_if(place.present, [&](const Present& p) { return p.entry == entry; });
    look(*slot, place);
    eraseIfEmpty(found);
}

void InstallTable::foreignProxyIs(const KernelEntry& entry) {
    if (const auto slot = slotOf(entry)) {
        foreignProxies_[*slot] = generation_;
    }
}

void InstallTable::refused(const Request& request, int code, const std::string& words) {
    const auto found = places_.find(request.slot);
    if (found == places_.end()) {
        return;
    }
    Place& place = found->second;
    place.isAsked = false;
    if (!request.add) {
        if (code == ESRCH || code == ENOENT) {
            entryGone(request.entry); // it went before
        } else {
            refuse(request.slot, place, words, "remove");
        }
        return;
    }
    if (code == EEXIST && place.doubt == Doubt::none) {
        place.doubt = Doubt::waits;
        isInDoubt_ = true;
        return;
    }
    if (code != ENETDOWN && code != ENODEV) { // the link says more about these
        const std::string others = code == EEXIST ? "another program has one there: " : "";
        refuse(request.slot, place, others + words, "install");
    }
}

void InstallTable::done(const Request& request) {
    const auto found = places_.find(request.slot);
    if (found == places_.end()) {
        return;
    }
    found->second.isAsked = false;
    if (!request.entry.isProxy) {
        look(request.slot, found->second); // the kernel has told of it, and things may have changed
    } else if (request.add) {
        entryIs(request.entry);
    } else {
        entryGone(request.entry);
    }
}

void InstallTable::endListing(Listing listing) {
    for (auto place = places_.begin(); place != places_.end();) {
        const auto found = place++;
        entries_ -= std::erase_if(found->second.present, [&](const Present& present) {
            return present.generation != generation_ && isOf(present.entry, listing);
        });
        eraseIfEmpty(found);
    }
    if (listing == Listing::proxies) {
        dropForeignProxies();
    }
}

/// Those that the listing did not tell of have gone, and make room.
void InstallTable::dropForeignProxies() {
    std::erase_if(foreignProxies_, [this](const auto& proxy) {
        const bool isGone = proxy.second != generation_;
        const auto place = isGone ? places_.find(proxy.first) : places_.end();
        if (place != places_.end()) {
            look(place->first, place->second);
        }
        return isGone;
    });
}

void InstallTable::lookAgain(bool refusedToo) {
    for (auto& [slot, place] : places_) {
        place.isAsked = false;
        if (refusedToo || !place.refusal) {
            look(slot, place);
        }
    }
}

void InstallTable::retryDoubted() {
    for (auto& [slot, place] : places_) {
        if (place.doubt == Doubt::waits) {
            place.doubt = Doubt::tried;
            look(slot, place);
        }
    }
}

void InstallTable::takeRequests(std::vector<Request>& requests, std::size_t limit) {
    while (!queue_.empty() && requests.size() < limit) {
        const KernelSlot slot = queue_.back();
        queue_.pop_back();
        const auto found = places_.find(slot);
        if (found != places_.end()) {
            found->second.isQueued = false;
            appendRequests(slot, found->second, requests);
        }
    }
}

/// Queues the place if something is to be done about it.
void InstallTable::look(const KernelSlot& slot, Place& place) {
    const auto entry = wanted(slot, place);
    bool isThere = false;
    bool isDue = false;
    bool isLeft = false;
    for (const Present& present : place.present) {
        if (entry == present.entry) {
            isThere = true;
        } else if (mayGo(place, present.entry)) {
            isDue = true;
        } else {
            isLeft = true;
        }
    }
    markLeftover(place, isLeft);
    if (isThere || !entry) {
        place.doubt = Doubt::none;
    }
    if (place.refusal && (isThere || !entry) && !isDue) {
        forgive(place);
    }
    isDue = isDue || (entry && !isThere && place.doubt != Doubt::waits);
    if (isDue && !place.isQueued && !place.isAsked) {
        place.isQueued = true;
        queue_.push_back(slot);
    }
}

void InstallTable::appendRequests(const KernelSlot& slot, Place& place,
                                  std::vector<Request>& requests) {
    const auto entry = wanted(slot, place);
    bool isThere = false;
    for (const Present& present : place.present) {
        if (entry == present.entry) {
            isThere = true;
        } else if (mayGo(place, present.entry)) {
            requests.push_back({slot, present.entry, false});
            place.isAsked = true;
        }
    }
    if (!entry || isThere) {
        return;
    }
    if (foreignProxies_.contains(slot)) {
        refuse(slot, place, "another program has one there", "install");
        return;
    }
    requests.push_back({slot, *entry, true});
    place.isAsked = true;
}

std::string InstallTable::state(const KernelSlot& slot) const {
    const auto found = places_.find(slot);
    if (found == places_.end() || !found->second.want) {
        return "waiting";
    }
    const Place& place = found->second;
    const std::string link(place.want->link.name());
    const int index = links_.index(place.want->link);
    if (index == 0) {
        return "not installable: there is no link " + link;
    }
    if (links_.vrfTable(index) != place.want->linkTable) {
        return "not installable: " + link + " is in another VRF";
    }
    if (isInstalled(slot)) {
        return "installed";
    }
    if (place.refusal) {
        return "failed: " + place.refusal->cause->words();
    }
    return links_.isUp(index) ? "waiting" : "waiting: " + link + " is down";
}

bool InstallTable::isInstalled(const KernelSlot& slot) const {
    const auto found = places_.find(slot);
    if (found == places_.end()) {
        return false;
    }
    const auto entry = wanted(slot, found->second);
    return entry
           && std::ranges::find(found->second.present, *entry, &Present::entry)
                  != found->second.present.end();
}

/// The place of what the kernel has; none for a proxy neighbour of an unknown link.
std::optional<KernelSlot> InstallTable::slotOf(const KernelEntry& entry) const {
    if (!entry.isProxy) {
        return KernelSlot{entry.prefix, entry.table, {}};
    }
    const Lanx::IntfId name = links_.name(entry.link);
    return !name ? std::nullopt
                 : std::optional(KernelSlot{entry.prefix, links_.vrfTable(entry.link), name});
}

/// The entry that is wanted and could be there now.
std::optional<KernelEntry> InstallTable::wanted(const KernelSlot& slot, const Place& place) const {
    const int link = place.want ? links_.index(place.want->link) : 0;
    if (link == 0 || !links_.isUp(link) || links_.vrfTable(link) != place.want->linkTable) {
        return std::nullopt;
    }
    const bool hasMetric = !slot.isProxy() && slot.prefix.af() == AddressFamily::ipv6;
    return KernelEntry{.isProxy = slot.isProxy(),
                       .type = place.want->type,
                       .scope = place.want->scope,
                       .link = link,
                       .table = slot.isProxy() ? 0 : slot.table,
                       .metric = hasMetric ? usualIpv6Metric : 0,
                       .prefix = slot.prefix};
}

bool InstallTable::mayGo(const Place& place, const KernelEntry& entry) const {
    return place.isClaimed || isReleased_(entry);
}

void InstallTable::refuse(const KernelSlot& slot, Place& place, const std::string& words,
                          const char* verb) {
    const L3::VrfName vrf = place.vrf;
    const Lanx::IntfId link = place.want ? place.want->link : slot.proxyLink;
    RefusalReport::Cause& cause = report_.hold(vrf, link, words, verb, slot.prefix);
    forgive(place); // only now: the cause may be the same
    place.refusal = Refusal{&cause, vrf, link};
    ++refused_;
}

void InstallTable::forgive(Place& place) {
    if (place.refusal) {
        report_.letGo(place.refusal->vrf, place.refusal->link, *place.refusal->cause);
        place.refusal.reset();
        --refused_;
    }
}

void InstallTable::markLeftover(Place& place, bool isLeftover) {
    if (place.isLeftover != isLeftover) {
        place.isLeftover = isLeftover;
        leftovers_ = isLeftover ? leftovers_ + 1 : leftovers_ - 1;
    }
}

void InstallTable::eraseIfEmpty(Places::iterator place) {
    if (place->second.want || !place->second.present.empty()) {
        return;
    }
    forgive(place->second);
    markLeftover(place->second, false);
    proxies_ -= place->first.isProxy() ? 1 : 0;
    places_.erase(place);
}

} // namespace Agent
