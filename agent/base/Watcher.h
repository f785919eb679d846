#pragma once

#include <functional>

#include "platform/orb/loop/Clock.h"
#include "platform/orb/loop/FileDescriptorReactor.h"

namespace Agent {

/// Calls back when a descriptor is readable and when a time has come. It must not be destroyed from
/// inside its callback. One agent thread, no locks.
class Watcher {
  public:
    Watcher(int descriptor, Orb::Ptr<const Orb::Clock> clock, std::function<void()> callback);

    /// Calls back at that time of the clock, soon if it has passed; never if it is infinite.
    void wakeAt(double time) { timer_.timeMinIs(time); }

  private:
    class Descriptor : public Orb::FileDescriptorReactor {
      public:
        Descriptor(int descriptor, Watcher& owner)
            : FileDescriptorReactor(descriptor), owner_(owner) {}
        void onReadable() override { owner_.callback_(); }

      private:
        Watcher& owner_;
    };
    class Timer : public Orb::Clock::NotifieeConst {
      public:
        explicit Timer(Watcher& owner) : owner_(owner) {}
        void onTimeMin() override { owner_.callback_(); }

      private:
        Watcher& owner_;
    };

    std::function<void()> callback_;
    Descriptor descriptor_;
    Timer timer_;
};

} // namespace Agent
