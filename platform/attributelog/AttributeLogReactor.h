#pragma once

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/attributelog/AttributeLogForm.h"
#include "platform/attributelog/AttributeLogRecorder.h"
#include "platform/orb/attribute/DeclaredAttributes.h"
#include "platform/orb/container/HashMap.h"
#include "platform/orb/object/Notifiee.h"

namespace Orb {

/// Where an entity stands in the tree that is logged.
class AttributeLogPlace {
  public:
    virtual void appendPath(std::string& body) const = 0;

  protected:
    ~AttributeLogPlace() = default;
};

inline void appendLogOp(std::string& body, AttributeLogFormat::Op op, AttributeId id) {
    body += static_cast<char>(op);
    appendBigEndian(body, id);
}

/// Logs every change of one entity and, through further ones, of all members below it. What is
/// written is the state that it finds when it is told, so that changes which follow from each other
/// and reach it in another order end in the right state.
template <typename T>
class AttributeLogReactor final : public NotifieeOf<T>, public AttributeLogPlace {
  public:
    /// `id` is that of the collection in `parent` which the entity is a member of; 0 for a root.
    AttributeLogReactor(AttributeLogRecorder* recorder, const AttributeLogPlace* parent,
                        AttributeId id, Ptr<const T> entity)
        : recorder_(recorder), parent_(parent), id_(id) {
        this->attach(std::move(entity));
    }

    void onAttribute(AttributeId id, const void* key) override {
        visitDeclared<T>(id, [&](auto declared) { recordChange<declared()>(key); });
    }

    void appendPath(std::string& body) const override {
        parent_->appendPath(body);
        if constexpr (requires(const T& entity) { entity.fwkKey(); }) {
            appendLogOp(body, AttributeLogFormat::Op::within, id_);
            appendLogValue(body, this->notifier()->fwkKey());
        }
    }

    /// Logs all that the entity holds, one record each.
    void recordState() {
        forEachDeclared<T>([&](auto id) {
            using H = Holder<id()>;
            if constexpr (isPlainAttribute<H>) {
                recordChange<id()>(nullptr);
            } else if constexpr (isValueCollection<H>) {
                for (const auto& member : holder<id()>().all()) {
                    recordChange<id()>(&member.key());
                }
            }
        });
        recordMembers();
    }

    void recordMembers() {
        forEachDeclared<T>([&](auto id) {
            if constexpr (isMembers<Holder<id()>>) {
                for (const auto& member : holder<id()>().all()) {
                    recordChange<id()>(&member->fwkKey());
                }
            }
        });
    }

    /// Appends the plain attributes and the collections of values to the body of the record that
    /// adds the entity. Answers the changes that did not fit.
    static std::vector<std::string> appendState(std::string& body, const T& entity) {
        std::vector<std::string> left;
        const std::size_t countAt = body.size();
        std::uint32_t count = 0;
        appendBigEndian(body, count);
        const auto append = [&](auto write) {
            const std::size_t before = body.size();
            write();
            if (body.size() > AttributeLogFormat::maxBodySize) {
                left.push_back(body.substr(before));
                body.resize(before);
            } else {
                ++count;
            }
        };
        forEachDeclared<T>([&](auto id) {
            using H = Holder<id()>;
            const auto& values = holderOf<id()>(entity);
            if constexpr (isPlainAttribute<H>) {
                append([&] { appendSet<id()>(body, values.value()); });
            } else if constexpr (isValueCollection<H>) {
                for (const auto& member : values.all()) {
                    append([&] { appendSet<id()>(body, member.key(), member.value()); });
                }
            }
        });
        std::string counted;
        appendBigEndian(counted, count);
        body.replace(countAt, counted.size(), counted);
        return left;
    }

  private:
    using Op = AttributeLogFormat::Op;
    template <AttributeId id>
    using Holder = std::remove_const_t<DeclaredHolder<T, id>>;

