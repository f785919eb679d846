#include "agent/viplog/VipChangePrinter.h"

#include <functional>
#include <map>
#include <string>
#include <utility>

#include "agent/viplog/VirtualIpText.h"

namespace Agent {

namespace {

enum class Kind { comes, changes, goes };

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

/// The begin of a line, up to what has changed of the VRF's table.
std::string lineHead(bool json, Kind kind, const char* family, const L3::VrfName& vrf) {
    if (!json) {
        const char* sign = kind == Kind::comes ? "+ " : kind == Kind::changes ? "~ " : "- ";
        return sign + printable(vrf.value()) + ' ' + family;
    }
    const char* change = kind == Kind::comes ? "comes" : kind == Kind::changes ? "changes" : "goes";
    return std::string(R"({"change":")") + change + R"(","family":")" + family + R"(","vrf":)"
           + jsonString(vrf.value());
}

} // namespace

template <typename Tables, typename Table, typename VirtualIp>
class VipChangePrinter::Family {
  public:
    Family(std::ostream& out, bool json, const char* name, const Tables& tables)
        : out_(out), json_(json), name_(name), tables_(tables) {
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
            if (id == Table::virtualIpId) {
                handleVirtualIp(table, Key(Orb::keyAs<Key>(key)));
            } else {
                print(Kind::changes, table.name(), &table);
            }
        });
        return followed;
    }

    void follow(const Table& table, const VirtualIp& virtualIp) {
        followed_[table.name()].virtualIps[virtualIp.fwkKey()] =
            watch(virtualIp, [this, &table, &virtualIp](Orb::AttributeId, const void*) {
                print(Kind::changes, table.name(), virtualIp.fwkKey(), &virtualIp);
            });
    }

    void handleTable(const L3::VrfName& name) {
        if (followed_.erase(name) != 0) {
            print(Kind::goes, name, nullptr);
        }
        if (const Table* table = tables_.vrfVirtualIpStatus(name)) {
            follow(*table);
            print(Kind::comes, name, table);
        }
    }

    void handleVirtualIp(const Table& table, const Key& key) {
        const bool known = followed_[table.name()].virtualIps.erase(key) != 0;
        if (const VirtualIp* virtualIp = table.virtualIp(key)) {
            follow(table, *virtualIp);
            print(known ? Kind::changes : Kind::comes, table.name(), key, virtualIp);
        } else {
            print(Kind::goes, table.name(), key, virtualIp);
        }
    }

    void print(Kind kind, const L3::VrfName& vrf, const Table* table) {
        out_ << lineHead(json_, kind, name_, vrf);
        if (table != nullptr) {
            const bool on = table->subnetRouteEnabled();
            out_ << (json_ ? R"(,"subnetRoutes":)" : ", subnet routes ")
                 << (json_ ? jsonBoolean(on)
                     : on  ? "on"
                           : "off");
        }
        out_ << (json_ ? "}\n" : "\n");
    }

    void print(Kind kind, const L3::VrfName& vrf, const Key& key, const VirtualIp* virtualIp) {
        out_ << lineHead(json_, kind, name_, vrf);
        if (json_) {
            out_ << R"(,"virtualIp":)" << jsonString(addressText(key));
        } else {
            out_ << ' ' << addressText(key);
        }
        if (virtualIp != nullptr) {
            out_ << (json_ ? R"(,"interfaces":)" + interfacesJson(*virtualIp)
                           : interfacesText(*virtualIp));
        }
        out_ << (json_ ? "}\n" : "\n");
    }

    std::ostream& out_;
    bool json_;
    const char* name_;
    const Tables& tables_;
    std::map<L3::VrfName, Followed> followed_;
    ReactorPtr<Tables> reactor_;
};

VipChangePrinter::VipChangePrinter(std::ostream& out, bool json, const VipLogReader& tables)
    : ipv4_(std::make_unique<Ipv4>(out, json, "ipv4", tables.tables4())),
      ipv6_(std::make_unique<Ipv6>(out, json, "ipv6", tables.tables6())) {}

VipChangePrinter::~VipChangePrinter() = default;

} // namespace Agent
