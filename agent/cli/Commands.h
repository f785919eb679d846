#pragma once

#include <string>
#include <vector>

#include "agent/cli/Command.h"

namespace Agent {

// The commands, each in a source of its own.
Command explainCommand();
Command replayCommand();
Command leaksCommand();
Command reloadCommand();
Command ringlogCommand();
Command runCommand();
Command showCommand();
Command tablesCommand();
Command traceCommand();
Command vipLogCommand();
Command waitCommand();
Command watchCommand();

// What packages are made with: what is known of these commands, for who reads it elsewhere.
Command completionCommand(std::vector<Command> commands); ///< for bash
Command manualCommand(std::vector<Command> commands);     ///< for man

/// Refuses an empty value, such as that of a shell variable which is not set.
std::string complaintIfEmpty(const std::string& value);
/// What makes the text no name of a VRF; empty if it is one.
std::string complaintAboutVrf(const std::string& name);

// Arguments that several commands have.
Argument ringOption(std::string& path);   ///< where the ring trace goes
Argument socketOption(std::string& path); ///< where the running agent listens
Argument tablesOption(std::string& path); ///< where the tables are that an agent shares
Argument timestampsOption(bool& has);     ///< the time of day before lines
Argument prefixOption(const std::string& name, std::string& prefix); ///< routes of and in a prefix
Argument traceOption(int& level); ///< the text trace of an agent that is started
/// The one VRF that is shown.
Argument vrfOption(std::string& name, const std::string& help = "Only this VRF");
/// Refuses what can be no prefix, address or interface to be explained.
std::string complaintAboutTarget(const std::string& text);
Argument vipLogOption(std::string& path); ///< where changes of virtual addresses are logged

/// The prefix that such an argument stands for; an address stands for that alone.
std::string prefixText(const std::string& argument);

/// Says "directnet: MESSAGE" on standard error.
void report(const std::string& message);

} // namespace Agent
