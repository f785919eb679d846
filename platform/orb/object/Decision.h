#pragma once

#include <exception>
#include <functional>
#include <utility>

#include "platform/orb/object/Ptr.h"

/// Run to completion. A decision is what a machine does in answer to one event, with all that it
/// calls; one at a time is under way on a thread. Its writes are told to others before they return,
/// and these may do what they like. While a decision is under way
///
///  - a change that an input reactor (Reactor.h) hears of is remembered and taken when the decision
///    has finished, on the state as it is then; so nothing that a machine is made of changes under
///    its hands, whatever the inputs do;
///  - what a reactor throws is kept: all others are still told and the decision goes on to its end.
///    The first error reaches the caller of the outermost decision, when all is done.
///
/// An error of the decision itself ends it. It reaches the same caller, after what was remembered.
///
/// Machines of one decision call each other directly and hear of each other at once: their reactors
/// are not input reactors. Inputs themselves change at once, so a decision holds by an Orb::Ptr
/// what it goes on with after a write.
namespace Orb {

namespace Detail {

/// The decisions of one thread.
class Turn {
  public:
    static Turn& current();

    bool underWay() const { return underWay_; }
    /// Whether a write of the decision is being told to somebody.
    bool telling() const { return telling_ != 0; }

    void begin() { underWay_ = true; }
    /// Takes what was remembered, then raises the first error.
    void end();
    void takeRemembered();

    /// Keeps the error for the end.
    void keep(std::exception_ptr error);

    /// `owner` is whose it is, for forget().
    void remember(const void* owner, std::function<void()> work);
    void forget(const void* owner);

    /// Counts a notification for as long as it lives, if a write of a decision has raised it.
    class Telling {
      public:
        Telling() : turn_(current()), counts_(turn_.underWay_ ? 1 : 0) {
            turn_.telling_ += counts_;
        }
        Telling(const Telling&) = delete;
        Telling& operator=(const Telling&) = delete;
        ~Telling() { turn_.telling_ -= counts_; }

      private:
        Turn& turn_;
        const unsigned counts_;
    };

  private:
    struct Memory;

    Memory& memory();

    bool underWay_ = false;
    unsigned telling_ = 0;
    Memory* memory_ = nullptr; ///< made when there is something to remember
};

inline constinit thread_local Turn presentTurn;

inline Turn& Turn::current() { return presentTurn; }

} // namespace Detail

inline bool decisionUnderWay() { return Detail::Turn::current().underWay(); }

/// Runs `work` as a decision, or as part of the one that is under way.
template <typename Work>
void decide(Work&& work) {
    Detail::Turn& turn = Detail::Turn::current();
    if (turn.underWay()) {
        std::forward<Work>(work)();
        return;
    }
    turn.begin();
    try {
        std::forward<Work>(work)();
    } catch (...) {
        turn.keep(std::current_exception());
    }
    turn.end();
}

/// Runs `work` when the decision that is under way has finished, at once if none is. The machine is
/// kept until then; once it is marked for deletion the work is dropped.
template <typename Work>
void decideAfterwards(const PtrInterface& machine, Work work) {
    Detail::Turn& turn = Detail::Turn::current();
    if (!turn.underWay()) {
        decide(std::move(work));
        return;
    }
    turn.remember(&machine, [keep = Ptr<const PtrInterface>(&machine), work = std::move(work)] {
        if (!keep->orbMarkedForDeletion()) {
            work();
        }
    });
}

/// For an operation of a machine that has none but input reactors: whoever calls it from inside a
/// notification of the present decision is a stranger to that, and has to wait for its end. All
/// others have it run at once.
template <typename Work>
void decideInTurn(const PtrInterface& machine, Work work) {
    if (Detail::Turn::current().telling()) {
        decideAfterwards(machine, std::move(work));
    } else {
        decide(std::move(work));
    }
}

/// A pause in long work that is a row of decisions: takes what was remembered so far.
void pauseBetweenDecisions();

} // namespace Orb
