#include "agent/cli/Commands.h"

#include "agent/base/Utf8.h"
#include "agent/output/Journal.h"
#include "agent/output/OutputFile.h"
#include "platform/lanx/IpGenPrefix.h"
#include "platform/orb/value/Error.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

std::string complaintAboutVrf(const std::string& name) {
    if (name.empty() || !isUtf8(name)) {
        return "must be a name in UTF-8";
    }
    try {
        const L3::VrfName checked(name);
    } catch (const Orb::Error& error) {
        return error.what();
    }
    return {};
}

namespace {

std::string complaintAboutPrefix(const std::string& text) {
    try {
        if (!text.empty()) {
            static_cast<void>(Lanx::IpGenPrefix::fromString(prefixText(text)));
        }
    } catch (const Orb::Error& error) {
        return error.what();
    }
    return complaintIfEmpty(text);
}

} // namespace

std::string complaintIfEmpty(const std::string& value) {
    return value.empty() ? "must not be empty" : "";
}

Argument ringOption(std::string& path) {
    return {.name = "--ring",
            .help = "Write the ring trace to FILE; %d becomes the process id, and /dev/null stands "
                    "for none",
            .value = &path,
            .placeholder = "FILE",
            .complaint = complaintIfEmpty};
}

Argument socketOption(std::string& path) {
    return {.name = "--socket",
            .help = "Where the agent listens; by default /run/directnet.sock for root, else "
                    "directnet.sock in the user's runtime folder, with the number of the network "
                    "namespace in the name where that is not the system's",
            .value = &path,
            .placeholder = "PATH",
            .complaint = complaintIfEmpty};
}

Argument tablesOption(std::string& path) {
    return {.name = "--tables",
            .help = "The folder of the tables; by default /dev/shm/directnet for root, else "
                    "directnet in the user's runtime folder",
            .value = &path,
            .placeholder = "DIR",
            .complaint = complaintIfEmpty};
}

Argument traceOption(int& level) {
    return {.name = "--trace",
            .help = "Trace on standard error: 0 for readiness, up to 9 for everything",
            .value = &level,
            .placeholder = "LEVEL",
            .range = {{0, 9}}};
}

Argument timestampsOption(bool& has) {
    return {.name = "--timestamps", .help = "Print the time of day with every line", .value = &has};
}

Argument prefixOption(const std::string& name, std::string& prefix) {
    return {.name = name,
            .help = "Only routes of this prefix and inside it; an address stands for itself",
            .value = &prefix,
            .placeholder = "PREFIX",
            .complaint = complaintAboutPrefix};
}

std::string prefixText(const std::string& argument) {
    return argument.empty() || argument.find('/') != std::string::npos
               ? argument
               : Lanx::IpGenPrefix::host(Lanx::IpGenAddr::fromString(argument)).toString();
}

Argument vipLogOption(std::string& path) {
    return {.name = "--vip-log",
            .help = "Log every change of the tables of virtual addresses to FILE",
            .value = &path,
            .placeholder = "FILE",
            .complaint = complaintIfEmpty};
}

Argument vrfOption(std::string& name, const std::string& help) {
    return {.name = "--vrf",
            .help = help,
            .value = &name,
            .placeholder = "NAME",
            .complaint = complaintAboutVrf};
}

void report(const std::string& message) {
    writeErrorLine(severityPrefix(Severity::warning) + "directnet: " + printable(message) + '\n');
}

} // namespace Agent
