#include <cstdint>

#include "tables/api/Convert.h"
#include "tables/api/View.h"

// Bringing the view to the present, and telling what has changed.

namespace {

using namespace Tables;

/// One update of a handle's view.
class Update {
  public:
    Update(directnet_tables& tables, directnet_change_callback callback, void* context)
        : tables_(tables), callback_(callback), context_(context) {}

    std::int64_t run() {
        tables_.watch.acknowledge();
        note(tables_.folder.look(error_));
        if (tables_.folder.descriptor() >= 0) {
            tables_.watch.look(tables_.folder);
            bringAll();
            tellAll();
        }
        tables_.watch.isIncomplete(incomplete_);
        return tables_.error.empty() ? count_ : -1;
    }

  private:
    static constexpr unsigned maxRounds = 8;

    /// What is refused is not waited for in haste: whoever makes it anew rings the bell.
    void note(Found found) {
        incomplete_ |= found == Found::absent;
        if (found == Found::refused && tables_.error.empty()) {
            tables_.error = error_;
        }
    }

    /// Routes as they were at a time when nothing changed in what they refer to: so each finds its
    /// via set and via, unless the writer keeps changing those as well. What it writes without a
    /// pause is read so often only; at least what a route refers to when it comes is there.
    void bringAll() {
        bringReferred();
        bool moved = true;
        for (unsigned rounds = 0; moved && rounds < maxRounds; ++rounds) {
            bring(tables_.leaks4, tables_.leaks6, tables_.routes4, tables_.routes6);
            const std::uint64_t before = positions();
            bringReferred();
            moved = positions() != before;
        }
    }

    void bringReferred() { bring(tables_.viaSets, tables_.vias4, tables_.vias6, tables_.vrfs); }

    /// Another number when one of those has changed.
    std::uint64_t positions() const {
        return tables_.viaSets.position() + tables_.vias4.position() + tables_.vias6.position()
               + tables_.vrfs.position();
    }

    template <typename... Mirrors>
    void bring(Mirrors&... mirrors) {
        (note(mirrors.bring(tables_.folder, error_)), ...);
    }

    /// Tells the changes of a table, whose records are of that family. One of before and after may
    /// be nullptr.
    auto teller(std::uint8_t family = 0) {
        return [this, family]<typename Record>(const Record* before, const Record* after) {
            ++count_;
            if (callback_ != nullptr) {
                directnet_record records[2];
                const directnet_change change{
                    static_cast<directnet_record_kind>(recordKindOf<Record>),
                    given(before, records[0], family), given(after, records[1], family)};
                callback_(&change, context_);
            }
        };
    }

    void tellAll() {
        tables_.goneVrfs.tellComings(tables_.vrfs, teller());
        tables_.goneVias4.tellComings(tables_.vias4, teller(ipv4));
        tables_.goneVias6.tellComings(tables_.vias6, teller(ipv6));
        tables_.goneViaSets.tellComings(tables_.viaSets, teller());
        tellRoutes(tables_.routes4, tables_.lengths4, ipv4);
        tellRoutes(tables_.routes6, tables_.lengths6, ipv6);
        tables_.leaks4.tell(teller(ipv4));
        tables_.leaks6.tell(teller(ipv6));
        tables_.goneViaSets.tellGoings(teller());
        tables_.goneVias4.tellGoings(teller(ipv4));
        tables_.goneVias6.tellGoings(teller(ipv6));
        tables_.goneVrfs.tellGoings(teller());
    }

    /// The lengths are counted first: whoever is told may look for a longest match.
    template <typename Lengths>
    void tellRoutes(directnet_tables::RouteMirror& routes, Lengths& lengths, std::uint8_t family) {
        routes.eachChange([&](const RouteRecord* before, const RouteRecord* after) {
            if (before == nullptr) {
                ++lengths[after->length];
            } else if (after == nullptr) {
                --lengths[before->length];
            }
        });
        routes.tell(teller(family));
    }

    template <typename Record>
    static const directnet_record* given(const Record* from, directnet_record& to,
                                         std::uint8_t family) {
        if (from == nullptr) {
            return nullptr;
        }
        set(to, converted(*from, family));
        return &to;
    }

    static void set(directnet_record& to, const directnet_route& from) { to.route = from; }
    static void set(directnet_record& to, const directnet_via& from) { to.via = from; }
    static void set(directnet_record& to, const directnet_via_set& from) { to.via_set = from; }
    static void set(directnet_record& to, const directnet_vrf& from) { to.vrf = from; }
    static void set(directnet_record& to, const directnet_leak& from) { to.leak = from; }

    directnet_tables& tables_;
    directnet_change_callback callback_;
    void* context_;
    ErrorText error_;
    std::int64_t count_ = 0;
    bool incomplete_ = false;
};

} // namespace

std::int64_t directnet_tables_update(directnet_tables* tables, directnet_change_callback callback,
                                     void* context) {
    tables->error.clear();
    return Update(*tables, callback, context).run();
}
