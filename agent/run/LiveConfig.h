#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "agent/patch/DevicePatch.h"
#include "agent/run/ConfigFile.h"
#include "agent/topics/ConfigChangeRow.h"
#include "agent/topics/StatusRows.h"

namespace Agent {

class LiveDevice;

/// The configuration of a live agent: what its file says, at the start and whenever that is read
/// again.
class LiveConfig {
  public:
    using Report = std::function<void(const std::string& message)>;

    /// Reads the file; the configuration is empty where there is none. Where leaks are external it
    /// is said once that those of the configuration do not count. Throws BadInputError.
    LiveConfig(std::string path, bool externalLeaks, Report report);

    bool isThere() const { return !path_.empty(); }
    /// What was read at the start, to be taken once; nothing where there is no file.
    std::optional<ConfigFile> take() { return std::exchange(file_, std::nullopt); }

    /// Reads the file again and has the device follow. Returns what is different. Throws
    /// FailureError, with nothing changed.
    std::vector<ConfigChangeRow> reload(LiveDevice& device);
    const ReloadRecord& record() const { return record_; }

  private:
    std::vector<ConfigChangeRow> readAgain(LiveDevice& device);
    void checkLeaks(const DevicePatch& document);

    std::string path_;
    bool externalLeaks_;
    Report report_;
    bool saidLeaks_ = false;
    std::optional<ConfigFile> file_;
    ReloadRecord record_;
};

} // namespace Agent
