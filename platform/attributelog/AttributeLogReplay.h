#pragma once

#include <cstdint>
#include <string_view>
#include <tuple>
#include <utility>

#include "platform/attributelog/AttributeLogForm.h"
#include "platform/attributelog/AttributeLogFormat.h"
#include "platform/attributelog/AttributeLogUnframer.h"
#include "platform/orb/attribute/DeclaredAttributes.h"

namespace Orb {

/// Applies one change of an attribute log to an entity, by the entity's own mutators. All of the
/// change is read and found good before anything happens. Throws ParseError, RangeError.
template <typename T>
class AttributeLogChange {
  public:
    /// `alone` says that nothing may follow the change.
    static void apply(T& entity, AttributeLogInput& in, bool alone = true) {
        const auto op = in.number<std::uint8_t>();
        const auto number = in.number<AttributeId>();
        const bool known =
            visitDeclared<T>(number, [&](auto id) { applyTo<id()>(entity, Op{op}, in, alone); });
        if (!known) {
            in.fail("an unknown attribute");
        }
    }

  private:
    using Op = AttributeLogFormat::Op;

    template <AttributeId id>
    static void applyTo(T& entity, Op op, AttributeLogInput& in, bool alone) {
        auto& holder = entity.*T::orbAttribute(AttributeTag<id>{}).holder;
        using H = std::remove_cvref_t<decltype(holder)>;
        if (!alone && op != Op::set) {
            in.fail("a new object's state takes something away");
        }
        if constexpr (isPlainAttribute<H>) {
            if (op != Op::set) {
                in.fail("an operation that an attribute does not have");
            }
            const auto value = AttributeLogForm<typename H::Value>::read(in);
            expectEnd(in, alone);
            holder.valueIs(entity, id, value);
        } else {
            const auto key = AttributeLogForm<typename H::Key>::read(in);
            if constexpr (isValueCollection<H>) {
                applyToValues<id>(entity, holder, op, key, in, alone);
            } else if constexpr (isMembers<H>) {
                applyToMembers<id>(entity, holder, op, key, in, alone);
            } else {
                in.fail("an attribute that is not in logs");
            }
        }
    }

    template <AttributeId id, typename H>
    static void applyToValues(T& entity, H& holder, Op op, const typename H::Key& key,
                              AttributeLogInput& in, bool alone) {
        if (op == Op::set) {
            const auto value = AttributeLogForm<typename H::Value>::read(in);
            expectEnd(in, alone);
            holder.memberIs(entity, id, key, value);
        } else if (op == Op::remove) {
            expectEnd(in, alone);
            holder.memberDel(entity, id, key);
        } else {
            in.fail("an operation that a collection does not have");
        }
    }

    template <AttributeId id, typename H>
    static void applyToMembers(T& entity, H& holder, Op op, const typename H::Key& key,
                               AttributeLogInput& in, bool alone) {
        using Member = std::remove_const_t<typename H::Value>;
        auto* const present = holder.find(key);
        if (present == nullptr && op != Op::set) {
            in.fail("a member that is not there");
        }
        switch (op) {
        case Op::within:
            // Objects in collections of references were made here too, so they may be changed.
            AttributeLogChange<Member>::apply(const_cast<Member&>(*present), in);
            return;
        case Op::set:
            if constexpr (isChildren<H>) {
                if (present != nullptr) {
                    in.fail("a member that is there already");
                }
                expectEnd(in, alone);
                holder.childIs(entity, id, typename Member::Arguments{key});
            } else {
                const Ptr<Member> made = makePtr<Member>(typename Member::Arguments{key});
                for (auto count = in.number<std::uint32_t>(); count > 0; --count) {
                    AttributeLogChange<Member>::apply(*made, in, false);
                }
                expectEnd(in, alone);
                holder.memberIs(entity, id, T::orbAttribute(AttributeTag<id>{}).name, made);
            }
            return;
        case Op::remove:
            expectEnd(in, alone);
            if constexpr (isChildren<H>) {
                holder.childDel(entity, id, key);
            } else {
                holder.memberDel(entity, id, key);
            }
            return;
        }
        in.fail("an unknown operation");
    }

    static void expectEnd(const AttributeLogInput& in, bool alone) {
        if (alone) {
            in.expectEnd();
        }
    }
};

/// The reading side of an AttributeLogWriter of the same roots, usually in another process: keeps
/// roots of its own as the writer's are. The roots must be empty at first and nobody else's to
/// change. A log is never followed further than it is good: after a ParseError the roots hold what
/// the good records before made of them.
template <typename... Roots>
class AttributeLogReplay {
  public:
    explicit AttributeLogReplay(Ptr<Roots>... roots)
        : roots_(std::move(roots)...), unframer_([this](AttributeLogInput& in) { receive(in); }) {}
    AttributeLogReplay(const AttributeLogReplay&) = delete;
    AttributeLogReplay& operator=(const AttributeLogReplay&) = delete;

    /// The next bytes of the log, in pieces of any size. Throws ParseError.
    void feed(std::string_view bytes) { unframer_.feed(bytes); }

    /// No more bytes will come. Throws ParseError when the log has no end.
    void finish() const {
        if (stage_ != Stage::ended || !unframer_.atFrameEnd()) {
            throwBadLog(unframer_.offset(), "the log ends early");
        }
    }

    /// Whether the roots are as the writer's were at some moment.
    bool hasState() const { return stage_ >= Stage::state; }

  private:
    using Kind = AttributeLogFormat::Kind;
    enum class Stage { start, roots, state, ended };

    void receive(AttributeLogInput& in) {
        const Kind kind{in.number<std::uint8_t>()};
        if (kind == Kind::change && (stage_ == Stage::roots || stage_ == Stage::state)) {
            receiveChange(in);
        } else if (kind == Kind::roots && stage_ == Stage::start) {
            receiveRoots(in);
            stage_ = Stage::roots;
        } else if (kind == Kind::endOfState && stage_ == Stage::roots) {
            in.expectEnd();
            stage_ = Stage::state;
        } else if (kind == Kind::endOfLog && stage_ == Stage::state) {
            in.expectEnd();
            stage_ = Stage::ended;
        } else {
            in.fail("a record that is out of place");
        }
    }

    static void receiveRoots(AttributeLogInput& in) {
        if (in.number<std::uint8_t>() != sizeof...(Roots)
            || !((in.string() == Roots::orbTypeName) && ...)) {
            in.fail("a log of something else");
        }
        in.expectEnd();
    }

    void receiveChange(AttributeLogInput& in) {
        const auto number = in.number<std::uint8_t>();
        std::uint8_t at = 0;
        const auto applyIf = [&](const auto& root) {
            using T = std::remove_cvref_t<decltype(*root)>;
            if (at++ != number) {
                return false;
            }
            AttributeLogChange<T>::apply(*root, in);
            return true;
        };
        const bool known =
            std::apply([&](const auto&... root) { return (applyIf(root) || ...); }, roots_);
        if (!known) {
            in.fail("an unknown root");
        }
    }

    std::tuple<Ptr<Roots>...> roots_;
    AttributeLogUnframer unframer_;
    Stage stage_ = Stage::start;
};

} // namespace Orb
