#pragma once

#include <utility>

#include "platform/orb/attribute/Arguments.h"
#include "platform/orb/object/AttributeDescription.h"
#include "platform/orb/object/Entity.h"
#include "platform/orb/object/Ptr.h"

namespace Orb {

/// Marks a child for deletion and drops the parent's reference. Should a call into the child be
/// under way, the child lives until that returns, but hears nothing more.
template <typename T>
void releaseChild(Ptr<T> child) {
    child->orbDoZombieReactors(true);
}

/// A child held in a single attribute of its parent.
template <typename T>
class Child {
  public:
    using Value = T;

    Child() = default;
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child() {
        if (child_ != nullptr) {
            releaseChild(std::move(child_));
        }
    }

    const Ptr<T>& value() const { return child_; }

    /// Keeps a child that was made from equal arguments, else makes a new one in its place.
    Ptr<T> childIs(const Entity& owner, AttributeId id, typename T::Arguments arguments) {
        if (child_ != nullptr && arguments == child_->arguments()) {
            return child_;
        }
        const Ptr<const PtrInterface> kept = keep(owner);
        replace(owner, id, makePtr<T>(std::move(arguments)));
        return child_;
    }

    /// The same, but a child that was made from other arguments stays: throws NameInUseError.
    Ptr<T> soleChildIs(const Entity& owner, AttributeId id, typename T::Arguments arguments) {
        if (child_ != nullptr) {
            checkReinstantiation(arguments, child_->arguments());
        }
        return childIs(owner, id, std::move(arguments));
    }

    void childDel(const Entity& owner, AttributeId id) {
        if (child_ != nullptr) {
            replace(owner, id, nullptr);
        }
    }

    std::string text() const { return display(child_); }

  private:
    void replace(const Entity& owner, AttributeId id, Ptr<T> next) {
        const Ptr<const PtrInterface> kept = keep(owner);
        std::swap(child_, next);
        if (next != nullptr) {
            releaseChild(std::move(next));
        }
        owner.notify(id);
    }

    Ptr<T> child_;
};

} // namespace Orb
