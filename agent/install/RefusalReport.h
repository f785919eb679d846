#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <utility>

#include "platform/lanx/IntfId.h"
#include "platform/lanx/IpGenPrefix.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// Says of each VRF, link and cause once, while it lasts, that the kernel does not take something,
/// with the first prefix that it concerns.
class RefusalReport {
  public:
    using Report = std::function<void(const std::string& message)>;

    /// A cause that lasts for as long as something holds it.
    class Cause {
      public:
        const std::string& words() const { return words_; }

      private:
        friend class RefusalReport;

        std::string words_;
        std::size_t holders_ = 0;
    };

    explicit RefusalReport(Report report) : report_(std::move(report)) {}

    /// The cause, held once more until it is let go. `verb` is what was to be done: "install".
    Cause& hold(const L3::VrfName& vrf, Lanx::IntfId link, const std::string& words,
                const std::string& verb, const Lanx::IpGenPrefix& prefix) {
        Cause& cause = causes_[{vrf, link, words}];
        if (cause.holders_++ == 0) {
            cause.words_ = words;
            report_((!vrf ? "" : "VRF " + vrf.value() + ": ") + "cannot " + verb + ' '
                    + prefix.toString() + (!link ? "" : " on " + std::string(link.name())) + ": "
                    + words);
        }
        return cause;
    }
    void letGo(const L3::VrfName& vrf, Lanx::IntfId link, Cause& cause) {
        if (--cause.holders_ == 0) {
            const std::string words = std::move(cause.words_);
            causes_.erase({vrf, link, words});
        }
    }

  private:
    std::map<std::tuple<L3::VrfName, Lanx::IntfId, std::string>, Cause> causes_;
    Report report_;
};

} // namespace Agent
