#include "agent/viplog/VipChangePrinter.h"

#include <functional>
#include <map>
#include <string>
#include <utility>

#include "agent/topics/ChangeKind.h"
#include "agent/viplog/VirtualIpText.h"

namespace Agent {

namespace {

/// Tells of each change of one entity.
template <typename T>
class EntityReactor final : public Orb::NotifieeOf<T> {
  public:
    using OnChange = std::function<void(Orb::AttributeId id, const void* key)>;

    EntityReactor(const T& entity, OnChange onChange) : onChange_(std::move(onChange)) {
        this->attach(Orb::Ptr<const T>(&entity));
    }
    void onAttribute(Orb::AttributeId id, const void* key) override { onChange_(id, key); }

  private:
    OnChange onChange_;
};

template <typename T>
using ReactorPtr = Orb::Ptr<EntityReactor<T>>;

template <typename T>
ReactorPtr<T> watch(const T& entity, typename EntityReactor<T>::OnChange onChange) {
    return Orb::makePtr<EntityReactor<T>>(entity, std::move(onChange));
}

/// What the lines of a family have in common.
struct LineForm {
    std::ostream& out;
    bool json;
    Colour colour;
    const char* family;

    /// Prints a line about a VRF's table. What has changed of it is appended by `appendText` for
    /// people, or written by `writeMembers`.
    template <typename AppendText, typename WriteMembers>
    void print(ChangeKind kind, const L3::VrfName& vrf, const AppendText& appendText,
               const WriteMembers& writeMembers) const {
        std::string line;
        if (json) {
            JsonWriter writer(line);
            writer.beginObject();
            writer.member("change", changeName(kind));
            writer.member("family", family);
            writer.member("vrf", vrf.value());
            writeMembers(writer);
            writer.endObject();
        } else {
            line = changeSign(kind, colour) + ' ' + printable(vrf.value()) + ' ' + family;
            appendText(line);
        }
        out << line << '\n';
    }
};

} // namespace

template <typename Tables, typename Table, typename VirtualIp>
class VipChangePrinter::Family {
  public:
    Family(const LineForm& form, const Tables& tables) : form_(form), tables_(tables) {
        for (const auto& table : tables.vrfVirtualIpStatus()) {
            follow(*table);
        }
        reactor_ = watch(tables, [this](Orb::AttributeId, const void* key) {
            handleTable(L3::VrfName(Orb::keyAs<L3::VrfName>(key)));
        });
    }

  private:
    using Key = typename VirtualIp::Key;

    struct Followed {
        ReactorPtr<Table> reactor;
        std::map<Key, ReactorPtr<VirtualIp>> virtualIps;
    };

    Followed& follow(const Table& table) {
        Followed& followed = followed_[table.name()];
        for (const auto& virtualIp : table.virtualIp()) {
            follow(table, *virtualIp);
        }
        followed.reactor = watch(table, [this, &table](Orb::AttributeId id, const void* key) {
            if (id == Table::virtualIpAttribute) {
                handleVirtualIp(table, Key(Orb::keyAs<Key>(key)));
            } else {
                print(ChangeKind::changes, table.name(), &table);
            }
        });
        return followed;
    }

    void follow(const Table& table, const VirtualIp& virtualIp) {
        followed_[table.name()].virtualIps[virtualIp.fwkKey()] =
            watch(virtualIp, [this, &table, &virtualIp](Orb::AttributeId, const void*) {
                print(ChangeKind::changes, table.name(), virtualIp.fwkKey(), &virtualIp);
            });
    }

    void handleTable(const L3::VrfName& name) {
        if (followed_.erase(name) != 0) {
            print(ChangeKind::goes, name, nullptr);
        }
        if (const Table* table = tables_.vrfVirtualIpStatus(name)) {
            follow(*table);
            print(ChangeKind::comes, name, table);
        }
    }

    void handleVirtualIp(const Table& table, const Key& key) {
        const bool known = followed_[table.name()].virtualIps.erase(key) != 0;
        if (const VirtualIp* virtualIp = table.virtualIp(key)) {
            follow(table, *virtualIp);
            print(known ? ChangeKind::changes : ChangeKind::comes, table.name(), key, virtualIp);
        } else {
            print(ChangeKind::goes, table.name(), key, virtualIp);
        }
    }

    void print(ChangeKind kind, const L3::VrfName& vrf, const Table* table) {
        form_.print(
            kind, vrf,
            [&](std::string& line) {
                if (table != nullptr) {
                    line += ", " + subnetRoutesText(table->subnetRouteEnabled());
                }
            },
            [&](JsonWriter& writer) {
                if (table != nullptr) {
                    writer.member("subnetRoutes", table->subnetRouteEnabled());
                }
            });
    }

    void print(ChangeKind kind, const L3::VrfName& vrf, const Key& key,
               const VirtualIp* virtualIp) {
        form_.print(
            kind, vrf,
            [&](std::string& line) {
                line += ' ' + addressText(key);
                if (virtualIp != nullptr) {
                    line += interfacesText(*virtualIp);
                }
            },
            [&](JsonWriter& writer) {
                writer.member("virtualIp", addressText(key));
                if (virtualIp != nullptr) {
                    writer.key("interfaces");
                    writeInterfaces(writer, *virtualIp);
                }
            });
    }

    LineForm form_;
    const Tables& tables_;
    std::map<L3::VrfName, Followed> followed_;
    ReactorPtr<Tables> reactor_;
};

VipChangePrinter::VipChangePrinter(std::ostream& out, bool json, Colour colour,
                                   const VipLogReader& tables)
    : ipv4_(std::make_unique<Ipv4>(LineForm{out, json, colour, "ipv4"}, tables.tables4())),
      ipv6_(std::make_unique<Ipv6>(LineForm{out, json, colour, "ipv6"}, tables.tables6())) {}

VipChangePrinter::~VipChangePrinter() = default;

} // namespace Agent