    template <AttributeId id>
    static const Holder<id>& holderOf(const T& entity) {
        return entity.*T::orbAttribute(AttributeTag<id>{}).holder;
    }
    template <AttributeId id>
    const Holder<id>& holder() const {
        return holderOf<id>(*this->notifier());
    }

    template <typename Value>
    static void appendLogValue(std::string& body, const Value& value) {
        AttributeLogForm<Value>::write(body, value);
    }
    template <AttributeId id, typename... Values>
    static void appendSet(std::string& body, const Values&... values) {
        appendLogOp(body, Op::set, id);
        (appendLogValue(body, values), ...);
    }

    std::string newBody() const {
        std::string body;
        body.reserve(160);
        appendPath(body);
        return body;
    }

    template <AttributeId id>
    void recordChange(const void* key) {
        using H = Holder<id>;
        if constexpr (isPlainAttribute<H>) {
            std::string body = newBody();
            appendSet<id>(body, holder<id>().value());
            recorder_->record(body);
        } else if constexpr (isValueCollection<H>) {
            recordValue<id>(keyAs<typename H::Key>(key));
        } else if constexpr (isMembers<H>) {
            recordMember<id>(typename H::Key(keyAs<typename H::Key>(key)));
        }
    }

    template <AttributeId id>
    void recordValue(const typename Holder<id>::Key& key) {
        std::string body = newBody();
        if (const auto* value = holder<id>().all().find(key)) {
            appendSet<id>(body, key, *value);
        } else {
            appendLogOp(body, Op::remove, id);
            appendLogValue(body, key);
        }
        recorder_->record(body);
    }

    /// Brings the reader's member in line with the one that is there now.
    template <AttributeId id>
    void recordMember(const typename Holder<id>::Key& key) {
        constexpr bool owned = isChildren<Holder<id>>;
        auto& logged = std::get<Logged<id, Holder<id>>>(logged_).reactors;
        const auto* present = holder<id>().find(key);
        const auto* known = logged.find(key);
        if (known != nullptr && present == (*known)->notifier()) {
            return;
        }
        if (known != nullptr && (present == nullptr || owned)) {
            logged.erase(key);
            std::string body = newBody();
            appendLogOp(body, Op::remove, id);
            appendLogValue(body, key);
            recorder_->record(body);
        }
        if (present != nullptr) {
            recordNewMember<id>(*present);
        }
    }

    template <AttributeId id, typename Member>
    void recordNewMember(const Member& member) {
        constexpr bool owned = isChildren<Holder<id>>;
        using Reactor = AttributeLogReactor<Member>;
        const auto reactor = makePtr<Reactor>(
            recorder_, static_cast<const AttributeLogPlace*>(this), id, Ptr<const Member>(&member));
        std::get<Logged<id, Holder<id>>>(logged_).reactors.insertOrAssign(member.fwkKey(), reactor);
        std::string body = newBody();
        appendSet<id>(body, member.fwkKey());
        if constexpr (owned) {
            recorder_->record(body);
            reactor->recordState();
        } else {
            const auto left = Reactor::appendState(body, member);
            recorder_->record(body);
            for (const std::string& change : left) {
                recorder_->record(reactor->newBody() + change);
            }
            reactor->recordMembers();
        }
    }

    template <typename>
    friend class AttributeLogReactor;

    /// The reactors of the members that the reader knows of.
    template <AttributeId id, typename H>
    struct Logged {};
    template <AttributeId id, typename H>
        requires isMembers<H>
    struct Logged<id, H> {
        using Member = std::remove_const_t<typename H::Value>;
        HashMap<typename H::Key, Ptr<AttributeLogReactor<Member>>> reactors;
    };
    template <typename... Ids>
    static auto loggedOf(const std::tuple<Ids...>&)
        -> std::tuple<Logged<Ids::value, Holder<Ids::value>>...>;

    AttributeLogRecorder* recorder_;
    const AttributeLogPlace* parent_;
    AttributeId id_;
    decltype(loggedOf(DeclaredIds<T>())) logged_;
};

} // namespace Orb
